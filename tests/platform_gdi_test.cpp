// The drawing layer on the headless port: objects and contexts, every transfer kind pixel by pixel, the
// emulated 8-bit display's palette, fonts and text.
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

const PALETTEENTRY kStatic[20] = {
    {0, 0, 0, 0},       {128, 0, 0, 0},     {0, 128, 0, 0},     {128, 128, 0, 0},   {0, 0, 128, 0},
    {128, 0, 128, 0},   {0, 128, 128, 0},   {192, 192, 192, 0}, {192, 220, 192, 0}, {166, 202, 240, 0},
    {255, 251, 240, 0}, {160, 160, 164, 0}, {128, 128, 128, 0}, {255, 0, 0, 0},     {0, 255, 0, 0},
    {255, 255, 0, 0},   {0, 0, 255, 0},     {255, 0, 255, 0},   {0, 255, 255, 0},   {255, 255, 255, 0},
};

// A device-independent image description with room for a full colour table.
struct Info
{
    Info(long w, long h, int bits)
    {
        buffer.resize(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD));
        BITMAPINFOHEADER& header = Get()->bmiHeader;
        header.biSize = sizeof(BITMAPINFOHEADER);
        header.biWidth = LONG(w);
        header.biHeight = LONG(h);
        header.biPlanes = 1;
        header.biBitCount = WORD(bits);
        header.biCompression = BI_RGB;
    }
    BITMAPINFO* Get() { return reinterpret_cast<BITMAPINFO*>(buffer.data()); }
    void Colour(int i, BYTE r, BYTE g, BYTE b) { Get()->bmiColors[i] = RGBQUAD{b, g, r, 0}; }
    std::vector<unsigned char> buffer;
};

// A memory context with a device-independent section selected, every byte set to fill.
struct Surface
{
    Surface(long w, long h, int bits, unsigned char fill = 0, bool bottomUp = false, Info* info = nullptr)
        : width(w), height(h)
    {
        Info own(w, bottomUp ? h : -h, bits);
        Info& description = info ? *info : own;
        description.Get()->bmiHeader.biHeight = LONG(bottomUp ? h : -h);
        dc = CreateCompatibleDC(nullptr);
        void* p = nullptr;
        bitmap = CreateDIBSection(dc, description.Get(), DIB_RGB_COLORS, &p, nullptr, 0);
        data = static_cast<unsigned char*>(p);
        pitch = ((w * bits + 31) / 32) * 4;
        if (data)
            std::memset(data, fill, std::size_t(pitch * h));
        old = SelectObject(dc, bitmap);
    }
    ~Surface()
    {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    // Row y from the top, whatever the storage order.
    unsigned char* Row(long y, bool bottomUp = false) const { return data + pitch * (bottomUp ? height - 1 - y : y); }

    long width;
    long height;
    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;
    unsigned char* data = nullptr;
    long pitch = 0;
};

Bytes Pixel32(const Surface& s, long x, long y)
{
    return Bytes(s.Row(y) + x * 4, s.Row(y) + x * 4 + 4);
}

HPALETTE MakePalette(int count, PALETTEENTRY (*entry)(int))
{
    std::vector<unsigned char> buffer(sizeof(LOGPALETTE) + std::size_t(count) * sizeof(PALETTEENTRY));
    auto* description = reinterpret_cast<LOGPALETTE*>(buffer.data());
    description->palVersion = 0x300;
    description->palNumEntries = WORD(count);
    for (int i = 0; i < count; ++i)
        description->palPalEntry[i] = entry(i);
    return CreatePalette(description);
}

std::vector<PALETTEENTRY> SystemEntries(HDC dc)
{
    std::vector<PALETTEENTRY> entries(256);
    EXPECT_EQ(GetSystemPaletteEntries(dc, 0, 256, entries.data()), 256u);
    return entries;
}

bool Same(const PALETTEENTRY& a, const PALETTEENTRY& b)
{
    return a.peRed == b.peRed && a.peGreen == b.peGreen && a.peBlue == b.peBlue;
}
} // namespace

TEST(QorGdiObjects, MemoryContextStartsOnAOneByOneMonochromeBitmap)
{
    HDC dc = CreateCompatibleDC(nullptr);
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(GetPixel(dc, 0, 0), RGB(0, 0, 0));
    EXPECT_EQ(GetPixel(dc, 1, 0), CLR_INVALID);
    EXPECT_EQ(GetMapMode(dc), MM_TEXT);
    EXPECT_EQ(GetBkMode(dc), OPAQUE);
    EXPECT_EQ(GetTextColor(dc), RGB(0, 0, 0));
    EXPECT_EQ(GetBkColor(dc), RGB(255, 255, 255));
    HBITMAP compatible = CreateCompatibleBitmap(dc, 8, 2);
    BITMAP description = {};
    ASSERT_EQ(GetObjectA(compatible, sizeof(description), &description), int(sizeof(BITMAP)));
    EXPECT_EQ(description.bmBitsPixel, 1);
    EXPECT_EQ(description.bmWidth, 8);
    EXPECT_EQ(description.bmBits, nullptr);
    EXPECT_TRUE(DeleteObject(compatible));
    EXPECT_TRUE(DeleteDC(dc));
    EXPECT_FALSE(DeleteDC(dc));
}

