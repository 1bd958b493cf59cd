// QorOffScreenBuffer's presentation: Initialize and AutoUpdateBitmap in the nine showing modes,
// DrawToScreen in both forms, DrawToScreenCenter, both DrawToDC, the draw hook's context, and golden
// images of presented frames read back from the headless window.
#include "compositor_probe.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
using qortest::At;
using qortest::Bytes;
using qortest::FrameOf;
using qortest::Probe;
using qortest::SetAt;

const long kW = 64, kH = 48;
const long kWindowW = 80, kWindowH = 60;

// The hook draws a 3 x 2 block of pure red at (1, 1) of whatever context it is given.
int g_hookCalls = 0;
char DrawRedBlock(QorIntegration*, CDC* dc)
{
    ++g_hookCalls;
    dc->FillSolidRect(1, 1, 3, 2, RGB(255, 0, 0));
    return 1;
}
int g_integration = 0;

// The scene every golden shows: a background, keyed sprites at three depths (one mirrored), and a
// child with a sprite of its own; the visible rectangle leaves a border of the main picture out.
void BuildScene(Probe& c)
{
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const bool eight = main.GetBytesPerPixel() == 1;
    auto colour = [eight](unsigned char index, unsigned char r, unsigned char g, unsigned char b) {
        return eight ? Bytes{index} : Bytes{b, g, r, 0};
    };

    const Bytes background = colour(3, 16, 32, 64);
    main.SetMask(background.data());
    const Bytes key = colour(0, 0, 0, 0);

    // A 20 x 14 stripe picture whose corners are keyed.
    QorGuider stripes = c.MakePic(20, 14, key.data());
    QorPicBlock& s = c.Picture(stripes);
    s.SetMask(key.data());
    for (long y = 0; y < 14; ++y)
        for (long x = 0; x < 20; ++x)
        {
            const bool corner = (x < 3 || x > 16) && (y < 3 || y > 10);
            const Bytes c1 = colour(static_cast<unsigned char>(20 + x * 9), static_cast<unsigned char>(x * 12), 200,
                                    static_cast<unsigned char>(y * 18));
            SetAt(s, x, y, corner ? key : c1);
        }
    QorGuider block = c.MakePic(12, 12, colour(250, 255, 255, 0).data());
    c.Picture(block).SetMask(key.data());
    SetAt(c.Picture(block), 5, 5, key);

    QorGuider far = c.CreateSprite(stripes, 500);
    c.MoveSprite(far, 4, 4);
    QorGuider mirrored = c.CreateSprite(stripes, 200);
    c.MoveSprite(mirrored, 30, 20);
    c.SetHReverse(mirrored, 1);
    QorGuider near = c.CreateSprite(block, 10);
    c.MoveSprite(near, 18, 12);

    QorGuider child = c.CreateChild(16, 10);
    const Bytes childBackground = colour(215, 255, 255, 255);
    c.GetChildPicBlockPtr(child)->SetMask(childBackground.data());
    c.CreateSprite(child, c.MakePic(6, 4, colour(9, 166, 202, 240).data()), 5);
    c.MoveChild(child, 36, 34);
    c.SetChildMask(child, 0);

    c.SetMainVisibleRect(QorRect(2, 1, kW - 3, kH - 2));
    c.Redraw(1, 0);
}

std::string ModeName(QorOffScreenBuffer::ShowingMode mode, QorPicBlock::ColorType type)
{
    return "mode" + std::to_string(static_cast<int>(mode)) + (type == QorPicBlock::Bit8 ? "-8bit" : "-32bit");
}

struct PresentCase
{
    QorOffScreenBuffer::ShowingMode mode;
    QorPicBlock::ColorType type;
};

class QorPresentGolden : public ::testing::TestWithParam<PresentCase>
{
};
} // namespace

