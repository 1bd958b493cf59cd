// QorPicBlock's text and device output: SetText, DrawToDC, VerticalTextOut and VerticalTextOutR, on the
// headless port with the Kai face.
#include "platform/sdl2/QorSdlPicture.h"
#include "qor/pictures.h"
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

// Big5 bytes of 中, 文, 測, 試 and 標楷體.
const char kZhong[] = "\xA4\xA4";
const char kWen[] = "\xA4\xE5";
const char kZhongWenA[] = "\xA4\xA4\xA4\xE5"
                          "A";
const char kChineseTest[] = "\xA4\xA4\xA4\xE5\xB4\xFA\xB8\xD5";
const char kKaiFaceBig5[] = "\xBC\xD0\xB7\xA2\xC5\xE9";

const std::string kGolden = std::string(QOR_GOLDEN_DIR) + "/text/";

Bytes At(const QorPicBlock& p, long x, long y)
{
    return Bytes(p.GetPixel(x, y), p.GetPixel(x, y) + p.GetBytesPerPixel());
}

// Compares a 24-bit picture with tests/golden/text/<name>.png byte for byte. On a mismatch the picture
// is written to golden-actual/text/<name>.actual.png in the build tree (tools/update-goldens.sh copies
// it over the golden), with the golden beside it as <name>.expected.png.
void ExpectMatchesGolden(const QorPicBlock& actual, const std::string& name)
{
    ASSERT_EQ(actual.GetColorType(), QorPicBlock::Bit24);
    QorPicBlock expected;
    const bool loaded = QorLoadPicturePng(expected, (kGolden + name + ".png").c_str(), QorPicBlock::Bit24);
    std::string difference;
    if (!loaded)
        difference = "golden missing or unreadable";
    else if (expected.GetWidth() != actual.GetWidth() || expected.GetHeight() != actual.GetHeight())
        difference = "size " + std::to_string(actual.GetWidth()) + "x" + std::to_string(actual.GetHeight()) +
                     ", golden " + std::to_string(expected.GetWidth()) + "x" + std::to_string(expected.GetHeight());
    else
        for (long y = 0; y < actual.GetHeight() && difference.empty(); ++y)
            for (long x = 0; x < actual.GetWidth() && difference.empty(); ++x)
                if (At(actual, x, y) != At(expected, x, y))
                    difference = "first difference at (" + std::to_string(x) + ", " + std::to_string(y) + ")";
    if (difference.empty())
        return;
    std::filesystem::create_directories("golden-actual/text");
    const std::string base = "golden-actual/text/" + name;
    QorSavePicturePng(actual, (base + ".actual.png").c_str());
    if (loaded)
        QorSavePicturePng(expected, (base + ".expected.png").c_str());
    ADD_FAILURE() << name << ": " << difference << "; wrote " << base << ".actual.png";
}

// A memory context on a monochrome bitmap: ink where text colour white fell on a black cell.
std::vector<bool> InkOf(HFONT font, const char* text, long width, long height)
{
    HDC dc = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateBitmap(int(width), int(height), 1, 1, nullptr);
    HGDIOBJ oldBitmap = SelectObject(dc, bitmap);
    HGDIOBJ oldFont = font ? SelectObject(dc, font) : nullptr;
    SetBkColor(dc, RGB(0, 0, 0));
    SetTextColor(dc, RGB(255, 255, 255));
    const RECT all = {0, 0, LONG(width), LONG(height)};
    FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    TextOutA(dc, 0, 0, text, int(std::strlen(text)));
    std::vector<bool> ink;
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x)
            ink.push_back(GetPixel(dc, int(x), int(y)) == RGB(255, 255, 255));
    if (oldFont)
        SelectObject(dc, oldFont);
    SelectObject(dc, oldBitmap);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return ink;
}

