// Drawing through contexts: text, rectangles, pixels and the block and device-independent transfers.
#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/QorGdi.h"
#include "platform/TextRaster.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace qor::detail
{
namespace
{
bool RequestOf(DeviceContext& dc, FontRequest& request)
{
    FontObject* font = dc.font;
    if (!font)
        return false;
    if (!font->resolved)
    {
        font->found = FindFaceFile(font->logFont.lfFaceName, font->face);
        font->resolved = true;
    }
    if (!font->found)
        return false;
    const LOGFONTA& lf = font->logFont;
    request.face = font->face;
    request.height = lf.lfHeight;
    request.width = std::labs(lf.lfWidth);
    request.bold = lf.lfWeight >= 600;
    request.italic = lf.lfItalic != 0;
    request.underline = lf.lfUnderline != 0;
    request.strikeOut = lf.lfStrikeOut != 0;
    request.antialias = lf.lfQuality == ANTIALIASED_QUALITY || lf.lfQuality == CLEARTYPE_QUALITY;
    return true;
}

// Draws coverage (width x height, 0-255) at (x, y) in colour: full ink is stored, partial ink is mixed
// with what lies beneath on surfaces of 16 bits or more and rounded to ink or nothing below that.
RECT DrawCoverage(const PixelView& view, long x, long y, const std::vector<unsigned char>& coverage, long width,
                  long height, COLORREF colour)
{
    const std::uint32_t ink = EncodeColour(view, colour);
    long left = view.width;
    long top = view.height;
    long right = 0;
    long bottom = 0;
    for (long row = 0; row < height; ++row)
    {
        const long py = y + row;
        if (py < 0 || py >= view.height)
            continue;
        for (long col = 0; col < width; ++col)
        {
            const long px = x + col;
            const unsigned alpha = coverage[static_cast<std::size_t>(row * width + col)];
            if (px < 0 || px >= view.width || alpha == 0)
                continue;
            if (alpha == 255 || view.bitsPerPixel <= 8)
            {
                if (alpha < 128)
                    continue;
                StoreValue(view, px, py, ink);
            }
            else
            {
                const COLORREF under = ReadColour(view, px, py);
                auto mix = [alpha](unsigned a, unsigned b)
                { return BYTE((a * alpha + b * (255 - alpha) + 127) / 255); };
                const COLORREF mixed =
                    RGB(mix(GetRValue(colour), GetRValue(under)), mix(GetGValue(colour), GetGValue(under)),
                        mix(GetBValue(colour), GetBValue(under)));
                StoreValue(view, px, py, EncodeColour(view, mixed));
            }
            left = std::min(left, px);
            top = std::min(top, py);
            right = std::max(right, px + 1);
            bottom = std::max(bottom, py + 1);
        }
    }
    if (left >= right || top >= bottom)
        return RECT{0, 0, 0, 0};
    return RECT{LONG(left), LONG(top), LONG(right), LONG(bottom)};
}

RECT Union(const RECT& a, const RECT& b)
{
    if (a.left >= a.right || a.top >= a.bottom)
        return b;
    if (b.left >= b.right || b.top >= b.bottom)
        return a;
    return RECT{std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                std::max(a.bottom, b.bottom)};
}

TransferColours ColoursOf(const DeviceContext& dst, const DeviceContext* src)
{
    TransferColours colours;
    colours.destinationText = ResolveColour(dst, dst.textColour);
    colours.destinationBackground = ResolveColour(dst, dst.bkColour);
    colours.sourceBackground = src ? ResolveColour(*src, src->bkColour) : colours.destinationBackground;
    return colours;
}

bool NeedsSource(DWORD rop)
{
    return rop != BLACKNESS && rop != WHITENESS;
}

bool KnownRop(DWORD rop)
{
    return rop == SRCCOPY || rop == SRCAND || rop == SRCPAINT || rop == SRCINVERT || rop == NOTSRCCOPY ||
           rop == BLACKNESS || rop == WHITENESS;
}

// A device-independent image as a view over the caller's bits; table receives its colour table.
bool DibView(const DeviceContext& dc, const BITMAPINFO* info, UINT usage, const void* bits, PixelView& view,
             std::vector<RGBQUAD>& table)
{
    if (!info || !bits || info->bmiHeader.biSize < sizeof(BITMAPINFOHEADER))
        return false;
    const BITMAPINFOHEADER& header = info->bmiHeader;
    const int depth = header.biBitCount;
    if (header.biPlanes != 1 || header.biCompression != BI_RGB || header.biWidth <= 0 || header.biHeight == 0 ||
        (depth != 1 && depth != 8 && depth != 16 && depth != 24 && depth != 32))
        return false;
    const long height = header.biHeight < 0 ? -long(header.biHeight) : long(header.biHeight);
    const long pitch = ((long(header.biWidth) * depth + 31) / 32) * 4;
    auto* first = static_cast<unsigned char*>(const_cast<void*>(bits));
    view.width = header.biWidth;
    view.height = height;
    view.bitsPerPixel = depth;
    view.pitch = header.biHeight < 0 ? pitch : -pitch;
    view.top = header.biHeight < 0 ? first : first + pitch * (height - 1);
    if (depth <= 8)
    {
        const int full = 1 << depth;
        const int count = header.biClrUsed ? std::min<int>(int(header.biClrUsed), full) : full;
        const BYTE* after = reinterpret_cast<const BYTE*>(info) + header.biSize;
        if (usage == DIB_RGB_COLORS)
        {
            const auto* colours = reinterpret_cast<const RGBQUAD*>(after);
            table.assign(colours, colours + count);
        }
        else if (usage == DIB_PAL_COLORS)
        {
            const auto* indices = reinterpret_cast<const WORD*>(after);
            const auto& entries = dc.palette->entries;
            table.clear();
            for (int i = 0; i < count; ++i)
            {
                const PALETTEENTRY e = indices[i] < entries.size() ? entries[indices[i]] : PALETTEENTRY{0, 0, 0, 0};
                table.push_back(RGBQUAD{e.peBlue, e.peGreen, e.peRed, 0});
            }
        }
        else if (usage == DIB_PAL_INDICES && depth == 8)
        {
            view.systemIndices = true;
        }
        else
        {
            return false;
        }
        view.table = table.data();
        view.tableSize = static_cast<int>(table.size());
    }
    return true;
}
} // namespace

bool TargetOf(DeviceContext& dc, PixelView& view, HWND& window)
{
    window = nullptr;
    if (dc.window)
    {
        WindowRecord* record = FindWindowRecord(dc.window);
        if (!record)
            return false;
        view = FrameView(*record);
        window = dc.window;
        return true;
    }
    if (!dc.bitmap)
        return false;
    view = dc.bitmap->View();
    return true;
}

void AfterDrawing(HWND window, const RECT& area)
{
    if (!window || area.left >= area.right || area.top >= area.bottom)
        return;
    if (WindowRecord* record = FindWindowRecord(window))
        PresentArea(*record, area);
}

COLORREF ResolveColour(const DeviceContext& dc, COLORREF colour)
{
    if ((colour >> 24) == 1 && dc.palette)
    {
        const WORD index = static_cast<WORD>(colour & 0xFFFF);
        if (index < dc.palette->entries.size())
        {
            const PALETTEENTRY& e = dc.palette->entries[index];
            return RGB(e.peRed, e.peGreen, e.peBlue);
        }
        return RGB(0, 0, 0);
    }
    return colour & 0xFFFFFF;
}
} // namespace qor::detail

