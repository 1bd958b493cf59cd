#include "QorPicBlock.h"
#include "PasteKernels.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

namespace
{
unsigned short BitsOf(QorPicBlock::ColorType type, unsigned short current)
{
    switch (type)
    {
    case QorPicBlock::Bit8:
        return 8;
    case QorPicBlock::Bit16:
        return 16;
    case QorPicBlock::Bit24:
        return 24;
    case QorPicBlock::Bit32:
        return 32;
    }
    return current;
}

// Computed wide enough that no side can overflow it; larger than any buffer means "refuse".
std::uint64_t ByteSize(unsigned bits, long w, long h)
{
    using Wide = unsigned __int128;
    const Wide bytes = (Wide(bits) * Wide(std::max(w, 0L)) * Wide(std::max(h, 0L)) + 7) / 8;
    return bytes > UINT64_MAX ? UINT64_MAX : static_cast<std::uint64_t>(bytes);
}

// Sizes a picture may take: each side in 32 bits and the byte count in 32 bits.
bool FitsSize(unsigned bits, long w, long h)
{
    return w <= INT32_MAX && h <= INT32_MAX && ByteSize(bits, w, h) <= UINT32_MAX;
}
} // namespace

QorPicBlock::QorPicBlock()
{
    StdInit();
    SetType(Bit8);
}

QorPicBlock::QorPicBlock(ColorType type)
{
    StdInit();
    SetType(type);
}

QorPicBlock::QorPicBlock(ColorType type, long w, long h)
{
    StdInit();
    // The type first: a size that Reset refuses still leaves an empty picture of this type.
    SetType(type);
    Reset(type, w, h);
}

QorPicBlock::QorPicBlock(ColorType type, long w, long h, unsigned char* colour)
{
    StdInit();
    SetType(type);
    Reset(type, w, h, colour);
}

QorPicBlock::QorPicBlock(const QorPicBlock& src) : QorDataBlock(src)
{
    StdInit();
    SetType(src.m_colorType);
    Copy(src, 0, 0, src.m_width - 1, src.m_height - 1);
}

QorPicBlock::QorPicBlock(const QorPicBlock& src, long x1, long y1, long x2, long y2) : QorDataBlock(src)
{
    StdInit();
    // The type first: a rectangle too large to copy still leaves an empty picture of src's type.
    SetType(src.m_colorType);
    Copy(src, x1, y1, x2, y2);
}

QorPicBlock& QorPicBlock::operator=(const QorPicBlock& src)
{
    Copy(src, 0, 0, src.m_width - 1, src.m_height - 1);
    return *this;
}

QorPicBlock::~QorPicBlock()
{
    FreeData();
    delete[] m_mask;
}

void QorPicBlock::StdInit()
{
    std::memcpy(m_tag, "BMPQ", 4);
    m_version = 0x00010000;
    m_reserved = 0;
    m_colorType = ColorType(0);
    m_attached = false;
    m_width = m_height = 0;
    m_data = nullptr;
    m_mask = nullptr;
    m_palette = nullptr;
    m_capacity = 0;
}

void QorPicBlock::FreeData()
{
    if (!m_attached)
        delete[] m_data;
    m_data = nullptr;
    m_capacity = 0;
}

QorPicBlock::ColorType QorPicBlock::SetType(ColorType type)
{
    const ColorType previous = m_colorType;
    if (type == previous)
        return previous;
    m_colorType = type;
    m_bitsPerPixel = BitsOf(type, m_bitsPerPixel);
    m_bytesPerPixel = static_cast<std::uint16_t>(m_bitsPerPixel / 8 + (m_bitsPerPixel % 8 ? 1 : 0));
    delete[] m_mask;
    m_mask = new (std::nothrow) unsigned char[m_bytesPerPixel ? m_bytesPerPixel : 1]();
    return previous;
}

unsigned long QorPicBlock::GetSize() const
{
    return ByteSize(m_bitsPerPixel, m_width, m_height);
}

bool QorPicBlock::ClipToBuffer(long& x1, long& y1, long& x2, long& y2) const
{
    qor::detail::OrderAndClip(x1, y1, x2, y2, long(m_width) - 1, GetUsableRows() - 1);
    return x1 <= x2 && y1 <= y2;
}

long QorPicBlock::GetUsableRows() const
{
    const std::uint64_t rowBytes = std::uint64_t(m_width) * m_bytesPerPixel;
    if (rowBytes == 0 || !m_data)
        return m_data ? m_height : 0;
    // The usual case, a buffer holding every row, needs no division.
    if (rowBytes * std::uint64_t(m_height) <= m_capacity)
        return m_height;
    return static_cast<long>(std::min<std::uint64_t>(m_height, m_capacity / rowBytes));
}