// A 32-bit top-down section selected into a memory context, every byte set to fill.
struct Section
{
    Section(long w, long h, int bits, unsigned char fill, const RGBQUAD* table = nullptr, int tableSize = 0)
    {
        std::vector<unsigned char> buffer(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD));
        auto* info = reinterpret_cast<BITMAPINFO*>(buffer.data());
        info->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info->bmiHeader.biWidth = LONG(w);
        info->bmiHeader.biHeight = -LONG(h);
        info->bmiHeader.biPlanes = 1;
        info->bmiHeader.biBitCount = WORD(bits);
        info->bmiHeader.biCompression = BI_RGB;
        info->bmiHeader.biClrUsed = DWORD(tableSize);
        if (table)
            std::memcpy(info->bmiColors, table, sizeof(RGBQUAD) * std::size_t(tableSize));
        dc.CreateCompatibleDC(nullptr);
        bitmap = CreateDIBSection(dc, info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0);
        pitch = ((w * bits + 31) / 32) * 4;
        std::memset(bits_, fill, std::size_t(pitch * h));
        old = SelectObject(dc, bitmap);
    }
    ~Section()
    {
        SelectObject(dc, old);
        DeleteObject(bitmap);
    }
    unsigned char* Row(long y) const { return bits_ + pitch * y; }

    CDC dc;
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;
    unsigned char* bits_ = nullptr;
    long pitch = 0;
};

QorPicBlock Numbered(QorPicBlock::ColorType type, long w, long h)
{
    QorPicBlock p(type, w, h);
    for (unsigned long i = 0; i < p.GetSize(); ++i)
        p.GetDataPtr()[i] = static_cast<unsigned char>(i * 7 + 3);
    return p;
}

// Records the text calls that reach the context instead of drawing them.
class RecordingDC : public CDC
{
public:
    struct Call
    {
        int x;
        int y;
        std::string text;
    };
    BOOL TextOut(int x, int y, const char* text, int count) override
    {
        calls.push_back(Call{x, y, std::string(text, std::size_t(count))});
        return TRUE;
    }
    std::vector<Call> calls;
};
} // namespace

TEST(QorPicBlockSetText, DefaultKaiFontIsSixteenHighAndSixteenWide)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    TEXTMETRICA metrics = {};
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    EXPECT_EQ(metrics.tmHeight, 16);
    EXPECT_EQ(metrics.tmMaxCharWidth, 16);
    EXPECT_EQ(metrics.tmAveCharWidth, 8);
}

TEST(QorPicBlockSetText, ThreeAsciiCharactersWithASixteenBySixteenFontGiveFortyEightBySixteen)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    QorPicBlock picture(QorPicBlock::Bit32);
    unsigned char colour[4] = {0, 0, 255, 0};
    EXPECT_EQ(picture.SetText(&dc, "abc", colour), 1);
    EXPECT_EQ(picture.GetWidth(), 48);
    EXPECT_EQ(picture.GetHeight(), 16);
}

TEST(QorPicBlockSetText, SizeIsBytesTimesMaximumWidthByCharacterHeight)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    // Width 4 squeezes the face so that its average character is 4 pixels: the widest is then 8.
    CFont narrow;
    ASSERT_TRUE(narrow.CreateFont(16, 4, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, ""));
    CFont* old = dc.SelectObject(&narrow);
    TEXTMETRICA metrics = {};
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    ASSERT_EQ(metrics.tmMaxCharWidth, 8);
    ASSERT_EQ(metrics.tmHeight, 16);
    QorPicBlock picture(QorPicBlock::Bit16);
    unsigned char colour[2] = {0x1F, 0x00};
    picture.SetText(&dc, "abc", colour);
    EXPECT_EQ(picture.GetWidth(), 24);
    EXPECT_EQ(picture.GetHeight(), 16);
    // A double-byte character reserves two maximum widths.
    picture.SetText(&dc, kZhongWenA, colour);
    EXPECT_EQ(picture.GetWidth(), 40);

    CFont large;
    ASSERT_TRUE(large.CreateFont(-24, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, kKaiFaceBig5));
    dc.SelectObject(&large);
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    EXPECT_EQ(metrics.tmMaxCharWidth, 24);
    picture.SetText(&dc, kChineseTest, colour);
    EXPECT_EQ(picture.GetWidth(), 8 * metrics.tmMaxCharWidth);
    EXPECT_EQ(picture.GetHeight(), metrics.tmHeight);
    dc.SelectObject(old);
}

