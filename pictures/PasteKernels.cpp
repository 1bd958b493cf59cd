#include "PasteKernels.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#define QOR_X86 1
#include <immintrin.h>
#endif

namespace qor::detail
{
namespace
{
// Pixels and keys are compared as 32-bit values holding the pixel's bytes, the first byte lowest.
// Three bytes are gathered one by one: a 3-byte memcpy into a word goes through memory and stalls.
template <int Bpp>
inline std::uint32_t LoadPixel(const unsigned char* p)
{
    if constexpr (Bpp == 1)
        return p[0];
    else if constexpr (Bpp == 3)
        return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16;
    else if constexpr (Bpp == 2)
        return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8;
    else
    {
        std::uint32_t v;
        std::memcpy(&v, p, 4);
        return v;
    }
}

const unsigned char kKeyMaskBytes[4] = {0xFF, 0xFF, 0xFF, 0x00};

// The portable kernels, and the reference the vector kernels must match byte for byte.
template <int Bpp, bool Transparent, bool MirrorX, bool Subtract>
void RowScalar(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    constexpr bool kSubtract = Subtract && Bpp == 2;
    if constexpr (!Transparent && !MirrorX && !kSubtract)
    {
        std::memcpy(dst, src, std::size_t(n) * Bpp);
    }
    else
    {
        const std::uint32_t mask = Bpp == 4 ? LoadPixel<4>(kKeyMaskBytes) : ~0u;
        constexpr long kStep = MirrorX ? -Bpp : Bpp;
        for (long i = 0; i < n; ++i, dst += Bpp, src += kStep)
        {
            if constexpr (Transparent)
            {
                if ((LoadPixel<Bpp>(src) & mask) == key)
                    continue;
            }
            if constexpr (kSubtract)
            {
                dst[0] = static_cast<unsigned char>(dst[0] & ~src[0]);
                dst[1] = static_cast<unsigned char>(dst[1] & ~src[1] & 0x7F);
            }
            else
            {
                std::memcpy(dst, src, Bpp);
            }
        }
    }
}

#ifdef QOR_X86
// SSE2 is part of every x86-64 CPU: these need no run-time check.
void Keyed8Sse2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m128i k = _mm_set1_epi8(static_cast<char>(key));
    long i = 0;
    for (; i + 16 <= n; i += 16)
    {
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i));
        const __m128i isKey = _mm_cmpeq_epi8(s, k);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i),
                         _mm_or_si128(_mm_and_si128(isKey, d), _mm_andnot_si128(isKey, s)));
    }
    RowScalar<1, true, false, false>(dst + i, src + i, n - i, key);
}

void Keyed16Sse2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m128i k = _mm_set1_epi16(static_cast<short>(key));
    long i = 0;
    for (; i + 8 <= n; i += 8)
    {
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * i));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + 2 * i));
        const __m128i isKey = _mm_cmpeq_epi16(s, k);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * i),
                         _mm_or_si128(_mm_and_si128(isKey, d), _mm_andnot_si128(isKey, s)));
    }
    RowScalar<2, true, false, false>(dst + 2 * i, src + 2 * i, n - i, key);
}

void Keyed32Sse2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m128i k = _mm_set1_epi32(static_cast<int>(key));
    const __m128i mask = _mm_set1_epi32(static_cast<int>(LoadPixel<4>(kKeyMaskBytes)));
    long i = 0;
    for (; i + 4 <= n; i += 4)
    {
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 4 * i));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + 4 * i));
        const __m128i isKey = _mm_cmpeq_epi32(_mm_and_si128(s, mask), k);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * i),
                         _mm_or_si128(_mm_and_si128(isKey, d), _mm_andnot_si128(isKey, s)));
    }
    RowScalar<4, true, false, false>(dst + 4 * i, src + 4 * i, n - i, key);
}