TEST_P(QorPresentGolden, GoldenPresentedFrame)
{
    const PresentCase param = GetParam();
    CWnd window;
    ASSERT_TRUE(window.Create("present", kWindowW, kWindowH));
    Probe c;
    c.Initialize(param.type, param.mode, kW, kH, &window);
    if (param.type == QorPicBlock::Bit8)
        c.SetStdColorPalette();
    c.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
    c.SetDrawHook(DrawRedBlock);
    BuildScene(c);
    c.DrawToScreen(5, 3);
    qortest::ExpectMatchesGolden(FrameOf(window), "compositor", ModeName(param.mode, param.type));
}

INSTANTIATE_TEST_SUITE_P(
    Modes, QorPresentGolden,
    ::testing::Values(PresentCase{QorOffScreenBuffer::kDeviceBitmap, QorPicBlock::Bit8},
                      PresentCase{QorOffScreenBuffer::kDeviceBitmap, QorPicBlock::Bit32},
                      PresentCase{QorOffScreenBuffer::kDeviceBitmapStretchClient, QorPicBlock::Bit8},
                      PresentCase{QorOffScreenBuffer::kDeviceBitmapStretchClient, QorPicBlock::Bit32},
                      PresentCase{QorOffScreenBuffer::kIndependent, QorPicBlock::Bit8},
                      PresentCase{QorOffScreenBuffer::kIndependent, QorPicBlock::Bit32},
                      PresentCase{QorOffScreenBuffer::kIndependentStretchClient, QorPicBlock::Bit8},
                      PresentCase{QorOffScreenBuffer::kIndependentStretchClient, QorPicBlock::Bit32},
                      PresentCase{QorOffScreenBuffer::kSection, QorPicBlock::Bit8},
                      PresentCase{QorOffScreenBuffer::kSection, QorPicBlock::Bit32},
                      PresentCase{QorOffScreenBuffer::kSectionStretchClient, QorPicBlock::Bit8},
                      PresentCase{QorOffScreenBuffer::kSectionStretchClient, QorPicBlock::Bit32}),
    [](const ::testing::TestParamInfo<PresentCase>& info)
    {
        std::string name = ModeName(info.param.mode, info.param.type);
        for (char& ch : name)
            if (ch == '-')
                ch = '_';
        return name;
    });

namespace
{
// A 32-bit main picture whose pixel (x, y) is blue x, green y, red 7, presented in a window.
class QorPresent : public ::testing::Test
{
protected:
    void Open(QorOffScreenBuffer::ShowingMode mode, long windowW = kWindowW, long windowH = kWindowH)
    {
        ASSERT_TRUE(window.Create("present", int(windowW), int(windowH)));
        port = QorGetHeadlessWindow(window);
        ASSERT_NE(port, nullptr);
        c.Initialize(QorPicBlock::Bit32, mode, kW, kH, &window);
        // Initialize leaves the visible rectangle alone: the 640 x 480 of construction.
        c.SetMainVisibleRect(QorRect(0, 0, kW - 1, kH - 1));
        Fill();
    }
    void Fill()
    {
        QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
        for (long y = 0; y < main.GetHeight(); ++y)
            for (long x = 0; x < main.GetWidth(); ++x)
                SetAt(main, x, y, Bytes{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7, 0});
    }
    static COLORREF Source(long x, long y) { return RGB(7, BYTE(y), BYTE(x)); }
    void TearDown() override { c.SetIntegrationPtr(nullptr); }

    CWnd window;
    Probe c;
    QorHeadlessWindowPort* port = nullptr;
};
} // namespace

