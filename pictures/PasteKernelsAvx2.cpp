// The AVX2 kernels. This unit is compiled for AVX2 as a whole, so the 128-bit steps and scalar tails of its
// kernels are VEX-encoded too: nothing here runs legacy SSE code with the upper YMM halves dirty. Every entry
// point clears the upper halves before it returns (the compiler does not at every optimisation level), so
// the legacy-encoded code of the caller never pays the transition either. It is only called after a run-time
// check of the CPU.
#include "PasteKernelLevels.h"
#include "PasteRows.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#ifndef __AVX2__
#error "this unit must be compiled with -mavx2"
#endif

namespace qor::detail
{
namespace
{
inline __m256i Load(const unsigned char* p)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline void Store(unsigned char* p, __m256i v)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

inline __m128i Load128(const unsigned char* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void Store128(unsigned char* p, __m128i v)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

void Keyed8(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n >= 32)
    {
        const __m256i k = _mm256_set1_epi8(static_cast<char>(key));
        Overlapped<32>(n, [&](long i) {
            const __m256i s = Load(src + i);
            Store(dst + i, _mm256_blendv_epi8(s, Load(dst + i), _mm256_cmpeq_epi8(s, k)));
        });
    }
    else if (n >= 16)
    {
        const __m128i k = _mm_set1_epi8(static_cast<char>(key));
        Overlapped<16>(n, [&](long i) {
            const __m128i s = Load128(src + i);
            Store128(dst + i, _mm_blendv_epi8(s, Load128(dst + i), _mm_cmpeq_epi8(s, k)));
        });
    }
    else
        RowScalar<1, true, false, false>(dst, src, n, key);
}

void Keyed16(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n >= 16)
    {
        const __m256i k = _mm256_set1_epi16(static_cast<short>(key));
        Overlapped<16>(n, [&](long i) {
            const __m256i s = Load(src + 2 * i);
            Store(dst + 2 * i, _mm256_blendv_epi8(s, Load(dst + 2 * i), _mm256_cmpeq_epi16(s, k)));
        });
    }
    else if (n >= 8)
    {
        const __m128i k = _mm_set1_epi16(static_cast<short>(key));
        Overlapped<8>(n, [&](long i) {
            const __m128i s = Load128(src + 2 * i);
            Store128(dst + 2 * i, _mm_blendv_epi8(s, Load128(dst + 2 * i), _mm_cmpeq_epi16(s, k)));
        });
    }
    else
        RowScalar<2, true, false, false>(dst, src, n, key);
}

void Keyed32(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n >= 8)
    {
        const __m256i k = _mm256_set1_epi32(static_cast<int>(key));
        const __m256i mask = _mm256_set1_epi32(static_cast<int>(KeyMask32()));
        Overlapped<8>(n, [&](long i) {
            const __m256i s = Load(src + 4 * i);
            const __m256i isKey = _mm256_cmpeq_epi32(_mm256_and_si256(s, mask), k);
            Store(dst + 4 * i, _mm256_blendv_epi8(s, Load(dst + 4 * i), isKey));
        });
    }
    else if (n >= 4)
    {
        const __m128i k = _mm_set1_epi32(static_cast<int>(key));
        const __m128i mask = _mm_set1_epi32(static_cast<int>(KeyMask32()));
        Overlapped<4>(n, [&](long i) {
            const __m128i s = Load128(src + 4 * i);
            const __m128i isKey = _mm_cmpeq_epi32(_mm_and_si128(s, mask), k);
            Store128(dst + 4 * i, _mm_blendv_epi8(s, Load128(dst + 4 * i), isKey));
        });
    }
    else
        RowScalar<4, true, false, false>(dst, src, n, key);
}

