// QorOffScreenBuffer's screen effects: starting them, OnTimer stepping every buffer, time in timer clicks,
// the fade palettes step by step, the mosaic cell sizes, the random dissolve's point counts and the
// inert members.
#include "compositor_probe.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace
{
using qortest::Probe;

PALETTEENTRY Logical(QorOffScreenBuffer& c, int i)
{
    PALETTEENTRY e = {1, 2, 3, 4};
    c.GetPalettePtr()->GetPaletteEntries(static_cast<UINT>(i), 1, &e);
    return e;
}

// A palette of 200 in entries 10-245 (flags 1) and 77 elsewhere (flags 0).
void FlatPalette(stPaletteEntry* entries)
{
    for (int i = 0; i < 256; ++i)
    {
        const bool own = i >= 10 && i <= 245;
        entries[i].peRed = entries[i].peGreen = entries[i].peBlue = own ? 200 : 77;
        entries[i].peFlags = own ? PC_RESERVED : 0;
    }
}

// Mode 3 keeps every entry in the logical palette, unshifted: the fades can be read there.
void StartPalette(Probe& c)
{
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kIndependent, 32, 24, nullptr);
    stPaletteEntry entries[256];
    FlatPalette(entries);
    c.SetPalette(entries);
}

// The cell size a picture shows: the largest c for which every pixel equals the snapshot's pixel at the
// top-left corner of its c x c cell (the snapshot's pixels all differ). 0 when none fits.
long CellOf(const QorPicBlock& shown, const QorPicBlock& snapshot, long w, long h)
{
    for (long cell = w; cell >= 1; --cell)
    {
        bool fits = true;
        for (long y = 0; y < h && fits; ++y)
            for (long x = 0; x < w && fits; ++x)
                fits = std::memcmp(shown.GetPixel(x, y), snapshot.GetPixel(x / cell * cell, y / cell * cell), 4) == 0;
        if (fits)
            return cell;
    }
    return 0;
}

// A 32-bit child of w x h whose pixels all differ, shown at (0, 0) of the main buffer.
QorGuider PatternChild(Probe& c, long w, long h)
{
    QorGuider child = c.CreateChild(w, h);
    QorPicBlock& surface = *c.GetChildPicBlockPtr(child);
    for (long y = 0; y < h; ++y)
        for (long x = 0; x < w; ++x)
        {
            const std::uint32_t v = static_cast<std::uint32_t>(1 + x + y * w);
            std::memcpy(surface.GetPixel(x, y), &v, 4);
        }
    return child;
}

class QorEffectsWindow : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(window.Create("effects", 64, 48));
        c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 64, 48, &window);
    }

    CWnd window;
    Probe c;
};
} // namespace

TEST(QorEffects, OnTimerWithoutAnEffectReturnsZero)
{
    Probe c;
    EXPECT_EQ(c.OnTimer(), 0);
}

TEST(QorEffects, SetChildSpecialEffectStartsOnceAndCountsTheBuffer)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    EXPECT_EQ(c.SetChildSpecialEffect(child, QorOffScreenBuffer::kIdleEffect, 500), 1);
    EXPECT_EQ(c.Buffer(child)->effect, QorOffScreenBuffer::kIdleEffect);
    EXPECT_EQ(c.Buffer(child)->effectLength, 500u);
    EXPECT_EQ(c.Buffer(child)->effectProgress, 0u);
    EXPECT_EQ(c.ActiveEffects(), 1u);
    EXPECT_EQ(c.SetChildSpecialEffect(child, QorOffScreenBuffer::kFadeInEffect, 100), 0);
    EXPECT_EQ(c.Buffer(child)->effect, QorOffScreenBuffer::kIdleEffect);
    EXPECT_EQ(c.ActiveEffects(), 1u);
    EXPECT_EQ(c.SetChildSpecialEffect(QorGuider(), QorOffScreenBuffer::kIdleEffect, 100), 0);
}

