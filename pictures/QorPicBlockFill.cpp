#include "QorPicBlock.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace
{
using Wide = __int128;

// Bytes one pixel occupies, 0 for a depth no operation here handles.
std::size_t PixelBytes(unsigned short bitsPerPixel)
{
    switch (bitsPerPixel)
    {
    case 8:
        return 1;
    case 16:
        return 2;
    case 24:
        return 3;
    case 32:
        return 4;
    }
    return 0;
}

// min(value, limit) for a limit >= 0, and 0 when value is negative.
long ClampCount(Wide value, long limit)
{
    return static_cast<long>(std::clamp<Wide>(value, 0, limit));
}
} // namespace

void QorPicBlock::FloodFill(long x, long y, const unsigned char* colour, Cycle<long>* filled)
{
    const long width = m_width;
    const long rows = GetUsableRows();
    const std::size_t bpp = m_bytesPerPixel;
    if (!colour || !m_data || bpp < 1 || bpp > 4 || x < 0 || y < 0 || x >= width || y >= rows)
        return;
    // Both colours are kept aside: colour may point into this picture's own pixels.
    unsigned char seed[4] = {};
    unsigned char paint[4] = {};
    std::memcpy(seed, GetPixel(x, y), bpp);
    std::memcpy(paint, colour, bpp);
    if (std::memcmp(seed, paint, bpp) == 0)
        return;

    // The work list is a stack of pixel indices (width * y + x; the byte offset is index * bpp): Insert puts
    // an entry before the current one and makes it current, Remove then makes the entry below current.
    // Entries are not marked, so a pixel may be pushed once by each of its four neighbours; a pixel taken
    // again finds its neighbours already painted and pushes nothing, so the list never exceeds 4 entries per
    // pixel plus the seed. A push that cannot be allocated ends the fill.
    Cycle<long> work;
    if (work.Insert(width * y + x) == 0)
        return;
    const auto matchesSeed = [&](long index) { return std::memcmp(m_data + index * bpp, seed, bpp) == 0; };
    while (work.GetSize() > 0)
    {
        const long index = *work.GetInfo();
        work.Remove();
        const long px = index % width;
        const long py = index / width;
        // Left, up, right, down: the last one pushed is the next one taken.
        const long neighbours[4][3] = {
            {px - 1, py, index - 1}, {px, py - 1, index - width}, {px + 1, py, index + 1}, {px, py + 1, index + width}};
        for (const auto& n : neighbours)
        {
            if (n[0] < 0 || n[1] < 0 || n[0] >= width || n[1] >= rows || !matchesSeed(n[2]))
                continue;
            const unsigned long before = work.GetSize();
            if (work.Insert(n[2]) == before)
                return;
        }
        const long offset = index * static_cast<long>(bpp);
        // Listed before it is painted: a list that refuses the entry ends the fill, so that every painted
        // pixel is listed (the pattern fill repaints exactly the listed pixels).
        if (filled)
        {
            const unsigned long before = filled->GetSize();
            if (filled->Add(offset) == before)
                return;
        }
        std::memcpy(m_data + offset, paint, bpp);
    }
}

void QorPicBlock::FloodFill(long x, long y, const QorPicBlock& pattern)
{
    const std::size_t bpp = m_bytesPerPixel;
    if (!m_data || bpp < 1 || bpp > 4 || x < 0 || y < 0 || x >= m_width || y >= GetUsableRows())
        return;
    if (pattern.m_colorType != m_colorType || pattern.m_width < 1 || pattern.m_height < 1 || !pattern.m_data)
        return;
    // Allocated before the region is marked, so that a failed allocation leaves the picture as it was.
    QorPicBlock tiles(m_colorType, m_width, m_height);
    if (!tiles.m_data || tiles.m_width != m_width || tiles.GetUsableRows() < GetUsableRows())
        return;

    // The marker only has to differ from the seed: its first byte is one more (one less for 255).
    const unsigned char* seed = GetPixel(x, y);
    unsigned char marker[4] = {};
    marker[0] = seed[0] == 255 ? 254 : static_cast<unsigned char>(seed[0] + 1);
    Cycle<long> offsets;
    FloodFill(x, y, marker, &offsets);

    // Tiled after marking: a picture that is its own pattern tiles its marked pixels.
    tiles.Fill(pattern);
    offsets.GotoAddress(Cycle<long>::kHead);
    for (unsigned long i = 0; i < offsets.GetSize(); ++i, offsets.Next())
    {
        const long offset = *offsets.GetInfo();
        std::memcpy(m_data + offset, tiles.m_data + offset, bpp);
    }
}

void QorPicBlock::SetMosiac(const QorPicBlock& src, long bw, long bh)
{
    SetMosiac(src, bw, bh, 0, 0, long(m_width) - 1, long(m_height) - 1);
}

void QorPicBlock::SetMosiac(const QorPicBlock& src, long bw, long bh, const QorRect& rect)
{
    SetMosiac(src, bw, bh, rect.left, rect.top, rect.right, rect.bottom);
}