template <bool Transparent>
void Mirror8(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n >= 16)
    {
        const __m128i reverse = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
        const __m256i reverse2 = _mm256_broadcastsi128_si256(reverse);
        const __m256i k = _mm256_set1_epi8(static_cast<char>(key));
        const auto step32 = [&](long i) {
            // Destination bytes i .. i + 31 come from src - (i + 31) .. src - i, read backwards.
            __m256i s = Load(src - (i + 31));
            s = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(s, reverse2), _MM_SHUFFLE(1, 0, 3, 2));
            if constexpr (Transparent)
                s = _mm256_blendv_epi8(s, Load(dst + i), _mm256_cmpeq_epi8(s, k));
            Store(dst + i, s);
        };
        const auto step16 = [&](long i) {
            __m128i s = _mm_shuffle_epi8(Load128(src - (i + 15)), reverse);
            if constexpr (Transparent)
                s = _mm_blendv_epi8(s, Load128(dst + i), _mm_cmpeq_epi8(s, _mm256_castsi256_si128(k)));
            Store128(dst + i, s);
        };
        if (n >= 32)
            Overlapped<32>(n, step32);
        else
            Overlapped<16>(n, step16);
    }
    else
        RowScalar<1, Transparent, true, false>(dst, src, n, key);
}

template <bool Transparent>
void Mirror32(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n >= 4)
    {
        const __m256i reverse = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
        const __m256i k = _mm256_set1_epi32(static_cast<int>(key));
        const __m256i mask = _mm256_set1_epi32(static_cast<int>(KeyMask32()));
        const auto step8 = [&](long i) {
            __m256i s = _mm256_permutevar8x32_epi32(Load(src - 4 * (i + 7)), reverse);
            if constexpr (Transparent)
                s = _mm256_blendv_epi8(s, Load(dst + 4 * i), _mm256_cmpeq_epi32(_mm256_and_si256(s, mask), k));
            Store(dst + 4 * i, s);
        };
        const auto step4 = [&](long i) {
            __m128i s = _mm_shuffle_epi32(Load128(src - 4 * (i + 3)), _MM_SHUFFLE(0, 1, 2, 3));
            if constexpr (Transparent)
            {
                const __m128i isKey = _mm_cmpeq_epi32(_mm_and_si128(s, _mm256_castsi256_si128(mask)),
                                                      _mm256_castsi256_si128(k));
                s = _mm_blendv_epi8(s, Load128(dst + 4 * i), isKey);
            }
            Store128(dst + 4 * i, s);
        };
        if (n >= 8)
            Overlapped<8>(n, step8);
        else
            Overlapped<4>(n, step4);
    }
    else
        RowScalar<4, Transparent, true, false>(dst, src, n, key);
}

// Shuffle masks of the 3-byte kernels, for one 128-bit lane (both lanes use the same one). A lane holds
// four pixels from byte Shift on (Shift 0: 4 spare bytes after them, Shift 4: 4 spare bytes before).
struct Masks24
{
    alignas(32) char bytes[32];
};

// Widens the four pixels to 32-bit words, fourth byte 0.
constexpr Masks24 Widen24(int shift)
{
    Masks24 m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int j = 0; j < 4; ++j)
            for (int c = 0; c < 4; ++c)
                m.bytes[16 * lane + 4 * j + c] = static_cast<char>(c < 3 ? shift + 3 * j + c : -1);
    return m;
}

// Spreads the four word results back over the pixels' bytes; spare bytes get 0.
constexpr Masks24 Narrow24(int shift)
{
    Masks24 m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int b = 0; b < 16; ++b)
            m.bytes[16 * lane + b] = static_cast<char>(b >= shift && b < shift + 12 ? 4 * ((b - shift) / 3) : -1);
    return m;
}

// Reverses the pixel order of a lane read with srcShift into the layout of dstShift.
constexpr Masks24 Reverse24(int srcShift, int dstShift)
{
    Masks24 m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int b = 0; b < 16; ++b)
            m.bytes[16 * lane + b] =
                static_cast<char>(b >= dstShift && b < dstShift + 12
                                      ? srcShift + 3 * (3 - (b - dstShift) / 3) + (b - dstShift) % 3
                                      : -1);
    return m;
}

inline __m256i LoadMask(const Masks24& m)
{
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(m.bytes));
}