TEST(QorPicBlockSetText, GlyphPixelsTakeTheColourAndAllOthersTheMaskColour)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    QorPicBlock picture(QorPicBlock::Bit8);
    const unsigned char mask = 7;
    picture.SetMask(&mask);
    unsigned char colour = 200;
    picture.SetText(&dc, kZhongWenA, &colour);
    ASSERT_EQ(picture.GetWidth(), 80);
    ASSERT_EQ(picture.GetHeight(), 16);
    const std::vector<bool> ink = InkOf(nullptr, kZhongWenA, 80, 16);
    long inked = 0;
    for (long y = 0; y < 16; ++y)
        for (long x = 0; x < 80; ++x)
        {
            const bool isInk = ink[std::size_t(y * 80 + x)];
            inked += isInk;
            EXPECT_EQ(*picture.GetPixel(x, y), isInk ? 200 : 7) << x << "," << y;
        }
    EXPECT_GT(inked, 40);
    EXPECT_EQ(*picture.GetMask(), 7);
}

TEST(QorPicBlockSetText, ColourEqualToTheMaskRaisesTheMasksFirstByteAndStaysVisible)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    QorPicBlock text(QorPicBlock::Bit32);
    unsigned char colour[4] = {10, 20, 30, 0};
    text.SetMask(colour);
    text.SetText(&dc, "W", colour);
    EXPECT_EQ(Bytes(text.GetMask(), text.GetMask() + 4), (Bytes{11, 20, 30, 0}));
    ASSERT_EQ(text.GetWidth(), 16);
    long glyph = 0;
    for (long y = 0; y < text.GetHeight(); ++y)
        for (long x = 0; x < text.GetWidth(); ++x)
        {
            const Bytes p = At(text, x, y);
            EXPECT_TRUE(p == (Bytes{10, 20, 30, 0}) || p == (Bytes{11, 20, 30, 0}));
            glyph += p == (Bytes{10, 20, 30, 0});
        }
    ASSERT_GT(glyph, 10);

    unsigned char ground[4] = {1, 2, 3, 0};
    QorPicBlock background(QorPicBlock::Bit32, 16, 16, ground);
    background.Paste(text, 0, 0, 1, 0, 0, 1, 0);
    long shown = 0;
    for (long y = 0; y < 16; ++y)
        for (long x = 0; x < 16; ++x)
        {
            const bool isGlyph = At(text, x, y) == (Bytes{10, 20, 30, 0});
            EXPECT_EQ(At(background, x, y), isGlyph ? (Bytes{10, 20, 30, 0}) : (Bytes{1, 2, 3, 0}));
            shown += isGlyph;
        }
    EXPECT_EQ(shown, glyph);
}

TEST(QorPicBlockSetText, ADifferentMaskColourIsKeptAndTheDcIsLeftOnItsOwnBitmap)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    HBITMAP own = CreateBitmap(3, 3, 1, 1, nullptr);
    HGDIOBJ original = SelectObject(dc, own);
    QorPicBlock picture(QorPicBlock::Bit24);
    unsigned char mask[3] = {9, 9, 9};
    picture.SetMask(mask);
    unsigned char colour[3] = {9, 9, 8};
    picture.SetText(&dc, "x", colour);
    EXPECT_EQ(Bytes(picture.GetMask(), picture.GetMask() + 3), (Bytes{9, 9, 9}));
    // The temporary bitmap is gone and the context's own is selected again.
    EXPECT_EQ(SelectObject(dc, original), own);
    EXPECT_TRUE(DeleteObject(own));
}

TEST(QorPicBlockSetText, EmptyTextGivesAPictureOfNoWidth)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    QorPicBlock picture(QorPicBlock::Bit24, 5, 5);
    unsigned char colour[3] = {1, 2, 3};
    EXPECT_EQ(picture.SetText(&dc, "", colour), 1);
    EXPECT_EQ(picture.GetWidth(), 0);
    EXPECT_EQ(picture.GetHeight(), 16);
}