bool QorPicBlock::Resize(long w, long h)
{
    if (m_attached)
        return false;
    w = std::max(w, 0L);
    h = std::max(h, 0L);
    if (!FitsSize(m_bitsPerPixel, w, h))
        return false;
    const std::uint64_t size = ByteSize(m_bitsPerPixel, w, h);
    FreeData();
    m_width = static_cast<std::int32_t>(w);
    m_height = static_cast<std::int32_t>(h);
    if (size)
    {
        m_data = new (std::nothrow) unsigned char[size]();
        if (!m_data)
        {
            m_width = m_height = 0;
            return false;
        }
        m_capacity = size;
    }
    return true;
}

void QorPicBlock::Reset(ColorType type, long w, long h)
{
    // A refused size leaves the type alone too, so that the buffer always holds GetSize() bytes.
    if (!m_attached && !FitsSize(BitsOf(type, m_bitsPerPixel), w, h))
        return;
    const ColorType previous = SetType(type);
    if (previous == type && w == m_width && h == m_height)
        return;
    Resize(w, h);
}

void QorPicBlock::Reset(long w, long h)
{
    Resize(w, h);
}

void QorPicBlock::Reset(ColorType type, long w, long h, unsigned char* colour)
{
    Reset(type, w, h);
    Fill(0, 0, m_width - 1, m_height - 1, colour);
}

void QorPicBlock::Reset(long w, long h, unsigned char* colour)
{
    Reset(w, h);
    Fill(0, 0, m_width - 1, m_height - 1, colour);
}

void QorPicBlock::Attach(long w, long h, unsigned char* data)
{
    FreeData();
    m_height = static_cast<std::int32_t>(std::clamp<long>(h, 0, INT32_MAX));
    m_width = static_cast<std::int32_t>(std::clamp<long>(w, 0, INT32_MAX));
    m_data = data;
    m_attached = true;
    m_capacity = data ? ByteSize(m_bitsPerPixel, m_width, m_height) : 0;
}

void QorPicBlock::Attach(ColorType type, long w, long h, unsigned char* data)
{
    SetType(type);
    Attach(w, h, data);
}

void* QorPicBlock::SetPaletteEntryPtr(stPaletteEntry* palette)
{
    stPaletteEntry* previous = m_palette;
    m_palette = palette;
    return previous;
}

void QorPicBlock::SetMask(const unsigned char* colour)
{
    if (colour && m_mask)
        std::memcpy(m_mask, colour, m_bytesPerPixel);
}

void QorPicBlock::Fill(const unsigned char* colour)
{
    if (!colour || !m_data)
        return;
    bool uniform = true;
    for (unsigned short i = 1; i < m_bytesPerPixel; ++i)
        uniform = uniform && colour[i] == colour[0];
    if (uniform && GetUsableRows() == m_height)
        std::memset(m_data, colour[0], GetSize());
    else
        Fill(0, 0, m_width - 1, m_height - 1, colour);
}

void QorPicBlock::Fill(long x1, long y1, long x2, long y2, const unsigned char* colour)
{
    if (!colour || !m_data)
        return;
    if (!ClipToBuffer(x1, y1, x2, y2))
        return;
    const std::size_t bpp = m_bytesPerPixel;
    if (x1 == 0 && x2 == m_width - 1)
    {
        // Whole rows are one contiguous run.
        qor::detail::FillPixels(GetPixel(0, y1), (y2 - y1 + 1) * long(m_width), colour, m_bytesPerPixel);
        return;
    }
    const std::size_t spanBytes = std::size_t(x2 - x1 + 1) * bpp;
    unsigned char* first = GetPixel(x1, y1);
    qor::detail::FillPixels(first, x2 - x1 + 1, colour, m_bytesPerPixel);
    for (long y = y1 + 1; y <= y2; ++y)
        std::memcpy(GetPixel(x1, y), first, spanBytes);
}

void QorPicBlock::Fill(const QorRect& rect, const unsigned char* colour)
{
    if (rect.left == 0 && rect.top == 0 && rect.right == m_width - 1 && rect.bottom == m_height - 1)
        Fill(colour);
    Fill(rect.left, rect.top, rect.right, rect.bottom, colour);
}

void QorPicBlock::Fill(const QorPicBlock& pattern)
{
    Fill(0, 0, m_width - 1, m_height - 1, pattern);
}