// 0xFF on the 4 spare bytes of each lane: there the destination is kept.
constexpr Masks24 Spare24(int shift)
{
    Masks24 m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int b = 0; b < 16; ++b)
            m.bytes[16 * lane + b] = static_cast<char>(b >= shift && b < shift + 12 ? 0 : -1);
    return m;
}

// The destination of eight pixels from d0, each lane holding four of them with its 4 spare bytes after them
// (DstShift 0) or before (DstShift 4).
template <int DstShift>
inline __m256i LoadDst24(const unsigned char* d0)
{
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(d0 + 12 - DstShift),
                               reinterpret_cast<const __m128i*>(d0 - DstShift));
}

// Eight 3-byte pixels per step: each lane widens four pixels to 32-bit words, compares them with the key and
// narrows the result back to a byte mask; the spare bytes count as key, so they keep the destination's bytes.
// s0 is the lowest address of the eight source pixels (for Mirror, the last of them). The shifts choose on
// which side of the 24 bytes each load takes its 4 spare bytes, so that no step reads past either end of a row.
template <bool Mirror, int SrcShift, int DstShift>
inline __m256i Keyed24Lanes(const unsigned char* s0, __m256i d, __m256i k)
{
    static constexpr Masks24 kWiden = Widen24(DstShift);
    static constexpr Masks24 kNarrow = Narrow24(DstShift);
    static constexpr Masks24 kSpare = Spare24(DstShift);
    static constexpr Masks24 kReverse = Reverse24(SrcShift, DstShift);
    // Read backwards, the first four pixels written are the upper twelve source bytes.
    const __m128i* low = reinterpret_cast<const __m128i*>(s0 + (Mirror ? 12 : 0) - SrcShift);
    const __m128i* high = reinterpret_cast<const __m128i*>(s0 + (Mirror ? 0 : 12) - SrcShift);
    __m256i s = _mm256_loadu2_m128i(high, low);
    if constexpr (Mirror)
        s = _mm256_shuffle_epi8(s, LoadMask(kReverse));
    const __m256i isKey = _mm256_or_si256(
        _mm256_shuffle_epi8(_mm256_cmpeq_epi32(_mm256_shuffle_epi8(s, LoadMask(kWiden)), k), LoadMask(kNarrow)),
        LoadMask(kSpare));
    return _mm256_blendv_epi8(s, d, isKey);
}

// Each lane (spare bytes after its pixels) is stored whole, its spare bytes holding what the destination
// held. The low lane goes first: its spare bytes lie over the high lane's first pixel, which then writes them.
inline void StoreLanes24(unsigned char* d0, __m256i r)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d0), _mm256_castsi256_si128(r));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d0 + 12), _mm256_extracti128_si256(r, 1));
}

// The 24 pixel bytes of the lanes packed together and stored, nothing else written.
template <int DstShift>
inline void StorePacked24(unsigned char* d0, __m256i r)
{
    const __m256i pack =
        DstShift == 0 ? _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6) : _mm256_setr_epi32(1, 2, 3, 5, 6, 7, 7, 7);
    r = _mm256_permutevar8x32_epi32(r, pack);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d0), _mm256_castsi256_si128(r));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d0 + 16), _mm256_extracti128_si256(r, 1));
}