template <bool Transparent>
void Mirror32Sse2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m128i k = _mm_set1_epi32(static_cast<int>(key));
    const __m128i mask = _mm_set1_epi32(static_cast<int>(LoadPixel<4>(kKeyMaskBytes)));
    long i = 0;
    for (; i + 4 <= n; i += 4)
    {
        // Source pixels i .. i + 3 read leftwards lie at src - 4 * (i + 3) .. src - 4 * i.
        __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src - 4 * (i + 3)));
        s = _mm_shuffle_epi32(s, _MM_SHUFFLE(0, 1, 2, 3));
        if constexpr (Transparent)
        {
            const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + 4 * i));
            const __m128i isKey = _mm_cmpeq_epi32(_mm_and_si128(s, mask), k);
            s = _mm_or_si128(_mm_and_si128(isKey, d), _mm_andnot_si128(isKey, s));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * i), s);
    }
    RowScalar<4, Transparent, true, false>(dst + 4 * i, src - 4 * i, n - i, key);
}

#define QOR_AVX2 __attribute__((target("avx2")))

QOR_AVX2 void Keyed8Avx2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m256i k = _mm256_set1_epi8(static_cast<char>(key));
    long i = 0;
    for (; i + 32 <= n; i += 32)
    {
        const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
        const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), _mm256_blendv_epi8(s, d, _mm256_cmpeq_epi8(s, k)));
    }
    Keyed8Sse2(dst + i, src + i, n - i, key);
}

QOR_AVX2 void Keyed32Avx2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m256i k = _mm256_set1_epi32(static_cast<int>(key));
    const __m256i mask = _mm256_set1_epi32(static_cast<int>(LoadPixel<4>(kKeyMaskBytes)));
    long i = 0;
    for (; i + 8 <= n; i += 8)
    {
        const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 4 * i));
        const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + 4 * i));
        const __m256i isKey = _mm256_cmpeq_epi32(_mm256_and_si256(s, mask), k);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * i), _mm256_blendv_epi8(s, d, isKey));
    }
    Keyed32Sse2(dst + 4 * i, src + 4 * i, n - i, key);
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

QOR_AVX2 inline __m256i LoadMask(const Masks24& m)
{
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(m.bytes));
}

// Eight 3-byte pixels per step: each lane widens four pixels to 32-bit words, compares them with the key
// and narrows the result back to a byte mask; the lanes are then packed into 24 contiguous bytes and stored
// without overlap, so the next step's loads never wait on a store. d0 is the first of the eight
// destination pixels; s0 is the lowest address of the eight source pixels (for Mirror, the last of them).
// The shifts choose on which side of the 24 bytes each load takes its 4 spare bytes, so that no step reads
// past either end of a row.
template <bool Mirror, int SrcShift, int DstShift>
QOR_AVX2 inline void Keyed24Step(unsigned char* d0, const unsigned char* s0, __m256i k)
{
    static constexpr Masks24 kWiden = Widen24(DstShift);
    static constexpr Masks24 kNarrow = Narrow24(DstShift);
    static constexpr Masks24 kReverse = Reverse24(SrcShift, DstShift);
    const __m256i pack =
        DstShift == 0 ? _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6) : _mm256_setr_epi32(1, 2, 3, 5, 6, 7, 7, 7);
    // Read backwards, the first four pixels written are the upper twelve source bytes.
    const __m128i* low = reinterpret_cast<const __m128i*>(s0 + (Mirror ? 12 : 0) - SrcShift);
    const __m128i* high = reinterpret_cast<const __m128i*>(s0 + (Mirror ? 0 : 12) - SrcShift);
    __m256i s = _mm256_loadu2_m128i(high, low);
    if constexpr (Mirror)
        s = _mm256_shuffle_epi8(s, LoadMask(kReverse));
    const __m256i d = _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(d0 + 12 - DstShift),
                                          reinterpret_cast<const __m128i*>(d0 - DstShift));
    const __m256i isKey =
        _mm256_shuffle_epi8(_mm256_cmpeq_epi32(_mm256_shuffle_epi8(s, LoadMask(kWiden)), k), LoadMask(kNarrow));
    const __m256i r = _mm256_permutevar8x32_epi32(_mm256_blendv_epi8(s, d, isKey), pack);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d0), _mm256_castsi256_si128(r));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d0 + 16), _mm256_extracti128_si256(r, 1));
}

