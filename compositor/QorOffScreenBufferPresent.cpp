// Presentation: the main picture's visible rectangle copied to the window in one of the nine showing
// modes, with the palette realised and the owner's draw hook called on the right context.
#include "QorOffScreenBuffer.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace
{
bool IsDeviceBitmapMode(long mode)
{
    return mode >= QorOffScreenBuffer::kDeviceBitmap && mode <= QorOffScreenBuffer::kDeviceBitmapStretchScreen;
}

bool IsSectionMode(long mode)
{
    return mode >= QorOffScreenBuffer::kSection && mode <= QorOffScreenBuffer::kSectionStretchScreen;
}

// Modes 0, 3 and 6 copy 1:1; the others stretch.
bool IsStretchMode(long mode)
{
    return mode % 3 != 0;
}

// The mode that DrawToDC draws a section mode as.
long IndependentModeOf(long mode)
{
    return IsSectionMode(mode) ? mode - 3 : mode;
}

long RowBytes(long width, int bitsPerPixel)
{
    return (width * bitsPerPixel + 7) / 8;
}

long PaddedRowBytes(long width, int bitsPerPixel)
{
    return (width * bitsPerPixel + 31) / 32 * 4;
}

int ToInt(long value)
{
    return static_cast<int>(value);
}

} // namespace

char QorOffScreenBuffer::AutoUpdateBitmap(long width, long height)
{
    OffScrBuf* main = GetMainBuffer();
    if (!main)
        return 0;
    if (m_showingMode < kDeviceBitmap || m_showingMode > kSectionStretchScreen)
        return 1;
    QorPicBlock& picture = main->surface.picture;
    if (!IsSectionMode(m_showingMode))
    {
        DestroyOSDependent();
        OwnMainPixels(width, height);
        picture.Reset(picture.GetColorType(), width, height);
        RefreshBitmapInfo(*main);
        UpdateBitmapHeader(width, height);
        return 1;
    }

    DestroyOSDependent();
    UpdateBitmapHeader(width, height);
    const HWND window = m_wnd ? m_wnd->GetSafeHwnd() : nullptr;
    m_windowDC = ::GetDC(window);
    m_windowDCOwner = window;
    void* bits = nullptr;
    m_section =
        m_windowDC ? ::CreateDIBSection(m_windowDC, GetBitmapHeader(), DIB_RGB_COLORS, &bits, nullptr, 0) : nullptr;
    if (!m_section)
    {
        // No window to make the section on: the main picture stays a plain picture of that size.
        DestroyOSDependent();
        OwnMainPixels(width, height);
        picture.Reset(picture.GetColorType(), width, height);
        RefreshBitmapInfo(*main);
        return 1;
    }
    picture.Attach(picture.GetColorType(), width, height, static_cast<unsigned char*>(bits));
    m_previousPalette = ::SelectPalette(m_windowDC, static_cast<HPALETTE>(m_logicalPalette.GetSafeHandle()), FALSE);
    ::RealizePalette(m_windowDC);
    m_sectionDC = ::CreateCompatibleDC(m_windowDC);
    m_previousBitmap = ::SelectObject(m_sectionDC, m_section);
    RefreshBitmapInfo(*main);
    return 1;
}

void QorOffScreenBuffer::OwnMainPixels(long width, long height)
{
    QorPicBlock& picture = GetMainBuffer()->surface.picture;
    if (!picture.IsAttached())
        return;
    // An attached picture is never resized or detached: it is made anew in place (contents lost), so that
    // pointers to it stay good.
    QorPicBlock fresh(picture.GetColorType(), width, height);
    fresh.SetMask(picture.GetMask());
    fresh.SetPaletteEntryPtr(picture.GetPaletteEntryPtr());
    picture.~QorPicBlock();
    new (&picture) QorPicBlock(fresh);
}

void QorOffScreenBuffer::DestroyOSDependent()
{
    if (m_windowDC)
    {
        if (m_previousPalette)
            ::SelectPalette(m_windowDC, m_previousPalette, FALSE);
        ::ReleaseDC(m_windowDCOwner, m_windowDC);
    }
    if (m_sectionDC)
    {
        if (m_previousBitmap)
            ::SelectObject(m_sectionDC, m_previousBitmap);
        ::DeleteDC(m_sectionDC);
    }
    if (m_section)
        ::DeleteObject(m_section);
    m_windowDC = nullptr;
    m_windowDCOwner = nullptr;
    m_previousPalette = nullptr;
    m_sectionDC = nullptr;
    m_previousBitmap = nullptr;
    m_section = nullptr;
}