// Mode 0 shows the main picture's bits in place; a draw hook paints on a copy, so what it paints is shown
// but never kept in the picture, and the next present without the hook shows the picture alone.
TEST_F(QorPresent, ModeZeroDrawHookPaintsOnACopyOfTheMainPicture)
{
    Open(QorOffScreenBuffer::kDeviceBitmap);
    c.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
    c.SetDrawHook(DrawRedBlock);
    g_hookCalls = 0;
    c.DrawToScreen(0, 0);
    EXPECT_EQ(g_hookCalls, 1);
    EXPECT_EQ(port->GetPresentedPixel(2, 2), RGB(255, 0, 0));
    EXPECT_EQ(port->GetPresentedPixel(5, 2), Source(5, 2));
    const QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    EXPECT_EQ(Bytes(main.GetPixel(2, 2), main.GetPixel(2, 2) + 4), (Bytes{2, 2, 7, 0}));
    c.SetDrawHook(nullptr);
    c.DrawToScreen(0, 0);
    EXPECT_EQ(g_hookCalls, 1);
    EXPECT_EQ(port->GetPresentedPixel(2, 2), Source(2, 2));
}

TEST_F(QorPresent, ModeZeroCopiesTheVisibleRectangleOneToOneAtThePosition)
{
    Open(QorOffScreenBuffer::kDeviceBitmap);
    c.SetMainVisibleRect(QorRect(10, 5, 29, 14));
    c.DrawToScreen(3, 4);
    EXPECT_EQ(port->GetPresentedPixel(3, 4), Source(10, 5));
    EXPECT_EQ(port->GetPresentedPixel(22, 13), Source(29, 14));
    EXPECT_EQ(port->GetPresentedPixel(23, 13), RGB(0, 0, 0));
    EXPECT_EQ(port->GetPresentedPixel(22, 14), RGB(0, 0, 0));
    EXPECT_EQ(port->GetPresentedPixel(2, 4), RGB(0, 0, 0));
}

TEST_F(QorPresent, StretchingModesFillTheClientAreaFromItsOrigin)
{
    for (auto mode : {QorOffScreenBuffer::kDeviceBitmapStretchClient, QorOffScreenBuffer::kIndependentStretchClient,
                      QorOffScreenBuffer::kSectionStretchClient})
    {
        CWnd w;
        ASSERT_TRUE(w.Create("stretch", 40, 20));
        Probe p;
        p.Initialize(QorPicBlock::Bit32, mode, kW, kH, &w);
        p.SetMainVisibleRect(QorRect(0, 0, kW - 1, kH - 1));
        QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
        for (long y = 0; y < kH; ++y)
            for (long x = 0; x < kW; ++x)
                SetAt(main, x, y, Bytes{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7, 0});
        p.SetMainVisibleRect(QorRect(4, 2, 23, 11));
        p.DrawToScreen(9, 9);
        QorHeadlessWindowPort* wp = QorGetHeadlessWindow(w);
        // 20 x 10 source pixels over 40 x 20: each doubled, from (0, 0) whatever the position asked.
        EXPECT_EQ(wp->GetPresentedPixel(0, 0), Source(4, 2)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(1, 1), Source(4, 2)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(2, 0), Source(5, 2)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(39, 19), Source(23, 11)) << mode;
    }
}

TEST_F(QorPresent, ScreenStretchingModesUseTheScreenSize)
{
    for (auto mode : {QorOffScreenBuffer::kDeviceBitmapStretchScreen, QorOffScreenBuffer::kIndependentStretchScreen,
                      QorOffScreenBuffer::kSectionStretchScreen})
    {
        QorHeadlessVideoPort* video = QorGetHeadlessVideo();
        ASSERT_NE(video, nullptr);
        video->SetScreenSize(128, 96);
        CWnd w;
        ASSERT_TRUE(w.Create("screen", 40, 20));
        Probe p;
        p.Initialize(QorPicBlock::Bit32, mode, kW, kH, &w);
        p.SetMainVisibleRect(QorRect(0, 0, kW - 1, kH - 1));
        QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
        for (long y = 0; y < kH; ++y)
            for (long x = 0; x < kW; ++x)
                SetAt(main, x, y, Bytes{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7, 0});
        p.DrawToScreen(0, 0);
        QorHeadlessWindowPort* wp = QorGetHeadlessWindow(w);
        // 64 x 48 over 128 x 96: doubled; the window shows the top-left part.
        EXPECT_EQ(wp->GetPresentedPixel(3, 5), Source(1, 2)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(39, 19), Source(19, 9)) << mode;
        video->SetScreenSize(1024, 768);
    }
}