TEST(QorEffects, IdleAndStepLessEffectsNeverAdvance)
{
    Probe c;
    QorGuider a = c.CreateChild(4, 4);
    QorGuider b = c.CreateChild(4, 4);
    c.SetChildSpecialEffect(a, QorOffScreenBuffer::kIdleEffect, 100);
    c.SetChildSpecialEffect(b, QorOffScreenBuffer::kNoStepEffect, 100);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(c.OnTimer(), 1);
    EXPECT_EQ(c.Buffer(a)->effectProgress, 0u);
    EXPECT_EQ(c.Buffer(b)->effectProgress, 0u);
    EXPECT_EQ(c.ActiveEffects(), 2u);
}

TEST(QorEffects, InertMembersReturnZero)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    EXPECT_EQ(c.FadeIn(child, 1000), 0);
    EXPECT_EQ(c.Gray(0, 0, 3, 3), 0);
    EXPECT_EQ(c.Gray(child, 0, 0, 3, 3), 0);
    EXPECT_EQ(c.ActiveEffects(), 0u);
    EXPECT_EQ(c.Buffer(child)->effect, QorOffScreenBuffer::kNoEffect);
}

// Fades.

TEST(QorEffects, FadeOutDarkensEntries10To245InElevenStepsAndKeepsTheOthers)
{
    Probe c;
    StartPalette(c);
    EXPECT_EQ(c.FadeOut(1000), 1);
    EXPECT_EQ(c.Main()->effect, QorOffScreenBuffer::kFadeOutEffect);
    const int expected[11] = {200, 180, 160, 140, 120, 100, 80, 60, 40, 20, 0};
    for (int step = 0; step < 11; ++step)
    {
        EXPECT_EQ(c.ActiveEffects(), 1u) << step;
        EXPECT_EQ(c.OnTimer(), 1);
        for (int i : {10, 100, 245})
        {
            const PALETTEENTRY e = Logical(c, i);
            EXPECT_EQ(e.peRed, expected[step]) << "step " << step << " entry " << i;
            EXPECT_EQ(e.peBlue, expected[step]);
            EXPECT_EQ(e.peFlags, 1);
        }
        EXPECT_EQ(Logical(c, 9).peRed, 77);
        EXPECT_EQ(Logical(c, 246).peGreen, 77);
        EXPECT_EQ(c.TableEntry(100).rgbGreen, expected[step]);
    }
    EXPECT_EQ(c.ActiveEffects(), 0u);
    EXPECT_EQ(c.Main()->effect, QorOffScreenBuffer::kNoEffect);
    EXPECT_EQ(c.Main()->effectProgress, 0u);
    EXPECT_EQ(c.Main()->effectLength, 0u);
    EXPECT_EQ(c.OnTimer(), 0);
    // The stored palette never changed.
    EXPECT_EQ(c.Stored(100).peRed, 200);
}

TEST(QorEffects, FadeInBrightensFromBlackAndTruncates)
{
    Probe c;
    StartPalette(c);
    stPaletteEntry entries[256];
    FlatPalette(entries);
    entries[50].peRed = 255;
    c.SetPalette(entries);
    EXPECT_EQ(c.FadeIn(1000), 1);
    const int flat[11] = {0, 20, 40, 60, 80, 100, 120, 140, 160, 180, 200};
    // 255 x 0.1 k, truncated.
    const int full[11] = {0, 25, 51, 76, 102, 127, 153, 178, 204, 229, 255};
    for (int step = 0; step < 11; ++step)
    {
        c.OnTimer();
        EXPECT_EQ(Logical(c, 100).peGreen, flat[step]) << step;
        EXPECT_EQ(Logical(c, 50).peRed, full[step]) << step;
        EXPECT_EQ(Logical(c, 3).peRed, 77);
    }
    EXPECT_EQ(c.ActiveEffects(), 0u);
}