void QorPicBlock::SetMosiac(const QorPicBlock& src, long bw, long bh, long x1, long y1, long x2, long y2)
{
    if (&src == this)
    {
        // Samples the picture as it was, never pixels the mosaic has already written.
        const QorPicBlock before(src);
        SetMosiac(before, bw, bh, x1, y1, x2, y2);
        return;
    }
    if (!IsValidPaste(src))
        return;
    const long x0 = std::max(std::min(x1, x2), 0L);
    const long y0 = std::max(std::min(y1, y2), 0L);
    if (bw < 1 || bh < 1)
        return;
    if (bw == 1 && bh == 1)
    {
        // One-pixel blocks are the source itself; the rectangle only gives the position.
        Paste(src, x0, y0, 1, 0, 0, 1, 0);
        return;
    }
    if (!m_data || !src.m_data)
        return;
    // The rectangle is as wide as the caller's corners say (reversed corners give nothing) and no wider than
    // the source; only the part inside this picture is written.
    const long columns = ClampCount(std::min<Wide>(Wide(x2) - x1 + 1, Wide(m_width) - x0), src.m_width);
    const long rows = ClampCount(std::min<Wide>(Wide(y2) - y1 + 1, Wide(GetUsableRows()) - y0), src.m_height);
    const long srcRows = src.GetUsableRows();
    const std::size_t bpp = m_bytesPerPixel;
    for (long r = 0; r < rows; ++r)
    {
        // Every block takes its top-left pixel, counted from the source's own origin.
        const long sy = r - r % bh;
        if (sy >= srcRows)
            break;
        unsigned char* dst = GetPixel(x0, y0 + r);
        const unsigned char* srcRow = src.GetPixel(0, sy);
        for (long c = 0; c < columns; ++c, dst += bpp)
            std::memcpy(dst, srcRow + (c - c % bw) * bpp, bpp);
    }
}

unsigned long QorPicBlock::GenerateRandomPasteArray(Point<long>** pairs, const QorPicBlock& src, long dx, long dy,
                                                    long sx1, long sy1, long sx2, long sy2, char opaqueOnly)
{
    if (!pairs)
        return 0;
    *pairs = nullptr;
    if (m_bitsPerPixel != src.m_bitsPerPixel)
        return 0;
    const std::size_t bpp = PixelBytes(m_bitsPerPixel);
    if (bpp == 0 || bpp != m_bytesPerPixel || bpp != src.m_bytesPerPixel || !m_data || !src.m_data)
        return 0;
    // Orders and clips the source rectangle to the source, then fits it to this picture as the unmirrored
    // paste does and raises dx and dy to 0.
    AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 0, 0);
    // The paste's strict overhang test can leave a column or row past this picture's edge: such pixels are
    // left out, as the paste skips them.
    const long columns =
        ClampCount(std::min({Wide(sx2) - sx1 + 1, Wide(m_width) - dx, Wide(src.m_width) - sx1}), m_width);
    const long rows = ClampCount(
        std::min({Wide(sy2) - sy1 + 1, Wide(GetUsableRows()) - dy, Wide(src.GetUsableRows()) - sy1}), GetUsableRows());
    if (columns == 0 || rows == 0)
        return 0;

    unsigned char key[4] = {};
    if (src.m_mask)
        std::memcpy(key, src.m_mask, bpp);
    // All the pixel's bytes count, the fourth of a 32-bit pixel too.
    const auto isOpaque = [&](long r, long c)
    { return !opaqueOnly || std::memcmp(src.GetPixel(sx1 + c, sy1 + r), key, bpp) != 0; };
    unsigned long n = 0;
    for (long r = 0; r < rows; ++r)
        for (long c = 0; c < columns; ++c)
            n += isOpaque(r, c) ? 1 : 0;
    if (n == 0)
        return 0;
    Point<long>* list = new (std::nothrow) Point<long>[n];
    if (!list)
        return 0;
    unsigned long k = 0;
    for (long r = 0; r < rows; ++r)
        for (long c = 0; c < columns; ++c)
            if (isOpaque(r, c))
                list[k++] = Point<long>((long(m_width) * (dy + r) + dx + c) * long(bpp),
                                        (long(src.m_width) * (sy1 + r) + sx1 + c) * long(bpp));

    // The product of two rand() values reaches indices above the generator's range. It is taken in 64 bits:
    // with a 31-bit RAND_MAX the product overflows int.
    for (std::uint64_t swap = 0; swap < 3 * std::uint64_t(n); ++swap)
    {
        const std::uint64_t a = std::uint64_t(std::rand()) * std::uint64_t(std::rand()) % n;
        const std::uint64_t b = std::uint64_t(std::rand()) * std::uint64_t(std::rand()) % n;
        std::swap(list[a], list[b]);
    }
    *pairs = list;
    return n;
}

unsigned long QorPicBlock::GenerateRandomPasteArray(Point<long>** pairs, const QorPicBlock& src, Point<long> dest,
                                                    Point<long> srcTopLeft, Point<long> srcBottomRight, char opaqueOnly)
{
    return GenerateRandomPasteArray(pairs, src, dest.x, dest.y, srcTopLeft.x, srcTopLeft.y, srcBottomRight.x,
                                    srcBottomRight.y, opaqueOnly);
}

unsigned long QorPicBlock::GenerateRandomPasteArray(Point<long>** pairs, const QorPicBlock& src, long dx, long dy,
                                                    char opaqueOnly)
{
    return GenerateRandomPasteArray(pairs, src, dx, dy, 0, 0, long(src.m_width) - 1, long(src.m_height) - 1,
                                    opaqueOnly);
}

void QorPicBlock::RandomPaste(const QorPicBlock& src, const Point<long>* pairs, long count)
{
    const std::size_t bytes = PixelBytes(m_bitsPerPixel);
    if (bytes == 0 || !pairs || !m_data || !src.m_data)
        return;
    // The offsets are the caller's: a pair naming bytes outside either buffer is skipped.
    const auto inside = [bytes](long offset, unsigned long capacity)
    { return offset >= 0 && capacity >= bytes && static_cast<unsigned long>(offset) <= capacity - bytes; };
    for (long i = 0; i < count; ++i)
    {
        const long to = pairs[i].x;
        const long from = pairs[i].y;
        if (inside(to, m_capacity) && inside(from, src.m_capacity))
            std::memmove(m_data + to, src.m_data + from, bytes);
    }
}