TEST(QorGdiObjects, ZeroSizedBitmapIsAOneByOneMonochromeDot)
{
    HBITMAP dot = CreateBitmap(0, 5, 1, 32, nullptr);
    BITMAP description = {};
    ASSERT_EQ(GetObjectA(dot, sizeof(description), &description), int(sizeof(BITMAP)));
    EXPECT_EQ(description.bmWidth, 1);
    EXPECT_EQ(description.bmHeight, 1);
    EXPECT_EQ(description.bmBitsPixel, 1);
    EXPECT_TRUE(DeleteObject(dot));
    EXPECT_EQ(CreateBitmap(-1, 5, 1, 1, nullptr), nullptr);
    EXPECT_EQ(CreateBitmap(4, 4, 1, 4, nullptr), nullptr);
}

TEST(QorGdiObjects, SelectedObjectsCannotBeDeletedAndStockObjectsStay)
{
    HDC first = CreateCompatibleDC(nullptr);
    HDC second = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateBitmap(4, 4, 1, 32, nullptr);
    HGDIOBJ old = SelectObject(first, bitmap);
    ASSERT_NE(old, nullptr);
    // A bitmap goes into one context at a time.
    EXPECT_EQ(SelectObject(second, bitmap), nullptr);
    EXPECT_FALSE(DeleteObject(bitmap));
    EXPECT_EQ(SelectObject(first, old), bitmap);
    EXPECT_TRUE(DeleteObject(bitmap));
    EXPECT_EQ(GetObjectA(bitmap, sizeof(BITMAP), nullptr), 0);
    EXPECT_TRUE(DeleteObject(GetStockObject(BLACK_BRUSH)));
    EXPECT_NE(GetObjectA(GetStockObject(DEFAULT_PALETTE), 0, nullptr), 0);
    DeleteDC(first);
    DeleteDC(second);
}

TEST(QorGdiObjects, WrappersOwnTheirObjectAndFromHandleGivesOneWrapperPerObject)
{
    HBITMAP raw = CreateBitmap(2, 2, 1, 1, nullptr);
    CBitmap* temporary = CBitmap::FromHandle(raw);
    ASSERT_NE(temporary, nullptr);
    EXPECT_EQ(temporary->m_hObject, raw);
    EXPECT_EQ(CBitmap::FromHandle(raw), temporary);
    {
        CBitmap owner;
        ASSERT_TRUE(owner.Attach(raw));
        EXPECT_EQ(CGdiObject::FromHandle(raw), &owner);
        EXPECT_FALSE(owner.Attach(raw));
    }
    // The owner deleted it on destruction.
    EXPECT_EQ(CBitmap::FromHandle(raw), nullptr);
    EXPECT_EQ(CPalette::FromHandle(reinterpret_cast<HPALETTE>(GetStockObject(BLACK_BRUSH))), nullptr);

    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(3, 3, 1, 1, nullptr));
    CBitmap* previous = dc.SelectObject(&bitmap);
    ASSERT_NE(previous, nullptr);
    EXPECT_EQ(dc.SelectObject(previous), &bitmap);
    CGdiObject* brush = dc.SelectStockObject(BLACK_BRUSH);
    ASSERT_NE(brush, nullptr);
    EXPECT_EQ(brush->m_hObject, GetStockObject(WHITE_BRUSH));
}

TEST(QorGdiTransfer, EqualFormatsCopyBytesUnchangedAndClipToBothSurfaces)
{
    Surface source(4, 3, 32);
    for (long i = 0; i < source.pitch * 3; ++i)
        source.data[i] = static_cast<unsigned char>(i + 1);
    Surface target(5, 4, 32, 0xEE);
    ASSERT_TRUE(BitBlt(target.dc, -1, 2, 4, 3, source.dc, 0, 0, SRCCOPY));
    for (long y = 0; y < 4; ++y)
        for (long x = 0; x < 5; ++x)
        {
            // Destination column x, row y comes from source column x + 1, row y - 2, where both exist.
            const bool inside = y >= 2 && x <= 2;
            EXPECT_EQ(Pixel32(target, x, y), inside ? Pixel32(source, x + 1, y - 2) : Bytes(4, 0xEE)) << x << "," << y;
        }
    // A source rectangle partly outside the source copies only what exists.
    Surface small(3, 3, 32, 0x11);
    ASSERT_TRUE(BitBlt(small.dc, 0, 0, 3, 3, source.dc, 2, 1, SRCCOPY));
    EXPECT_EQ(Pixel32(small, 0, 0), Pixel32(source, 2, 1));
    EXPECT_EQ(Pixel32(small, 1, 1), Pixel32(source, 3, 2));
    EXPECT_EQ(Pixel32(small, 2, 0), Bytes(4, 0x11));
    EXPECT_EQ(Pixel32(small, 0, 2), Bytes(4, 0x11));
}

