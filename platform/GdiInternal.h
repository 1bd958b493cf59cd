#pragma once

// The drawing layer's own records behind the handles of platform/QorGdi.h. Every port shares them:
// bitmaps, palettes, fonts, brushes and pens are plain memory, and a window context draws into the
// window's 32-bit frame and then presents the changed area through the window's port.
#include "platform/QorGdi.h"
#include "platform/QorWinTypes.h"
#include "platform/TextRaster.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qor::detail
{
enum class GdiKind
{
    kBitmap,
    kPalette,
    kFont,
    kBrush,
    kPen,
};

/// Pixels as the transfers see them: row 0 is the top row; rows are pitch bytes apart (negative for a
/// bottom-up image). 1-bit rows start with the leftmost pixel in the high bit.
struct PixelView
{
    unsigned char* top = nullptr;
    long pitch = 0;
    long width = 0;
    long height = 0;
    int bitsPerPixel = 0;
    /// 1 and 8 bits: the colour table. Unused with systemIndices.
    const RGBQUAD* table = nullptr;
    int tableSize = 0;
    /// 8 bits: the values are indices of the emulated system palette (device-dependent bitmaps).
    bool systemIndices = false;
    /// 1 bit: a monochrome device-dependent bitmap, converted with the contexts' text and background colours.
    bool monochrome = false;
};

struct GdiObject
{
    explicit GdiObject(GdiKind k) : kind(k) {}
    virtual ~GdiObject() = default;
    GdiKind kind;
    bool stock = false;
    /// Contexts that have it selected; a selected object cannot be deleted.
    int selected = 0;
    /// The wrapper Attach-ed to it, if any, else the wrapper FromHandle made (owned here).
    CGdiObject* wrapper = nullptr;
    std::unique_ptr<CGdiObject> temporary;
};

struct BitmapObject : GdiObject
{
    BitmapObject() : GdiObject(GdiKind::kBitmap) {}
    long width = 0;
    long height = 0;
    int bitsPerPixel = 0;
    /// Row length in bytes, padded to 4.
    long pitch = 0;
    bool bottomUp = false;
    bool dibSection = false;
    bool systemIndices = false;
    bool monochrome = false;
    std::unique_ptr<unsigned char[]> bits;
    /// Pixels the bitmap views without owning them (QorCreateBitmapOver); bits is then empty.
    unsigned char* external = nullptr;
    RGBQUAD table[256] = {};
    int tableSize = 0;

    unsigned char* Data() { return external ? external : bits.get(); }
    PixelView View();
};

struct PaletteObject : GdiObject
{
    PaletteObject() : GdiObject(GdiKind::kPalette) {}
    std::vector<PALETTEENTRY> entries;
    /// Where each entry landed at the last foreground realisation on the display: system palette index,
    /// or -1 for an entry matched to the nearest colour instead.
    std::vector<int> systemSlot;
};

struct FontObject : GdiObject
{
    FontObject() : GdiObject(GdiKind::kFont) {}
    LOGFONTA logFont = {};
    /// The face file, found on first use.
    bool resolved = false;
    bool found = false;
    FaceFile face;
};

struct BrushObject : GdiObject
{
    BrushObject() : GdiObject(GdiKind::kBrush) {}
    COLORREF colour = 0;
    bool hollow = false;
};

struct PenObject : GdiObject
{
    PenObject() : GdiObject(GdiKind::kPen) {}
    COLORREF colour = 0;
    bool hollow = false;
};

struct DeviceContext
{
    /// A window context draws into the window's frame; a memory context into its selected bitmap.
    HWND window = nullptr;
    BitmapObject* bitmap = nullptr;
    FontObject* font = nullptr;
    BrushObject* brush = nullptr;
    PenObject* pen = nullptr;
    PaletteObject* palette = nullptr;
    COLORREF textColour = RGB(0, 0, 0);
    COLORREF bkColour = RGB(255, 255, 255);
    int bkMode = OPAQUE;
    int mapMode = MM_TEXT;
    bool paletteBackground = false;
};

/// The live context a handle names, or null.
DeviceContext* FindContext(HDC dc);
/// The live object a handle names when it is of kind, or null.
GdiObject* FindObject(HGDIOBJ handle);

/// The surface a context draws into: the window's frame or the selected bitmap. window receives the
/// window to present to afterwards (null for a memory context). False for a closed window.
bool TargetOf(DeviceContext& dc, PixelView& view, HWND& window);
/// Presents the area of a window context's drawing; nothing for memory contexts or an empty area.
void AfterDrawing(HWND window, const RECT& area);
/// A colour of dc's world: PALETTEINDEX colours name entries of its selected palette.
COLORREF ResolveColour(const DeviceContext& dc, COLORREF colour);

/// The emulated 8-bit display's system palette: the 20 static colours at 0-9 and 246-255, the
/// realised logical palettes' reserved entries at 10-245.
PALETTEENTRY* SystemPalette();

// Pixel conversions (QorGdiPixels.cpp).

/// The colour of pixel (x, y); x and y must lie inside the view.
COLORREF ReadColour(const PixelView& view, long x, long y);
/// The view's own value for a colour: an index (nearest table or system palette entry) or packed bits.
std::uint32_t EncodeColour(const PixelView& view, COLORREF colour);
/// The colour a value of the view stands for.
COLORREF DecodeColour(const PixelView& view, std::uint32_t value);
std::uint32_t LoadValue(const PixelView& view, long x, long y);
void StoreValue(const PixelView& view, long x, long y, std::uint32_t value);

/// How a transfer meets monochrome bitmaps: a monochrome source's 0 bits take the destination
/// context's text colour and its 1 bits its background colour; a colour source becomes 1 in a
/// monochrome destination where it equals the source context's background colour.
struct TransferColours
{
    COLORREF destinationText = 0;
    COLORREF destinationBackground = RGB(255, 255, 255);
    COLORREF sourceBackground = RGB(255, 255, 255);
};

/// Copies the source rectangle (sx, sy, sw, sh) to the destination rectangle (dx, dy, dw, dh), stretched
/// by nearest neighbour (negative extents mirror), with the raster operation. Both rectangles are clipped
/// to their images. Returns the destination area written, empty when nothing was.
RECT Transfer(const PixelView& dst, long dx, long dy, long dw, long dh, const PixelView& src, long sx, long sy, long sw,
              long sh, DWORD rop, const TransferColours& colours);
/// Fills the rectangle [left, right) x [top, bottom), clipped, with value; returns the area written.
RECT FillValue(const PixelView& view, long left, long top, long right, long bottom, std::uint32_t value);

/// Big5 (code page 950) text to UTF-8 through QorBig5ToUtf8; what does not convert becomes U+FFFD.
std::string Big5ToUtf8(const char* text, std::size_t length);
/// UTF-8 text to Big5; characters without a Big5 form become "?".
std::string Utf8ToBig5(const char* text, std::size_t length);
} // namespace qor::detail