// Pixels done twice by the last step come out the same: a key pixel keeps dst, any other is src again.
template <bool Mirror>
QOR_AVX2 void Keyed24Avx2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    if (n < 10)
    {
        RowScalar<3, true, Mirror, false>(dst, src, n, key);
        return;
    }
    const __m256i k = _mm256_set1_epi32(static_cast<int>(key));
    long i = 0;
    // Ten pixels must remain: a step reads 4 bytes beyond its eight pixels on one side.
    for (; i + 10 <= n; i += 8)
    {
        if constexpr (Mirror)
            Keyed24Step<true, 4, 0>(dst + 3 * i, src - 3 * (i + 7), k);
        else
            Keyed24Step<false, 0, 0>(dst + 3 * i, src + 3 * i, k);
    }
    if (i < n)
    {
        if constexpr (Mirror)
            Keyed24Step<true, 0, 4>(dst + 3 * (n - 8), src - 3 * (n - 1), k);
        else
            Keyed24Step<false, 4, 4>(dst + 3 * (n - 8), src + 3 * (n - 8), k);
    }
}

template <bool Transparent>
QOR_AVX2 void Mirror8Avx2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m256i reverse = _mm256_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, //
                                             15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    const __m256i k = _mm256_set1_epi8(static_cast<char>(key));
    long i = 0;
    for (; i + 32 <= n; i += 32)
    {
        __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src - (i + 31)));
        s = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(s, reverse), _MM_SHUFFLE(1, 0, 3, 2));
        if constexpr (Transparent)
        {
            const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + i));
            s = _mm256_blendv_epi8(s, d, _mm256_cmpeq_epi8(s, k));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), s);
    }
    RowScalar<1, Transparent, true, false>(dst + i, src - i, n - i, key);
}

template <bool Transparent>
QOR_AVX2 void Mirror32Avx2(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    const __m256i reverse = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    const __m256i k = _mm256_set1_epi32(static_cast<int>(key));
    const __m256i mask = _mm256_set1_epi32(static_cast<int>(LoadPixel<4>(kKeyMaskBytes)));
    long i = 0;
    for (; i + 8 <= n; i += 8)
    {
        __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src - 4 * (i + 7)));
        s = _mm256_permutevar8x32_epi32(s, reverse);
        if constexpr (Transparent)
        {
            const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + 4 * i));
            s = _mm256_blendv_epi8(s, d, _mm256_cmpeq_epi32(_mm256_and_si256(s, mask), k));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * i), s);
    }
    Mirror32Sse2<Transparent>(dst + 4 * i, src - 4 * i, n - i, key);
}

// Stores a 96-byte pattern (a whole number of pixels at every depth) over and over, with aligned stores:
// the bytes before the first 32-byte boundary are written one by one and the pattern starts from there.
QOR_AVX2 void FillAvx2(unsigned char* dst, std::size_t total, const unsigned char* colour, std::size_t bpp)
{
    const std::size_t head = std::min<std::size_t>(total, (32 - (reinterpret_cast<std::uintptr_t>(dst) & 31)) & 31);
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
    std::memcpy(dst + i, pattern, total - i);
}
#endif

// Index: [bytes per pixel - 1][transparent][mirrorX][subtract].
using KernelTable = PasteRowKernel[4][2][2][2];

template <int Bpp>
void FillScalar(KernelTable& table)
{
    auto& t = table[Bpp - 1];
    t[0][0][0] = RowScalar<Bpp, false, false, false>;
    t[0][0][1] = RowScalar<Bpp, false, false, true>;
    t[0][1][0] = RowScalar<Bpp, false, true, false>;
    t[0][1][1] = RowScalar<Bpp, false, true, true>;
    t[1][0][0] = RowScalar<Bpp, true, false, false>;
    t[1][0][1] = RowScalar<Bpp, true, false, true>;
    t[1][1][0] = RowScalar<Bpp, true, true, false>;
    t[1][1][1] = RowScalar<Bpp, true, true, true>;
}

// Subtract only changes 16-bit pastes, so the vector kernels fill both subtract slots elsewhere.
void SetBoth(PasteRowKernel (&slots)[2], PasteRowKernel kernel)
{
    slots[0] = slots[1] = kernel;
}

struct Tables
{
    KernelTable byLevel[3];