TEST(QorGdiTransfer, EachDepthConvertsThroughItsColours)
{
    // 16 bits are X1R5G5B5, 24 and 32 bits blue first, 8 bits through the colour table.
    Surface high(1, 1, 16);
    const unsigned v = (31u << 10) | (16u << 5) | 1u;
    high.data[0] = BYTE(v);
    high.data[1] = BYTE(v >> 8);
    Surface rgb(1, 1, 24);
    rgb.data[0] = 10;
    rgb.data[1] = 20;
    rgb.data[2] = 30;
    Info table(2, 1, 8);
    table.Colour(0, 0, 0, 0);
    table.Colour(7, 200, 100, 50);
    Surface indexed(2, 1, 8, 7, false, &table);

    Surface target(4, 1, 32, 0);
    BitBlt(target.dc, 0, 0, 1, 1, high.dc, 0, 0, SRCCOPY);
    BitBlt(target.dc, 1, 0, 1, 1, rgb.dc, 0, 0, SRCCOPY);
    BitBlt(target.dc, 2, 0, 1, 1, indexed.dc, 0, 0, SRCCOPY);
    EXPECT_EQ(Pixel32(target, 0, 0), (Bytes{0x08, 0x84, 0xFF, 0}));
    EXPECT_EQ(Pixel32(target, 1, 0), (Bytes{10, 20, 30, 0}));
    EXPECT_EQ(Pixel32(target, 2, 0), (Bytes{50, 100, 200, 0}));
    EXPECT_EQ(GetPixel(target.dc, 2, 0), RGB(200, 100, 50));

    // Down to 16 bits: the top five bits of each channel.
    Surface down(1, 1, 16);
    BitBlt(down.dc, 0, 0, 1, 1, rgb.dc, 0, 0, SRCCOPY);
    EXPECT_EQ(down.data[0] | (down.data[1] << 8), (3 << 10) | (2 << 5) | 1);
    // Into 8 bits: the nearest table entry.
    Surface pick(1, 1, 8, 0, false, &table);
    Surface warm(1, 1, 32);
    SetPixel(warm.dc, 0, 0, RGB(190, 110, 40));
    BitBlt(pick.dc, 0, 0, 1, 1, warm.dc, 0, 0, SRCCOPY);
    EXPECT_EQ(pick.data[0], 7);
    // 8 bits into 8 bits: indices as they are.
    Surface copy(2, 1, 8, 0, false, &table);
    indexed.data[1] = 200;
    BitBlt(copy.dc, 0, 0, 2, 1, indexed.dc, 0, 0, SRCCOPY);
    EXPECT_EQ(copy.data[0], 7);
    EXPECT_EQ(copy.data[1], 200);
}

// Whole rows into 32 bits take one pass per depth: every 16-bit value, 24-bit rows of every length up to 17
// (the last pixel of a row is read byte by byte), 8-bit rows of every length around the eight-index step.
TEST(QorGdiTransfer, WholeRowsInto32BitsConvertEveryValue)
{
    Surface high(256, 256, 16);
    for (long y = 0; y < 256; ++y)
        for (long x = 0; x < 256; ++x)
        {
            high.Row(y)[2 * x] = BYTE(x);
            high.Row(y)[2 * x + 1] = BYTE(y);
        }
    Surface wide(256, 256, 32, 0xEE);
    BitBlt(wide.dc, 0, 0, 256, 256, high.dc, 0, 0, SRCCOPY);
    const auto expand = [](unsigned v) { return BYTE((v << 3) | (v >> 2)); };
    for (unsigned v = 0; v < 65536; ++v)
    {
        const Bytes expected{expand(v & 31), expand((v >> 5) & 31), expand((v >> 10) & 31), 0};
        ASSERT_EQ(Pixel32(wide, v & 255, v >> 8), expected) << "value " << v;
    }

    for (long n = 1; n <= 17; ++n)
    {
        Surface rgb(n, 2, 24);
        for (long y = 0; y < 2; ++y)
            for (long i = 0; i < n * 3; ++i)
                rgb.Row(y)[i] = BYTE(7 * i + 50 * y + n);
        Surface target(n + 2, 2, 32, 0xEE);
        BitBlt(target.dc, 1, 0, int(n), 2, rgb.dc, 0, 0, SRCCOPY);
        for (long y = 0; y < 2; ++y)
        {
            EXPECT_EQ(Pixel32(target, 0, y), Bytes(4, 0xEE));
            EXPECT_EQ(Pixel32(target, n + 1, y), Bytes(4, 0xEE));
            for (long x = 0; x < n; ++x)
            {
                const unsigned char* p = rgb.Row(y) + 3 * x;
                ASSERT_EQ(Pixel32(target, x + 1, y), (Bytes{p[0], p[1], p[2], 0})) << "n " << n << " x " << x;
            }
        }
    }

    Info table(32, 1, 8);
    for (int i = 0; i < 256; ++i)
        table.Get()->bmiColors[i] = RGBQUAD{BYTE(i), BYTE(255 - i), BYTE(i * 3), 0};
    table.Get()->bmiHeader.biClrUsed = 256;
    for (long n : {1L, 7L, 8L, 9L, 15L, 16L, 17L, 31L})
    {
        Surface indexed(n, 1, 8, 0, false, &table);
        for (long x = 0; x < n; ++x)
            indexed.Row(0)[x] = BYTE(x * 37 + 11);
        Surface target(n + 1, 1, 32, 0xEE);
        BitBlt(target.dc, 0, 0, int(n), 1, indexed.dc, 0, 0, SRCCOPY);
        for (long x = 0; x < n; ++x)
        {
            const BYTE i = BYTE(x * 37 + 11);
            ASSERT_EQ(Pixel32(target, x, 0), (Bytes{i, BYTE(255 - i), BYTE(i * 3), 0})) << "n " << n << " x " << x;
        }
        EXPECT_EQ(Pixel32(target, n, 0), Bytes(4, 0xEE));
    }
}