using namespace qor::detail;

BOOL TextOutA(HDC dc, int x, int y, const char* text, int count)
{
    DeviceContext* context = FindContext(dc);
    if (!context || !text || count < 0)
        return FALSE;
    if (count == 0)
        return TRUE;
    FontRequest request;
    PixelView view;
    HWND window = nullptr;
    if (!RequestOf(*context, request) || !TargetOf(*context, view, window))
        return FALSE;
    std::vector<unsigned char> coverage;
    long width = 0;
    long height = 0;
    if (!RenderRasterText(request, Big5ToUtf8(text, static_cast<std::size_t>(count)), coverage, width, height))
        return FALSE;
    RECT area = {0, 0, 0, 0};
    if (context->bkMode == OPAQUE)
        area = FillValue(view, x, y, x + width, y + height,
                         EncodeColour(view, ResolveColour(*context, context->bkColour)));
    area = Union(area, DrawCoverage(view, x, y, coverage, width, height, ResolveColour(*context, context->textColour)));
    AfterDrawing(window, area);
    return TRUE;
}

int GetTextFaceA(HDC dc, int count, char* name)
{
    DeviceContext* context = FindContext(dc);
    FontRequest request;
    if (!context || !RequestOf(*context, request))
        return 0;
    const std::string& family = request.face.family;
    if (!name)
        return int(family.size() + 1);
    if (count < 1)
        return 0;
    const std::size_t n = std::min(family.size(), std::size_t(count - 1));
    std::memcpy(name, family.data(), n);
    name[n] = '\0';
    return int(n + 1);
}