void QorOffScreenBuffer::UpdateBitmapHeader(long width, long height)
{
    BITMAPINFOHEADER& header = m_bitmapHeader.bmiHeader;
    header.biBitCount = GetMainBuffer() ? GetMainBuffer()->surface.picture.GetBitsPerPixel() : 8;
    header.biWidth = static_cast<LONG>(width);
    header.biHeight = static_cast<LONG>(-height);
    header.biXPelsPerMeter = static_cast<LONG>(width);
    header.biYPelsPerMeter = static_cast<LONG>(height);
}

unsigned char* QorOffScreenBuffer::Grow(std::unique_ptr<unsigned char[]>& buffer, unsigned long& capacity,
                                        unsigned long size)
{
    if (size > capacity)
    {
        buffer.reset(new (std::nothrow) unsigned char[size]());
        capacity = buffer ? size : 0;
    }
    return buffer.get();
}

const void* QorOffScreenBuffer::GetDeviceIndependentBits()
{
    const QorPicBlock& picture = GetMainBuffer()->surface.picture;
    const int bits = picture.GetBitsPerPixel();
    const long rowBytes = RowBytes(picture.GetWidth(), bits);
    const long padded = PaddedRowBytes(picture.GetWidth(), bits);
    if (rowBytes == padded || picture.IsAttached())
        return picture.GetDataPtr();
    // The picture's rows are packed; the transfer reads rows padded to 4 bytes.
    const unsigned long size = static_cast<unsigned long>(padded) * static_cast<unsigned long>(picture.GetHeight());
    if (!Grow(m_paddedBits, m_paddedSize, size))
        return nullptr;
    for (long y = 0; y < picture.GetHeight(); ++y)
        std::memcpy(m_paddedBits.get() + padded * y, picture.GetPixel(0, y), static_cast<std::size_t>(rowBytes));
    return m_paddedBits.get();
}

void QorOffScreenBuffer::CallDrawHook(CDC* dc)
{
    if (m_drawHook && m_integration)
        m_drawHook(m_integration, dc);
}

void QorOffScreenBuffer::GetStretchSize(long& width, long& height)
{
    const QorRect visible = GetVisibleRect();
    width = visible.Width();
    height = visible.Height();
    if (m_showingMode % 3 == 2)
    {
        width = ::GetSystemMetrics(SM_CXSCREEN);
        height = ::GetSystemMetrics(SM_CYSCREEN);
    }
    else if (m_showingMode % 3 == 1 && m_wnd)
    {
        RECT client = {0, 0, 0, 0};
        m_wnd->GetClientRect(&client);
        width = client.right - client.left;
        height = client.bottom - client.top;
    }
}

void QorOffScreenBuffer::PresentDeviceBitmap(CDC& dc, long x, long y, long w, long h, char stretch)
{
    OffScrBuf* main = GetMainBuffer();
    const stBitmapDesc& info = main->bitmapInfo;
    const BITMAP description = {info.type,   info.width,     info.height, info.widthBytes,
                                info.planes, info.bitsPixel, info.bits};
    // The main picture is shown in place unless the draw hook will draw on it: the hook draws on a copy,
    // so that what it draws is shown but never kept in the picture.
    const bool drawsOnTop = m_drawHook && m_integration;
    CBitmap bitmap;
    if (!(drawsOnTop ? bitmap.CreateBitmapIndirect(&description) : bitmap.CreateBitmapOver(&description)))
        return;
    CDC memory;
    if (!memory.CreateCompatibleDC(&dc))
        return;
    CBitmap* previous = memory.SelectObject(&bitmap);
    CallDrawHook(&memory);
    const QorRect& visible = main->visibleRect;
    if (stretch)
        dc.StretchBlt(ToInt(x), ToInt(y), ToInt(w), ToInt(h), &memory, visible.left, visible.top,
                      ToInt(visible.Width()), ToInt(visible.Height()), SRCCOPY);
    else
        dc.BitBlt(ToInt(x), ToInt(y), ToInt(visible.Width()), ToInt(visible.Height()), &memory, visible.left,
                  visible.top, SRCCOPY);
    memory.SelectObject(previous);
    memory.DeleteDC();
}

