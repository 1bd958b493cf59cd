// Pixel values, colours and the block transfers between images of 1, 8, 16, 24 and 32 bits.
#include "platform/GdiInternal.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace qor::detail
{
namespace
{
unsigned char* RowOf(const PixelView& view, long y)
{
    return view.top + view.pitch * y;
}

// The nearest of count colours by squared distance; the first of equals wins.
template <class Entry>
std::uint32_t Nearest(const Entry* entries, int count, COLORREF colour, BYTE Entry::*red, BYTE Entry::*green,
                      BYTE Entry::*blue)
{
    const int r = GetRValue(colour);
    const int g = GetGValue(colour);
    const int b = GetBValue(colour);
    std::uint32_t best = 0;
    long bestDistance = -1;
    for (int i = 0; i < count; ++i)
    {
        const long dr = entries[i].*red - r;
        const long dg = entries[i].*green - g;
        const long db = entries[i].*blue - b;
        const long distance = dr * dr + dg * dg + db * db;
        if (bestDistance < 0 || distance < bestDistance)
        {
            bestDistance = distance;
            best = static_cast<std::uint32_t>(i);
            if (distance == 0)
                break;
        }
    }
    return best;
}

BYTE Expand5(std::uint32_t v)
{
    return static_cast<BYTE>((v << 3) | (v >> 2));
}

std::uint32_t ValueMask(int bitsPerPixel)
{
    return bitsPerPixel >= 32 ? 0xFFFFFFFFu : ((1u << bitsPerPixel) - 1u);
}

std::uint32_t Combine(DWORD rop, std::uint32_t dst, std::uint32_t src, std::uint32_t mask)
{
    switch (rop)
    {
    case SRCAND:
        return dst & src;
    case SRCPAINT:
        return dst | src;
    case SRCINVERT:
        return dst ^ src;
    case NOTSRCCOPY:
        return ~src & mask;
    default:
        return src;
    }
}

bool SameFormat(const PixelView& a, const PixelView& b)
{
    return a.bitsPerPixel == b.bitsPerPixel;
}

// Turns source values into destination values, once per transfer.
class Converter
{
public:
    Converter(const PixelView& dst, const PixelView& src, const TransferColours& colours) : m_dst(dst), m_src(src)
    {
        if (SameFormat(dst, src))
        {
            m_kind = Kind::kRaw;
        }
        else if (src.bitsPerPixel == 1 && src.monochrome)
        {
            m_kind = Kind::kTable;
            m_table.assign(2, 0);
            m_table[0] = EncodeColour(dst, colours.destinationText);
            m_table[1] = EncodeColour(dst, colours.destinationBackground);
        }
        else if (dst.bitsPerPixel == 1 && dst.monochrome)
        {
            m_kind = Kind::kToMonochrome;
            m_background = colours.sourceBackground & 0xFFFFFF;
        }
        else if (src.bitsPerPixel <= 8)
        {
            m_kind = Kind::kTable;
            const std::uint32_t count = 1u << src.bitsPerPixel;
            m_table.resize(count);
            for (std::uint32_t v = 0; v < count; ++v)
                m_table[v] = EncodeColour(dst, DecodeColour(src, v));
        }
        else
        {
            m_kind = dst.bitsPerPixel <= 8 ? Kind::kCachedColour : Kind::kColour;
        }
    }

    std::uint32_t operator()(std::uint32_t v)
    {
        switch (m_kind)
        {
        case Kind::kRaw:
            return v;
        case Kind::kTable:
            return m_table[v];
        case Kind::kToMonochrome:
            return DecodeColour(m_src, v) == m_background ? 1u : 0u;
        case Kind::kColour:
            return EncodeColour(m_dst, DecodeColour(m_src, v));
        case Kind::kCachedColour:
        {
            // Matching a colour to a table is a search: remember the answers of this transfer.
            const COLORREF colour = DecodeColour(m_src, v);
            const auto it = m_cache.find(colour);
            if (it != m_cache.end())
                return it->second;
            const std::uint32_t value = EncodeColour(m_dst, colour);
            m_cache.emplace(colour, value);
            return value;
        }
        }
        return v;
    }

    bool IsRaw() const { return m_kind == Kind::kRaw; }
    /// The value table of a transfer from a palette source, null for other kinds.
    const std::uint32_t* Table() const { return m_kind == Kind::kTable ? m_table.data() : nullptr; }

private:
    enum class Kind
    {
        kRaw,
        kTable,
        kToMonochrome,
        kColour,
        kCachedColour,
    };
    const PixelView& m_dst;
    const PixelView& m_src;
    Kind m_kind = Kind::kRaw;
    std::vector<std::uint32_t> m_table;
    COLORREF m_background = 0;
    std::unordered_map<COLORREF, std::uint32_t> m_cache;
};

bool Overlaps(const PixelView& a, const PixelView& b)
{
    if (!a.top || !b.top)
        return false;
    auto span = [](const PixelView& v)
    {
        const unsigned char* first = v.pitch >= 0 ? v.top : v.top + v.pitch * (v.height - 1);
        const unsigned char* last = first + (v.pitch >= 0 ? v.pitch : -v.pitch) * v.height;
        return std::make_pair(first, last);
    };
    const auto sa = span(a);
    const auto sb = span(b);
    return sa.first < sb.second && sb.first < sa.second;
}
} // namespace

PixelView BitmapObject::View()
{
    PixelView view;
    view.pitch = bottomUp ? -pitch : pitch;
    view.top = Data() + (bottomUp ? pitch * (height - 1) : 0);
    view.width = width;
    view.height = height;
    view.bitsPerPixel = bitsPerPixel;
    view.table = table;
    view.tableSize = tableSize;
    view.systemIndices = systemIndices;
    view.monochrome = monochrome;
    return view;
}

std::uint32_t LoadValue(const PixelView& view, long x, long y)
{
    const unsigned char* row = RowOf(view, y);
    switch (view.bitsPerPixel)
    {
    case 1:
        return (row[x >> 3] >> (7 - (x & 7))) & 1u;
    case 8:
        return row[x];
    case 16:
        return row[x * 2] | (std::uint32_t(row[x * 2 + 1]) << 8);
    case 24:
        return row[x * 3] | (std::uint32_t(row[x * 3 + 1]) << 8) | (std::uint32_t(row[x * 3 + 2]) << 16);
    case 32:
    {
        std::uint32_t v;
        std::memcpy(&v, row + x * 4, 4);
        return v;
    }
    default:
        return 0;
    }
}

void StoreValue(const PixelView& view, long x, long y, std::uint32_t value)
{
    unsigned char* row = RowOf(view, y);
    switch (view.bitsPerPixel)
    {
    case 1:
    {
        const unsigned char bit = static_cast<unsigned char>(0x80u >> (x & 7));
        row[x >> 3] = static_cast<unsigned char>(value & 1u ? row[x >> 3] | bit : row[x >> 3] & ~bit);
        break;
    }
    case 8:
        row[x] = static_cast<unsigned char>(value);
        break;
    case 16:
        row[x * 2] = static_cast<unsigned char>(value);
        row[x * 2 + 1] = static_cast<unsigned char>(value >> 8);
        break;
    case 24:
        row[x * 3] = static_cast<unsigned char>(value);
        row[x * 3 + 1] = static_cast<unsigned char>(value >> 8);
        row[x * 3 + 2] = static_cast<unsigned char>(value >> 16);
        break;
    case 32:
        std::memcpy(row + x * 4, &value, 4);
        break;
    default:
        break;
    }
}

std::uint32_t EncodeColour(const PixelView& view, COLORREF colour)
{
    const std::uint32_t r = GetRValue(colour);
    const std::uint32_t g = GetGValue(colour);
    const std::uint32_t b = GetBValue(colour);
    switch (view.bitsPerPixel)
    {
    case 16:
        return ((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3);
    case 24:
    case 32:
        return b | (g << 8) | (r << 16);
    case 8:
        if (view.systemIndices)
            return Nearest(SystemPalette(), 256, colour, &PALETTEENTRY::peRed, &PALETTEENTRY::peGreen,
                           &PALETTEENTRY::peBlue);
        [[fallthrough]];
    case 1:
        if (!view.table || view.tableSize <= 0)
            return 0;
        return Nearest(view.table, view.tableSize, colour, &RGBQUAD::rgbRed, &RGBQUAD::rgbGreen, &RGBQUAD::rgbBlue);
    default:
        return 0;
    }
}

COLORREF DecodeColour(const PixelView& view, std::uint32_t value)
{
    switch (view.bitsPerPixel)
    {
    case 16:
        return RGB(Expand5((value >> 10) & 31), Expand5((value >> 5) & 31), Expand5(value & 31));
    case 24:
    case 32:
        return RGB(BYTE(value >> 16), BYTE(value >> 8), BYTE(value));
    case 8:
        if (view.systemIndices)
        {
            const PALETTEENTRY& e = SystemPalette()[value & 0xFF];
            return RGB(e.peRed, e.peGreen, e.peBlue);
        }
        [[fallthrough]];
    case 1:
        if (view.table && value < static_cast<std::uint32_t>(view.tableSize))
            return RGB(view.table[value].rgbRed, view.table[value].rgbGreen, view.table[value].rgbBlue);
        return RGB(0, 0, 0);
    default:
        return RGB(0, 0, 0);
    }
}

COLORREF ReadColour(const PixelView& view, long x, long y)
{
    return DecodeColour(view, LoadValue(view, x, y));
}

RECT FillValue(const PixelView& view, long left, long top, long right, long bottom, std::uint32_t value)
{
    left = std::max(left, 0L);
    top = std::max(top, 0L);
    right = std::min(right, view.width);
    bottom = std::min(bottom, view.height);
    if (left >= right || top >= bottom || !view.top)
        return RECT{0, 0, 0, 0};
    for (long y = top; y < bottom; ++y)
    {
        unsigned char* row = RowOf(view, y);
        if (view.bitsPerPixel == 8)
            std::memset(row + left, static_cast<int>(value & 0xFF), static_cast<std::size_t>(right - left));
        else if (view.bitsPerPixel == 32)
            for (long x = left; x < right; ++x)
                std::memcpy(row + x * 4, &value, 4);
        else
            for (long x = left; x < right; ++x)
                StoreValue(view, x, y, value);
    }
    return RECT{LONG(left), LONG(top), LONG(right), LONG(bottom)};
}

// Rows into a 32-bit surface, the shapes every presentation takes: one pass, no per-pixel format switch.
// Eight palette indices are read at once and their colours stored two by two.
void Row8To32(unsigned char* out, const unsigned char* in, long n, const std::uint32_t* table)
{
    long k = 0;
    for (; k + 8 <= n; k += 8)
    {
        std::uint64_t indices;
        std::memcpy(&indices, in + k, 8);
        for (int pair = 0; pair < 4; ++pair, indices >>= 16)
        {
            const std::uint64_t two =
                table[indices & 0xFF] | std::uint64_t(table[(indices >> 8) & 0xFF]) << 32;
            std::memcpy(out + (k + 2 * pair) * 4, &two, 8);
        }
    }
    for (; k < n; ++k)
        std::memcpy(out + k * 4, &table[in[k]], 4);
}

// X1R5G5B5 splits into a colour part from each byte: the values of the low and the high byte are ORed.
void Row16To32(unsigned char* out, const unsigned char* in, long n, const std::uint32_t* low,
               const std::uint32_t* high)
{
    for (long k = 0; k < n; ++k)
    {
        const std::uint32_t value = low[in[2 * k]] | high[in[2 * k + 1]];
        std::memcpy(out + k * 4, &value, 4);
    }
}

// Four pixels (twelve bytes) at a time through two words, stored as two 8-byte pairs; the rest one by one.
void Row24To32(unsigned char* out, const unsigned char* in, long n)
{
    long k = 0;
    for (; k + 4 <= n; k += 4)
    {
        std::uint64_t a;
        std::uint32_t b;
        std::memcpy(&a, in + 3 * k, 8);
        std::memcpy(&b, in + 3 * k + 8, 4);
        const std::uint64_t p0 = a & 0xFFFFFF, p1 = (a >> 24) & 0xFFFFFF;
        const std::uint64_t p2 = ((a >> 48) | (std::uint64_t(b) << 16)) & 0xFFFFFF, p3 = b >> 8;
        const std::uint64_t first = p0 | p1 << 32, second = p2 | p3 << 32;
        std::memcpy(out + k * 4, &first, 8);
        std::memcpy(out + k * 4 + 8, &second, 8);
    }
    for (; k < n; ++k)
    {
        const std::uint32_t value = in[3 * k] | std::uint32_t(in[3 * k + 1]) << 8 | std::uint32_t(in[3 * k + 2]) << 16;
        std::memcpy(out + k * 4, &value, 4);
    }
}

RECT Transfer(const PixelView& dst, long dx, long dy, long dw, long dh, const PixelView& srcIn, long sx, long sy,
              long sw, long sh, DWORD rop, const TransferColours& colours)
{
    const RECT none = {0, 0, 0, 0};
    if (!dst.top || dw == 0 || dh == 0)
        return none;
    // Normalise both rectangles; a sign that differs between them mirrors that axis.
    bool mirrorX = false;
    bool mirrorY = false;
    if (dw < 0)
    {
        dx += dw;
        dw = -dw;
        mirrorX = !mirrorX;
    }
    if (dh < 0)
    {
        dy += dh;
        dh = -dh;
        mirrorY = !mirrorY;
    }
    if (rop == BLACKNESS || rop == WHITENESS)
        return FillValue(dst, dx, dy, dx + dw, dy + dh,
                         EncodeColour(dst, rop == BLACKNESS ? RGB(0, 0, 0) : RGB(255, 255, 255)));
    if (!srcIn.top || sw == 0 || sh == 0)
        return none;
    if (sw < 0)
    {
        sx += sw;
        sw = -sw;
        mirrorX = !mirrorX;
    }
    if (sh < 0)
    {
        sy += sh;
        sh = -sh;
        mirrorY = !mirrorY;
    }

    // A transfer inside one image reads from a copy, so that no pixel is read after it was written.
    PixelView src = srcIn;
    std::vector<unsigned char> copy;
    if (Overlaps(dst, srcIn))
    {
        const long rowBytes = srcIn.pitch >= 0 ? srcIn.pitch : -srcIn.pitch;
        copy.resize(static_cast<std::size_t>(rowBytes * srcIn.height));
        for (long y = 0; y < srcIn.height; ++y)
            std::memcpy(copy.data() + rowBytes * y, RowOf(srcIn, y), static_cast<std::size_t>(rowBytes));
        src.top = copy.data();
        src.pitch = rowBytes;
    }

    const long x0 = std::max(0L, -dx);
    const long x1 = std::min(dw, dst.width - dx);
    const long y0 = std::max(0L, -dy);
    const long y1 = std::min(dh, dst.height - dy);
    if (x0 >= x1 || y0 >= y1)
        return none;

    Converter convert(dst, src, colours);
    const std::uint32_t mask = ValueMask(dst.bitsPerPixel);
    const bool oneToOne = dw == sw && dh == sh && !mirrorX && !mirrorY;
    long writtenLeft = x1;
    long writtenRight = x0;
    long writtenTop = y1;
    long writtenBottom = y0;

    // A whole-row conversion into a 32-bit surface: 8-bit through the value table, 16 and 24 bits direct.
    const bool rowsInto32 = oneToOne && rop == SRCCOPY && dst.bitsPerPixel == 32 &&
                            ((src.bitsPerPixel == 8 && convert.Table()) || src.bitsPerPixel == 16 ||
                             src.bitsPerPixel == 24);
    std::uint32_t low[256];
    std::uint32_t high[256];
    if (rowsInto32 && src.bitsPerPixel == 16)
        for (std::uint32_t b = 0; b < 256; ++b)
        {
            low[b] = EncodeColour(dst, DecodeColour(src, b));
            high[b] = EncodeColour(dst, DecodeColour(src, b << 8));
        }

    std::vector<long> columns(static_cast<std::size_t>(x1 - x0));
    for (long i = x0; i < x1; ++i)
    {
        long j = oneToOne ? i : i * sw / dw;
        if (mirrorX)
            j = sw - 1 - j;
        columns[static_cast<std::size_t>(i - x0)] = sx + j;
    }
    for (long i = y0; i < y1; ++i)
    {
        long j = oneToOne ? i : i * sh / dh;
        if (mirrorY)
            j = sh - 1 - j;
        const long srcY = sy + j;
        if (srcY < 0 || srcY >= src.height)
            continue;
        const long dstY = dy + i;
        // Equal formats, straight copy: whole runs of bytes.
        if (oneToOne && rop == SRCCOPY && convert.IsRaw() && dst.bitsPerPixel >= 8)
        {
            const long first = std::max(x0, -sx);
            const long last = std::min(x1, src.width - sx);
            if (first < last)
            {
                const long bytes = dst.bitsPerPixel / 8;
                std::memcpy(RowOf(dst, dstY) + (dx + first) * bytes, RowOf(src, srcY) + (sx + first) * bytes,
                            static_cast<std::size_t>((last - first) * bytes));
                writtenLeft = std::min(writtenLeft, first);
                writtenRight = std::max(writtenRight, last);
                writtenTop = std::min(writtenTop, i);
                writtenBottom = std::max(writtenBottom, i + 1);
            }
            continue;
        }
        // Into a 32-bit surface (every frame shown in a window): whole rows in one pass.
        const std::uint32_t* table = convert.Table();
        if (rowsInto32)
        {
            // Source columns sx + k: the valid ones are one run.
            const long first = std::max(x0, -sx);
            const long last = std::min(x1, src.width - sx);
            if (first < last)
            {
                unsigned char* out = RowOf(dst, dstY) + (dx + first) * 4;
                const unsigned char* in = RowOf(src, srcY) + (sx + first) * (src.bitsPerPixel / 8);
                if (src.bitsPerPixel == 8)
                    Row8To32(out, in, last - first, table);
                else if (src.bitsPerPixel == 16)
                    Row16To32(out, in, last - first, low, high);
                else
                    Row24To32(out, in, last - first);
                writtenLeft = std::min(writtenLeft, first);
                writtenRight = std::max(writtenRight, last);
                writtenTop = std::min(writtenTop, i);
                writtenBottom = std::max(writtenBottom, i + 1);
            }
            continue;
        }
        // An 8-bit palette source into a 32-bit surface, stretched or mirrored: one table look-up per pixel.
        if (table && rop == SRCCOPY && src.bitsPerPixel == 8 && dst.bitsPerPixel == 32)
        {
            const unsigned char* srcRow = RowOf(src, srcY);
            unsigned char* dstRow = RowOf(dst, dstY) + dx * 4;
            long first = x1, last = x0;
            for (long k = x0; k < x1; ++k)
            {
                const long srcX = columns[static_cast<std::size_t>(k - x0)];
                if (srcX < 0 || srcX >= src.width)
                    continue;
                std::memcpy(dstRow + k * 4, &table[srcRow[srcX]], 4);
                first = std::min(first, k);
                last = k + 1;
            }
            if (first < last)
            {
                writtenLeft = std::min(writtenLeft, first);
                writtenRight = std::max(writtenRight, last);
                writtenTop = std::min(writtenTop, i);
                writtenBottom = std::max(writtenBottom, i + 1);
            }
            continue;
        }
        for (long k = x0; k < x1; ++k)
        {
            const long srcX = columns[static_cast<std::size_t>(k - x0)];
            if (srcX < 0 || srcX >= src.width)
                continue;
            const std::uint32_t value = convert(LoadValue(src, srcX, srcY));
            const long dstX = dx + k;
            const std::uint32_t out = rop == SRCCOPY ? value : Combine(rop, LoadValue(dst, dstX, dstY), value, mask);
            StoreValue(dst, dstX, dstY, out);
            writtenLeft = std::min(writtenLeft, k);
            writtenRight = std::max(writtenRight, k + 1);
            writtenTop = std::min(writtenTop, i);
            writtenBottom = std::max(writtenBottom, i + 1);
        }
    }
    if (writtenLeft >= writtenRight || writtenTop >= writtenBottom)
        return none;
    return RECT{LONG(dx + writtenLeft), LONG(dy + writtenTop), LONG(dx + writtenRight), LONG(dy + writtenBottom)};
}
} // namespace qor::detail