// A bitmap over the caller's bits reads them in place and writes into them; deleting it leaves them alone.
TEST(QorGdiTransfer, BitmapOverTheCallersBitsSharesThemWithoutACopy)
{
    std::vector<unsigned char> bits(3 * 8, 0);
    for (std::size_t i = 0; i < bits.size(); ++i)
        bits[i] = static_cast<unsigned char>(i);
    BITMAP description = {0, 2, 3, 8, 1, 32, bits.data()};
    HBITMAP over = QorCreateBitmapOver(&description);
    ASSERT_NE(over, nullptr);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, over);
    // Changed after creation: a copy would not see it.
    bits[8] = 0x11;
    bits[9] = 0x22;
    bits[10] = 0x33;
    EXPECT_EQ(GetPixel(dc, 0, 1), RGB(0x33, 0x22, 0x11));
    SetPixel(dc, 1, 2, RGB(0xAA, 0xBB, 0xCC));
    EXPECT_EQ(Bytes(bits.begin() + 20, bits.begin() + 23), (Bytes{0xCC, 0xBB, 0xAA}));
    SelectObject(dc, old);
    DeleteDC(dc);
    EXPECT_TRUE(DeleteObject(over));
    EXPECT_EQ(bits[0], 0);
    EXPECT_EQ(bits[19], 19);
    // Rows shorter than the width needs, no bits, or an empty size are refused.
    BITMAP narrow = {0, 2, 3, 7, 1, 32, bits.data()};
    EXPECT_EQ(QorCreateBitmapOver(&narrow), nullptr);
    BITMAP none = {0, 2, 3, 8, 1, 32, nullptr};
    EXPECT_EQ(QorCreateBitmapOver(&none), nullptr);
    BITMAP empty = {0, 0, 3, 8, 1, 32, bits.data()};
    EXPECT_EQ(QorCreateBitmapOver(&empty), nullptr);
    EXPECT_EQ(QorCreateBitmapOver(nullptr), nullptr);
}

TEST(QorGdiTransfer, MonochromeBitmapsUseTheContextsTextAndBackgroundColours)
{
    // Row 0: 1 0 1 0 (monochrome bits, top row first, rows padded to two bytes).
    const unsigned char bits[2] = {0xA0, 0x00};
    HDC mono = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateBitmap(4, 1, 1, 1, bits);
    HGDIOBJ old = SelectObject(mono, bitmap);
    EXPECT_EQ(GetPixel(mono, 0, 0), RGB(255, 255, 255));
    EXPECT_EQ(GetPixel(mono, 1, 0), RGB(0, 0, 0));
    Surface target(4, 1, 32, 0);
    SetTextColor(target.dc, RGB(10, 20, 30));
    SetBkColor(target.dc, RGB(40, 50, 60));
    BitBlt(target.dc, 0, 0, 4, 1, mono, 0, 0, SRCCOPY);
    EXPECT_EQ(GetPixel(target.dc, 0, 0), RGB(40, 50, 60));
    EXPECT_EQ(GetPixel(target.dc, 1, 0), RGB(10, 20, 30));
    EXPECT_EQ(GetPixel(target.dc, 2, 0), RGB(40, 50, 60));

    // Colour into monochrome: the source's background colour becomes 1 (white), all else 0.
    SetBkColor(target.dc, RGB(10, 20, 30));
    BitBlt(mono, 0, 0, 4, 1, target.dc, 0, 0, SRCCOPY);
    EXPECT_EQ(GetPixel(mono, 0, 0), RGB(0, 0, 0));
    EXPECT_EQ(GetPixel(mono, 1, 0), RGB(255, 255, 255));
    EXPECT_EQ(GetPixel(mono, 3, 0), RGB(255, 255, 255));
    SelectObject(mono, old);
    DeleteObject(bitmap);
    DeleteDC(mono);
}

TEST(QorGdiTransfer, StretchIsNearestNeighbourAndNegativeExtentsMirror)
{
    Surface source(3, 1, 32);
    for (int x = 0; x < 3; ++x)
        SetPixel(source.dc, x, 0, RGB(BYTE(10 * (x + 1)), 0, 0));
    Surface wide(6, 2, 32, 0);
    ASSERT_TRUE(StretchBlt(wide.dc, 0, 0, 6, 2, source.dc, 0, 0, 3, 1, SRCCOPY));
    const int doubled[6] = {10, 10, 20, 20, 30, 30};
    for (int x = 0; x < 6; ++x)
    {
        EXPECT_EQ(GetPixel(wide.dc, x, 0), RGB(BYTE(doubled[x]), 0, 0));
        EXPECT_EQ(GetPixel(wide.dc, x, 1), RGB(BYTE(doubled[x]), 0, 0));
    }
    // Destination pixel i takes source pixel i * 3 / 2: 0 and 1.
    Surface narrow(2, 1, 32, 0);
    StretchBlt(narrow.dc, 0, 0, 2, 1, source.dc, 0, 0, 3, 1, SRCCOPY);
    EXPECT_EQ(GetPixel(narrow.dc, 0, 0), RGB(10, 0, 0));
    EXPECT_EQ(GetPixel(narrow.dc, 1, 0), RGB(20, 0, 0));
    // A negative destination width from x = 3 covers columns 0 to 2, mirrored.
    Surface mirrored(3, 1, 32, 0);
    StretchBlt(mirrored.dc, 3, 0, -3, 1, source.dc, 0, 0, 3, 1, SRCCOPY);
    EXPECT_EQ(GetPixel(mirrored.dc, 0, 0), RGB(30, 0, 0));
    EXPECT_EQ(GetPixel(mirrored.dc, 2, 0), RGB(10, 0, 0));
}

