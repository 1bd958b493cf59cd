// QorOffScreenBuffer's palettes: the grey start palette, the standard colour and grey palettes, SetPalette,
// the logical palette and colour table by showing mode, the screen turned off and on, and what the
// emulated 8-bit display shows.
#include "compositor_probe.h"

#include <gtest/gtest.h>

namespace
{
using qortest::Probe;

PALETTEENTRY Logical(QorOffScreenBuffer& c, int i)
{
    PALETTEENTRY e = {1, 2, 3, 4};
    EXPECT_EQ(c.GetPalettePtr()->GetPaletteEntries(static_cast<UINT>(i), 1, &e), 1u);
    return e;
}

void ExpectEntry(const PALETTEENTRY& e, int r, int g, int b, int flags)
{
    EXPECT_EQ(e.peRed, r);
    EXPECT_EQ(e.peGreen, g);
    EXPECT_EQ(e.peBlue, b);
    EXPECT_EQ(e.peFlags, flags);
}

void ExpectEntry(const stPaletteEntry& e, int r, int g, int b, int flags)
{
    EXPECT_EQ(e.peRed, r);
    EXPECT_EQ(e.peGreen, g);
    EXPECT_EQ(e.peBlue, b);
    EXPECT_EQ(e.peFlags, flags);
}

// 256 entries whose entry i is (i, 255 - i, i / 2) with flags 1.
void Ramp(stPaletteEntry* entries)
{
    for (int i = 0; i < 256; ++i)
    {
        entries[i].peRed = static_cast<BYTE>(i);
        entries[i].peGreen = static_cast<BYTE>(255 - i);
        entries[i].peBlue = static_cast<BYTE>(i / 2);
        entries[i].peFlags = PC_RESERVED;
    }
}

std::vector<PALETTEENTRY> SystemPalette()
{
    std::vector<PALETTEENTRY> entries(256);
    HDC dc = CreateCompatibleDC(nullptr);
    EXPECT_EQ(GetSystemPaletteEntries(dc, 0, 256, entries.data()), 256u);
    DeleteDC(dc);
    return entries;
}
} // namespace

TEST(QorPalette, StartPaletteIsTheGreyRampInTheLogicalPaletteAndTheColourTable)
{
    Probe c;
    EXPECT_EQ(c.GetPalettePtr()->GetEntryCount(), 256);
    for (int i = 0; i < 256; ++i)
    {
        const int level = i >= 10 && i <= 245 ? i : 0;
        ExpectEntry(Logical(c, i), level, level, level, level ? 1 : 0);
        EXPECT_EQ(c.TableEntry(i).rgbRed, level);
        EXPECT_EQ(c.TableEntry(i).rgbGreen, level);
        EXPECT_EQ(c.TableEntry(i).rgbBlue, level);
    }
}

TEST(QorPalette, BitmapHeaderDescribesTheMainPictureTopDown)
{
    Probe c;
    EXPECT_EQ(c.Header().biSize, 40u);
    EXPECT_EQ(c.Header().biWidth, 640);
    EXPECT_EQ(c.Header().biHeight, -480);
    EXPECT_EQ(c.Header().biPlanes, 1);
    EXPECT_EQ(c.Header().biBitCount, 8);
    EXPECT_EQ(c.Header().biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_EQ(c.Header().biSizeImage, 0u);
    EXPECT_EQ(c.Header().biXPelsPerMeter, 640);
    EXPECT_EQ(c.Header().biYPelsPerMeter, 480);
    EXPECT_EQ(c.Header().biClrUsed, 0u);
    EXPECT_EQ(c.Header().biClrImportant, 0u);
    c.Initialize(QorPicBlock::Bit24, QorOffScreenBuffer::kIndependent, 320, 200, nullptr);
    EXPECT_EQ(c.Header().biWidth, 320);
    EXPECT_EQ(c.Header().biHeight, -200);
    EXPECT_EQ(c.Header().biBitCount, 24);
    EXPECT_EQ(c.Header().biXPelsPerMeter, 320);
    EXPECT_EQ(c.Header().biYPelsPerMeter, 200);
}

TEST(QorPalette, StandardColourPaletteHoldsTheCubeAndKeepsTheSystemEntries)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    const std::vector<PALETTEENTRY> system = SystemPalette();
    c.SetStdColorPalette();
    ExpectEntry(c.Stored(10), 0, 51, 204, 1);
    ExpectEntry(c.Stored(215), 255, 255, 255, 1);
    ExpectEntry(c.Stored(216), 0, 0, 0, 1);
    ExpectEntry(c.Stored(225), 0, 51, 153, 1);
    ExpectEntry(c.Stored(100), 102, 204, 204, 1);
    for (int i = 0; i < 256; ++i)
    {
        if (i >= 10 && i <= 225)
            continue;
        ExpectEntry(c.Stored(i), system[i].peRed, system[i].peGreen, system[i].peBlue, system[i].peFlags);
    }
    // Every cube colour once among entries 10-225.
    std::vector<int> seen(216, 0);
    for (int i = 10; i <= 225; ++i)
        ++seen[c.Stored(i).peRed / 51 * 36 + c.Stored(i).peGreen / 51 * 6 + c.Stored(i).peBlue / 51];
    for (int n : seen)
        EXPECT_EQ(n, 1);
    // Applied in mode 3: the logical palette and the colour table follow.
    ExpectEntry(Logical(c, 10), 0, 51, 204, 1);
    EXPECT_EQ(c.TableEntry(225).rgbBlue, 153);
    EXPECT_EQ(c.TableEntry(225).rgbGreen, 51);
}

