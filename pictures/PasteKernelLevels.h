#pragma once

// What the kernel units of each instruction set hand to the dispatcher. Each vector unit is compiled for its
// own level and keeps every path of its kernels at that level, tails included: an AVX2 kernel never runs
// legacy-encoded SSE code with the upper halves of the YMM registers dirty (Intel cores charge a transition
// penalty for it), and every AVX2 entry point clears the upper halves before it returns.

#include <cstddef>
#include <cstdint>

namespace qor::detail
{
using PasteRowKernel = void (*)(unsigned char* dst, const unsigned char* src, long n, std::uint32_t key);
/// The row kernel run over rows rows, the pointers stepping by their pitches: one call per paste, so the
/// set-up of a kernel (key and constants in registers) is paid once, not once a row.
using PasteBlockKernel = void (*)(unsigned char* dst, std::ptrdiff_t dstPitch, const unsigned char* src,
                                  std::ptrdiff_t srcPitch, long n, long rows, std::uint32_t key);

struct KernelSlot
{
    PasteRowKernel row;
    PasteBlockKernel block;
};

// Index: [bytes per pixel - 1][transparent][mirrorX][subtract].
using KernelTable = KernelSlot[4][2][2][2];

/// Puts the SSE2 kernels into a table already holding the scalar ones.
void SetSse2Kernels(KernelTable& table);
/// Puts the AVX2 kernels into a table already holding the scalar ones.
void SetAvx2Kernels(KernelTable& table);
/// Writes total bytes of the repeated bpp-byte colour at dst with 32-byte stores; total >= 1.
void FillAvx2(unsigned char* dst, std::size_t total, const unsigned char* colour, std::size_t bpp);
} // namespace qor::detail