TEST(QorGdiTransfer, RasterOperationsCombineValues)
{
    Surface source(1, 1, 32);
    Surface target(1, 1, 32);
    SetPixel(source.dc, 0, 0, RGB(0x0F, 0xF0, 0x33));
    auto run = [&](DWORD rop)
    {
        SetPixel(target.dc, 0, 0, RGB(0x3C, 0x3C, 0x55));
        EXPECT_TRUE(
            BitBlt(target.dc, 0, 0, 1, 1, rop == BLACKNESS || rop == WHITENESS ? nullptr : source.dc, 0, 0, rop));
        return GetPixel(target.dc, 0, 0);
    };
    EXPECT_EQ(run(SRCCOPY), RGB(0x0F, 0xF0, 0x33));
    EXPECT_EQ(run(SRCAND), RGB(0x0C, 0x30, 0x11));
    EXPECT_EQ(run(SRCPAINT), RGB(0x3F, 0xFC, 0x77));
    EXPECT_EQ(run(SRCINVERT), RGB(0x33, 0xCC, 0x66));
    EXPECT_EQ(run(NOTSRCCOPY), RGB(0xF0, 0x0F, 0xCC));
    EXPECT_EQ(run(BLACKNESS), RGB(0, 0, 0));
    EXPECT_EQ(run(WHITENESS), RGB(255, 255, 255));
    EXPECT_FALSE(BitBlt(target.dc, 0, 0, 1, 1, source.dc, 0, 0, 0x00AA0029));
    EXPECT_FALSE(BitBlt(target.dc, 0, 0, 1, 1, nullptr, 0, 0, SRCCOPY));
}

TEST(QorGdiTransfer, OverlappingCopyInsideOneSurfaceReadsTheOriginalPixels)
{
    Surface s(1, 4, 32);
    for (int y = 0; y < 4; ++y)
        SetPixel(s.dc, 0, y, RGB(BYTE(y + 1), 0, 0));
    BitBlt(s.dc, 0, 1, 1, 3, s.dc, 0, 0, SRCCOPY);
    EXPECT_EQ(GetPixel(s.dc, 0, 0), RGB(1, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 0, 1), RGB(1, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 0, 2), RGB(2, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 0, 3), RGB(3, 0, 0));
}

TEST(QorGdiTransfer, SectionsPadRowsToFourBytesAndKeepTheirRowOrder)
{
    Info info(3, 2, 24);
    HDC dc = CreateCompatibleDC(nullptr);
    void* bits = nullptr;
    HBITMAP bottomUp = CreateDIBSection(dc, info.Get(), DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bottomUp, nullptr);
    BITMAP description = {};
    GetObjectA(bottomUp, sizeof(description), &description);
    EXPECT_EQ(description.bmWidthBytes, 12);
    EXPECT_EQ(description.bmBits, bits);
    // Bottom-up: the first stored row is the bottom one.
    auto* bytes = static_cast<unsigned char*>(bits);
    bytes[0] = 1;
    bytes[1] = 2;
    bytes[2] = 3;
    HGDIOBJ old = SelectObject(dc, bottomUp);
    EXPECT_EQ(GetPixel(dc, 0, 1), RGB(3, 2, 1));
    EXPECT_EQ(GetPixel(dc, 0, 0), RGB(0, 0, 0));
    SelectObject(dc, old);
    DeleteObject(bottomUp);
    EXPECT_EQ(CreateDIBSection(dc, info.Get(), DIB_RGB_COLORS, &bits, reinterpret_cast<HANDLE>(1), 0), nullptr);
    info.Get()->bmiHeader.biCompression = BI_RLE8;
    EXPECT_EQ(CreateDIBSection(dc, info.Get(), DIB_RGB_COLORS, &bits, nullptr, 0), nullptr);
    DeleteDC(dc);
}