TEST_F(QorPresent, RectangleFormPresentsTheWholeVisibleRectangleAtTheOrigin)
{
    Open(QorOffScreenBuffer::kIndependent);
    c.DrawToScreen(30, 30, 35, 35);
    EXPECT_EQ(port->GetPresentedPixel(0, 0), Source(0, 0));
    EXPECT_EQ(port->GetPresentedPixel(63, 47), Source(63, 47));
    const RECT area = port->GetLastPresentArea();
    EXPECT_EQ(area.left, 0);
    EXPECT_EQ(area.top, 0);
    EXPECT_EQ(area.right, kW);
    EXPECT_EQ(area.bottom, kH);
}

TEST(QorPresentNoWindow, EveryFormShowsTheNullWindowMessageAndDrawsNothing)
{
    Probe c;
    QorHeadlessVideoPort* video = QorGetHeadlessVideo();
    ASSERT_NE(video, nullptr);
    for (int form = 0; form < 3; ++form)
    {
        const unsigned long before = video->GetMessageBoxCount();
        if (form == 0)
            c.DrawToScreen(0, 0);
        else if (form == 1)
            c.DrawToScreen(0, 0, 10, 10);
        else
            c.DrawToScreenCenter();
        EXPECT_EQ(video->GetMessageBoxCount(), before + 1) << form;
        EXPECT_EQ(video->GetLastMessageBoxText(), "NULL WND");
        EXPECT_EQ(video->GetLastMessageBoxCaption(), "ERROR");
    }
}

TEST_F(QorPresent, CentreInModesZeroAndSixFromThePictureCornerWithoutTheHook)
{
    for (auto mode : {QorOffScreenBuffer::kDeviceBitmap, QorOffScreenBuffer::kSection})
    {
        CWnd w;
        ASSERT_TRUE(w.Create("centre", 75, 55));
        Probe p;
        p.Initialize(QorPicBlock::Bit32, mode, kW, kH, &w);
        p.SetMainVisibleRect(QorRect(0, 0, kW - 1, kH - 1));
        QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
        for (long y = 0; y < kH; ++y)
            for (long x = 0; x < kW; ++x)
                SetAt(main, x, y, Bytes{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7, 0});
        p.SetMainVisibleRect(QorRect(10, 10, 29, 19));
        p.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
        p.SetDrawHook(DrawRedBlock);
        g_hookCalls = 0;
        p.DrawToScreenCenter();
        QorHeadlessWindowPort* wp = QorGetHeadlessWindow(w);
        // (75 - 20) / 2 = 27, (55 - 10) / 2 = 22; the source starts at the picture's (0, 0).
        EXPECT_EQ(wp->GetPresentedPixel(27, 22), Source(0, 0)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(46, 31), Source(19, 9)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(26, 22), RGB(0, 0, 0)) << mode;
        EXPECT_EQ(wp->GetPresentedPixel(47, 31), RGB(0, 0, 0)) << mode;
        EXPECT_EQ(g_hookCalls, 0);
        p.SetIntegrationPtr(nullptr);
    }
}

TEST_F(QorPresent, CentreTruncatesTowardZeroWhenThePictureIsLarger)
{
    Open(QorOffScreenBuffer::kDeviceBitmap, 61, 45);
    c.DrawToScreenCenter();
    // (61 - 64) / 2 = -1 and (45 - 48) / 2 = -1: window pixel (0, 0) shows picture pixel (1, 1).
    EXPECT_EQ(port->GetPresentedPixel(0, 0), Source(1, 1));
}