TEST(QorPicBlockSetText, AttachedPictureKeepsItsSizeAndTakesWhatFits)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    std::vector<unsigned char> pixels(10 * 4, 0xAA);
    QorPicBlock picture(QorPicBlock::Bit8);
    picture.Attach(10, 4, pixels.data());
    const unsigned char mask = 0;
    picture.SetMask(&mask);
    unsigned char colour = 1;
    picture.SetText(&dc, "WW", &colour);
    EXPECT_EQ(picture.GetWidth(), 10);
    EXPECT_EQ(picture.GetHeight(), 4);
    const std::vector<bool> ink = InkOf(nullptr, "WW", 32, 16);
    for (long y = 0; y < 4; ++y)
        for (long x = 0; x < 10; ++x)
            EXPECT_EQ(pixels[std::size_t(y * 10 + x)], ink[std::size_t(y * 32 + x)] ? 1 : 0);
}

TEST(QorPicBlockSetText, GoldenKaiBig5TextAtSixteenPixels)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    QorPicBlock picture(QorPicBlock::Bit24);
    unsigned char mask[3] = {255, 255, 255};
    picture.SetMask(mask);
    unsigned char colour[3] = {0x20, 0x40, 0xC0};
    picture.SetText(&dc, "\xA4\xA4\xA4\xE5\xB4\xFA\xB8\xD5 Kai 16", colour);
    ExpectMatchesGolden(picture, "kai16-big5");
}

TEST(QorPicBlockSetText, GoldenKaiBig5TextThroughItsBig5FaceNameAtThirtyTwoPixels)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    CFont font;
    ASSERT_TRUE(font.CreateFont(-32, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, kKaiFaceBig5));
    CFont* old = dc.SelectObject(&font);
    QorPicBlock picture(QorPicBlock::Bit24);
    unsigned char mask[3] = {0, 0, 0};
    picture.SetMask(mask);
    unsigned char colour[3] = {0xFF, 0xFF, 0xFF};
    // 永 and 字, the strokes a Kai face is judged by.
    picture.SetText(&dc, "\xA5\xC3\xA6\x72", colour);
    dc.SelectObject(old);
    ExpectMatchesGolden(picture, "kai32-big5");
}

TEST(QorPicBlockSetText, TheBig5KaiFaceNameGivesTheDefaultFaceAndAnotherFaceDiffers)
{
    CFont kai;
    ASSERT_TRUE(kai.CreateFont(16, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, kKaiFaceBig5));
    CFont sans;
    ASSERT_TRUE(sans.CreateFont(16, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, "DejaVu Sans"));
    const std::vector<bool> byDefault = InkOf(nullptr, "Kai 16", 96, 16);
    EXPECT_EQ(InkOf(kai, "Kai 16", 96, 16), byDefault);
    EXPECT_NE(InkOf(sans, "Kai 16", 96, 16), byDefault);
}

TEST(QorPicBlockDrawToDC, ThirtyTwoBitBytesArriveUnchangedExceptTheLastColumnAndRow)
{
    QorPicBlock picture = Numbered(QorPicBlock::Bit32, 4, 3);
    Section target(4, 3, 32, 0xEE);
    picture.DrawToDC(&target.dc, nullptr);
    for (long y = 0; y < 3; ++y)
        for (long x = 0; x < 4; ++x)
        {
            const Bytes got(target.Row(y) + x * 4, target.Row(y) + x * 4 + 4);
            EXPECT_EQ(got, (x < 3 && y < 2) ? At(picture, x, y) : Bytes(4, 0xEE)) << x << "," << y;
        }
}