TEST(QorPalette, InitializeSetsTheStandardColourPaletteWhenTheMainPictureBecomesEightBit)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    ExpectEntry(c.Stored(100), 100, 100, 100, 1);
    c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    ExpectEntry(c.Stored(100), 100, 100, 100, 1);
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    ExpectEntry(c.Stored(100), 102, 204, 204, 1);
}

TEST(QorPalette, StandardGreyPaletteInModeThreeGivesTheLogicalPaletteTheRamp)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    c.SetStdGreyPalette();
    ExpectEntry(Logical(c, 128), 128, 128, 128, 1);
    ExpectEntry(Logical(c, 0), 0, 0, 0, 1);
    ExpectEntry(Logical(c, 255), 255, 255, 255, 1);
    ExpectEntry(c.Stored(3), 3, 3, 3, 1);
    EXPECT_EQ(c.TableEntry(250).rgbRed, 250);
    EXPECT_EQ(c.TableEntry(250).rgbReserved, 1);
}

TEST(QorPalette, ModesZeroToTwoShiftTheLogicalPaletteByTenPlaces)
{
    for (auto mode : {QorOffScreenBuffer::kDeviceBitmap, QorOffScreenBuffer::kDeviceBitmapStretchClient,
                      QorOffScreenBuffer::kDeviceBitmapStretchScreen})
    {
        Probe c;
        c.Initialize(QorPicBlock::Bit8, mode, 64, 48, nullptr);
        stPaletteEntry entries[256];
        Ramp(entries);
        entries[10].peRed = 255;
        entries[10].peGreen = 0;
        entries[10].peBlue = 0;
        c.SetPalette(entries);
        ExpectEntry(Logical(c, 0), 255, 0, 0, 1);
        ExpectEntry(Logical(c, 235), 245, 10, 122, 1);
        // Beyond the shifted range the logical palette keeps what it had; the colour table is not touched.
        ExpectEntry(Logical(c, 240), 240, 240, 240, 1);
        EXPECT_EQ(c.TableEntry(10).rgbRed, 10);
        ExpectEntry(c.Stored(10), 255, 0, 0, 1);
    }
}

TEST(QorPalette, ModesThreeToFiveSetAllEntriesAndTheColourTable)
{
    for (auto mode : {QorOffScreenBuffer::kIndependent, QorOffScreenBuffer::kIndependentStretchClient,
                      QorOffScreenBuffer::kIndependentStretchScreen})
    {
        Probe c;
        c.Initialize(QorPicBlock::Bit8, mode, 64, 48, nullptr);
        stPaletteEntry entries[256];
        Ramp(entries);
        entries[7].peFlags = 0;
        c.SetPalette(entries);
        ExpectEntry(Logical(c, 7), 7, 248, 3, 0);
        ExpectEntry(Logical(c, 200), 200, 55, 100, 1);
        EXPECT_EQ(c.TableEntry(200).rgbRed, 200);
        EXPECT_EQ(c.TableEntry(200).rgbGreen, 55);
        EXPECT_EQ(c.TableEntry(200).rgbBlue, 100);
        EXPECT_EQ(c.TableEntry(200).rgbReserved, 1);
        EXPECT_EQ(c.TableEntry(7).rgbReserved, 0);
    }
}

TEST(QorPalette, SectionModesChangeOnlyTheStoredPalette)
{
    for (auto mode : {QorOffScreenBuffer::kSection, QorOffScreenBuffer::kSectionStretchClient,
                      QorOffScreenBuffer::kSectionStretchScreen})
    {
        CWnd window;
        ASSERT_TRUE(window.Create("palette", 64, 48));
        Probe c;
        c.Initialize(QorPicBlock::Bit8, mode, 64, 48, &window);
        stPaletteEntry entries[256];
        Ramp(entries);
        c.SetPalette(entries);
        ExpectEntry(c.Stored(200), 200, 55, 100, 1);
        ExpectEntry(Logical(c, 200), 200, 200, 200, 1);
        EXPECT_EQ(c.TableEntry(200).rgbGreen, 200);
    }
}

