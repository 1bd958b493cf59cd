#pragma once

#include <cstdint>

// The Windows bitmap structures and integer names that the library's signatures use. They are our own
// definitions: packed like the originals so that sizeof matches the file layout (14, 40 and 12 bytes),
// with fixed-width members. Readers still decode the fields one at a time, little-endian.

typedef std::uint8_t BYTE;
typedef std::uint16_t WORD;
typedef std::uint32_t DWORD;
typedef std::int32_t LONG;

#pragma pack(push, 2)
/// The 14-byte header at the start of a BMP file.
struct BITMAPFILEHEADER
{
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
};
#pragma pack(pop)

/// The 40-byte information header of a BMP file or a device-independent bitmap.
struct BITMAPINFOHEADER
{
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};

/// The 12-byte core header of an OS/2-style BMP file.
struct BITMAPCOREHEADER
{
    DWORD bcSize;
    WORD bcWidth;
    WORD bcHeight;
    WORD bcPlanes;
    WORD bcBitCount;
};

static_assert(sizeof(BITMAPFILEHEADER) == 14, "BMP file header must match the file layout");
static_assert(sizeof(BITMAPINFOHEADER) == 40, "BMP info header must match the file layout");
static_assert(sizeof(BITMAPCOREHEADER) == 12, "BMP core header must match the file layout");

enum : DWORD
{
    BI_RGB = 0,
    BI_RLE8 = 1,
    BI_RLE4 = 2,
    BI_BITFIELDS = 3,
};

// The window system's integer, handle and record names used by the drawing and windowing layer
// (platform/QorGdi.h, platform/QorWindow.h). Handles are opaque pointers, distinct per kind as on
// Windows, so that overloads on them resolve the same way.

typedef int BOOL;
typedef unsigned int UINT;
typedef std::int16_t SHORT;
typedef std::uintptr_t WPARAM;
typedef std::intptr_t LPARAM;
typedef std::intptr_t LRESULT;
typedef std::uintptr_t UINT_PTR;
typedef DWORD COLORREF;

#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif

typedef struct HWND__* HWND;
typedef struct HDC__* HDC;
typedef void* HGDIOBJ;
typedef struct HBITMAP__* HBITMAP;
typedef struct HPALETTE__* HPALETTE;
typedef struct HFONT__* HFONT;
typedef struct HBRUSH__* HBRUSH;
typedef struct HPEN__* HPEN;
typedef struct HKL__* HKL;
typedef struct HIMC__* HIMC;
typedef void* HANDLE;

/// A window procedure: receives the messages dispatched or sent to its window.
typedef LRESULT (*WNDPROC)(HWND, UINT, WPARAM, LPARAM);

struct POINT
{
    LONG x;
    LONG y;
};

struct SIZE
{
    LONG cx;
    LONG cy;
};