TEST_F(QorPresent, CentreInOtherModesDrawsNothing)
{
    for (auto mode : {QorOffScreenBuffer::kDeviceBitmapStretchClient, QorOffScreenBuffer::kIndependent,
                      QorOffScreenBuffer::kSectionStretchClient})
    {
        CWnd w;
        ASSERT_TRUE(w.Create("centre", 75, 55));
        Probe p;
        p.Initialize(QorPicBlock::Bit32, mode, kW, kH, &w);
        QorHeadlessWindowPort* wp = QorGetHeadlessWindow(w);
        const unsigned long before = wp->GetPresentCount();
        p.DrawToScreenCenter();
        EXPECT_EQ(wp->GetPresentCount(), before) << mode;
    }
}

TEST_F(QorPresent, HookDrawsOnTheMemoryContextInModeZeroAndOnTheWindowInModeThree)
{
    Open(QorOffScreenBuffer::kDeviceBitmapStretchClient, 128, 96);
    c.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
    c.SetDrawHook(DrawRedBlock);
    g_hookCalls = 0;
    c.DrawToScreen(0, 0);
    EXPECT_EQ(g_hookCalls, 1);
    // Drawn into the picture's copy before stretching: the block is doubled, at (2, 2)-(7, 5).
    EXPECT_EQ(port->GetPresentedPixel(2, 2), RGB(255, 0, 0));
    EXPECT_EQ(port->GetPresentedPixel(7, 5), RGB(255, 0, 0));
    EXPECT_EQ(port->GetPresentedPixel(8, 5), Source(4, 2));
    // The picture itself is untouched.
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 1, 1), (Bytes{1, 1, 7, 0}));

    CWnd w;
    ASSERT_TRUE(w.Create("independent", 128, 96));
    Probe p;
    p.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kIndependentStretchClient, kW, kH, &w);
    p.SetMainVisibleRect(QorRect(0, 0, kW - 1, kH - 1));
    p.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
    p.SetDrawHook(DrawRedBlock);
    p.DrawToScreen(0, 0);
    EXPECT_EQ(g_hookCalls, 2);
    // Drawn on the window after the transfer: the block is not stretched.
    QorHeadlessWindowPort* wp = QorGetHeadlessWindow(w);
    EXPECT_EQ(wp->GetPresentedPixel(1, 1), RGB(255, 0, 0));
    EXPECT_EQ(wp->GetPresentedPixel(3, 2), RGB(255, 0, 0));
    EXPECT_EQ(wp->GetPresentedPixel(4, 2), RGB(0, 0, 0));
    p.SetIntegrationPtr(nullptr);
}

TEST_F(QorPresent, HookDrawsIntoTheSectionAndSoIntoTheMainPictureInModeSix)
{
    Open(QorOffScreenBuffer::kSection);
    c.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
    c.SetDrawHook(DrawRedBlock);
    c.DrawToScreen(0, 0);
    EXPECT_EQ(port->GetPresentedPixel(1, 1), RGB(255, 0, 0));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 2, 2), (Bytes{0, 0, 255, 0}));
}

TEST_F(QorPresent, HookIsCalledOnlyWithAnIntegrationPointer)
{
    Open(QorOffScreenBuffer::kDeviceBitmap);
    c.SetDrawHook(DrawRedBlock);
    g_hookCalls = 0;
    c.DrawToScreen(0, 0);
    EXPECT_EQ(g_hookCalls, 0);
    c.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
    c.SetDrawHook(nullptr);
    c.DrawToScreen(0, 0);
    EXPECT_EQ(g_hookCalls, 0);
}

// AutoUpdateBitmap in every mode.

TEST_F(QorPresent, PlainModesGiveThePictureItsOwnPixels)
{
    for (int mode = 0; mode <= 5; ++mode)
    {
        CWnd w;
        ASSERT_TRUE(w.Create("plain", 40, 30));
        Probe p;
        p.Initialize(QorPicBlock::Bit24, QorOffScreenBuffer::ShowingMode(mode), 33, 21, &w);
        const QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
        EXPECT_FALSE(main.IsAttached()) << mode;
        EXPECT_EQ(main.GetWidth(), 33);
        EXPECT_EQ(main.GetHeight(), 21);
        EXPECT_EQ(p.Section(), nullptr);
        EXPECT_EQ(p.Main()->bitmapInfo.bits, main.GetDataPtr());
        EXPECT_EQ(p.Header().biBitCount, 24);
        EXPECT_EQ(p.Header().biWidth, 33);
        EXPECT_EQ(p.Header().biHeight, -21);
    }
}

