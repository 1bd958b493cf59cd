#pragma once

// The portable row loops: the scalar level, the tails of the vector kernels and the reference they must match
// byte for byte. Internal linkage on purpose: every kernel unit compiles its own copy for its own instruction
// set, so a vector kernel's tail stays at its level and no copy built for AVX2 is shared with other units.
// Only the C library and these templates may be used here (no std:: inline functions, which would be shared).

#include "PasteKernelLevels.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

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

// The fourth byte of a 32-bit pixel is not compared: a 32-bit key matches on colour only.
inline std::uint32_t KeyMask32()
{
    static const unsigned char kBytes[4] = {0xFF, 0xFF, 0xFF, 0x00};
    return LoadPixel<4>(kBytes);
}

template <int Bpp, bool Transparent, bool MirrorX, bool Subtract>
inline void RowScalar(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    constexpr bool kSubtract = Subtract && Bpp == 2;
    if constexpr (!Transparent && !MirrorX && !kSubtract)
    {
        std::memcpy(dst, src, std::size_t(n) * Bpp);
    }
    else
    {
        const std::uint32_t mask = Bpp == 4 ? KeyMask32() : ~0u;
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

// A row kernel over a block of rows; Leave runs once at the end (the AVX2 unit clears the upper YMM halves).
inline void NothingToLeave() {}

template <PasteRowKernel Kernel, void (*Leave)() = NothingToLeave>
void BlockOf(unsigned char* dst, std::ptrdiff_t dstPitch, const unsigned char* src, std::ptrdiff_t srcPitch, long n,
             long rows, std::uint32_t key)
{
    for (long r = 0; r < rows; ++r, dst += dstPitch, src += srcPitch)
        Kernel(dst, src, n, key);
    Leave();
}

template <PasteRowKernel Kernel, void (*Leave)() = NothingToLeave>
void RowOf(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key)
{
    Kernel(dst, src, n, key);
    Leave();
}

template <PasteRowKernel Kernel, void (*Leave)() = NothingToLeave>
constexpr KernelSlot SlotOf()
{
    return KernelSlot{RowOf<Kernel, Leave>, BlockOf<Kernel, Leave>};
}

// Subtract only changes 16-bit pastes: vector kernels of other depths fill both subtract slots.
inline void SetBoth(KernelSlot (&slots)[2], KernelSlot slot)
{
    slots[0] = slots[1] = slot;
}

// Runs step(i) over the n pixels in blocks of W, the last block moved back so that it ends at n. Pixels done
// twice by it come out the same: a key pixel keeps dst, any other is src again. Needs n >= W and source and
// destination apart (a paste into itself reads a copy).
template <long W, class Step>
inline void Overlapped(long n, Step step)
{
    long i = 0;
    for (; i + W <= n; i += W)
        step(i);
    if (i < n)
        step(n - W);
}
} // namespace
} // namespace qor::detail