TEST(QorGdiTransfer, StretchDibitsReadsTopDownAndBottomUpImages)
{
    // A 2 x 3 image of 8 bits: values 1..6 in reading order; the colour table maps v to (v * 10, 0, 0).
    Info info(2, -3, 8);
    for (int v = 0; v < 256; ++v)
        info.Colour(v, BYTE(v * 10), 0, 0);
    const unsigned char topDown[12] = {1, 2, 0, 0, 3, 4, 0, 0, 5, 6, 0, 0};
    Surface target(2, 3, 32, 0);
    EXPECT_EQ(StretchDIBits(target.dc, 0, 0, 2, 3, 0, 0, 2, 3, topDown, info.Get(), DIB_RGB_COLORS, SRCCOPY), 3);
    EXPECT_EQ(GetPixel(target.dc, 0, 0), RGB(10, 0, 0));
    EXPECT_EQ(GetPixel(target.dc, 1, 2), RGB(60, 0, 0));

    // The same picture stored bottom-up; a source row 1 from the bottom, one row high, is the middle row.
    const unsigned char bottomUp[12] = {5, 6, 0, 0, 3, 4, 0, 0, 1, 2, 0, 0};
    info.Get()->bmiHeader.biHeight = 3;
    Surface middle(2, 1, 32, 0);
    EXPECT_EQ(StretchDIBits(middle.dc, 0, 0, 2, 1, 0, 1, 2, 1, bottomUp, info.Get(), DIB_RGB_COLORS, SRCCOPY), 1);
    EXPECT_EQ(GetPixel(middle.dc, 0, 0), RGB(30, 0, 0));
    EXPECT_EQ(GetPixel(middle.dc, 1, 0), RGB(40, 0, 0));

    // Stretched twice as wide.
    Surface wide(4, 3, 32, 0);
    StretchDIBits(wide.dc, 0, 0, 4, 3, 0, 0, 2, 3, bottomUp, info.Get(), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(GetPixel(wide.dc, 1, 0), RGB(10, 0, 0));
    EXPECT_EQ(GetPixel(wide.dc, 2, 0), RGB(20, 0, 0));
    EXPECT_EQ(GetPixel(wide.dc, 3, 2), RGB(60, 0, 0));
}

TEST(QorGdiTransfer, SetDibitsToDeviceCopiesOneToOneAndWholeImagesOnly)
{
    Info info(3, -2, 32);
    const unsigned char pixels[24] = {1, 2, 3, 9, 4, 5, 6, 9, 7, 8, 9, 9, 10, 11, 12, 9, 13, 14, 15, 9, 16, 17, 18, 9};
    Surface target(3, 2, 32, 0xEE);
    EXPECT_EQ(SetDIBitsToDevice(target.dc, 1, 0, 2, 2, 0, 0, 0, 2, pixels, info.Get(), DIB_RGB_COLORS), 2);
    EXPECT_EQ(Pixel32(target, 0, 0), Bytes(4, 0xEE));
    EXPECT_EQ(Pixel32(target, 1, 0), (Bytes{1, 2, 3, 9}));
    EXPECT_EQ(Pixel32(target, 2, 1), (Bytes{13, 14, 15, 9}));
    EXPECT_EQ(SetDIBitsToDevice(target.dc, 0, 0, 3, 1, 0, 0, 1, 1, pixels, info.Get(), DIB_RGB_COLORS), 0);
}

TEST(QorGdiDrawing, RectangleOutlinesWithThePenAndFillsWithTheBrush)
{
    Surface s(6, 5, 32, 0xFF);
    HPEN red = CreatePen(PS_SOLID, 1, RGB(255, 0, 0));
    HGDIOBJ oldPen = SelectObject(s.dc, red);
    HGDIOBJ oldBrush = SelectObject(s.dc, GetStockObject(BLACK_BRUSH));
    ASSERT_TRUE(Rectangle(s.dc, 1, 1, 5, 4));
    EXPECT_EQ(GetPixel(s.dc, 0, 0), RGB(255, 255, 255));
    EXPECT_EQ(GetPixel(s.dc, 1, 1), RGB(255, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 4, 3), RGB(255, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 2, 2), RGB(0, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 3, 2), RGB(0, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 5, 4), RGB(255, 255, 255));
    // With the null pen the filled area loses its last column and row.
    SelectObject(s.dc, GetStockObject(NULL_PEN));
    SelectObject(s.dc, GetStockObject(GRAY_BRUSH));
    Rectangle(s.dc, 0, 0, 3, 3);
    EXPECT_EQ(GetPixel(s.dc, 1, 1), RGB(128, 128, 128));
    EXPECT_EQ(GetPixel(s.dc, 2, 1), RGB(255, 0, 0));
    EXPECT_EQ(GetPixel(s.dc, 0, 2), RGB(255, 255, 255));
    SelectObject(s.dc, oldPen);
    SelectObject(s.dc, oldBrush);
    EXPECT_TRUE(DeleteObject(red));
}

TEST(QorGdiDrawing, BlackRectangleOnAMonochromeBitmapClearsEveryPixel)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    const unsigned char ones[8] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(10, 4, 1, 1, ones));
    CBitmap* old = dc.SelectObject(&bitmap);
    EXPECT_EQ(dc.GetPixel(9, 3), RGB(255, 255, 255));
    dc.SelectStockObject(BLACK_BRUSH);
    dc.Rectangle(0, 0, 10, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 10; ++x)
            EXPECT_EQ(dc.GetPixel(x, y), RGB(0, 0, 0));
    dc.SelectObject(old);
}

TEST(QorGdiPalette, StaticColoursHoldEntriesZeroToNineAnd246To255)
{
    HDC dc = CreateCompatibleDC(nullptr);
    const std::vector<PALETTEENTRY> system = SystemEntries(dc);
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_TRUE(Same(system[std::size_t(i)], kStatic[i])) << i;
        EXPECT_TRUE(Same(system[std::size_t(246 + i)], kStatic[10 + i])) << 246 + i;
    }
    EXPECT_EQ(GetSystemPaletteEntries(dc, 250, 10, nullptr), 256u);
    PALETTEENTRY tail[10];
    EXPECT_EQ(GetSystemPaletteEntries(dc, 250, 10, tail), 6u);
    EXPECT_TRUE(Same(tail[5], PALETTEENTRY{255, 255, 255, 0}));
    DeleteDC(dc);
}