TEST(QorPicBlockDrawToDC, TwentyFourAndSixteenBitRowsAreRepaddedAndCopiedByteForByte)
{
    QorPicBlock rgb = Numbered(QorPicBlock::Bit24, 5, 3);
    Section target24(5, 3, 24, 0xEE);
    ASSERT_EQ(target24.pitch, 16);
    rgb.DrawToDC(&target24.dc, nullptr);
    for (long y = 0; y < 3; ++y)
        for (long x = 0; x < 5; ++x)
            EXPECT_EQ(Bytes(target24.Row(y) + x * 3, target24.Row(y) + x * 3 + 3),
                      (x < 4 && y < 2) ? At(rgb, x, y) : Bytes(3, 0xEE));

    QorPicBlock high = Numbered(QorPicBlock::Bit16, 3, 2);
    Section target16(3, 2, 16, 0xEE);
    ASSERT_EQ(target16.pitch, 8);
    high.DrawToDC(&target16.dc, nullptr);
    EXPECT_EQ(Bytes(target16.Row(0), target16.Row(0) + 6),
              (Bytes{At(high, 0, 0)[0], At(high, 0, 0)[1], At(high, 1, 0)[0], At(high, 1, 0)[1], 0xEE, 0xEE}));
    EXPECT_EQ(Bytes(target16.Row(1), target16.Row(1) + 6), Bytes(6, 0xEE));
}

TEST(QorPicBlockDrawToDC, EightBitIndicesArriveUnchangedInAnEightBitSection)
{
    QorPicBlock indices = Numbered(QorPicBlock::Bit8, 6, 4);
    RGBQUAD grey[256];
    for (int i = 0; i < 256; ++i)
        grey[i] = RGBQUAD{BYTE(i), BYTE(i), BYTE(i), 0};
    Section target(6, 4, 8, 0xEE, grey, 256);
    indices.DrawToDC(&target.dc, nullptr);
    for (long y = 0; y < 4; ++y)
        for (long x = 0; x < 6; ++x)
            EXPECT_EQ(target.Row(y)[x], (x < 5 && y < 3) ? *indices.GetPixel(x, y) : 0xEE);
}

TEST(QorPicBlockDrawToDC, EightBitPictureOnAWindowShowsTheRealisedPalettesColours)
{
    CWnd window;
    ASSERT_TRUE(window.Create("palette", 8, 8));
    // The library's palette with its colours at 10-245, handed over shifted by ten places.
    std::vector<unsigned char> buffer(sizeof(LOGPALETTE) + 236 * sizeof(PALETTEENTRY));
    auto* description = reinterpret_cast<LOGPALETTE*>(buffer.data());
    description->palVersion = 0x300;
    description->palNumEntries = 236;
    for (int i = 0; i < 236; ++i)
        description->palPalEntry[i] = PALETTEENTRY{BYTE(i), BYTE(255 - i), BYTE(i / 2), PC_RESERVED};
    CPalette palette;
    ASSERT_TRUE(palette.CreatePalette(description));
    QorPicBlock picture(QorPicBlock::Bit8, 3, 3);
    const unsigned char values[9] = {10, 11, 12, 100, 245, 0, 9, 246, 255};
    std::memcpy(picture.GetDataPtr(), values, 9);
    CClientDC dc(&window);
    CPalette* before = dc.SelectPalette(&palette, FALSE);
    dc.SelectPalette(before, FALSE);
    picture.DrawToDC(&dc, &palette);
    EXPECT_EQ(dc.GetPixel(0, 0), RGB(0, 255, 0));
    EXPECT_EQ(dc.GetPixel(1, 0), RGB(1, 254, 0));
    EXPECT_EQ(dc.GetPixel(0, 1), RGB(90, 165, 45));
    EXPECT_EQ(dc.GetPixel(1, 1), RGB(235, 20, 117));
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->GetPresentedPixel(1, 1), RGB(235, 20, 117));
    // The previous palette is selected again.
    EXPECT_EQ(dc.SelectPalette(before, FALSE), before);
}

