#pragma once

#include "core/QorExport.h"

// The drawing layer in the roles of the Windows GDI and its class wrappers: device contexts (memory
// contexts and the contexts of a window's client area), bitmaps and device-independent sections,
// logical palettes on an emulated 8-bit display, fonts, brushes and pens, text, block and stretched
// transfers. It is plain software over memory images, the same on every port.
//
// Coordinates are device units with y downward whatever the mapping mode (the mode is only recorded).
// A window is true colour (32 bits: blue, green, red, unused); 8-bit device-dependent bitmaps hold
// indices of the emulated system palette, whose entries 0-9 and 246-255 are the 20 static colours and
// whose entries 10-245 (black at first) receive, in order, the reserved entries (PC_RESERVED, and
// PC_NOCOLLAPSE as on Windows) of the logical palette last realised in the foreground on a window context.
#include "core/QorString.h"
#include "platform/QorWinTypes.h"

class CWnd;

/// The text type of the drawing signatures: the library's own byte string, so Big5 passes unchanged.
typedef QorString CString;

enum : COLORREF
{
    CLR_INVALID = 0xFFFFFFFF,
};

// Contexts.

/// A memory context holding a 1 x 1 monochrome bitmap, compatible with dc (null: the display).
QOR_API HDC CreateCompatibleDC(HDC dc);
/// Deletes a context made by CreateCompatibleDC or GetDC; what was selected into it stays alive.
QOR_API BOOL DeleteDC(HDC dc);
/// A context for the client area of a window; null for a window that does not exist.
QOR_API HDC GetDC(HWND window);
QOR_API int ReleaseDC(HWND window, HDC dc);
/// Selects a bitmap (memory contexts only), font, brush or pen; returns the previous one, null on failure.
QOR_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
/// Deletes a bitmap, palette, font, brush or pen. Stock objects are kept (TRUE); an object selected into
/// a context is refused (FALSE).
QOR_API BOOL DeleteObject(HGDIOBJ object);
QOR_API HGDIOBJ GetStockObject(int index);
/// Copies a BITMAP (bitmaps), a WORD entry count (palettes) or a LOGFONTA (fonts) into buffer; returns the
/// bytes written, or the bytes needed when buffer is null; 0 on failure.
QOR_API int GetObjectA(HGDIOBJ object, int size, void* buffer);
/// HORZRES, VERTRES (the bitmap or window size), BITSPIXEL, PLANES, SIZEPALETTE, NUMRESERVED, RASTERCAPS.
QOR_API int GetDeviceCaps(HDC dc, int index);

// Bitmaps.

/// A device-dependent bitmap of 1, 8, 16, 24 or 32 bits per pixel; bits (rows padded to 2 bytes, top row
/// first) may be null for zeroed pixels. A width or height of 0 gives a 1 x 1 monochrome bitmap.
/// \note 8-bit pixels are indices of the system palette; 16-bit pixels are X1R5G5B5.
QOR_API HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void* bits);
/// The same from a description; bmBits rows are bmWidthBytes apart.
QOR_API HBITMAP CreateBitmapIndirect(const BITMAP* description);
/// A device-dependent bitmap over description's bits (rows bmWidthBytes apart), without a copy: transfers
/// read them in place and drawing into the bitmap changes them.
/// \note The caller keeps the bits alive, and their size unchanged, until the bitmap is deleted.
QOR_API HBITMAP QorCreateBitmapOver(const BITMAP* description);
/// A bitmap in the format of dc's surface: 32 bits for a window, the selected bitmap's format otherwise.
QOR_API HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);
/// A device-independent section of 1, 8, 16, 24 or 32 bits (BI_RGB) whose pixels the caller reaches through
/// *bits: rows padded to 4 bytes, top row first when biHeight is negative. usage DIB_RGB_COLORS reads the
/// colour table from info, DIB_PAL_COLORS reads WORD indices of dc's selected palette, DIB_PAL_INDICES
/// takes 8-bit pixels as system palette indices. section must be null. Null on failure.
QOR_API HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD offset);

// Palettes.