void QorOffScreenBuffer::PresentIndependent(CDC& dc, long x, long y, long w, long h, char stretch)
{
    OffScrBuf* main = GetMainBuffer();
    const QorPicBlock& picture = main->surface.picture;
    const BITMAPINFO* header = GetBitmapHeader();
    const void* bits = GetDeviceIndependentBits();
    if (bits && picture.GetWidth() > 0 && picture.GetHeight() > 0)
    {
        const QorRect& visible = main->visibleRect;
        if (stretch)
            ::StretchDIBits(dc.GetSafeHdc(), ToInt(x), ToInt(y), ToInt(w), ToInt(h), visible.left, visible.top,
                            ToInt(visible.Width()), ToInt(visible.Height()), bits, header, DIB_RGB_COLORS, SRCCOPY);
        else
            ::SetDIBitsToDevice(dc.GetSafeHdc(), ToInt(x), ToInt(y), static_cast<DWORD>(visible.Width()),
                                static_cast<DWORD>(visible.Height()), visible.left, visible.top, 0,
                                static_cast<UINT>(picture.GetHeight()), bits, header, DIB_RGB_COLORS);
    }
    CallDrawHook(&dc);
}

void QorOffScreenBuffer::DrawToScreen(long x, long y)
{
    if (!m_wnd)
    {
        ::MessageBoxA(nullptr, "NULL WND", "ERROR", MB_OK);
        return;
    }
    OffScrBuf* main = GetMainBuffer();
    if (!main || m_showingMode < kDeviceBitmap || m_showingMode > kSectionStretchScreen)
        return;
    long w = 0;
    long h = 0;
    GetStretchSize(w, h);
    const char stretch = IsStretchMode(m_showingMode) ? 1 : 0;
    if (stretch)
        x = y = 0;

    if (IsSectionMode(m_showingMode))
    {
        if (!m_windowDC || !m_sectionDC)
            return;
        ::RealizePalette(m_windowDC);
        CDC section;
        section.Attach(m_sectionDC);
        CallDrawHook(&section);
        section.Detach();
        const QorRect& visible = main->visibleRect;
        if (stretch)
            ::StretchBlt(m_windowDC, ToInt(x), ToInt(y), ToInt(w), ToInt(h), m_sectionDC, visible.left, visible.top,
                         ToInt(visible.Width()), ToInt(visible.Height()), SRCCOPY);
        else
            ::BitBlt(m_windowDC, ToInt(x), ToInt(y), ToInt(visible.Width()), ToInt(visible.Height()), m_sectionDC,
                     visible.left, visible.top, SRCCOPY);
        return;
    }

    CClientDC dc(m_wnd);
    if (!dc.GetSafeHdc())
        return;
    CPalette* previous = dc.SelectPalette(&m_logicalPalette, FALSE);
    dc.RealizePalette();
    if (IsDeviceBitmapMode(m_showingMode))
        PresentDeviceBitmap(dc, x, y, w, h, stretch);
    else
        PresentIndependent(dc, x, y, w, h, stretch);
    if (previous)
        dc.SelectPalette(previous, FALSE);
}

void QorOffScreenBuffer::DrawToScreen(long, long, long, long)
{
    if (!m_wnd)
    {
        ::MessageBoxA(nullptr, "NULL WND", "ERROR", MB_OK);
        return;
    }
    DrawToScreen(0, 0);
}

