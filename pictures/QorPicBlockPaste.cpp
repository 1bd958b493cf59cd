#include "QorPicBlock.h"
#include "PasteKernels.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

namespace
{
using Wide = __int128;

long Saturate(Wide v)
{
    return static_cast<long>(std::clamp<Wide>(v, LONG_MIN, LONG_MAX));
}

// The clip adjustment of one axis. The source rectangle is treated as if it began at 0 and the tests
// are strict; both decide which pixels of partly visible sprites are drawn, so they stay as they are.
void AdjustAxis(long& d, long& s1, long& s2, long size, long srcSize, bool mirror)
{
    if (s1 > s2)
        std::swap(s1, s2);
    s1 = std::max(s1, 0L);
    s2 = std::min(s2, srcSize - 1);
    const Wide dw = d, s1w = s1, s2w = s2;
    const bool overhang = dw - s1w + s2w > size;
    if (!mirror)
    {
        const Wide newS2 = overhang ? size - dw - 1 : s2w;
        if (d < 0)
            s1 = Saturate(-dw);
        s2 = Saturate(newS2);
    }
    else
    {
        const Wide t = overhang ? dw - size + s2w : s1w;
        Wide m2 = s2w;
        if (d < 0)
            m2 += dw;
        s1 = Saturate(srcSize - m2);
        s2 = Saturate(srcSize - t);
    }
}
} // namespace

char QorPicBlock::IsValidPaste(const QorPicBlock& src) const
{
    return src.m_colorType == m_colorType && m_colorType >= Bit8 && m_colorType <= Bit32;
}

char QorPicBlock::AutoFitInRegion(long& x1, long& y1, long& x2, long& y2) const
{
    const long ox1 = x1, oy1 = y1, ox2 = x2, oy2 = y2;
    qor::detail::OrderAndClip(x1, y1, x2, y2, long(m_width) - 1, long(m_height) - 1);
    return x1 != ox1 || y1 != oy1 || x2 != ox2 || y2 != oy2;
}

char QorPicBlock::AutoAlterCoordinate(const QorPicBlock& src, long& dx, long& dy, long& sx1, long& sy1, long& sx2,
                                      long& sy2, char mirrorX, char mirrorY) const
{
    AdjustAxis(dx, sx1, sx2, m_width, src.m_width, mirrorX);
    AdjustAxis(dy, sy1, sy2, m_height, src.m_height, mirrorY);
    dx = std::max(dx, 0L);
    dy = std::max(dy, 0L);
    return 0;
}

char QorPicBlock::Paste(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                        char transparent, char mirrorX, char mirrorY, char clip, char subtract)
{
    if (!IsValidPaste(src))
        return 0;
    if (clip)
        AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, mirrorX, mirrorY);
    if (m_bitsPerPixel != src.m_bitsPerPixel)
        return 0;
    switch (m_bitsPerPixel)
    {
    case 8:
        return Paste0808(src, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, clip, subtract);
    case 16:
        return Paste1616(src, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, clip, subtract);
    case 24:
        return Paste2424(src, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, clip, subtract);
    case 32:
        return Paste3232(src, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, clip, subtract);
    }
    return 0;
}

char QorPicBlock::Paste(const QorPicBlock& src, long dx, long dy, char transparent, char mirrorX, char mirrorY,
                        char clip, char subtract)
{
    return Paste(src, dx, dy, 0, 0, src.m_width - 1, src.m_height - 1, transparent, mirrorX, mirrorY, clip,
                 subtract);
}

char QorPicBlock::Paste(const QorPicBlock& src, Point<long> dest, Point<long> srcTopLeft, Point<long> srcBottomRight,
                        char transparent, char mirrorX, char mirrorY, char clip, char subtract)
{
    return Paste(src, dest.x, dest.y, srcTopLeft.x, srcTopLeft.y, srcBottomRight.x, srcBottomRight.y, transparent,
                 mirrorX, mirrorY, clip, subtract);
}