TEST(QorPicBlockDrawToDC, OneByOnePictureDrawsNothing)
{
    CWnd window;
    ASSERT_TRUE(window.Create("dot", 4, 4));
    CClientDC dc(&window);
    dc.FillSolidRect(0, 0, 4, 4, RGB(1, 2, 3));
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    const unsigned long presents = port->GetPresentCount();
    unsigned char white[4] = {255, 255, 255, 0};
    QorPicBlock dot(QorPicBlock::Bit32, 1, 1, white);
    dot.DrawToDC(&dc, nullptr);
    EXPECT_EQ(port->GetPresentCount(), presents);
    EXPECT_EQ(dc.GetPixel(0, 0), RGB(1, 2, 3));

    // Two by two draws exactly its top-left pixel.
    QorPicBlock square(QorPicBlock::Bit32, 2, 2, white);
    square.DrawToDC(&dc, nullptr);
    EXPECT_EQ(port->GetPresentCount(), presents + 1);
    EXPECT_EQ(dc.GetPixel(0, 0), RGB(255, 255, 255));
    EXPECT_EQ(dc.GetPixel(1, 0), RGB(1, 2, 3));
    EXPECT_EQ(dc.GetPixel(0, 1), RGB(1, 2, 3));
}

TEST(QorVerticalTextOut, TwoBig5AndOneAsciiCharacterGoDownByTheCharacterHeight)
{
    RecordingDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    EXPECT_EQ(VerticalTextOut(&dc, 5, 40, kZhongWenA), 1);
    ASSERT_EQ(dc.calls.size(), 3u);
    EXPECT_EQ(dc.calls[0].y, 40);
    EXPECT_EQ(dc.calls[1].y, 56);
    EXPECT_EQ(dc.calls[2].y, 72);
    EXPECT_EQ(dc.calls[0].text, kZhong);
    EXPECT_EQ(dc.calls[1].text, kWen);
    EXPECT_EQ(dc.calls[2].text, "A");
    for (const auto& call : dc.calls)
        EXPECT_EQ(call.x, 5);
}

TEST(QorVerticalTextOut, ReversedPutsTheFirstCharacterLowestAndTheLastAtY)
{
    RecordingDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    EXPECT_EQ(VerticalTextOutR(&dc, 5, 40, kZhongWenA), 1);
    ASSERT_EQ(dc.calls.size(), 3u);
    EXPECT_EQ(dc.calls[0].text, kZhong);
    EXPECT_EQ(dc.calls[0].y, 72);
    EXPECT_EQ(dc.calls[1].text, kWen);
    EXPECT_EQ(dc.calls[1].y, 56);
    EXPECT_EQ(dc.calls[2].text, "A");
    EXPECT_EQ(dc.calls[2].y, 40);
}

TEST(QorVerticalTextOut, OtherMappingModesStepUpwards)
{
    RecordingDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    dc.SetMapMode(MM_LOENGLISH);
    VerticalTextOut(&dc, 0, 100, kZhongWenA);
    ASSERT_EQ(dc.calls.size(), 3u);
    EXPECT_EQ(dc.calls[1].y, 84);
    EXPECT_EQ(dc.calls[2].y, 68);
    dc.calls.clear();
    VerticalTextOutR(&dc, 0, 100, kZhongWenA);
    ASSERT_EQ(dc.calls.size(), 3u);
    EXPECT_EQ(dc.calls[0].y, 68);
    EXPECT_EQ(dc.calls[2].y, 100);
}

TEST(QorVerticalTextOut, BytesFrom0xA0StartPairsAndLowerHighBytesStandAlone)
{
    RecordingDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    // 0x81 0x40 is a Big5 pair, but only bytes from 0xA0 start one here; a lead byte at the end stands alone.
    VerticalTextOut(&dc, 0, 0, "\x81\x40\xA0\x41\xFF");
    ASSERT_EQ(dc.calls.size(), 4u);
    EXPECT_EQ(dc.calls[0].text, "\x81");
    EXPECT_EQ(dc.calls[1].text, "\x40");
    EXPECT_EQ(dc.calls[2].text, "\xA0\x41");
    EXPECT_EQ(dc.calls[3].text, "\xFF");
    EXPECT_EQ(dc.calls[3].y, 48);
}