/// A logical palette of 1 to 256 entries.
QOR_API HPALETTE CreatePalette(const LOGPALETTE* description);
QOR_API UINT GetPaletteEntries(HPALETTE palette, UINT start, UINT count, PALETTEENTRY* entries);
QOR_API UINT SetPaletteEntries(HPALETTE palette, UINT start, UINT count, const PALETTEENTRY* entries);
/// Changes entries; reserved entries that hold a system palette slot change the system palette at once.
QOR_API BOOL AnimatePalette(HPALETTE palette, UINT start, UINT count, const PALETTEENTRY* entries);
QOR_API UINT GetNearestPaletteIndex(HPALETTE palette, COLORREF colour);
/// Selects palette into dc; returns the previous palette. Background selection never changes the
/// system palette.
QOR_API HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL forceBackground);
/// On a window context with a palette selected in the foreground: system entries 10-245 receive the
/// palette's reserved entries in order. Returns the number of entries placed; GDI_ERROR on failure.
QOR_API UINT RealizePalette(HDC dc);
/// Reads the emulated system palette.
QOR_API UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY* entries);

enum : UINT
{
    GDI_ERROR = 0xFFFFFFFF,
};

// Fonts, brushes, pens.

/// A font by face name (Big5 bytes; "" for the Kai face), height (below 0 the character height, above 0
/// the cell height, 0 the default 16), width (0 keeps the proportions), weight (600 and above is bold),
/// italic, underline and strike-out. Quality ANTIALIASED_QUALITY or CLEARTYPE_QUALITY smooths the glyphs;
/// the others draw them flat. The other fields are recorded.
QOR_API HFONT CreateFontA(int height, int width, int escapement, int orientation, int weight, DWORD italic,
                          DWORD underline, DWORD strikeOut, DWORD charSet, DWORD outPrecision, DWORD clipPrecision,
                          DWORD quality, DWORD pitchAndFamily, const char* face);
QOR_API HFONT CreateFontIndirectA(const LOGFONTA* description);
QOR_API HBRUSH CreateSolidBrush(COLORREF colour);
/// PS_NULL draws nothing; any other style draws a solid one-pixel line.
QOR_API HPEN CreatePen(int style, int width, COLORREF colour);

// Context state.

QOR_API COLORREF SetTextColor(HDC dc, COLORREF colour);
QOR_API COLORREF GetTextColor(HDC dc);
QOR_API COLORREF SetBkColor(HDC dc, COLORREF colour);
QOR_API COLORREF GetBkColor(HDC dc);
/// OPAQUE (text cells filled with the background colour) or TRANSPARENT; returns the previous mode, 0 on failure.
QOR_API int SetBkMode(HDC dc, int mode);
QOR_API int GetBkMode(HDC dc);
/// Records the mapping mode (MM_TEXT on a new context); drawing stays in device units.
QOR_API int SetMapMode(HDC dc, int mode);
QOR_API int GetMapMode(HDC dc);

// Drawing.

/// Draws count bytes of Big5 text with the cell's top-left corner at (x, y).
QOR_API BOOL TextOutA(HDC dc, int x, int y, const char* text, int count);
/// The metrics of dc's current font; FALSE when the font cannot be loaded.
QOR_API BOOL GetTextMetricsA(HDC dc, TEXTMETRICA* metrics);
QOR_API BOOL GetTextExtentPoint32A(HDC dc, const char* text, int count, SIZE* size);
/// The family name of the face the context's font actually uses (the Kai face when the name asked for
/// is unknown), copied into name (at most count bytes with the terminator). Returns the bytes copied
/// with the terminator, or the size needed when name is null; 0 for a context without a usable font.
QOR_API int GetTextFaceA(HDC dc, int count, char* name);
/// How many characters of count bytes of Big5 text the context's face has no glyph for (they would
/// show as empty boxes): 0 when it covers them all, -1 for a context without a usable font.
QOR_API int QorGetMissingGlyphs(HDC dc, const char* text, int count);
/// True when the context's font name was not found and the Kai face stands in for it.
QOR_API BOOL QorIsFaceFallback(HDC dc);
/// Outlines [left, right) x [top, bottom) with the pen and fills the inside with the brush (with the null
/// pen the filled area is one pixel smaller on the right and bottom).
QOR_API BOOL Rectangle(HDC dc, int left, int top, int right, int bottom);
QOR_API int FillRect(HDC dc, const RECT* rect, HBRUSH brush);
/// The colour of a pixel, CLR_INVALID outside the surface.
QOR_API COLORREF GetPixel(HDC dc, int x, int y);
/// Sets a pixel to the nearest colour the surface holds; returns that colour, CLR_INVALID outside.
QOR_API COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour);
/// Copies width x height pixels from (sx, sy) of source to (x, y) of dc, clipped to both surfaces. rop is
/// SRCCOPY, SRCAND, SRCPAINT, SRCINVERT, NOTSRCCOPY, BLACKNESS or WHITENESS (source null for the last two).
/// Pixel bytes of equal formats are copied unchanged; others go through their colours.
QOR_API BOOL BitBlt(HDC dc, int x, int y, int width, int height, HDC source, int sx, int sy, DWORD rop);
/// As BitBlt, stretched by nearest neighbour: destination pixel i takes source pixel i * sw / dw.
/// Negative extents mirror.
QOR_API BOOL StretchBlt(HDC dc, int x, int y, int width, int height, HDC source, int sx, int sy, int sw, int sh,
                        DWORD rop);