/// A rectangle whose right and bottom edges are exclusive.
struct RECT
{
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

/// A window message: the window, the code, two parameters, the time (clock milliseconds) and the
/// mouse point when it was queued (the last mouse message's point, in its window's client coordinates).
struct MSG
{
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

/// A colour-table entry of a device-independent bitmap: blue first.
struct RGBQUAD
{
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};
static_assert(sizeof(RGBQUAD) == 4, "a colour-table entry is four bytes");

/// A device-independent bitmap's description: the header, then as many colour-table entries as the
/// bit count needs (the caller provides the room past the first).
struct BITMAPINFO
{
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};

/// A bitmap's description as GetObject reports it and CreateBitmapIndirect takes it.
struct BITMAP
{
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    void* bmBits;
};

/// A logical palette's entry: red, green, blue, flags (PC_RESERVED, PC_EXPLICIT, PC_NOCOLLAPSE).
struct PALETTEENTRY
{
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
};
static_assert(sizeof(PALETTEENTRY) == 4, "a palette entry is four bytes");

/// A logical palette: version 0x300, the number of entries, then the entries (the caller provides the
/// room past the first).
struct LOGPALETTE
{
    WORD palVersion;
    WORD palNumEntries;
    PALETTEENTRY palPalEntry[1];
};

enum : int
{
    LF_FACESIZE = 32,
};

/// A font's description. Face names are Big5 bytes.
struct LOGFONTA
{
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE];
};

/// The metrics of a device's current font, in device units.
struct TEXTMETRICA
{
    LONG tmHeight;
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    BYTE tmFirstChar;
    BYTE tmLastChar;
    BYTE tmDefaultChar;
    BYTE tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};
typedef TEXTMETRICA TEXTMETRIC;
typedef LOGFONTA LOGFONT;

constexpr COLORREF RGB(BYTE r, BYTE g, BYTE b)
{
    return COLORREF(r) | (COLORREF(g) << 8) | (COLORREF(b) << 16);
}
constexpr BYTE GetRValue(COLORREF c)
{
    return BYTE(c);
}
constexpr BYTE GetGValue(COLORREF c)
{
    return BYTE(c >> 8);
}
constexpr BYTE GetBValue(COLORREF c)
{
    return BYTE(c >> 16);
}
/// A colour that names entry index of the device's selected logical palette.
constexpr COLORREF PALETTEINDEX(WORD index)
{
    return 0x01000000u | index;
}
constexpr WORD LOWORD(std::uintptr_t v)
{
    return WORD(v);
}
constexpr WORD HIWORD(std::uintptr_t v)
{
    return WORD(v >> 16);
}
/// The packed point of a mouse message: x in the low word, y in the high word, each signed.
constexpr LPARAM MAKELPARAM(WORD low, WORD high)
{
    return LPARAM(DWORD(low) | (DWORD(high) << 16));
}
constexpr int GET_X_LPARAM(LPARAM l)
{
    return SHORT(WORD(l));
}
constexpr int GET_Y_LPARAM(LPARAM l)
{
    return SHORT(WORD(l >> 16));
}

// Message codes.
enum : UINT
{
    WM_NULL = 0x0000,
    WM_CREATE = 0x0001,
    WM_DESTROY = 0x0002,
    WM_PAINT = 0x000F,
    WM_CLOSE = 0x0010,
    WM_QUIT = 0x0012,
    WM_KEYFIRST = 0x0100,
    WM_KEYDOWN = 0x0100,
    WM_KEYUP = 0x0101,
    WM_CHAR = 0x0102,
    WM_KEYLAST = 0x0109,
    WM_IME_STARTCOMPOSITION = 0x010D,
    WM_IME_ENDCOMPOSITION = 0x010E,
    WM_IME_COMPOSITION = 0x010F,
    WM_TIMER = 0x0113,
    WM_MOUSEFIRST = 0x0200,
    WM_MOUSEMOVE = 0x0200,
    WM_LBUTTONDOWN = 0x0201,
    WM_LBUTTONUP = 0x0202,
    WM_LBUTTONDBLCLK = 0x0203,
    WM_RBUTTONDOWN = 0x0204,
    WM_RBUTTONUP = 0x0205,
    WM_RBUTTONDBLCLK = 0x0206,
    WM_MBUTTONDOWN = 0x0207,
    WM_MBUTTONUP = 0x0208,
    WM_MBUTTONDBLCLK = 0x0209,
    WM_MOUSEWHEEL = 0x020A,
    WM_MOUSELAST = 0x020A,
    WM_USER = 0x0400,
};

// PeekMessageA options.
enum : UINT
{
    PM_NOREMOVE = 0,
    PM_REMOVE = 1,
};

// Mouse message key flags (wParam).
enum : WPARAM
{
    MK_LBUTTON = 0x0001,
    MK_RBUTTON = 0x0002,
    MK_SHIFT = 0x0004,
    MK_CONTROL = 0x0008,
    MK_MBUTTON = 0x0010,
};

// Virtual-key codes. Letters and digits are their upper-case ASCII codes ('A' = 0x41, '0' = 0x30).
enum : int
{
    VK_LBUTTON = 0x01,
    VK_RBUTTON = 0x02,
    VK_MBUTTON = 0x04,
    VK_BACK = 0x08,
    VK_TAB = 0x09,
    VK_RETURN = 0x0D,
    VK_SHIFT = 0x10,
    VK_CONTROL = 0x11,
    VK_MENU = 0x12,
    VK_PAUSE = 0x13,
    VK_CAPITAL = 0x14,
    VK_ESCAPE = 0x1B,
    VK_SPACE = 0x20,
    VK_PRIOR = 0x21,
    VK_NEXT = 0x22,
    VK_END = 0x23,
    VK_HOME = 0x24,
    VK_LEFT = 0x25,
    VK_UP = 0x26,
    VK_RIGHT = 0x27,
    VK_DOWN = 0x28,
    VK_SNAPSHOT = 0x2C,
    VK_INSERT = 0x2D,
    VK_DELETE = 0x2E,
    VK_LWIN = 0x5B,
    VK_RWIN = 0x5C,
    VK_APPS = 0x5D,
    VK_NUMPAD0 = 0x60,
    VK_NUMPAD9 = 0x69,
    VK_MULTIPLY = 0x6A,
    VK_ADD = 0x6B,
    VK_SUBTRACT = 0x6D,
    VK_DECIMAL = 0x6E,
    VK_DIVIDE = 0x6F,
    VK_F1 = 0x70,
    VK_F12 = 0x7B,
    VK_NUMLOCK = 0x90,
    VK_SCROLL = 0x91,
    VK_OEM_1 = 0xBA,
    VK_OEM_PLUS = 0xBB,
    VK_OEM_COMMA = 0xBC,
    VK_OEM_MINUS = 0xBD,
    VK_OEM_PERIOD = 0xBE,
    VK_OEM_2 = 0xBF,
    VK_OEM_3 = 0xC0,
    VK_OEM_4 = 0xDB,
    VK_OEM_5 = 0xDC,
    VK_OEM_6 = 0xDD,
    VK_OEM_7 = 0xDE,
};

// GetSystemMetrics indices.
enum : int
{
    SM_CXSCREEN = 0,
    SM_CYSCREEN = 1,
};

// MessageBoxA types and results.
enum : UINT
{
    MB_OK = 0x00,
    MB_OKCANCEL = 0x01,
    MB_ABORTRETRYIGNORE = 0x02,
    MB_YESNOCANCEL = 0x03,
    MB_YESNO = 0x04,
    MB_RETRYCANCEL = 0x05,
    MB_ICONERROR = 0x10,
    MB_ICONQUESTION = 0x20,
    MB_ICONWARNING = 0x30,
    MB_ICONINFORMATION = 0x40,
};
enum : int
{
    IDOK = 1,
    IDCANCEL = 2,
    IDABORT = 3,
    IDRETRY = 4,
    IDIGNORE = 5,
    IDYES = 6,
    IDNO = 7,
};

// Raster operations of the block transfers.
enum : DWORD
{
    SRCCOPY = 0x00CC0020,
    SRCPAINT = 0x00EE0086,
    SRCAND = 0x008800C6,
    SRCINVERT = 0x00660046,
    NOTSRCCOPY = 0x00330008,
    BLACKNESS = 0x00000042,
    WHITENESS = 0x00FF0062,
};

// Background modes, mapping modes, colour-table usages, palette flags.
enum : int
{
    TRANSPARENT = 1,
    OPAQUE = 2,
    MM_TEXT = 1,
    MM_LOMETRIC = 2,
    MM_HIMETRIC = 3,
    MM_LOENGLISH = 4,
    MM_HIENGLISH = 5,
    MM_TWIPS = 6,
    MM_ISOTROPIC = 7,
    MM_ANISOTROPIC = 8,
    DIB_RGB_COLORS = 0,
    DIB_PAL_COLORS = 1,
    /// No colour table: 8-bit pixels are indices of the (emulated) system palette.
    DIB_PAL_INDICES = 2,
};
enum : BYTE
{
    PC_RESERVED = 0x01,
    PC_EXPLICIT = 0x02,
    PC_NOCOLLAPSE = 0x04,
};

// Stock objects.
enum : int
{
    WHITE_BRUSH = 0,
    LTGRAY_BRUSH = 1,
    GRAY_BRUSH = 2,
    DKGRAY_BRUSH = 3,
    BLACK_BRUSH = 4,
    NULL_BRUSH = 5,
    WHITE_PEN = 6,
    BLACK_PEN = 7,
    NULL_PEN = 8,
    OEM_FIXED_FONT = 10,
    ANSI_FIXED_FONT = 11,
    ANSI_VAR_FONT = 12,
    SYSTEM_FONT = 13,
    DEVICE_DEFAULT_FONT = 14,
    DEFAULT_PALETTE = 15,
    SYSTEM_FIXED_FONT = 16,
    DEFAULT_GUI_FONT = 17,
};

// Pen styles, font weights, qualities and character sets.
enum : int
{
    PS_SOLID = 0,
    PS_NULL = 5,
    FW_DONTCARE = 0,
    FW_NORMAL = 400,
    FW_BOLD = 700,
    DEFAULT_QUALITY = 0,
    NONANTIALIASED_QUALITY = 3,
    ANTIALIASED_QUALITY = 4,
    CLEARTYPE_QUALITY = 5,
    ANSI_CHARSET = 0,
    DEFAULT_CHARSET = 1,
    CHINESEBIG5_CHARSET = 136,
};

// GetDeviceCaps indices and raster capabilities.
enum : int
{
    BITSPIXEL = 12,
    PLANES = 14,
    RASTERCAPS = 38,
    HORZRES = 8,
    VERTRES = 10,
    SIZEPALETTE = 104,
    NUMRESERVED = 106,
    RC_BITBLT = 0x0001,
    RC_PALETTE = 0x0100,
    RC_DI_BITMAP = 0x0080,
    RC_STRETCHBLT = 0x0800,
    RC_STRETCHDIB = 0x2000,
};

// Input method: the toggle hot key between the input method and direct input.
enum : DWORD
{
    IME_THOTKEY_IME_NONIME_TOGGLE = 0x70,
};

// Input-method composition: what ImmGetCompositionStringA reads, and the caret area of
// ImmSetCompositionWindow.
enum : DWORD
{
    GCS_COMPSTR = 0x0008,
    GCS_CURSORPOS = 0x0080,
    GCS_RESULTSTR = 0x0800,
    CFS_DEFAULT = 0x0000,
    CFS_RECT = 0x0001,
    CFS_POINT = 0x0002,
    CFS_FORCE_POSITION = 0x0020,
};

struct COMPOSITIONFORM
{
    DWORD dwStyle;
    POINT ptCurrentPos;
    RECT rcArea;
};
