#pragma once

// Row kernels of the paste: one per depth and flag combination, chosen once per paste. A row kernel
// writes n destination pixels from dst onwards; it reads source pixels from src onwards, or, for the
// mirrored kernels, from src backwards (pixel k at src - k * bytes per pixel). Bounds are the caller's.

#include "PasteKernelLevels.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace qor::detail
{
/// The implementation level of the row kernels: the portable scalar loops, SSE2 or AVX2.
enum class SimdLevel
{
    kScalar = 0,
    kSse2 = 1,
    kAvx2 = 2,
};

/// The best level this CPU runs.
SimdLevel GetBestSimdLevel();
/// The level pastes use (the best one unless a test forced another).
SimdLevel GetSimdLevel();
/// Forces a level for pastes (clamped to what the CPU runs); returns the level now in use.
SimdLevel SetSimdLevel(SimdLevel level);

/// The row kernel for bytesPerPixel (1 to 4) and the flags; subtract only matters at 2 bytes.
PasteRowKernel GetPasteRowKernel(int bytesPerPixel, bool transparent, bool mirrorX, bool subtract);
/// The same kernel over a block of rows.
PasteBlockKernel GetPasteBlockKernel(int bytesPerPixel, bool transparent, bool mirrorX, bool subtract);

/// The key bytes (bytesPerPixel of them) packed as a pixel is loaded, with the fourth byte of a 32-bit key
/// masked off: rows compare (pixel & GetKeyMask(4)) against it.
std::uint32_t PackKey(const unsigned char* key, int bytesPerPixel);
std::uint32_t GetKeyMask(int bytesPerPixel);

/// Orders the corners (x1 <= x2, y1 <= y2), raises x1 and y1 to 0 and lowers x2 to maxX and y2 to maxY.
inline void OrderAndClip(long& x1, long& y1, long& x2, long& y2, long maxX, long maxY)
{
    if (x1 > x2)
        std::swap(x1, x2);
    if (y1 > y2)
        std::swap(y1, y2);
    x1 = std::max(x1, 0L);
    y1 = std::max(y1, 0L);
    x2 = std::min(x2, maxX);
    y2 = std::min(y2, maxY);
}

/// Fills n pixels of bytesPerPixel bytes at dst with colour.
void FillPixels(unsigned char* dst, long n, const unsigned char* colour, int bytesPerPixel);
} // namespace qor::detail