/// Stretched transfer from a device-independent image (bits described by info, colour table by usage).
/// For a bottom-up image ys counts from the bottom row. Returns the number of rows copied, 0 on failure.
QOR_API int StretchDIBits(HDC dc, int xd, int yd, int wd, int hd, int xs, int ys, int ws, int hs, const void* bits,
                          const BITMAPINFO* info, UINT usage, DWORD rop);
/// 1:1 transfer from a device-independent image; only the whole image as one band (startScan 0, lines at
/// least the height) is taken. For a bottom-up image ys counts from the bottom row. Returns the rows copied.
QOR_API int SetDIBitsToDevice(HDC dc, int xd, int yd, DWORD width, DWORD height, int xs, int ys, UINT startScan,
                              UINT lines, const void* bits, const BITMAPINFO* info, UINT usage);

inline BOOL TextOut(HDC dc, int x, int y, const char* text, int count)
{
    return TextOutA(dc, x, y, text, count);
}
inline int GetTextFace(HDC dc, int count, char* name)
{
    return GetTextFaceA(dc, count, name);
}
inline BOOL GetTextMetrics(HDC dc, TEXTMETRICA* metrics)
{
    return GetTextMetricsA(dc, metrics);
}
inline int GetObject(HGDIOBJ object, int size, void* buffer)
{
    return GetObjectA(object, size, buffer);
}

class CDC;

/// A drawing object owned through its handle: destroying the wrapper deletes the attached object.
class QOR_API CGdiObject
{
public:
    CGdiObject() = default;
    virtual ~CGdiObject();
    CGdiObject(const CGdiObject&) = delete;
    CGdiObject& operator=(const CGdiObject&) = delete;

    HGDIOBJ GetSafeHandle() const { return m_hObject; }
    operator HGDIOBJ() const { return m_hObject; }
    /// Takes charge of a handle; FALSE when the wrapper already holds one or the handle is not live.
    BOOL Attach(HGDIOBJ object);
    HGDIOBJ Detach();
    BOOL DeleteObject();
    BOOL CreateStockObject(int index);
    int GetObject(int size, void* buffer) const;
    /// The wrapper of a live handle: the one attached to it, or one the layer keeps until the object is
    /// deleted. Null for a handle that is not live.
    static CGdiObject* FromHandle(HGDIOBJ object);

    HGDIOBJ m_hObject = nullptr;
};

class QOR_API CBitmap : public CGdiObject
{
public:
    operator HBITMAP() const { return static_cast<HBITMAP>(m_hObject); }
    BOOL CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void* bits);
    BOOL CreateBitmapIndirect(const BITMAP* description);
    /// QorCreateBitmapOver: a bitmap viewing the caller's bits.
    BOOL CreateBitmapOver(const BITMAP* description);
    BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
    int GetBitmap(BITMAP* description) const;
    static CBitmap* FromHandle(HBITMAP bitmap);
};

class QOR_API CPalette : public CGdiObject
{
public:
    operator HPALETTE() const { return static_cast<HPALETTE>(m_hObject); }
    BOOL CreatePalette(const LOGPALETTE* description);
    int GetEntryCount() const;
    UINT GetPaletteEntries(UINT start, UINT count, PALETTEENTRY* entries) const;
    UINT SetPaletteEntries(UINT start, UINT count, const PALETTEENTRY* entries);
    void AnimatePalette(UINT start, UINT count, const PALETTEENTRY* entries);
    UINT GetNearestPaletteIndex(COLORREF colour) const;
    static CPalette* FromHandle(HPALETTE palette);
};