TEST(QorEffects, SecondFadeWhileOneRunsIsRefused)
{
    Probe c;
    StartPalette(c);
    EXPECT_EQ(c.FadeIn(1000), 1);
    EXPECT_EQ(c.FadeIn(1000), 0);
    EXPECT_EQ(c.FadeOut(1000), 0);
    EXPECT_EQ(c.Main()->effect, QorOffScreenBuffer::kFadeInEffect);
    EXPECT_EQ(c.ActiveEffects(), 1u);
}

TEST(QorEffects, StepsCountInTimerClicks)
{
    Probe c;
    StartPalette(c);
    c.SetTimerClick(250);
    c.FadeOut(1000);
    const int expected[5] = {200, 150, 100, 50, 0};
    for (int step = 0; step < 5; ++step)
    {
        EXPECT_EQ(c.OnTimer(), 1);
        EXPECT_EQ(Logical(c, 10).peRed, expected[step]) << step;
    }
    EXPECT_EQ(c.ActiveEffects(), 0u);
}

TEST(QorEffects, FadeOnAnotherBufferOnlyAdvancesTime)
{
    Probe c;
    StartPalette(c);
    QorGuider child = c.CreateChild(4, 4);
    c.SetChildSpecialEffect(child, QorOffScreenBuffer::kFadeOutEffect, 300);
    for (int step = 0; step < 4; ++step)
    {
        EXPECT_EQ(c.OnTimer(), 1);
        EXPECT_EQ(Logical(c, 100).peRed, 200);
    }
    EXPECT_EQ(c.ActiveEffects(), 0u);
}

TEST(QorEffects, FadeShowsOnTheEightBitDisplayInModeZero)
{
    CWnd window;
    ASSERT_TRUE(window.Create("fade", 8, 2));
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, 8, 2, &window);
    stPaletteEntry entries[256];
    FlatPalette(entries);
    c.SetPalette(entries);
    std::memset(c.GetMainBufferPicBlockPtr()->GetDataPtr(), 120, 16);
    c.FadeOut(1000);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    const int expected[11] = {200, 180, 160, 140, 120, 100, 80, 60, 40, 20, 0};
    for (int step = 0; step < 11; ++step)
    {
        c.OnTimer();
        c.DrawToScreen(0, 0);
        EXPECT_EQ(port->GetPresentedPixel(3, 1), RGB(expected[step], expected[step], expected[step])) << step;
    }
}

// Mosaics.

TEST_F(QorEffectsWindow, MosaicInRunsFromTheLargerCellDownToTheSmallerWhicheverOrderTheyCome)
{
    for (auto sizes : {std::pair<unsigned long, unsigned long>(16, 2), std::pair<unsigned long, unsigned long>(2, 16)})
    {
        QorGuider child = PatternChild(c, 40, 30);
        const QorPicBlock snapshot(*c.GetChildPicBlockPtr(child));
        const unsigned long pictures = c.GetPicNum();
        EXPECT_EQ(c.MosiacIn(child, 1000, sizes.first, sizes.second), 1);
        EXPECT_EQ(c.GetPicNum(), pictures + 1);
        EXPECT_EQ(c.Buffer(child)->effectState[0], 2u);
        EXPECT_EQ(c.Buffer(child)->effectState[1], 16u);
        const long cells[11] = {16, 14, 13, 11, 10, 9, 7, 6, 4, 3, 2};
        for (int step = 0; step < 11; ++step)
        {
            c.OnTimer();
            EXPECT_EQ(CellOf(*c.GetChildPicBlockPtr(child), snapshot, 40, 30), cells[step]) << "step " << step;
        }
        EXPECT_EQ(c.Buffer(child)->effect, QorOffScreenBuffer::kNoEffect);
        EXPECT_EQ(c.ActiveEffects(), 0u);
        // The snapshot stays in the registry.
        EXPECT_EQ(c.GetPicNum(), pictures + 1);
        c.RemoveChild(child);
    }
}