TEST_F(QorPresent, SectionModesAttachTheMainPictureToTheSectionPixels)
{
    for (int mode = 6; mode <= 8; ++mode)
    {
        CWnd w;
        ASSERT_TRUE(w.Create("section", 40, 30));
        Probe p;
        p.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::ShowingMode(mode), 36, 20, &w);
        const QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
        ASSERT_NE(p.Section(), nullptr) << mode;
        BITMAP description = {};
        ASSERT_EQ(GetObjectA(p.Section(), sizeof(description), &description), int(sizeof(description)));
        EXPECT_EQ(description.bmWidth, 36);
        EXPECT_EQ(description.bmHeight, 20);
        EXPECT_EQ(description.bmBitsPixel, 32);
        EXPECT_TRUE(main.IsAttached());
        EXPECT_EQ(main.GetDataPtr(), description.bmBits);
        EXPECT_EQ(main.GetWidth(), 36);
        EXPECT_EQ(main.GetHeight(), 20);
        EXPECT_EQ(p.Main()->bitmapInfo.bits, description.bmBits);
        EXPECT_NE(p.WindowDC(), nullptr);
        EXPECT_NE(p.SectionDC(), nullptr);
    }
}

TEST_F(QorPresent, ResizingASectionModeMakesANewSectionAndLeavingItGivesThePixelsBack)
{
    Open(QorOffScreenBuffer::kSection);
    EXPECT_EQ(c.SetMainBufferSize(20, 10), 1);
    EXPECT_NE(c.Section(), nullptr);
    BITMAP description = {};
    GetObjectA(c.Section(), sizeof(description), &description);
    EXPECT_EQ(description.bmWidth, 20);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetWidth(), 20);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetDataPtr(), description.bmBits);

    QorPicBlock* picture = c.GetMainBufferPicBlockPtr();
    c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kIndependent, 30, 12, &window);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr(), picture);
    EXPECT_FALSE(picture->IsAttached());
    EXPECT_EQ(picture->GetWidth(), 30);
    EXPECT_EQ(picture->GetHeight(), 12);
    EXPECT_EQ(c.Section(), nullptr);
    EXPECT_EQ(c.WindowDC(), nullptr);
    std::memset(picture->GetDataPtr(), 0x42, picture->GetSize());
    c.DrawToScreen(0, 0);
    EXPECT_EQ(port->GetPresentedPixel(29, 11), RGB(0x42, 0x42, 0x42));
}

TEST_F(QorPresent, SectionModeWithoutAWindowKeepsAPlainPicture)
{
    Probe p;
    p.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kSection, 20, 10, nullptr);
    EXPECT_EQ(p.Section(), nullptr);
    EXPECT_FALSE(p.GetMainBufferPicBlockPtr()->IsAttached());
    EXPECT_EQ(p.GetMainBufferPicBlockPtr()->GetWidth(), 20);
}

TEST_F(QorPresent, ColourTypeChangeInASectionModeRemakesTheSection)
{
    Open(QorOffScreenBuffer::kSection);
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kSection, 40, 24, &window);
    BITMAP description = {};
    GetObjectA(c.Section(), sizeof(description), &description);
    EXPECT_EQ(description.bmBitsPixel, 8);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetBitsPerPixel(), 8);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetDataPtr(), description.bmBits);
}