TEST(QorGdiPalette, ForegroundRealisationPutsReservedEntriesAtTenTo245InOrder)
{
    CWnd window;
    ASSERT_TRUE(window.Create("palette", 4, 4));
    HDC dc = GetDC(window);
    HPALETTE palette = MakePalette(256,
                                   [](int i) {
                                       return PALETTEENTRY{BYTE(i), BYTE(255 - i), BYTE(i * 7), PC_RESERVED};
                                   });
    HPALETTE previous = SelectPalette(dc, palette, FALSE);
    EXPECT_EQ(previous, GetStockObject(DEFAULT_PALETTE));
    // 236 free entries: logical entries 0-235 are placed, 236-255 are matched.
    EXPECT_EQ(RealizePalette(dc), 236u);
    const std::vector<PALETTEENTRY> system = SystemEntries(dc);
    for (int i = 0; i < 236; ++i)
        EXPECT_TRUE(Same(system[std::size_t(10 + i)], PALETTEENTRY{BYTE(i), BYTE(255 - i), BYTE(i * 7), 0})) << i;
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_TRUE(Same(system[std::size_t(i)], kStatic[i]));
        EXPECT_TRUE(Same(system[std::size_t(246 + i)], kStatic[10 + i]));
    }
    SelectPalette(dc, previous, FALSE);
    ReleaseDC(window, dc);
    EXPECT_TRUE(DeleteObject(palette));
}

TEST(QorGdiPalette, OnlyReservedEntriesTakeSystemEntriesAndBackgroundOrMemoryRealisationChangesNothing)
{
    CWnd window;
    ASSERT_TRUE(window.Create("palette", 4, 4));
    CClientDC dc(&window);
    CPalette odd;
    HPALETTE handle = MakePalette(20,
                                  [](int i) {
                                      return PALETTEENTRY{BYTE(100 + i), 1, 2, BYTE(i % 2 ? PC_RESERVED : 0)};
                                  });
    ASSERT_TRUE(odd.Attach(handle));
    CPalette* previous = dc.SelectPalette(&odd, FALSE);
    EXPECT_EQ(dc.RealizePalette(), 10u);
    std::vector<PALETTEENTRY> system = SystemEntries(dc);
    for (int k = 0; k < 10; ++k)
        EXPECT_TRUE(Same(system[std::size_t(10 + k)], PALETTEENTRY{BYTE(101 + 2 * k), 1, 2, 0})) << k;

    HPALETTE other = MakePalette(4, [](int) { return PALETTEENTRY{9, 9, 9, PC_RESERVED}; });
    HPALETTE back = SelectPalette(dc, other, TRUE);
    EXPECT_EQ(RealizePalette(dc), 0u);
    HDC memory = CreateCompatibleDC(dc);
    SelectPalette(memory, other, FALSE);
    EXPECT_EQ(RealizePalette(memory), 0u);
    system = SystemEntries(dc);
    EXPECT_TRUE(Same(system[10], PALETTEENTRY{101, 1, 2, 0}));
    SelectPalette(memory, reinterpret_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), FALSE);
    DeleteDC(memory);
    SelectPalette(dc, back, FALSE);
    dc.SelectPalette(previous, FALSE);
    EXPECT_TRUE(DeleteObject(other));
}

TEST(QorGdiPalette, EightBitDeviceBitmapsShowTheSystemPaletteAndAnimationChangesIt)
{
    CWnd window;
    ASSERT_TRUE(window.Create("palette", 4, 1));
    CClientDC dc(&window);
    // The library's palette: its colours at 10-245, handed over shifted by ten places.
    HPALETTE palette = MakePalette(236, [](int i) { return PALETTEENTRY{BYTE(i), 0, BYTE(255 - i), PC_RESERVED}; });
    HPALETTE previous = SelectPalette(dc, palette, FALSE);
    RealizePalette(dc);
    const unsigned char indices[4] = {10, 42, 245, 255};
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(4, 1, 1, 8, indices));
    CDC memory;
    ASSERT_TRUE(memory.CreateCompatibleDC(&dc));
    CBitmap* old = memory.SelectObject(&bitmap);
    ASSERT_TRUE(dc.BitBlt(0, 0, 4, 1, &memory, 0, 0, SRCCOPY));
    EXPECT_EQ(dc.GetPixel(0, 0), RGB(0, 0, 255));
    EXPECT_EQ(dc.GetPixel(1, 0), RGB(32, 0, 223));
    EXPECT_EQ(dc.GetPixel(2, 0), RGB(235, 0, 20));
    EXPECT_EQ(dc.GetPixel(3, 0), RGB(255, 255, 255));
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->GetPresentedPixel(1, 0), RGB(32, 0, 223));

    const PALETTEENTRY green = {0, 200, 0, PC_RESERVED};
    EXPECT_TRUE(AnimatePalette(palette, 32, 1, &green));
    PALETTEENTRY entry = {};
    GetSystemPaletteEntries(dc, 42, 1, &entry);
    EXPECT_TRUE(Same(entry, green));
    dc.BitBlt(0, 0, 4, 1, &memory, 0, 0, SRCCOPY);
    EXPECT_EQ(dc.GetPixel(1, 0), RGB(0, 200, 0));
    memory.SelectObject(old);
    SelectPalette(dc, previous, FALSE);
    EXPECT_TRUE(DeleteObject(palette));
}

TEST(QorGdiPalette, LogicalPaletteEntriesAndNearestIndex)
{
    CPalette palette;
    ASSERT_TRUE(palette.Attach(MakePalette(3, [](int i) { return PALETTEENTRY{BYTE(i * 100), 0, 0, 0}; })));
    EXPECT_EQ(palette.GetEntryCount(), 3);
    EXPECT_EQ(palette.GetNearestPaletteIndex(RGB(160, 0, 0)), 2u);
    const PALETTEENTRY blue = {0, 0, 255, 0};
    EXPECT_EQ(palette.SetPaletteEntries(2, 5, &blue), 1u);
    PALETTEENTRY read[3] = {};
    EXPECT_EQ(palette.GetPaletteEntries(0, 3, read), 3u);
    EXPECT_TRUE(Same(read[1], PALETTEENTRY{100, 0, 0, 0}));
    EXPECT_TRUE(Same(read[2], blue));
    // PALETTEINDEX colours name entries of the context's palette.
    Surface s(1, 1, 32);
    SelectPalette(s.dc, palette, FALSE);
    SetPixel(s.dc, 0, 0, PALETTEINDEX(1));
    EXPECT_EQ(GetPixel(s.dc, 0, 0), RGB(100, 0, 0));
    SelectPalette(s.dc, reinterpret_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), FALSE);
}

