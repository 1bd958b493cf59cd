// The SSE2 kernels. SSE2 is part of every x86-64 CPU, so this unit needs no flags and no run-time check.
#include "PasteKernelLevels.h"
#include "PasteRows.h"

#if defined(__x86_64__) || defined(__i386__)
#include <emmintrin.h>

namespace qor::detail
{
namespace
{
inline __m128i Load(const unsigned char* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void Store(unsigned char* p, __m128i v)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

// Where isKey is set the destination stays, elsewhere the source is written.
inline __m128i Select(__m128i isKey, __m128i d, __m128i s)
{
    return _mm_or_si128(_mm_and_si128(isKey, d), _mm_andnot_si128(isKey, s));
}

void Keyed8(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n < 16)
        return RowScalar<1, true, false, false>(dst, src, n, key);
    const __m128i k = _mm_set1_epi8(static_cast<char>(key));
    Overlapped<16>(n, [&](long i) {
        const __m128i s = Load(src + i);
        Store(dst + i, Select(_mm_cmpeq_epi8(s, k), Load(dst + i), s));
    });
}

void Keyed16(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n < 8)
        return RowScalar<2, true, false, false>(dst, src, n, key);
    const __m128i k = _mm_set1_epi16(static_cast<short>(key));
    Overlapped<8>(n, [&](long i) {
        const __m128i s = Load(src + 2 * i);
        Store(dst + 2 * i, Select(_mm_cmpeq_epi16(s, k), Load(dst + 2 * i), s));
    });
}

void Keyed32(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n < 4)
        return RowScalar<4, true, false, false>(dst, src, n, key);
    const __m128i k = _mm_set1_epi32(static_cast<int>(key));
    const __m128i mask = _mm_set1_epi32(static_cast<int>(KeyMask32()));
    Overlapped<4>(n, [&](long i) {
        const __m128i s = Load(src + 4 * i);
        Store(dst + 4 * i, Select(_mm_cmpeq_epi32(_mm_and_si128(s, mask), k), Load(dst + 4 * i), s));
    });
}

template <bool Transparent>
void Mirror32(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n < 4)
        return RowScalar<4, Transparent, true, false>(dst, src, n, key);
    const __m128i k = _mm_set1_epi32(static_cast<int>(key));
    const __m128i mask = _mm_set1_epi32(static_cast<int>(KeyMask32()));
    Overlapped<4>(n, [&](long i) {
        // Source pixels i .. i + 3 read leftwards lie at src - 4 * (i + 3) .. src - 4 * i.
        __m128i s = _mm_shuffle_epi32(Load(src - 4 * (i + 3)), _MM_SHUFFLE(0, 1, 2, 3));
        if constexpr (Transparent)
            s = Select(_mm_cmpeq_epi32(_mm_and_si128(s, mask), k), Load(dst + 4 * i), s);
        Store(dst + 4 * i, s);
    });
}

} // namespace

void SetSse2Kernels(KernelTable& t)
{
    SetBoth(t[0][1][0], SlotOf<Keyed8>());
    t[1][1][0][0] = SlotOf<Keyed16>();
    SetBoth(t[3][1][0], SlotOf<Keyed32>());
    SetBoth(t[3][0][1], SlotOf<Mirror32<false>>());
    SetBoth(t[3][1][1], SlotOf<Mirror32<true>>());
}
} // namespace qor::detail
#endif