class QOR_API CFont : public CGdiObject
{
public:
    operator HFONT() const { return static_cast<HFONT>(m_hObject); }
    BOOL CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic, BYTE underline,
                    BYTE strikeOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision, BYTE quality,
                    BYTE pitchAndFamily, const char* face);
    BOOL CreateFontIndirect(const LOGFONTA* description);
    int GetLogFont(LOGFONTA* description) const;
};

class QOR_API CBrush : public CGdiObject
{
public:
    CBrush() = default;
    explicit CBrush(COLORREF colour) { CreateSolidBrush(colour); }
    operator HBRUSH() const { return static_cast<HBRUSH>(m_hObject); }
    BOOL CreateSolidBrush(COLORREF colour);
};

class QOR_API CPen : public CGdiObject
{
public:
    CPen() = default;
    CPen(int style, int width, COLORREF colour) { CreatePen(style, width, colour); }
    operator HPEN() const { return static_cast<HPEN>(m_hObject); }
    BOOL CreatePen(int style, int width, COLORREF colour);
};

/// A device context: destroying the wrapper deletes the attached context.
class QOR_API CDC
{
public:
    CDC() = default;
    virtual ~CDC();
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;

    HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }
    BOOL Attach(HDC dc);
    HDC Detach();
    /// A memory context compatible with dc (null: the display).
    BOOL CreateCompatibleDC(CDC* dc);
    BOOL DeleteDC();

    CGdiObject* SelectStockObject(int index);
    CBitmap* SelectObject(CBitmap* bitmap);
    CFont* SelectObject(CFont* font);
    CBrush* SelectObject(CBrush* brush);
    CPen* SelectObject(CPen* pen);
    CGdiObject* SelectObject(CGdiObject* object);
    /// Selects a handle into a context and returns the previous object's wrapper.
    static CGdiObject* SelectGdiObject(HDC dc, HGDIOBJ object);
    CPalette* SelectPalette(CPalette* palette, BOOL forceBackground);
    UINT RealizePalette();

    COLORREF SetTextColor(COLORREF colour);
    COLORREF GetTextColor() const;
    COLORREF SetBkColor(COLORREF colour);
    COLORREF GetBkColor() const;
    int SetBkMode(int mode);
    int GetBkMode() const;
    int SetMapMode(int mode);
    int GetMapMode() const;

    /// Draws count bytes of Big5 text at (x, y).
    virtual BOOL TextOut(int x, int y, const char* text, int count);
    BOOL TextOut(int x, int y, const CString& text);
    BOOL GetTextMetrics(TEXTMETRICA* metrics) const;
    SIZE GetTextExtent(const char* text, int count) const;
    /// The face the selected font actually uses, as GetTextFaceA.
    int GetTextFace(int count, char* name) const;
    /// Characters of count bytes of Big5 text the selected font's face has no glyph for, as QorGetMissingGlyphs.
    int GetMissingGlyphs(const char* text, int count) const;
    BOOL Rectangle(int left, int top, int right, int bottom);
    BOOL Rectangle(const RECT* rect);
    void FillRect(const RECT* rect, CBrush* brush);
    void FillSolidRect(int x, int y, int width, int height, COLORREF colour);
    COLORREF GetPixel(int x, int y) const;
    COLORREF SetPixel(int x, int y, COLORREF colour);
    BOOL BitBlt(int x, int y, int width, int height, CDC* source, int sx, int sy, DWORD rop);
    BOOL StretchBlt(int x, int y, int width, int height, CDC* source, int sx, int sy, int sw, int sh, DWORD rop);
    int GetDeviceCaps(int index) const;

    HDC m_hDC = nullptr;
};

/// The context of a window's client area, for as long as the object lives.
class QOR_API CClientDC : public CDC
{
public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

protected:
    HWND m_hWnd = nullptr;
};

/// The context of a whole window; windows have no frame of their own here, so it is the client area.
class QOR_API CWindowDC : public CClientDC
{
public:
    explicit CWindowDC(CWnd* window) : CClientDC(window) {}
};