TEST_F(QorPresent, OddRowSizesArePaddedForTheIndependentTransfer)
{
    ASSERT_TRUE(window.Create("odd", 20, 8));
    port = QorGetHeadlessWindow(window);
    c.Initialize(QorPicBlock::Bit24, QorOffScreenBuffer::kIndependent, 7, 5, &window);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    for (long y = 0; y < 5; ++y)
        for (long x = 0; x < 7; ++x)
            SetAt(main, x, y, Bytes{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 9});
    c.DrawToScreen(0, 0);
    EXPECT_EQ(port->GetPresentedPixel(6, 4), RGB(9, 4, 6));
    EXPECT_EQ(port->GetPresentedPixel(0, 3), RGB(9, 3, 0));
}

// DrawToDC.

namespace
{
// A memory context on a 32-bit top-down section of w x h, zeroed.
struct Target
{
    Target(long w, long h)
    {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = LONG(w);
        info.bmiHeader.biHeight = -LONG(h);
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        section = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits), nullptr, 0);
        dc.CreateCompatibleDC(nullptr);
        previous = SelectObject(dc.GetSafeHdc(), section);
        size = static_cast<std::size_t>(w * h * 4);
    }
    ~Target()
    {
        SelectObject(dc.GetSafeHdc(), previous);
        dc.DeleteDC();
        DeleteObject(section);
    }
    std::vector<unsigned char> Pixels() const { return std::vector<unsigned char>(bits, bits + size); }
    COLORREF At(long x, long y) const { return GetPixel(dc.GetSafeHdc(), int(x), int(y)); }

    CDC dc;
    HBITMAP section = nullptr;
    HGDIOBJ previous = nullptr;
    unsigned char* bits = nullptr;
    std::size_t size = 0;
};
} // namespace

TEST_F(QorPresent, DrawToDcInModeSevenIsTheIndependentStretchOfModeFour)
{
    CWnd w4, w7;
    ASSERT_TRUE(w4.Create("four", 96, 72));
    ASSERT_TRUE(w7.Create("seven", 96, 72));
    Probe four, seven;
    four.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kIndependentStretchClient, kW, kH, &w4);
    seven.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kSectionStretchClient, kW, kH, &w7);
    for (Probe* p : {&four, &seven})
    {
        QorPicBlock& main = *p->GetMainBufferPicBlockPtr();
        for (long y = 0; y < kH; ++y)
            for (long x = 0; x < kW; ++x)
                SetAt(main, x, y, Bytes{static_cast<unsigned char>(x * 3), static_cast<unsigned char>(y * 5), 7, 0});
        p->SetMainVisibleRect(QorRect(3, 2, 50, 40));
    }
    Target a(100, 80), b(100, 80);
    four.DrawToDC(&a.dc, 10, 10);
    seven.DrawToDC(&b.dc, 10, 10);
    EXPECT_EQ(a.Pixels(), b.Pixels());
    // Stretched from (0, 0): 48 x 39 source pixels over the 96 x 72 client area.
    EXPECT_EQ(a.At(0, 0), RGB(7, 10, 9));
    EXPECT_EQ(a.At(95, 71), RGB(7, 200, 150));
    EXPECT_EQ(a.At(96, 0), RGB(0, 0, 0));
}

TEST_F(QorPresent, DrawToDcInModeZeroCopiesOneToOneAtThePosition)
{
    Open(QorOffScreenBuffer::kDeviceBitmap);
    c.SetMainVisibleRect(QorRect(4, 4, 13, 9));
    Target t(40, 30);
    c.DrawToDC(&t.dc, 5, 6);
    EXPECT_EQ(t.At(5, 6), Source(4, 4));
    EXPECT_EQ(t.At(14, 11), Source(13, 9));
    EXPECT_EQ(t.At(15, 11), RGB(0, 0, 0));
    EXPECT_EQ(t.At(4, 6), RGB(0, 0, 0));
}

