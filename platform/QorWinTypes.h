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