int QorGetMissingGlyphs(HDC dc, const char* text, int count)
{
    DeviceContext* context = FindContext(dc);
    FontRequest request;
    if (!context || !text || count < 0 || !RequestOf(*context, request))
        return -1;
    return int(CountMissingGlyphs(request.face, Big5ToUtf8(text, std::size_t(count))));
}

BOOL QorIsFaceFallback(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    FontRequest request;
    return context && RequestOf(*context, request) && request.face.fallback ? TRUE : FALSE;
}

BOOL GetTextMetricsA(HDC dc, TEXTMETRICA* metrics)
{
    DeviceContext* context = FindContext(dc);
    FontRequest request;
    FontMetrics raster;
    if (!context || !metrics || !RequestOf(*context, request) || !GetRasterMetrics(request, raster))
        return FALSE;
    const LOGFONTA& lf = context->font->logFont;
    *metrics = TEXTMETRICA{};
    metrics->tmHeight = LONG(raster.height);
    metrics->tmAscent = LONG(raster.ascent);
    metrics->tmDescent = LONG(raster.descent);
    metrics->tmInternalLeading = LONG(std::max(0L, raster.height - raster.emHeight));
    metrics->tmExternalLeading = LONG(std::max(0L, raster.lineSkip - raster.height));
    metrics->tmAveCharWidth = LONG(raster.aveCharWidth);
    metrics->tmMaxCharWidth = LONG(raster.maxCharWidth);
    metrics->tmWeight = lf.lfWeight ? lf.lfWeight : FW_NORMAL;
    metrics->tmDigitizedAspectX = 96;
    metrics->tmDigitizedAspectY = 96;
    metrics->tmFirstChar = 0x20;
    metrics->tmLastChar = 0xFF;
    metrics->tmDefaultChar = '?';
    metrics->tmBreakChar = ' ';
    metrics->tmItalic = lf.lfItalic ? 1 : 0;
    metrics->tmUnderlined = lf.lfUnderline ? 1 : 0;
    metrics->tmStruckOut = lf.lfStrikeOut ? 1 : 0;
    metrics->tmCharSet = CHINESEBIG5_CHARSET;
    return TRUE;
}

BOOL GetTextExtentPoint32A(HDC dc, const char* text, int count, SIZE* size)
{
    DeviceContext* context = FindContext(dc);
    FontRequest request;
    if (!context || !size || !text || count < 0 || !RequestOf(*context, request))
        return FALSE;
    long width = 0;
    long height = 0;
    if (!MeasureRasterText(request, Big5ToUtf8(text, static_cast<std::size_t>(count)), width, height))
        return FALSE;
    size->cx = LONG(width);
    size->cy = LONG(height);
    return TRUE;
}

BOOL Rectangle(HDC dc, int left, int top, int right, int bottom)
{
    DeviceContext* context = FindContext(dc);
    PixelView view;
    HWND window = nullptr;
    if (!context || !TargetOf(*context, view, window))
        return FALSE;
    if (left > right)
        std::swap(left, right);
    if (top > bottom)
        std::swap(top, bottom);
    RECT area = {0, 0, 0, 0};
    const bool pen = context->pen && !context->pen->hollow;
    if (context->brush && !context->brush->hollow)
    {
        const std::uint32_t fill = EncodeColour(view, ResolveColour(*context, context->brush->colour));
        area = pen ? FillValue(view, left + 1, top + 1, right - 1, bottom - 1, fill)
                   : FillValue(view, left, top, right - 1, bottom - 1, fill);
    }
    if (pen && right - left >= 1 && bottom - top >= 1)
    {
        const std::uint32_t line = EncodeColour(view, ResolveColour(*context, context->pen->colour));
        area = Union(area, FillValue(view, left, top, right, top + 1, line));
        area = Union(area, FillValue(view, left, bottom - 1, right, bottom, line));
        area = Union(area, FillValue(view, left, top, left + 1, bottom, line));
        area = Union(area, FillValue(view, right - 1, top, right, bottom, line));
    }
    AfterDrawing(window, area);
    return TRUE;
}