    Tables()
    {
        for (KernelTable& table : byLevel)
        {
            FillScalar<1>(table);
            FillScalar<2>(table);
            FillScalar<3>(table);
            FillScalar<4>(table);
        }
#ifdef QOR_X86
        for (int level = 1; level <= 2; ++level)
        {
            KernelTable& t = byLevel[level];
            SetBoth(t[0][1][0], Keyed8Sse2);
            t[1][1][0][0] = Keyed16Sse2;
            SetBoth(t[3][1][0], Keyed32Sse2);
            SetBoth(t[3][0][1], Mirror32Sse2<false>);
            SetBoth(t[3][1][1], Mirror32Sse2<true>);
        }
        KernelTable& t = byLevel[2];
        SetBoth(t[0][1][0], Keyed8Avx2);
        SetBoth(t[0][0][1], Mirror8Avx2<false>);
        SetBoth(t[0][1][1], Mirror8Avx2<true>);
        SetBoth(t[2][1][0], Keyed24Avx2<false>);
        SetBoth(t[2][1][1], Keyed24Avx2<true>);
        SetBoth(t[3][1][0], Keyed32Avx2);
        SetBoth(t[3][0][1], Mirror32Avx2<false>);
        SetBoth(t[3][1][1], Mirror32Avx2<true>);
#endif
    }
};

const Tables& GetTables()
{
    static const Tables tables;
    return tables;
}

SimdLevel DetectLevel()
{
#ifdef QOR_X86
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2"))
        return SimdLevel::kAvx2;
    return SimdLevel::kSse2;
#else
    return SimdLevel::kScalar;
#endif
}

SimdLevel& CurrentLevel()
{
    static SimdLevel level = GetBestSimdLevel();
    return level;
}
} // namespace

SimdLevel GetBestSimdLevel()
{
    static const SimdLevel best = DetectLevel();
    return best;
}

SimdLevel GetSimdLevel()
{
    return CurrentLevel();
}

SimdLevel SetSimdLevel(SimdLevel level)
{
    CurrentLevel() = std::min(level, GetBestSimdLevel());
    return CurrentLevel();
}

PasteRowKernel GetPasteRowKernel(int bytesPerPixel, bool transparent, bool mirrorX, bool subtract)
{
    if (bytesPerPixel < 1 || bytesPerPixel > 4)
        return nullptr;
    const int level = static_cast<int>(CurrentLevel());
    return GetTables().byLevel[level][bytesPerPixel - 1][transparent][mirrorX][subtract];
}

std::uint32_t PackKey(const unsigned char* key, int bytesPerPixel)
{
    if (!key)
        return 0;
    switch (bytesPerPixel)
    {
    case 1:
        return LoadPixel<1>(key);
    case 2:
        return LoadPixel<2>(key);
    case 3:
        return LoadPixel<3>(key);
    case 4:
        return LoadPixel<4>(key) & GetKeyMask(4);
    }
    return 0;
}

std::uint32_t GetKeyMask(int bytesPerPixel)
{
    return bytesPerPixel == 4 ? LoadPixel<4>(kKeyMaskBytes) : ~0u;
}

void FillPixels(unsigned char* dst, long n, const unsigned char* colour, int bytesPerPixel)
{
    if (n <= 0)
        return;
    const std::size_t bpp = static_cast<std::size_t>(bytesPerPixel);
    const std::size_t total = std::size_t(n) * bpp;
    if (std::all_of(colour + 1, colour + bpp, [&](unsigned char b) { return b == colour[0]; }))
    {
        std::memset(dst, colour[0], total);
        return;
    }
#ifdef QOR_X86
    if (CurrentLevel() == SimdLevel::kAvx2 && total >= 128)
    {
        FillAvx2(dst, total, colour, bpp);
        return;
    }
#endif
    // Lay down one pixel, then keep doubling the filled prefix: large fills run at copy speed.
    std::memcpy(dst, colour, bpp);
    for (std::size_t done = bpp; done < total;)
    {
        const std::size_t chunk = std::min(done, total - done);
        std::memcpy(dst + done, dst, chunk);
        done += chunk;
    }
}
} // namespace qor::detail