void QorPicBlock::Fill(long x1, long y1, long x2, long y2, const QorPicBlock& pattern)
{
    if (&pattern == this)
    {
        // Tiles the picture as it was before the fill, never rows the fill has already written.
        const QorPicBlock before(pattern);
        Fill(x1, y1, x2, y2, before);
        return;
    }
    if (pattern.m_colorType != m_colorType || pattern.m_width < 1 || pattern.m_height < 1 || !pattern.m_data ||
        !m_data)
        return;
    if (!ClipToBuffer(x1, y1, x2, y2))
        return;
    const std::size_t bpp = m_bytesPerPixel;
    const long total = x2 - x1 + 1;
    const long full = total / pattern.m_width;
    const long rest = total % pattern.m_width;
    const std::size_t patternRowBytes = std::size_t(pattern.m_width) * bpp;
    const long patternRows = pattern.GetUsableRows();
    for (long y = y1; y <= y2; ++y)
    {
        const long row = (y - y1) % pattern.m_height;
        if (row >= patternRows)
            continue;
        const unsigned char* src = pattern.GetPixel(0, row);
        unsigned char* dst = GetPixel(x1, y);
        for (long i = 0; i < full; ++i, dst += patternRowBytes)
            std::memcpy(dst, src, patternRowBytes);
        std::memcpy(dst, src, std::size_t(rest) * bpp);
    }
}

void QorPicBlock::Fill(const QorRect& rect, const QorPicBlock& pattern)
{
    Fill(rect.left, rect.top, rect.right, rect.bottom, pattern);
}

void QorPicBlock::Copy(const QorPicBlock& src, long x1, long y1, long x2, long y2)
{
    if (&src == this)
    {
        const QorPicBlock whole(src);
        Copy(whole, x1, y1, x2, y2);
        return;
    }
    // Corners so far apart that the size is not even a long are refused like any size Reset refuses.
    long spanX = 0, spanY = 0;
    if (__builtin_sub_overflow(x2, x1, &spanX) || __builtin_sub_overflow(y2, y1, &spanY) || spanX == LONG_MAX ||
        spanY == LONG_MAX)
        return;
    // A rectangle whose size Reset refuses leaves the picture as it was (its mask colour may be wider
    // than src's).
    if (!m_attached && !FitsSize(BitsOf(src.m_colorType, m_bitsPerPixel), x2 - x1 + 1, y2 - y1 + 1))
        return;
    Reset(src.m_colorType, x2 - x1 + 1, y2 - y1 + 1);
    SetMask(src.m_mask);
    m_palette = src.m_palette;
    if (y2 - y1 + 1 < 1 || !m_data || m_bytesPerPixel != src.m_bytesPerPixel)
        return;
    // Only the part of the rectangle that lies in the source is copied and the rest of the rectangle is
    // zeroed (a buffer kept by Reset still holds old pixels). No more of each row is written than this
    // picture holds: an attached picture keeps its own size.
    const long span = std::min(x2 - x1 + 1, long(m_width));
    if (span < 1)
        return;
    const long rows = std::min(y2 - y1 + 1, GetUsableRows());
    const long srcRows = src.m_data ? src.GetUsableRows() : 0;
    const long fromX = std::max(x1, 0L);
    const long toX = std::min({x2, long(src.m_width) - 1, x1 + span - 1});
    const bool partial = fromX > x1 || toX < x1 + span - 1;
    const std::size_t bpp = m_bytesPerPixel;
    for (long row = 0; row < rows; ++row)
    {
        const long y = y1 + row;
        const bool inside = y >= 0 && y < srcRows && fromX <= toX;
        if (!inside || partial)
            std::memset(GetPixel(0, row), 0, std::size_t(span) * bpp);
        if (inside)
            std::memcpy(GetPixel(fromX - x1, row), src.GetPixel(fromX, y), std::size_t(toX - fromX + 1) * bpp);
    }
}

void QorPicBlock::Copy(const QorPicBlock& src, const QorRect& rect)
{
    Copy(src, rect.left, rect.top, rect.right, rect.bottom);
}

char QorPicBlock::TransferColor(unsigned char* dst, ColorType srcType, const unsigned char* src) const
{
    if (!dst || !src)
        return 0;
    switch (m_colorType)
    {
    case Bit8:
        if (srcType != Bit8)
            return 0;
        dst[0] = src[0];
        return 1;
    case Bit24:
    case Bit32:
        if (srcType == Bit8)
        {
            if (!m_palette)
                return 0;
            const stPaletteEntry& e = m_palette[src[0]];
            dst[0] = e.peRed;
            dst[1] = e.peGreen;
            dst[2] = e.peBlue;
        }
        else if (srcType == Bit24 || srcType == Bit32)
        {
            dst[0] = src[0];
            dst[1] = src[1];
            dst[2] = src[2];
        }
        else
        {
            return 0;
        }
        if (m_colorType == Bit32)
            dst[3] = 0;
        return 1;
    default:
        return 0;
    }
}

unsigned char QorPicBlock::ColorToGray(unsigned char a, unsigned char b, unsigned char c)
{
    const double grey = c * 0.11 + b * 0.59 + a * 0.3;
    return static_cast<unsigned char>(grey);
}