int FillRect(HDC dc, const RECT* rect, HBRUSH brush)
{
    DeviceContext* context = FindContext(dc);
    GdiObject* object = FindObject(brush);
    PixelView view;
    HWND window = nullptr;
    if (!context || !rect || !object || object->kind != GdiKind::kBrush || !TargetOf(*context, view, window))
        return 0;
    auto* fill = static_cast<BrushObject*>(object);
    if (fill->hollow)
        return 1;
    const RECT area = FillValue(view, rect->left, rect->top, rect->right, rect->bottom,
                                EncodeColour(view, ResolveColour(*context, fill->colour)));
    AfterDrawing(window, area);
    return 1;
}

COLORREF GetPixel(HDC dc, int x, int y)
{
    DeviceContext* context = FindContext(dc);
    PixelView view;
    HWND window = nullptr;
    if (!context || !TargetOf(*context, view, window) || x < 0 || y < 0 || x >= view.width || y >= view.height)
        return CLR_INVALID;
    return ReadColour(view, x, y);
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour)
{
    DeviceContext* context = FindContext(dc);
    PixelView view;
    HWND window = nullptr;
    if (!context || !TargetOf(*context, view, window) || x < 0 || y < 0 || x >= view.width || y >= view.height)
        return CLR_INVALID;
    const std::uint32_t value = EncodeColour(view, ResolveColour(*context, colour));
    StoreValue(view, x, y, value);
    AfterDrawing(window, RECT{x, y, x + 1, y + 1});
    return DecodeColour(view, value);
}

BOOL BitBlt(HDC dc, int x, int y, int width, int height, HDC source, int sx, int sy, DWORD rop)
{
    if (width <= 0 || height <= 0)
        return FindContext(dc) ? TRUE : FALSE;
    return StretchBlt(dc, x, y, width, height, source, sx, sy, width, height, rop);
}

BOOL StretchBlt(HDC dc, int x, int y, int width, int height, HDC source, int sx, int sy, int sw, int sh, DWORD rop)
{
    DeviceContext* context = FindContext(dc);
    DeviceContext* from = source ? FindContext(source) : nullptr;
    PixelView view;
    HWND window = nullptr;
    if (!context || !KnownRop(rop) || (NeedsSource(rop) && !from) || !TargetOf(*context, view, window))
        return FALSE;
    PixelView sourceView;
    HWND sourceWindow = nullptr;
    if (from && !TargetOf(*from, sourceView, sourceWindow))
        return FALSE;
    const RECT area = Transfer(view, x, y, width, height, sourceView, sx, sy, sw, sh, rop, ColoursOf(*context, from));
    AfterDrawing(window, area);
    return TRUE;
}

int StretchDIBits(HDC dc, int xd, int yd, int wd, int hd, int xs, int ys, int ws, int hs, const void* bits,
                  const BITMAPINFO* info, UINT usage, DWORD rop)
{
    DeviceContext* context = FindContext(dc);
    PixelView view;
    HWND window = nullptr;
    PixelView image;
    std::vector<RGBQUAD> table;
    if (!context || !KnownRop(rop) || !TargetOf(*context, view, window) ||
        !DibView(*context, info, usage, bits, image, table))
        return 0;
    // A bottom-up image counts its source rows from the bottom.
    if (info->bmiHeader.biHeight > 0)
        ys = int(image.height) - ys - hs;
    const RECT area = Transfer(view, xd, yd, wd, hd, image, xs, ys, ws, hs, rop, ColoursOf(*context, nullptr));
    AfterDrawing(window, area);
    return std::abs(hs);
}

int SetDIBitsToDevice(HDC dc, int xd, int yd, DWORD width, DWORD height, int xs, int ys, UINT startScan, UINT lines,
                      const void* bits, const BITMAPINFO* info, UINT usage)
{
    DeviceContext* context = FindContext(dc);
    PixelView view;
    HWND window = nullptr;
    PixelView image;
    std::vector<RGBQUAD> table;
    if (!context || !TargetOf(*context, view, window) || !DibView(*context, info, usage, bits, image, table))
        return 0;
    if (startScan != 0 || long(lines) < image.height)
        return 0;
    const long w = long(width);
    const long h = long(height);
    if (info->bmiHeader.biHeight > 0)
        ys = int(image.height - ys - h);
    const RECT area = Transfer(view, xd, yd, w, h, image, xs, ys, w, h, SRCCOPY, ColoursOf(*context, nullptr));
    AfterDrawing(window, area);
    return int(lines);
}