TEST_F(QorEffectsWindow, MosaicOutRunsFromTheSmallerCellUpToTheLarger)
{
    QorGuider child = PatternChild(c, 40, 30);
    const QorPicBlock snapshot(*c.GetChildPicBlockPtr(child));
    EXPECT_EQ(c.MosiacOut(child, 1000, 2, 16), 1);
    EXPECT_EQ(c.Buffer(child)->effectState[0], 16u);
    EXPECT_EQ(c.Buffer(child)->effectState[1], 2u);
    const long cells[11] = {2, 3, 4, 6, 7, 9, 10, 11, 13, 14, 16};
    for (int step = 0; step < 11; ++step)
    {
        c.OnTimer();
        EXPECT_EQ(CellOf(*c.GetChildPicBlockPtr(child), snapshot, 40, 30), cells[step]) << "step " << step;
    }
    EXPECT_EQ(c.ActiveEffects(), 0u);
}

TEST_F(QorEffectsWindow, MosaicOfAChildIsCopiedToTheScreenEveryStep)
{
    QorGuider child = PatternChild(c, 40, 30);
    c.SetChildMask(child, 0);
    c.MoveChild(child, 4, 2);
    const QorPicBlock snapshot(*c.GetChildPicBlockPtr(child));
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    const unsigned long before = port->GetPresentCount();
    c.MosiacIn(child, 1000, 1, 8);
    c.OnTimer();
    EXPECT_EQ(port->GetPresentCount(), before + 1);
    // Cell 8: main pixel (4 + 9, 2 + 9) shows snapshot pixel (8, 8).
    std::uint32_t v = 0;
    std::memcpy(&v, snapshot.GetPixel(8, 8), 4);
    EXPECT_EQ(port->GetPresentedPixel(13, 11), RGB(GetBValue(v), GetGValue(v), GetRValue(v)));
    for (int step = 1; step < 11; ++step)
        c.OnTimer();
    EXPECT_EQ(port->GetPresentCount(), before + 11);
    // The last step, cell 1, shows the picture itself.
    EXPECT_EQ(CellOf(*c.GetChildPicBlockPtr(child), snapshot, 40, 30), 1);
}

TEST_F(QorEffectsWindow, MosaicOfTheMainBufferUsesItsVisibleRectangle)
{
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    for (long y = 0; y < 48; ++y)
        for (long x = 0; x < 64; ++x)
        {
            const std::uint32_t v = static_cast<std::uint32_t>(1 + x + y * 64);
            std::memcpy(main.GetPixel(x, y), &v, 4);
        }
    const QorPicBlock snapshot(main);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    const unsigned long before = port->GetPresentCount();
    EXPECT_EQ(c.MosiacOut(1000, 4, 1), 1);
    c.OnTimer();
    EXPECT_EQ(CellOf(main, snapshot, 64, 48), 1);
    c.OnTimer();
    EXPECT_EQ(CellOf(main, snapshot, 64, 48), 1);
    c.OnTimer();
    EXPECT_EQ(CellOf(main, snapshot, 64, 48), 1);
    c.OnTimer();
    EXPECT_EQ(CellOf(main, snapshot, 64, 48), 1);
    c.OnTimer();
    EXPECT_EQ(CellOf(main, snapshot, 64, 48), 2);
    // The main buffer is not presented by the step.
    EXPECT_EQ(port->GetPresentCount(), before);
}

TEST_F(QorEffectsWindow, MosaicOnABufferWithAnEffectIsRefused)
{
    QorGuider child = PatternChild(c, 8, 8);
    const unsigned long pictures = c.GetPicNum();
    c.MosiacIn(child, 1000, 1, 4);
    EXPECT_EQ(c.MosiacIn(child, 1000, 1, 4), 0);
    EXPECT_EQ(c.MosiacOut(child, 1000, 1, 4), 0);
    EXPECT_EQ(c.GetPicNum(), pictures + 1);
    EXPECT_EQ(c.MosiacIn(QorGuider(), 1000, 1, 4), 0);
}

