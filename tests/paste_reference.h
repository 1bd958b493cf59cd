#pragma once

// The obvious per-pixel paste: the formulas written out with no fast path, used to check the kernels.
#include "qor/pictures.h"

#include <algorithm>
#include <cstring>

namespace qortest
{
// Fits the rectangles the way the clip flag does, one axis at a time.
inline void ReferenceAdjust(long& d, long& s1, long& s2, long size, long srcSize, bool mirror)
{
    if (s1 > s2)
        std::swap(s1, s2);
    s1 = std::max(s1, 0L);
    s2 = std::min(s2, srcSize - 1);
    const bool overhang = d - s1 + s2 > size;
    if (!mirror)
    {
        const long newS2 = overhang ? size - d - 1 : s2;
        if (d < 0)
            s1 = -d;
        s2 = newS2;
    }
    else
    {
        const long t = overhang ? d - size + s2 : s1;
        if (d < 0)
            s2 += d;
        s1 = srcSize - s2;
        s2 = srcSize - t;
    }
}

inline bool ReferencePaste(QorPicBlock& dst, const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2,
                           long sy2, bool transparent, bool mirrorX, bool mirrorY, bool clip, bool subtract)
{
    if (dst.GetColorType() != src.GetColorType())
        return false;
    if (clip)
    {
        ReferenceAdjust(dx, sx1, sx2, dst.GetWidth(), src.GetWidth(), mirrorX);
        ReferenceAdjust(dy, sy1, sy2, dst.GetHeight(), src.GetHeight(), mirrorY);
        dx = std::max(dx, 0L);
        dy = std::max(dy, 0L);
    }
    const long bpp = dst.GetBytesPerPixel();
    const bool sixteen = bpp == 2;
    const long srcBytes = long(src.GetSize());
    const unsigned char* key = src.GetMask();
    for (long r = 0; r <= sy2 - sy1; ++r)
    {
        for (long c = 0; c <= sx2 - sx1; ++c)
        {
            const long row = mirrorY ? (sixteen ? sy2 - 1 - r : sy2 - r) : sy1 + r;
            const long col = mirrorX ? (sixteen ? sx2 - 1 - c : sx1 - c) : sx1 + c;
            const long x = dx + c, y = dy + r;
            if (x < 0 || y < 0 || x >= dst.GetWidth() || y >= dst.GetHeight())
                continue;
            const long offset = (row * src.GetWidth() + col) * bpp;
            if (offset < 0 || offset + bpp > srcBytes)
                continue;
            const unsigned char* s = src.GetDataPtr() + offset;
            unsigned char* d = dst.GetPixel(x, y);
            const long compared = bpp == 4 ? 3 : bpp;
            if (transparent && std::memcmp(s, key, std::size_t(compared)) == 0)
                continue;
            if (subtract && sixteen)
            {
                d[0] = static_cast<unsigned char>(d[0] & ~s[0]);
                d[1] = static_cast<unsigned char>(d[1] & ~s[1] & 0x7F);
            }
            else
            {
                std::memcpy(d, s, std::size_t(bpp));
            }
        }
    }
    return true;
}
} // namespace qortest
