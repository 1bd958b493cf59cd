// Where pictures meet a drawing device: a line of text rendered into a picture, a picture copied to a
// device context, and text written vertically one character at a time.
#include "pictures/QorPicBlock.h"
#include "qor/platform.h"

#include <cstring>

char QorPicBlock::SetText(CDC* dc, const char* text, unsigned char* colour)
{
    if (!dc)
        return 1;
    TEXTMETRICA metrics = {};
    dc->GetTextMetrics(&metrics);
    const long length = text ? static_cast<long>(std::strlen(text)) : 0;
    // A double-byte character reserves two maximum widths, like two single-byte ones.
    const long width = length * metrics.tmMaxCharWidth;
    const long height = metrics.tmHeight;

    CBitmap bitmap;
    if (!bitmap.Attach(::CreateBitmap(int(width), int(height), 1, 1, nullptr)))
        return 1;
    CBitmap* previous = dc->SelectObject(&bitmap);
    dc->SelectStockObject(BLACK_BRUSH);
    dc->Rectangle(0, 0, int(width), int(height));

    // Text and background must differ, or the text would vanish when pasted with the transparent flag.
    unsigned char* mask = GetMask();
    if (mask && colour && std::memcmp(mask, colour, m_bytesPerPixel) == 0)
        ++mask[0];
    Reset(width, height, mask);

    dc->SetBkMode(OPAQUE);
    dc->SetBkColor(RGB(0, 0, 0));
    dc->SetTextColor(RGB(255, 255, 255));
    dc->TextOut(0, 0, text ? text : "", int(length));

    // An attached picture keeps its size: only the pixels inside it are written.
    const long columns = width < m_width ? width : long(m_width);
    const long rows = height < GetUsableRows() ? height : GetUsableRows();
    if (colour && m_data)
        for (long y = 0; y < rows; ++y)
            for (long x = 0; x < columns; ++x)
            {
                const COLORREF pixel = ::GetPixel(dc->m_hDC, int(x), int(y));
                if (pixel != RGB(0, 0, 0) && pixel != CLR_INVALID)
                    std::memcpy(GetPixel(x, y), colour, m_bytesPerPixel);
            }

    if (previous)
        dc->SelectObject(previous);
    bitmap.DeleteObject();
    return 1;
}

void QorPicBlock::DrawToDC(CDC* dc, CPalette* palette)
{
    if (!dc || !m_data || m_width < 1 || m_height < 1)
        return;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = m_width;
    info.bmiHeader.biHeight = -m_height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = m_bitsPerPixel;
    info.bmiHeader.biCompression = BI_RGB;
    // No colour table: 8-bit pixels are taken as indices of the system palette, where realising the
    // library's palette puts each colour at the index the pictures use.
    const UINT usage = m_bitsPerPixel == 8 ? DIB_PAL_INDICES : DIB_RGB_COLORS;
    void* bits = nullptr;
    HBITMAP section = ::CreateDIBSection(dc->m_hDC, &info, usage, &bits, nullptr, 0);
    if (!section)
        return;
    const std::size_t rowBytes = std::size_t(m_bytesPerPixel) * std::size_t(m_width);
    const std::size_t pitch = (rowBytes + 3) & ~std::size_t(3);
    for (long y = 0; y < GetUsableRows(); ++y)
        std::memcpy(static_cast<unsigned char*>(bits) + pitch * std::size_t(y), GetPixel(0, y), rowBytes);

    CPalette* previousPalette = nullptr;
    if (palette)
    {
        previousPalette = dc->SelectPalette(palette, FALSE);
        dc->RealizePalette();
    }
    CDC memory;
    memory.Attach(::CreateCompatibleDC(dc->m_hDC));
    HGDIOBJ previousBitmap = ::SelectObject(memory.m_hDC, section);
    // One pixel short on the right and at the bottom, as the library has always drawn it.
    dc->BitBlt(0, 0, int(m_width) - 1, int(m_height) - 1, &memory, 0, 0, SRCCOPY);
    ::SelectObject(memory.m_hDC, previousBitmap);
    memory.DeleteDC();
    ::DeleteObject(section);
    if (palette && previousPalette)
        dc->SelectPalette(previousPalette, FALSE);
}

namespace
{
// The length of the character at p: a byte of 0xA0 or more starts a two-byte character (not only the
// Big5 lead bytes 0x81-0xFE), unless the text ends after it.
int CharacterLength(const unsigned char* p)
{
    return p[0] >= 0xA0 && p[1] ? 2 : 1;
}

bool StepOf(CDC* dc, int& step)
{
    TEXTMETRICA metrics = {};
    if (!dc || !dc->GetTextMetrics(&metrics))
        return false;
    const int direction = dc->GetMapMode() == MM_TEXT ? 1 : -1;
    step = direction * int(metrics.tmHeight);
    return true;
}
} // namespace

char VerticalTextOut(CDC* dc, int x, int y, const char* text)
{
    int step = 0;
    if (!StepOf(dc, step))
        return 0;
    if (!text)
        return 1;
    for (auto* p = reinterpret_cast<const unsigned char*>(text); *p;)
    {
        const int n = CharacterLength(p);
        dc->TextOut(x, y, reinterpret_cast<const char*>(p), n);
        y += step;
        p += n;
    }
    return 1;
}

char VerticalTextOut(CDC* dc, int x, int y, const unsigned char* text)
{
    return VerticalTextOut(dc, x, y, reinterpret_cast<const char*>(text));
}

char VerticalTextOut(CDC* dc, int x, int y, const QorString& text)
{
    return VerticalTextOut(dc, x, y, static_cast<const char*>(text));
}

char VerticalTextOutR(CDC* dc, int x, int y, const char* text)
{
    int step = 0;
    if (!StepOf(dc, step))
        return 0;
    if (!text)
        return 1;
    int count = 0;
    for (auto* p = reinterpret_cast<const unsigned char*>(text); *p; p += CharacterLength(p))
        ++count;
    y += count * step;
    for (auto* p = reinterpret_cast<const unsigned char*>(text); *p;)
    {
        const int n = CharacterLength(p);
        y -= step;
        dc->TextOut(x, y, reinterpret_cast<const char*>(p), n);
        p += n;
    }
    return 1;
}

char VerticalTextOutR(CDC* dc, int x, int y, const unsigned char* text)
{
    return VerticalTextOutR(dc, x, y, reinterpret_cast<const char*>(text));
}

char VerticalTextOutR(CDC* dc, int x, int y, const QorString& text)
{
    return VerticalTextOutR(dc, x, y, static_cast<const char*>(text));
}