// Random dissolve.

namespace
{
unsigned long CountValue(const QorPicBlock& p, unsigned char value)
{
    unsigned long n = 0;
    for (long y = 0; y < p.GetHeight(); ++y)
        for (long x = 0; x < p.GetWidth(); ++x)
            n += p.GetPixel(x, y)[0] == value ? 1 : 0;
    return n;
}
} // namespace

TEST_F(QorEffectsWindow, RandomImageOfAThousandAndFivePointsPastesAHundredAStepAndLeavesFive)
{
    QorGuider child = c.CreateChild(100, 40);
    std::memset(c.GetChildPicBlockPtr(child)->GetDataPtr(), 0, c.GetChildPicBlockPtr(child)->GetSize());
    // 67 x 15 = 1005 points of colour 9, placed at (20, 10) of the child.
    QorGuider sprite = c.CreateSprite(child, c.MakePic(67, 15, 9), 5);
    c.MoveSprite(child, sprite, 20, 10);
    std::srand(7);
    EXPECT_EQ(c.PutImageRandomly(child, 1000, sprite, 0), 1);
    EXPECT_EQ(c.Buffer(child)->effectState[0], 1005u);
    EXPECT_EQ(c.Buffer(child)->effectState[1], 100u);
    EXPECT_EQ(c.Buffer(child)->randomPointCount, 1005u);
    const QorPicBlock& surface = *c.GetChildPicBlockPtr(child);
    for (int step = 1; step <= 10; ++step)
    {
        c.OnTimer();
        EXPECT_EQ(CountValue(surface, 9), 100u * step) << step;
    }
    EXPECT_EQ(c.Buffer(child)->effect, QorOffScreenBuffer::kRandomImage);
    c.OnTimer();
    EXPECT_EQ(CountValue(surface, 9), 1000u);
    EXPECT_EQ(c.Buffer(child)->effect, QorOffScreenBuffer::kNoEffect);
    EXPECT_EQ(c.Buffer(child)->randomPoints, nullptr);
    EXPECT_EQ(c.Buffer(child)->randomPointCount, 0u);
    EXPECT_EQ(c.ActiveEffects(), 0u);
    // Every pasted point lies inside the sprite's place.
    unsigned long inside = 0;
    for (long y = 10; y < 25; ++y)
        for (long x = 20; x < 87; ++x)
            inside += surface.GetPixel(x, y)[0] == 9 ? 1 : 0;
    EXPECT_EQ(inside, 1000u);
}

TEST_F(QorEffectsWindow, RandomImageWithOpaqueOnlyLeavesTheMaskColourOut)
{
    QorGuider child = c.CreateChild(20, 20);
    QorGuider pic = c.MakePic(10, 10, 9);
    QorPicBlock& picture = c.Picture(pic);
    const unsigned char key[4] = {0, 0, 0, 0};
    picture.SetMask(key);
    for (long x = 0; x < 10; ++x)
        std::memcpy(picture.GetPixel(x, 0), key, 4);
    QorGuider sprite = c.CreateSprite(child, pic, 5);
    EXPECT_EQ(c.PutImageRandomly(child, 300, sprite, 1), 1);
    EXPECT_EQ(c.Buffer(child)->effectState[0], 90u);
    EXPECT_EQ(c.Buffer(child)->effectState[1], 30u);
}

TEST_F(QorEffectsWindow, RandomImageOnTheMainBufferWritesTheMainPictureWithoutPresenting)
{
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    std::memset(main.GetDataPtr(), 0, main.GetSize());
    QorGuider sprite = c.CreateSprite(c.MakePic(10, 10, 9), 5);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    const unsigned long before = port->GetPresentCount();
    EXPECT_EQ(c.PutImageRandomly(500, sprite, 0), 1);
    c.OnTimer();
    EXPECT_EQ(CountValue(main, 9), 20u);
    EXPECT_EQ(port->GetPresentCount(), before);
}