void QorOffScreenBuffer::DrawToScreenCenter()
{
    if (!m_wnd)
    {
        ::MessageBoxA(nullptr, "NULL WND", "ERROR", MB_OK);
        return;
    }
    OffScrBuf* main = GetMainBuffer();
    if (!main || (m_showingMode != kDeviceBitmap && m_showingMode != kSection))
        return;
    RECT client = {0, 0, 0, 0};
    m_wnd->GetClientRect(&client);
    const QorRect& visible = main->visibleRect;
    const long x = (static_cast<long>(client.right - client.left) - visible.Width()) / 2;
    const long y = (static_cast<long>(client.bottom - client.top) - visible.Height()) / 2;

    if (m_showingMode == kSection)
    {
        if (m_windowDC && m_sectionDC)
            ::BitBlt(m_windowDC, ToInt(x), ToInt(y), ToInt(visible.Width()), ToInt(visible.Height()), m_sectionDC, 0, 0,
                     SRCCOPY);
        return;
    }
    CClientDC dc(m_wnd);
    if (!dc.GetSafeHdc())
        return;
    const stBitmapDesc& info = main->bitmapInfo;
    const BITMAP description = {info.type,   info.width,     info.height, info.widthBytes,
                                info.planes, info.bitsPixel, info.bits};
    CBitmap bitmap;
    CDC memory;
    if (!bitmap.CreateBitmapIndirect(&description) || !memory.CreateCompatibleDC(&dc))
        return;
    CPalette* previousPalette = dc.SelectPalette(&m_logicalPalette, FALSE);
    dc.RealizePalette();
    CBitmap* previous = memory.SelectObject(&bitmap);
    dc.BitBlt(ToInt(x), ToInt(y), ToInt(visible.Width()), ToInt(visible.Height()), &memory, 0, 0, SRCCOPY);
    memory.SelectObject(previous);
    if (previousPalette)
        dc.SelectPalette(previousPalette, FALSE);
}

void QorOffScreenBuffer::DrawToDC(CDC* dc, long x, long y)
{
    OffScrBuf* main = GetMainBuffer();
    if (!dc || !dc->GetSafeHdc() || !main || m_showingMode < kDeviceBitmap || m_showingMode > kSectionStretchScreen)
        return;
    long w = 0;
    long h = 0;
    GetStretchSize(w, h);
    const long mode = IndependentModeOf(m_showingMode);
    const char stretch = IsStretchMode(mode) ? 1 : 0;
    if (stretch)
        x = y = 0;
    CPalette* previous = dc->SelectPalette(&m_logicalPalette, FALSE);
    dc->RealizePalette();
    if (IsDeviceBitmapMode(mode))
        PresentDeviceBitmap(*dc, x, y, w, h, stretch);
    else
        PresentIndependent(*dc, x, y, w, h, stretch);
    if (previous)
        dc->SelectPalette(previous, FALSE);
}

void QorOffScreenBuffer::DrawToDC(CDC* dc, long dx, long dy, long dw, long dh, long sx, long sy, long sw, long sh)
{
    OffScrBuf* main = GetMainBuffer();
    if (!dc || !dc->GetSafeHdc() || !main || m_showingMode < kDeviceBitmap || m_showingMode > kSectionStretchScreen)
        return;
    CPalette* previous = dc->SelectPalette(&m_logicalPalette, FALSE);
    dc->RealizePalette();
    if (IsDeviceBitmapMode(m_showingMode))
    {
        const stBitmapDesc& info = main->bitmapInfo;
        const BITMAP description = {info.type,   info.width,     info.height, info.widthBytes,
                                    info.planes, info.bitsPixel, info.bits};
        CBitmap bitmap;
        CDC memory;
        if (bitmap.CreateBitmapIndirect(&description) && memory.CreateCompatibleDC(dc))
        {
            CBitmap* previousBitmap = memory.SelectObject(&bitmap);
            CallDrawHook(&memory);
            dc->StretchBlt(ToInt(dx), ToInt(dy), ToInt(dw), ToInt(dh), &memory, ToInt(sx), ToInt(sy), ToInt(sw),
                           ToInt(sh), SRCCOPY);
            memory.SelectObject(previousBitmap);
        }
    }
    else
    {
        if (const void* bits = GetDeviceIndependentBits())
            ::StretchDIBits(dc->GetSafeHdc(), ToInt(dx), ToInt(dy), ToInt(dw), ToInt(dh), ToInt(sx), ToInt(sy),
                            ToInt(sw), ToInt(sh), bits, GetBitmapHeader(), DIB_RGB_COLORS, SRCCOPY);
        CallDrawHook(dc);
    }
    if (previous)
        dc->SelectPalette(previous, FALSE);
}