TEST(QorGdiText, DefaultFontMetricsAndExtents)
{
    HDC dc = CreateCompatibleDC(nullptr);
    TEXTMETRICA metrics = {};
    ASSERT_TRUE(GetTextMetricsA(dc, &metrics));
    EXPECT_EQ(metrics.tmHeight, 16);
    EXPECT_EQ(metrics.tmAscent + metrics.tmDescent, 16);
    EXPECT_EQ(metrics.tmMaxCharWidth, 16);
    EXPECT_EQ(metrics.tmAveCharWidth, 8);
    EXPECT_EQ(metrics.tmCharSet, CHINESEBIG5_CHARSET);
    SIZE size = {};
    ASSERT_TRUE(GetTextExtentPoint32A(dc, "AB\xA4\xA4", 4, &size));
    EXPECT_EQ(size.cx, 32);
    EXPECT_EQ(size.cy, 16);
    DeleteDC(dc);
}

TEST(QorGdiText, HeightsFollowTheLogicalFontRules)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    CFont em;
    ASSERT_TRUE(em.CreateFont(-20, 0, 0, 0, FW_BOLD, 1, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, "Kai"));
    CFont* old = dc.SelectObject(&em);
    TEXTMETRICA metrics = {};
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    EXPECT_EQ(metrics.tmHeight, 20);
    EXPECT_EQ(metrics.tmWeight, FW_BOLD);
    EXPECT_EQ(metrics.tmItalic, 1);
    LOGFONTA description = {};
    EXPECT_EQ(em.GetLogFont(&description), int(sizeof(LOGFONTA)));
    EXPECT_EQ(description.lfHeight, -20);
    EXPECT_STREQ(description.lfFaceName, "Kai");
    // A positive height is the whole cell: the largest size that fits in it.
    CFont cell;
    ASSERT_TRUE(cell.CreateFont(30, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, ""));
    dc.SelectObject(&cell);
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    EXPECT_LE(metrics.tmHeight, 30);
    EXPECT_GE(metrics.tmHeight, 28);
    dc.SelectObject(old);
}

TEST(QorGdiText, OpaqueTextFillsItsCellAndTransparentTextOnlyInks)
{
    Surface opaque(40, 16, 32, 0x00);
    SetBkColor(opaque.dc, RGB(255, 255, 0));
    SetTextColor(opaque.dc, RGB(0, 0, 255));
    ASSERT_TRUE(TextOutA(opaque.dc, 0, 0, "Hi", 2));
    long cell = 0;
    long ink = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 40; ++x)
        {
            const COLORREF c = GetPixel(opaque.dc, x, y);
            // Flat glyphs: only the two colours, and nothing beyond the 16-pixel cell.
            if (x < 16)
                EXPECT_TRUE(c == RGB(255, 255, 0) || c == RGB(0, 0, 255)) << x << "," << y;
            else
                EXPECT_EQ(c, RGB(0, 0, 0));
            cell += c == RGB(255, 255, 0);
            ink += c == RGB(0, 0, 255);
        }
    EXPECT_GT(ink, 10);
    EXPECT_EQ(cell + ink, 16 * 16);

    Surface transparent(16, 16, 32, 0x00);
    SetBkMode(transparent.dc, TRANSPARENT);
    SetTextColor(transparent.dc, RGB(0, 0, 255));
    TextOutA(transparent.dc, 0, 0, "Hi", 2);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            EXPECT_EQ(GetPixel(transparent.dc, x, y),
                      GetPixel(opaque.dc, x, y) == RGB(0, 0, 255) ? RGB(0, 0, 255) : RGB(0, 0, 0));
}

TEST(QorGdiText, AntialiasedQualityMixesEdgesAndTheDefaultDoesNot)
{
    Surface smooth(32, 16, 32, 0xFF);
    CFont font;
    ASSERT_TRUE(font.CreateFont(16, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, ANTIALIASED_QUALITY, 0, ""));
    HGDIOBJ old = SelectObject(smooth.dc, font);
    SetBkMode(smooth.dc, TRANSPARENT);
    TextOutA(smooth.dc, 0, 0, "\xA5\xC3", 2);
    long grey = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
        {
            const COLORREF c = GetPixel(smooth.dc, x, y);
            grey += c != RGB(0, 0, 0) && c != RGB(255, 255, 255);
        }
    EXPECT_GT(grey, 5);
    SelectObject(smooth.dc, old);
}

TEST(QorGdiText, UnknownContextsMeasureAndDrawNothing)
{
    EXPECT_FALSE(GetTextMetricsA(nullptr, nullptr));
    TEXTMETRICA metrics = {};
    EXPECT_FALSE(GetTextMetricsA(reinterpret_cast<HDC>(&metrics), &metrics));
    EXPECT_FALSE(TextOutA(nullptr, 0, 0, "a", 1));
}