TEST_F(QorPresent, DrawToDcWithRectanglesStretchesTheSourceRectangle)
{
    for (auto mode :
         {QorOffScreenBuffer::kDeviceBitmap, QorOffScreenBuffer::kIndependent, QorOffScreenBuffer::kSection})
    {
        CWnd w;
        ASSERT_TRUE(w.Create("rects", 40, 30));
        Probe p;
        p.Initialize(QorPicBlock::Bit32, mode, kW, kH, &w);
        p.SetMainVisibleRect(QorRect(0, 0, kW - 1, kH - 1));
        QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
        for (long y = 0; y < kH; ++y)
            for (long x = 0; x < kW; ++x)
                SetAt(main, x, y, Bytes{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7, 0});
        p.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
        p.SetDrawHook(DrawRedBlock);
        g_hookCalls = 0;
        Target t(40, 30);
        p.DrawToDC(&t.dc, 10, 5, 20, 10, 30, 20, 10, 5);
        EXPECT_EQ(t.At(10, 5), Source(30, 20)) << mode;
        EXPECT_EQ(t.At(12, 7), Source(31, 21)) << mode;
        EXPECT_EQ(t.At(29, 14), Source(39, 24)) << mode;
        EXPECT_EQ(t.At(30, 14), RGB(0, 0, 0)) << mode;
        EXPECT_EQ(g_hookCalls, 1) << mode;
        // Modes 0-2 draw the hook into the picture's copy (outside the rectangle here); the others on dc.
        EXPECT_EQ(t.At(1, 1), mode == QorOffScreenBuffer::kDeviceBitmap ? RGB(0, 0, 0) : RGB(255, 0, 0)) << mode;
        p.SetIntegrationPtr(nullptr);
    }
}

TEST_F(QorPresent, DrawToDcRestoresThePreviousPaletteOfTheContext)
{
    Open(QorOffScreenBuffer::kIndependent);
    Target t(10, 10);
    const HPALETTE stock = static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE));
    c.DrawToDC(&t.dc, 0, 0);
    // Selecting something else answers what was selected: the stock palette again.
    const HPALETTE now = SelectPalette(t.dc.GetSafeHdc(), stock, FALSE);
    EXPECT_EQ(now, stock);
}

namespace
{
char DrawNothing(QorIntegration*, CDC*)
{
    return 0;
}

// An 8-bit 32 x 16 main picture holding every index, presented in a 32 x 16 window: the frame shown.
std::vector<unsigned char> EightBitFrame(QorOffScreenBuffer::ShowingMode mode, bool hook)
{
    CWnd w;
    EXPECT_TRUE(w.Create("frame", 32, 16));
    Probe p;
    p.Initialize(QorPicBlock::Bit8, mode, 32, 16, &w);
    p.SetMainVisibleRect(QorRect(0, 0, 31, 15));
    p.SetStdColorPalette();
    QorPicBlock& main = *p.GetMainBufferPicBlockPtr();
    for (unsigned long i = 0; i < main.GetSize(); ++i)
        main.GetDataPtr()[i] = static_cast<unsigned char>(i * 37);
    if (hook)
    {
        p.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&g_integration));
        p.SetDrawHook(DrawNothing);
    }
    p.DrawToScreen(0, 0);
    p.SetIntegrationPtr(nullptr);
    return QorGetHeadlessWindow(w)->GetPresentedFrame();
}
} // namespace

TEST(QorPresentEightBit, FrameLookedUpBeforeTheTransferEqualsTheConvertedBitmap)
{
    // Mode 0 without a hook looks the pixels up in the system palette itself; with one it goes through the
    // 8-bit bitmap. Mode 3 looks them up in the colour table; mode 4 at the same size converts in the
    // stretched transfer.
    EXPECT_EQ(EightBitFrame(QorOffScreenBuffer::kDeviceBitmap, false),
              EightBitFrame(QorOffScreenBuffer::kDeviceBitmap, true));
    EXPECT_EQ(EightBitFrame(QorOffScreenBuffer::kIndependent, false),
              EightBitFrame(QorOffScreenBuffer::kIndependentStretchClient, false));
}