// Runs the row kernel over every row of the paste. Pixel (c, r) of the rectangle goes to (dx + c, dy + r)
// and comes from source row sy1 + r (mirrorY: lastRow - r) and column sx1 + c (mirrorX: firstColumn - c).
// Per row, the columns whose destination lies in this picture and whose source lies in src's pixels form
// one interval; only that interval is handed to the kernel, so no pixel loop tests bounds or flags.
char QorPicBlock::PasteRows(const QorPicBlock& src, int bpp, long dx, long dy, long sx1, long sy1, long sx2,
                            long sy2, char transparent, char mirrorX, char mirrorY, char subtract)
{
    if (m_bytesPerPixel != bpp || src.m_bytesPerPixel != bpp)
        return 0;
    if (sy1 > sy2 || !m_data || !src.m_data)
        return 1;
    if (&src == this)
    {
        // Pasting a picture into itself reads the picture as it was before the paste.
        const QorPicBlock before(src);
        return PasteRows(before, bpp, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, subtract);
    }
    const bool sixteen = bpp == 2;
    const long srcWidth = src.m_width;
    const long srcRows = src.GetUsableRows();
    const Wide srcPixels = Wide(srcWidth) * srcRows;
    // Rows and columns of the rectangle whose destination lies in this picture: at most its size.
    const Wide rowLo = std::max<Wide>(0, -Wide(dy));
    const Wide rowHi = std::min<Wide>(Wide(sy2) - sy1, Wide(GetUsableRows()) - 1 - dy);
    const Wide colLo = std::max<Wide>(0, -Wide(dx));
    const Wide colHi = std::min<Wide>(Wide(sx2) - sx1, Wide(m_width) - 1 - dx);
    if (rowLo > rowHi || colLo > colHi || srcPixels == 0)
        return 1;

    const Wide lastRow = sixteen ? Wide(sy2) - 1 : Wide(sy2);
    const Wide firstColumn = mirrorX ? (sixteen ? Wide(sx2) - 1 : Wide(sx1)) : Wide(sx1);
    const long step = mirrorX ? -1 : 1;
    // When the interval's source columns all lie in a source row, every row whose source row exists takes
    // the whole interval; other rows need the wrap-around bounds worked out.
    const Wide colA = firstColumn + step * colLo, colB = firstColumn + step * colHi;
    const bool columnsInside = std::min(colA, colB) >= 0 && std::max(colA, colB) < srcWidth;

    const qor::detail::PasteRowKernel kernel =
        qor::detail::GetPasteRowKernel(bpp, transparent != 0, mirrorX != 0, subtract != 0);
    const std::uint32_t key = qor::detail::PackKey(src.m_mask, bpp);
    const long first = static_cast<long>(rowLo), last = static_cast<long>(rowHi);
    const long n = static_cast<long>(colHi - colLo + 1);
    const std::size_t dstPitch = std::size_t(m_width) * bpp;
    unsigned char* const d0 = m_data + static_cast<std::size_t>((Wide(dy) + first) * m_width + dx + colLo) * bpp;

    // Rows whose source row exists in src: with the columns inside, they take the whole interval and
    // the source pointer simply steps a row up or down.
    Wide fastLo = last + 1, fastHi = last;
    if (columnsInside)
    {
        fastLo = mirrorY ? lastRow - (srcRows - 1) : -Wide(sy1);
        fastHi = mirrorY ? lastRow : Wide(srcRows) - 1 - sy1;
        fastLo = std::max<Wide>(fastLo, first);
        fastHi = std::min<Wide>(fastHi, last);
    }
    if (fastLo <= fastHi)
    {
        const long from = static_cast<long>(fastLo), to = static_cast<long>(fastHi);
        const Wide srcRow = mirrorY ? lastRow - from : Wide(sy1) + from;
        const unsigned char* s = src.m_data + static_cast<std::size_t>(srcRow * srcWidth + colA) * bpp;
        const std::ptrdiff_t srcStep = (mirrorY ? -1 : 1) * std::ptrdiff_t(srcWidth) * bpp;
        unsigned char* d = d0 + std::size_t(from - first) * dstPitch;
        const std::size_t rowBytes = std::size_t(n) * bpp;
        if (!transparent && !mirrorX && !(sixteen && subtract))
        {
            for (long r = from; r <= to; ++r, d += dstPitch, s += srcStep)
                std::memcpy(d, s, rowBytes);
        }
        else
        {
            qor::detail::GetPasteBlockKernel(bpp, transparent != 0, mirrorX != 0, subtract != 0)(
                d, std::ptrdiff_t(dstPitch), s, srcStep, n, to - from + 1, key);
        }
    }

    // The remaining rows: each row's columns are cut to those whose source index lies in src's pixels
    // (a mirrored paste can address pixels before a row's start, which belong to the row above).
    const auto pasteClippedRows = [&](long from, long to) {
        for (long r = from; r <= to; ++r)
        {
            const Wide srcRow = mirrorY ? lastRow - r : Wide(sy1) + r;
            const Wide base = srcRow * srcWidth + firstColumn; // source pixel index of column 0
            Wide lo = colLo, hi = colHi;
            if (step > 0)
            {
                lo = std::max(lo, -base);
                hi = std::min(hi, srcPixels - 1 - base);
            }
            else
            {
                lo = std::max(lo, base - (srcPixels - 1));
                hi = std::min(hi, base);
            }
            if (lo <= hi)
                kernel(d0 + std::size_t(r - first) * dstPitch + static_cast<std::size_t>(lo - colLo) * bpp,
                       src.m_data + static_cast<std::size_t>(base + step * lo) * bpp,
                       static_cast<long>(hi - lo + 1), key);
        }
    };
    if (fastLo <= fastHi)
    {
        pasteClippedRows(first, static_cast<long>(fastLo) - 1);
        pasteClippedRows(static_cast<long>(fastHi) + 1, last);
    }
    else
    {
        pasteClippedRows(first, last);
    }
    return 1;
}

char QorPicBlock::Paste0808(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                            char transparent, char mirrorX, char mirrorY, char, char)
{
    return PasteRows(src, 1, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, 0);
}

char QorPicBlock::Paste1616(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                            char transparent, char mirrorX, char mirrorY, char, char subtract)
{
    return PasteRows(src, 2, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, subtract);
}

char QorPicBlock::Paste2424(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                            char transparent, char mirrorX, char mirrorY, char, char)
{
    return PasteRows(src, 3, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, 0);
}

char QorPicBlock::Paste3232(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                            char transparent, char mirrorX, char mirrorY, char, char)
{
    return PasteRows(src, 4, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, 0);
}