TEST(QorPalette, SetPaletteWithNullChangesNothing)
{
    Probe c;
    c.SetPalette(nullptr);
    ExpectEntry(c.Stored(100), 100, 100, 100, 1);
}

TEST(QorPalette, TurnScreenOffBlacksTheDeviceSideAndOnRestoresIt)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    stPaletteEntry entries[256];
    Ramp(entries);
    c.SetPalette(entries);
    c.TurnScreenOff();
    ExpectEntry(Logical(c, 100), 0, 0, 0, 1);
    ExpectEntry(Logical(c, 5), 0, 0, 0, 0);
    ExpectEntry(Logical(c, 250), 0, 0, 0, 0);
    EXPECT_EQ(c.TableEntry(100).rgbRed, 0);
    EXPECT_EQ(c.TableEntry(100).rgbReserved, 1);
    ExpectEntry(c.Stored(100), 100, 155, 50, 1);
    c.TurnScreenOn();
    ExpectEntry(Logical(c, 100), 100, 155, 50, 1);
    ExpectEntry(Logical(c, 245), 245, 10, 122, 1);
    // Outside 10-245 the device side stays zero.
    ExpectEntry(Logical(c, 5), 0, 0, 0, 0);
    EXPECT_EQ(c.TableEntry(100).rgbGreen, 155);
}

TEST(QorPalette, TurnScreenOffInModeZeroShiftsLikeAnyPalette)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, 64, 48, nullptr);
    c.TurnScreenOff();
    ExpectEntry(Logical(c, 0), 0, 0, 0, 1);
    ExpectEntry(Logical(c, 235), 0, 0, 0, 1);
    c.TurnScreenOn();
    ExpectEntry(Logical(c, 0), 10, 10, 10, 1);
    ExpectEntry(Logical(c, 235), 245, 245, 245, 1);
}

TEST(QorPalette, PresentingInModeZeroRealisesTheLibraryColoursAtTheirOwnIndices)
{
    CWnd window;
    ASSERT_TRUE(window.Create("palette", 16, 4));
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, 16, 4, &window);
    stPaletteEntry entries[256];
    Ramp(entries);
    c.SetPalette(entries);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    for (long x = 0; x < 16; ++x)
        for (long y = 0; y < 4; ++y)
            main.GetPixel(x, y)[0] = static_cast<unsigned char>(x == 0 ? 3 : x == 1 ? 250 : 10 + 15 * x);
    c.DrawToScreen(0, 0);
    const std::vector<PALETTEENTRY> system = SystemPalette();
    for (int i = 10; i <= 245; ++i)
        ExpectEntry(system[i], entries[i].peRed, entries[i].peGreen, entries[i].peBlue, 0);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    // Index 40 shows entry 40; indices 3 and 250 show the display's static colours.
    EXPECT_EQ(port->GetPresentedPixel(2, 0), RGB(40, 215, 20));
    EXPECT_EQ(port->GetPresentedPixel(0, 0), RGB(128, 128, 0));
    EXPECT_EQ(port->GetPresentedPixel(1, 0), RGB(0, 255, 0));
}

TEST(QorPalette, PresentingInModeThreeUsesTheColourTableForEveryIndex)
{
    CWnd window;
    ASSERT_TRUE(window.Create("palette", 16, 4));
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 16, 4, &window);
    stPaletteEntry entries[256];
    Ramp(entries);
    c.SetPalette(entries);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    for (long x = 0; x < 16; ++x)
        for (long y = 0; y < 4; ++y)
            main.GetPixel(x, y)[0] = static_cast<unsigned char>(x == 0 ? 3 : x == 1 ? 250 : 10 + 15 * x);
    c.DrawToScreen(0, 0);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->GetPresentedPixel(2, 0), RGB(40, 215, 20));
    EXPECT_EQ(port->GetPresentedPixel(0, 0), RGB(3, 252, 1));
    EXPECT_EQ(port->GetPresentedPixel(1, 0), RGB(250, 5, 125));
    c.TurnScreenOff();
    c.DrawToScreen(0, 0);
    EXPECT_EQ(port->GetPresentedPixel(2, 0), RGB(0, 0, 0));
    EXPECT_EQ(port->GetPresentedPixel(1, 0), RGB(0, 0, 0));
    c.TurnScreenOn();
    c.DrawToScreen(0, 0);
    EXPECT_EQ(port->GetPresentedPixel(2, 0), RGB(40, 215, 20));
}