TEST(QorVerticalTextOut, ForwardingOverloadsDrawTheSameCharacters)
{
    RecordingDC plain;
    RecordingDC bytes;
    RecordingDC string;
    RecordingDC reversedBytes;
    RecordingDC reversedString;
    for (RecordingDC* dc : {&plain, &bytes, &string, &reversedBytes, &reversedString})
        ASSERT_TRUE(dc->CreateCompatibleDC(nullptr));
    const QorString text(kZhongWenA);
    VerticalTextOut(&plain, 1, 2, kZhongWenA);
    VerticalTextOut(&bytes, 1, 2, reinterpret_cast<const unsigned char*>(kZhongWenA));
    VerticalTextOut(&string, 1, 2, text);
    VerticalTextOutR(&reversedBytes, 1, 2, reinterpret_cast<const unsigned char*>(kZhongWenA));
    VerticalTextOutR(&reversedString, 1, 2, text);
    auto same = [](const RecordingDC& a, const RecordingDC& b)
    {
        if (a.calls.size() != b.calls.size())
            return false;
        for (std::size_t i = 0; i < a.calls.size(); ++i)
            if (a.calls[i].x != b.calls[i].x || a.calls[i].y != b.calls[i].y || a.calls[i].text != b.calls[i].text)
                return false;
        return true;
    };
    ASSERT_EQ(plain.calls.size(), 3u);
    EXPECT_TRUE(same(plain, bytes));
    EXPECT_TRUE(same(plain, string));
    ASSERT_EQ(reversedBytes.calls.size(), 3u);
    EXPECT_EQ(reversedBytes.calls[0].y, 34);
    EXPECT_TRUE(same(reversedBytes, reversedString));
}

TEST(QorVerticalTextOut, WithoutFontMetricsItReturnsFalseAndDrawsNothing)
{
    RecordingDC dc;
    EXPECT_EQ(VerticalTextOut(&dc, 0, 0, "ab"), 0);
    EXPECT_EQ(VerticalTextOutR(&dc, 0, 0, "ab"), 0);
    EXPECT_TRUE(dc.calls.empty());
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    EXPECT_EQ(VerticalTextOut(&dc, 0, 0, ""), 1);
    EXPECT_EQ(VerticalTextOutR(&dc, 0, 0, ""), 1);
    EXPECT_TRUE(dc.calls.empty());
}

TEST(QorVerticalTextOut, PixelsEqualOneTextOutPerCharacterAtTheStepPositions)
{
    Section vertical(16, 64, 32, 0xFF);
    Section separate(16, 64, 32, 0xFF);
    Section reversed(16, 64, 32, 0xFF);
    for (Section* s : {&vertical, &separate, &reversed})
    {
        s->dc.SetBkMode(TRANSPARENT);
        s->dc.SetTextColor(RGB(0, 0, 0));
    }
    VerticalTextOut(&vertical.dc, 0, 4, kZhongWenA);
    separate.dc.TextOut(0, 4, kZhong, 2);
    separate.dc.TextOut(0, 20, kWen, 2);
    separate.dc.TextOut(0, 36, "A", 1);
    const std::size_t bytes = std::size_t(separate.pitch * 64);
    EXPECT_EQ(Bytes(vertical.bits_, vertical.bits_ + bytes), Bytes(separate.bits_, separate.bits_ + bytes));
    EXPECT_NE(Bytes(separate.bits_, separate.bits_ + bytes), Bytes(bytes, 0xFF));

    // Reversed, 文 sits where it did and 中 and A trade places.
    Section expected(16, 64, 32, 0xFF);
    expected.dc.SetBkMode(TRANSPARENT);
    expected.dc.SetTextColor(RGB(0, 0, 0));
    expected.dc.TextOut(0, 36, kZhong, 2);
    expected.dc.TextOut(0, 20, kWen, 2);
    expected.dc.TextOut(0, 4, "A", 1);
    VerticalTextOutR(&reversed.dc, 0, 4, kZhongWenA);
    EXPECT_EQ(Bytes(reversed.bits_, reversed.bits_ + bytes), Bytes(expected.bits_, expected.bits_ + bytes));
}