// Every pixel ends as src or as the destination it had, so a step may take its destination from before
// earlier steps wrote: the last steps read theirs at the start (no load waits on a store) and store their
// pixel bytes alone, since their spare bytes would be stale. Pixels done twice come out the same.
template <bool Mirror>
void Keyed24(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n < 10)
    {
        RowScalar<3, true, Mirror, false>(dst, src, n, key);
        return;
    }
    const __m256i k = _mm256_set1_epi32(static_cast<int>(key));
    // The loop runs while ten pixels remain and stops at end, leaving two to nine.
    const long end = 8 * ((n - 10) / 8 + 1);
    const __m256i dEnd = n - end > 8 ? LoadDst24<4>(dst + 3 * end) : _mm256_setzero_si256();
    const __m256i dLast = LoadDst24<4>(dst + 3 * (n - 8));
    long i = 0;
    // Ten pixels must remain: a step reads 4 bytes beyond its eight pixels on one side. The next step's
    // destination is read before this step's stores: their spare bytes lie over it (holding the bytes it
    // held), and a load across bytes just stored would wait for the store.
    __m256i d = LoadDst24<0>(dst);
    for (; i + 10 <= n; i += 8)
    {
        const __m256i r = Mirror ? Keyed24Lanes<true, 4, 0>(src - 3 * (i + 7), d, k)
                                 : Keyed24Lanes<false, 0, 0>(src + 3 * i, d, k);
        if (i + 18 <= n)
            d = LoadDst24<0>(dst + 3 * (i + 8));
        StoreLanes24(dst + 3 * i, r);
    }
    // Two to nine pixels remain. The last steps take their spare bytes before their pixels: one at i when
    // nine remain, then one ending at n.
    const auto last = [&](long j, __m256i dj) {
        const __m256i r = Mirror ? Keyed24Lanes<true, 0, 4>(src - 3 * (j + 7), dj, k)
                                 : Keyed24Lanes<false, 4, 4>(src + 3 * j, dj, k);
        StorePacked24<4>(dst + 3 * j, r);
    };
    if (n - end > 8)
        last(end, dEnd);
    last(n - 8, dLast);
}

// Every entry point clears the upper halves for its caller.
void ClearUpper()
{
    _mm256_zeroupper();
}

template <PasteRowKernel Kernel>
constexpr KernelSlot Slot()
{
    return SlotOf<Kernel, ClearUpper>();
}
} // namespace

void SetAvx2Kernels(KernelTable& t)
{
    SetBoth(t[0][1][0], Slot<Keyed8>());
    SetBoth(t[0][0][1], Slot<Mirror8<false>>());
    SetBoth(t[0][1][1], Slot<Mirror8<true>>());
    t[1][1][0][0] = Slot<Keyed16>();
    SetBoth(t[2][1][0], Slot<Keyed24<false>>());
    SetBoth(t[2][1][1], Slot<Keyed24<true>>());
    SetBoth(t[3][1][0], Slot<Keyed32>());
    SetBoth(t[3][0][1], Slot<Mirror32<false>>());
    SetBoth(t[3][1][1], Slot<Mirror32<true>>());
}

// Stores a 96-byte pattern (a whole number of pixels at every depth) over and over, with aligned stores:
// the bytes before the first 32-byte boundary are written one by one and the pattern starts from there.
void FillAvx2(unsigned char* dst, std::size_t total, const unsigned char* colour, std::size_t bpp)
{
    const std::size_t toBoundary = (32 - (reinterpret_cast<std::uintptr_t>(dst) & 31)) & 31;
    const std::size_t head = total < toBoundary ? total : toBoundary;
    for (std::size_t i = 0; i < head; ++i)
        dst[i] = colour[i % bpp];
    alignas(32) unsigned char pattern[96];
    for (std::size_t j = 0; j < sizeof pattern; ++j)
        pattern[j] = colour[(head + j) % bpp];
    const __m256i a = _mm256_load_si256(reinterpret_cast<const __m256i*>(pattern));
    const __m256i b = _mm256_load_si256(reinterpret_cast<const __m256i*>(pattern + 32));
    const __m256i c = _mm256_load_si256(reinterpret_cast<const __m256i*>(pattern + 64));
    std::size_t i = head;
    for (; i + 96 <= total; i += 96)
    {
        _mm256_store_si256(reinterpret_cast<__m256i*>(dst + i), a);
        _mm256_store_si256(reinterpret_cast<__m256i*>(dst + i + 32), b);
        _mm256_store_si256(reinterpret_cast<__m256i*>(dst + i + 64), c);
    }
    _mm256_zeroupper();
    std::memcpy(dst + i, pattern, total - i);
}
} // namespace qor::detail
#endif