TEST_F(QorEffectsWindow, RandomImageIsRefusedWhenNoWholeStepFits)
{
    QorGuider child = c.CreateChild(20, 20);
    QorGuider sprite = c.CreateSprite(child, c.MakePic(4, 4, 9), 5);
    EXPECT_EQ(c.PutImageRandomly(child, 99, sprite, 0), 0);
    c.SetTimerClick(0);
    EXPECT_EQ(c.PutImageRandomly(child, 1000, sprite, 0), 0);
    c.SetTimerClick(100);
    EXPECT_EQ(c.PutImageRandomly(child, 100, sprite, 0), 1);
    EXPECT_EQ(c.PutImageRandomly(child, 100, sprite, 0), 0);
    EXPECT_EQ(c.PutImageRandomly(child, 100, QorGuider(), 0), 0);
    EXPECT_EQ(c.ActiveEffects(), 1u);
}

// Stepping.

TEST_F(QorEffectsWindow, OnTimerStepsEveryBufferOnceATick)
{
    QorGuider a = PatternChild(c, 8, 8);
    QorGuider b = PatternChild(c, 8, 8);
    QorGuider d = c.CreateChild(8, 8);
    QorGuider sprite = c.CreateSprite(d, c.MakePic(4, 4, 9), 5);
    c.MosiacIn(a, 500, 1, 4);
    c.MosiacOut(b, 300, 1, 4);
    c.PutImageRandomly(d, 200, sprite, 0);
    EXPECT_EQ(c.ActiveEffects(), 3u);
    c.OnTimer();
    EXPECT_EQ(c.Buffer(a)->effectProgress, 100u);
    EXPECT_EQ(c.Buffer(b)->effectProgress, 100u);
    EXPECT_EQ(c.Buffer(d)->effectProgress, 100u);
    c.OnTimer();
    c.OnTimer();
    EXPECT_EQ(c.ActiveEffects(), 2u);
    c.OnTimer();
    EXPECT_EQ(c.ActiveEffects(), 1u);
    c.OnTimer();
    c.OnTimer();
    EXPECT_EQ(c.ActiveEffects(), 0u);
    EXPECT_EQ(c.OnTimer(), 0);
}

namespace
{
// What the draw hook saw at each presentation: the effect progress of two buffers.
struct ProgressLog
{
    Probe* compositor = nullptr;
    QorGuider first;
    QorGuider second;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> seen;
};

char LogProgress(QorIntegration* integration, CDC*)
{
    auto* log = reinterpret_cast<ProgressLog*>(integration);
    log->seen.emplace_back(log->compositor->Buffer(log->first)->effectProgress,
                           log->compositor->Buffer(log->second)->effectProgress);
    return 0;
}
} // namespace

TEST_F(QorEffectsWindow, OnTimerStepsTheBuffersInListOrder)
{
    QorGuider a = PatternChild(c, 8, 8);
    QorGuider b = PatternChild(c, 8, 8);
    ProgressLog log;
    log.compositor = &c;
    log.first = a;
    log.second = b;
    c.SetIntegrationPtr(reinterpret_cast<QorIntegration*>(&log));
    c.SetDrawHook(LogProgress);
    // b starts first, but a comes first in the list: a's step (and its presentation) comes first.
    c.MosiacIn(b, 1000, 1, 4);
    c.MosiacIn(a, 1000, 1, 4);
    c.OnTimer();
    ASSERT_EQ(log.seen.size(), 2u);
    EXPECT_EQ(log.seen[0], std::make_pair(100u, 0u));
    EXPECT_EQ(log.seen[1], std::make_pair(100u, 100u));
    c.SetIntegrationPtr(nullptr);
}
