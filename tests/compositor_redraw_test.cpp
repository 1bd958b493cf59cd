// QorOffScreenBuffer's redraw: the core recomposition with its ordering, visibility and clipping rules,
// children brought up to date, every Redraw form, RedrawSprite, RedrawChild and UpdateChildToMain.
#include "compositor_probe.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using qortest::At;
using qortest::Bytes;
using qortest::Probe;
using qortest::SetAt;

const unsigned char kKey8 = 0;
const unsigned char kMarker = 0x77;

// A 16 x 12 main buffer of type, mode 0, no window: nothing is presented unless asked.
void Start(Probe& c, QorPicBlock::ColorType type, long w = 16, long h = 12)
{
    c.Initialize(type, QorOffScreenBuffer::kDeviceBitmap, w, h, nullptr);
}

// Every byte of the picture set to value.
void Paint(QorPicBlock& p, unsigned char value)
{
    std::memset(p.GetDataPtr(), value, p.GetSize());
}

Bytes Colour(const QorPicBlock& p, unsigned char value)
{
    return Bytes(p.GetBytesPerPixel(), value);
}

// A w x h picture whose pixel (x, y) is value + x + y * w in every byte, with the key in the corner
// (0, 0) when keyed.
QorGuider Pattern(Probe& c, long w, long h, unsigned char value, bool keyed)
{
    QorGuider g = c.MakePic(w, h, value);
    QorPicBlock& p = c.Picture(g);
    for (long y = 0; y < h; ++y)
        for (long x = 0; x < w; ++x)
            SetAt(p, x, y, Bytes(p.GetBytesPerPixel(), static_cast<unsigned char>(value + x + y * w)));
    const Bytes key(p.GetBytesPerPixel(), kKey8);
    p.SetMask(key.data());
    if (keyed)
        SetAt(p, 0, 0, key);
    return g;
}

class QorRedrawDepths : public ::testing::TestWithParam<QorPicBlock::ColorType>
{
};
} // namespace

// Core redraw.

TEST_P(QorRedrawDepths, ComposedSceneMatchesPastesOverTheBackgroundInDepthOrder)
{
    Probe c;
    Start(c, GetParam());
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const Bytes background = Colour(main, 5);
    main.SetMask(background.data());
    Paint(main, kMarker);

    QorGuider far = Pattern(c, 6, 5, 20, true);
    QorGuider near = Pattern(c, 4, 4, 100, true);
    QorGuider middle = Pattern(c, 5, 3, 60, false);
    QorGuider s1 = c.CreateSprite(far, 300);
    QorGuider s2 = c.CreateSprite(near, 10);
    QorGuider s3 = c.CreateSprite(middle, 50);
    c.MoveSprite(s1, 1, 2);
    c.MoveSprite(s2, 4, 3);
    c.MoveSprite(s3, 12, 9); // partly outside the 16 x 12 picture
    EXPECT_EQ(c.Redraw(0, 0), 1);

    // The same scene pasted by hand, farthest first.
    QorPicBlock expected(main.GetColorType(), 16, 12);
    expected.Fill(background.data());
    expected.Paste(c.Picture(far), 1, 2, 1, 0, 0, 1, 0);
    expected.Paste(c.Picture(middle), 12, 9, 1, 0, 0, 1, 0);
    expected.Paste(c.Picture(near), 4, 3, 1, 0, 0, 1, 0);
    for (long y = 0; y < 12; ++y)
        for (long x = 0; x < 16; ++x)
            ASSERT_EQ(At(main, x, y), At(expected, x, y)) << x << "," << y;
    // Spot checks: the key of the near sprite shows the far one; the middle one is cut at the edge.
    EXPECT_EQ(At(main, 4, 3), At(c.Picture(far), 3, 1));
    EXPECT_EQ(At(main, 5, 3), Colour(main, 101));
    EXPECT_EQ(At(main, 15, 11), Colour(main, 60 + 3 + 2 * 5));
    EXPECT_EQ(At(main, 0, 0), background);
}

TEST_P(QorRedrawDepths, SmallerDepthLiesOnTopWhateverTheCreationOrder)
{
    Probe c;
    Start(c, GetParam());
    QorGuider a = c.MakePic(4, 4, 10);
    QorGuider b = c.MakePic(4, 4, 20);
    c.CreateSprite(a, 10);
    QorGuider sb = c.CreateSprite(b, 20);
    c.MoveSprite(sb, 2, 2);
    c.Redraw(0, 0);
    const QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    EXPECT_EQ(At(main, 3, 3), Colour(main, 10));
    EXPECT_EQ(At(main, 5, 5), Colour(main, 20));
    EXPECT_EQ(At(main, 1, 1), Colour(main, 10));
}

TEST_P(QorRedrawDepths, EqualDepthsDrawTheNewerSpriteOnTop)
{
    Probe c;
    Start(c, GetParam());
    c.CreateSprite(c.MakePic(4, 4, 10), 5);
    c.CreateSprite(c.MakePic(4, 4, 20), 5);
    c.Redraw(0, 0);
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 2, 2), Colour(*c.GetMainBufferPicBlockPtr(), 20));
}

TEST_P(QorRedrawDepths, HiddenSpriteLeavesTheBackgroundWhereItStood)
{
    Probe c;
    Start(c, GetParam());
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const Bytes background = Colour(main, 9);
    main.SetMask(background.data());
    QorGuider s = c.CreateSprite(c.MakePic(4, 4, 30), 5);
    c.MoveSprite(s, 3, 3);
    c.Redraw(0, 0);
    EXPECT_EQ(At(main, 4, 4), Colour(main, 30));
    c.SetSpriteVisible(s, 0);
    c.Redraw(3, 3, 6, 6, 0, 0);
    for (long y = 3; y <= 6; ++y)
        for (long x = 3; x <= 6; ++x)
            EXPECT_EQ(At(main, x, y), background) << x << "," << y;
}

TEST_P(QorRedrawDepths, MaskFlagOffPastesTheKeyColourToo)
{
    Probe c;
    Start(c, GetParam());
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const Bytes background = Colour(main, 9);
    main.SetMask(background.data());
    QorGuider s = c.CreateSprite(Pattern(c, 3, 3, 40, true), 5);
    c.Redraw(0, 0);
    EXPECT_EQ(At(main, 0, 0), background);
    c.SetMask(s, 0);
    c.Redraw(0, 0);
    EXPECT_EQ(At(main, 0, 0), Colour(main, kKey8));
}

INSTANTIATE_TEST_SUITE_P(EightAndThirtyTwoBits, QorRedrawDepths,
                         ::testing::Values(QorPicBlock::Bit8, QorPicBlock::Bit32));

TEST(QorRedraw, SpriteFlagsArePassedToThePaste)
{
    Probe c;
    Start(c, QorPicBlock::Bit16);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const unsigned char background[2] = {0xFF, 0x7F};
    main.SetMask(background);
    QorGuider pic = Pattern(c, 5, 4, 30, false);
    QorGuider s = c.CreateSprite(pic, 5);
    c.MoveSprite(s, 2, 1);
    c.SetHReverse(s, 1);
    c.SetVReverse(s, 1);
    c.SetColorReverse(s, 1);
    c.SetRegionCheck(s, 0);
    c.Redraw(0, 0);

    QorPicBlock expected(QorPicBlock::Bit16, 16, 12);
    expected.Fill(background);
    expected.Paste(c.Picture(pic), 2, 1, 0, 0, 4, 3, 1, 1, 1, 0, 1);
    for (long y = 0; y < 12; ++y)
        for (long x = 0; x < 16; ++x)
            ASSERT_EQ(At(main, x, y), At(expected, x, y)) << x << "," << y;
}

TEST(QorRedraw, ReversedCornersAreOrdered)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    Paint(main, kMarker);
    EXPECT_EQ(c.Redraw(5, 5, 0, 0, 0, 0), 1);
    for (long y = 0; y < 12; ++y)
        for (long x = 0; x < 16; ++x)
            EXPECT_EQ(main.GetPixel(x, y)[0], x <= 5 && y <= 5 ? kKey8 : kMarker) << x << "," << y;
}

TEST(QorRedraw, RegionIsClippedToTheVisibleRectangleAndThePicture)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    Paint(main, kMarker);
    c.SetMainVisibleRect(QorRect(2, 3, 12, 9));
    c.CreateSprite(c.MakePic(16, 12, 50), 5);
    c.Redraw(-10, -10, 100, 100, 0, 0);
    for (long y = 0; y < 12; ++y)
        for (long x = 0; x < 16; ++x)
            EXPECT_EQ(main.GetPixel(x, y)[0], x >= 2 && x <= 12 && y >= 3 && y <= 9 ? 50 : kMarker) << x << "," << y;
}

TEST(QorRedraw, RegionPastTheVisibleRectangleOrThePictureDoesNothing)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    Paint(main, kMarker);
    c.SetMainVisibleRect(QorRect(0, 0, 9, 7));
    c.Redraw(10, 0, 15, 11, 0, 0);
    c.Redraw(0, 8, 15, 11, 0, 0);
    c.SetMainVisibleRect(QorRect(0, 0, 100, 100));
    c.Redraw(16, 0, 20, 11, 0, 0);
    c.Redraw(0, 12, 15, 20, 0, 0);
    for (long y = 0; y < 12; ++y)
        for (long x = 0; x < 16; ++x)
            ASSERT_EQ(main.GetPixel(x, y)[0], kMarker) << x << "," << y;
}

TEST(QorRedraw, RegionLeftOfTheVisibleRectangleClearsTheBandBetweenWithoutSprites)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    Paint(main, kMarker);
    c.SetMainVisibleRect(QorRect(8, 0, 15, 11));
    c.CreateSprite(c.MakePic(16, 12, 50), 5);
    // Clipped, the rectangle becomes (8, 0)-(3, 2): the fill orders it to (3, 0)-(8, 2); nothing is pasted.
    c.Redraw(0, 0, 3, 2, 0, 0);
    for (long y = 0; y < 12; ++y)
        for (long x = 0; x < 16; ++x)
            EXPECT_EQ(main.GetPixel(x, y)[0], x >= 3 && x <= 8 && y <= 2 ? kKey8 : kMarker) << x << "," << y;
}

TEST(QorRedraw, SpriteWithoutAPictureIsSkipped)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    c.CreateSprite(c.MakePic(16, 12, 50), 100);
    c.CreateSprite(QorGuider(), 5);
    EXPECT_EQ(c.Redraw(0, 0), 1);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetPixel(3, 3)[0], 50);
}

TEST(QorRedraw, UnknownBufferIsRefused)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorGuider child = c.CreateChild(4, 4);
    QorGuider gone = child;
    c.RemoveChild(gone);
    EXPECT_EQ(c.Redraw(child, 0, 0, 3, 3, 0), 0);
    EXPECT_EQ(c.Redraw(child, QorRect(0, 0, 3, 3), 0), 0);
    EXPECT_EQ(c.Redraw(child, 0), 0);
    EXPECT_EQ(c.Redraw(QorGuider(), 0), 0);
    EXPECT_EQ(c.RedrawChild(child, 1), 0);
    EXPECT_EQ(c.UpdateChildToMain(child), 0);
}

// Children.

namespace
{
// A 6 x 4 child whose one sprite is a 2 x 2 picture of 80 at (1, 1), over background 3; the child stands
// at (5, 4) of the main buffer.
struct ChildScene
{
    explicit ChildScene(Probe& c)
    {
        Start(c, QorPicBlock::Bit8);
        child = c.CreateChild(6, 4);
        QorPicBlock& surface = *c.GetChildPicBlockPtr(child);
        const unsigned char background = 3;
        surface.SetMask(&background);
        Paint(surface, kMarker);
        inner = c.CreateSprite(child, c.MakePic(2, 2, 80), 5);
        c.MoveSprite(inner, 1, 1);
        c.MoveChild(child, 5, 4);
        c.SetChildMask(child, 0);
    }
    QorGuider child;
    QorGuider inner;
};
} // namespace

TEST(QorRedrawChildren, RecurseRecomposesTheChildBeforePastingIt)
{
    Probe c;
    ChildScene scene(c);
    c.Redraw(1, 0);
    const QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const QorPicBlock& surface = *c.GetChildPicBlockPtr(scene.child);
    EXPECT_EQ(surface.GetPixel(0, 0)[0], 3);
    EXPECT_EQ(surface.GetPixel(1, 1)[0], 80);
    EXPECT_EQ(main.GetPixel(5, 4)[0], 3);
    EXPECT_EQ(main.GetPixel(6, 5)[0], 80);
    EXPECT_EQ(main.GetPixel(10, 7)[0], 3);
    EXPECT_EQ(main.GetPixel(11, 7)[0], kKey8);
    EXPECT_EQ(main.GetPixel(4, 4)[0], kKey8);
}

TEST(QorRedrawChildren, WithoutRecurseTheChildIsPastedAsItStands)
{
    Probe c;
    ChildScene scene(c);
    c.Redraw(0, 0);
    const QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    EXPECT_EQ(c.GetChildPicBlockPtr(scene.child)->GetPixel(1, 1)[0], kMarker);
    EXPECT_EQ(main.GetPixel(5, 4)[0], kMarker);
    EXPECT_EQ(main.GetPixel(6, 5)[0], kMarker);
}

TEST(QorRedrawChildren, OnlyTheVisiblePartOfTheChildIsShownShiftedByItsPosition)
{
    Probe c;
    ChildScene scene(c);
    c.SetChildVisibleRect(scene.child, 1, 1, 4, 2);
    c.Redraw(1, 0);
    const QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    // The visible part (1, 1)-(4, 2) lands at (6, 5)-(9, 6); the rest of the child's place is background.
    EXPECT_EQ(main.GetPixel(5, 4)[0], kKey8);
    EXPECT_EQ(main.GetPixel(6, 5)[0], 80);
    EXPECT_EQ(main.GetPixel(7, 6)[0], 80);
    EXPECT_EQ(main.GetPixel(9, 6)[0], 3);
    EXPECT_EQ(main.GetPixel(10, 5)[0], kKey8);
    EXPECT_EQ(main.GetPixel(6, 7)[0], kKey8);
}

TEST(QorRedrawChildren, HiddenChildIsNotShownNorRecomposed)
{
    Probe c;
    ChildScene scene(c);
    c.SetChildVisible(scene.child, 0);
    c.Redraw(1, 0);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetPixel(6, 5)[0], kKey8);
    EXPECT_EQ(c.GetChildPicBlockPtr(scene.child)->GetPixel(1, 1)[0], kMarker);
}

TEST(QorRedrawChildren, ChildSpriteWithoutItsBufferIsSkipped)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    // A sprite marked as a child's but showing an ordinary picture: no buffer has that surface.
    QorGuider s = c.CreateSprite(c.MakePic(4, 4, 50), 5);
    c.Sprite(s)->SetChild(1);
    c.Redraw(1, 0);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetPixel(1, 1)[0], kKey8);
    c.Sprite(s)->SetChild(0);
    c.Redraw(1, 0);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetPixel(1, 1)[0], 50);
}

TEST(QorRedrawChildren, RemovedChildLeavesNothingBehindAfterARedraw)
{
    Probe c;
    ChildScene scene(c);
    c.Redraw(1, 0);
    ASSERT_EQ(c.GetMainBufferPicBlockPtr()->GetPixel(6, 5)[0], 80);
    c.RemoveChild(scene.child);
    c.Redraw(1, 0);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetPixel(6, 5)[0], kKey8);
}

TEST(QorRedrawChildren, NestedChildrenAreRecomposedInTurn)
{
    Probe c;
    ChildScene scene(c);
    // A 3 x 2 grandchild of colour 90 shown by a sprite of the child at (3, 1).
    QorGuider grandchild = c.CreateChild(3, 2);
    Paint(*c.GetChildPicBlockPtr(grandchild), kMarker);
    c.CreateSprite(grandchild, c.MakePic(3, 2, 90), 5);
    QorGuider shown = c.CreateSprite(scene.child, c.SurfaceOf(grandchild), 1);
    c.Sprite(shown)->SetChild(1);
    c.Sprite(shown)->SetMask(0);
    c.MoveSprite(shown, 3, 1);
    // The grandchild's own sprite in the main buffer stays hidden.
    c.SetChildVisible(grandchild, 0);
    c.Redraw(1, 0);
    const QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    EXPECT_EQ(c.GetChildPicBlockPtr(grandchild)->GetPixel(0, 0)[0], 90);
    EXPECT_EQ(main.GetPixel(5 + 3, 4 + 1)[0], 90);
    EXPECT_EQ(main.GetPixel(5 + 5, 4 + 2)[0], 90);
    EXPECT_EQ(main.GetPixel(5 + 1, 4 + 1)[0], 80);
}

TEST(QorRedrawChildren, ChildFormsRecomposeTheChildOnly)
{
    Probe c;
    ChildScene scene(c);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    Paint(main, kMarker);
    EXPECT_EQ(c.Redraw(scene.child, QorRect(0, 0, 5, 3), 0), 1);
    EXPECT_EQ(c.GetChildPicBlockPtr(scene.child)->GetPixel(1, 1)[0], 80);
    EXPECT_EQ(main.GetPixel(6, 5)[0], kMarker);
}

TEST(QorRedrawChildren, ChildFormWithoutRectangleShiftsTheVisibleRectangleByTheChildPosition)
{
    Probe c;
    ChildScene scene(c);
    QorPicBlock& surface = *c.GetChildPicBlockPtr(scene.child);
    // Visible (0, 0)-(5, 3) moved by (5, 4) clips to the child's (5, 4)-(5, 3): nothing. Placed at (1, 1)
    // it covers (1, 1)-(5, 3) of the child: pixel (0, 0) keeps the marker.
    c.Redraw(scene.child, 0);
    EXPECT_EQ(surface.GetPixel(1, 1)[0], kMarker);
    c.MoveChild(scene.child, 1, 1);
    c.Redraw(scene.child, 0);
    EXPECT_EQ(surface.GetPixel(0, 0)[0], kMarker);
    EXPECT_EQ(surface.GetPixel(1, 1)[0], 80);
    EXPECT_EQ(surface.GetPixel(5, 3)[0], 3);
}

// With a window: presentation counts.

namespace
{
class QorRedrawPresent : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(window.Create("redraw", 16, 12));
        port = QorGetHeadlessWindow(window);
        ASSERT_NE(port, nullptr);
        c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 16, 12, &window);
        QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
        const unsigned char background[4] = {1, 2, 3, 0};
        main.SetMask(background);
        Paint(main, kMarker);
    }

    CWnd window;
    Probe c;
    QorHeadlessWindowPort* port = nullptr;
};
} // namespace

TEST_F(QorRedrawPresent, SmallMoveRepaintsTheUnionAndPresentsOnce)
{
    QorGuider s = c.CreateSprite(c.MakePic(4, 4, 60), 5);
    c.Redraw(0, 0);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    // Old area (0, 0)-(3, 3), new (2, 2)-(5, 5): (4, 0) lies in neither but in their union.
    SetAt(main, 4, 0, Bytes(4, kMarker));
    c.MoveSprite(s, 2, 2);
    const unsigned long before = port->GetPresentCount();
    EXPECT_EQ(c.RedrawSprite(s, 1), 1);
    EXPECT_EQ(port->GetPresentCount(), before + 1);
    EXPECT_EQ(At(main, 4, 0), (Bytes{1, 2, 3, 0}));
    EXPECT_EQ(At(main, 0, 0), (Bytes{1, 2, 3, 0}));
    EXPECT_EQ(At(main, 5, 5), Bytes(4, 60));
    EXPECT_EQ(At(qortest::FrameOf(window), 2, 2), (Bytes{60, 60, 60, 0}));
    EXPECT_EQ(At(qortest::FrameOf(window), 0, 0), (Bytes{1, 2, 3, 0}));
    c.MoveSprite(s, 3, 3);
    c.RedrawSprite(s, 0);
    EXPECT_EQ(port->GetPresentCount(), before + 1);
}

TEST_F(QorRedrawPresent, FarJumpRepaintsTwoPiecesAndPresentsTheWholeScreen)
{
    QorGuider s = c.CreateSprite(c.MakePic(4, 4, 60), 5);
    c.Redraw(0, 0);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    SetAt(main, 6, 6, Bytes(4, kMarker));
    c.MoveSprite(s, 10, 8);
    const unsigned long before = port->GetPresentCount();
    c.RedrawSprite(s, 1);
    EXPECT_EQ(port->GetPresentCount(), before + 1);
    EXPECT_EQ(At(main, 6, 6), Bytes(4, kMarker));
    EXPECT_EQ(At(main, 1, 1), (Bytes{1, 2, 3, 0}));
    EXPECT_EQ(At(main, 11, 9), Bytes(4, 60));
    const RECT area = port->GetLastPresentArea();
    EXPECT_EQ(area.left, 0);
    EXPECT_EQ(area.top, 0);
    EXPECT_EQ(area.right, 16);
    EXPECT_EQ(area.bottom, 12);
    EXPECT_EQ(At(qortest::FrameOf(window), 6, 6), (Bytes{kMarker, kMarker, kMarker, 0}));
}

TEST_F(QorRedrawPresent, OverlapOfOneColumnCountsAsApart)
{
    QorGuider s = c.CreateSprite(c.MakePic(4, 4, 60), 5);
    c.Redraw(0, 0);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    // Old (0, 0)-(3, 3), new (3, 3)-(6, 6): one pixel in common. (5, 1) is only in the union.
    SetAt(main, 5, 1, Bytes(4, kMarker));
    c.MoveSprite(s, 3, 3);
    c.RedrawSprite(s, 0);
    EXPECT_EQ(At(main, 5, 1), Bytes(4, kMarker));
}

TEST_F(QorRedrawPresent, RedrawSpriteRefusesSpritesOutsideTheMainBuffer)
{
    QorGuider child = c.CreateChild(4, 4);
    QorGuider s = c.CreateSprite(child, c.MakePic(2, 2, 60), 5);
    EXPECT_EQ(c.RedrawSprite(s, 1), 0);
    EXPECT_EQ(c.RedrawSprite(QorGuider(), 1), 0);
    EXPECT_EQ(c.RedrawSprite(c.MainGuider(), s, 1, 1), 0);
}

TEST_F(QorRedrawPresent, ChildSpriteFormPresentsOnlyWithToMainAndTwiceWithPresent)
{
    QorGuider child = c.CreateChild(8, 6);
    c.MoveChild(child, 4, 3);
    c.SetChildMask(child, 0);
    const unsigned char background[4] = {9, 9, 9, 0};
    c.GetChildPicBlockPtr(child)->SetMask(background);
    QorGuider s = c.CreateSprite(child, c.MakePic(2, 2, 60), 5);
    c.MoveSprite(child, s, 1, 1);
    const unsigned long before = port->GetPresentCount();

    EXPECT_EQ(c.RedrawSprite(child, s, 0, 1), 1);
    EXPECT_EQ(port->GetPresentCount(), before);
    EXPECT_EQ(At(*c.GetChildPicBlockPtr(child), 1, 1), Bytes(4, 60));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 5, 4), Bytes(4, kMarker));

    EXPECT_EQ(c.RedrawSprite(child, s, 1, 0), 1);
    EXPECT_EQ(port->GetPresentCount(), before + 1);
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 5, 4), Bytes(4, 60));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 4, 3), (Bytes{9, 9, 9, 0}));

    EXPECT_EQ(c.RedrawSprite(child, s, 1, 1), 1);
    EXPECT_EQ(port->GetPresentCount(), before + 3);
}

TEST_F(QorRedrawPresent, RedrawChildToMainRecomposesTheChildAndItsPlaceAndPresents)
{
    QorGuider child = c.CreateChild(8, 6);
    c.MoveChild(child, 4, 3);
    c.SetChildMask(child, 0);
    c.CreateSprite(child, c.MakePic(2, 2, 60), 5);
    const unsigned long before = port->GetPresentCount();
    EXPECT_EQ(c.RedrawChild(child, 0), 1);
    EXPECT_EQ(port->GetPresentCount(), before);
    EXPECT_EQ(At(*c.GetChildPicBlockPtr(child), 0, 0), Bytes(4, 60));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 4, 3), Bytes(4, kMarker));
    EXPECT_EQ(c.RedrawChild(child, 1), 1);
    EXPECT_EQ(port->GetPresentCount(), before + 1);
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 4, 3), Bytes(4, 60));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 11, 8), Bytes(4, 0));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 3, 3), Bytes(4, kMarker));
    EXPECT_EQ(At(*c.GetMainBufferPicBlockPtr(), 12, 9), Bytes(4, kMarker));
    EXPECT_EQ(At(qortest::FrameOf(window), 4, 3), (Bytes{60, 60, 60, 0}));
}

TEST_F(QorRedrawPresent, RedrawFormsPresentOnlyWhenAsked)
{
    const unsigned long before = port->GetPresentCount();
    c.Redraw(0, 0, 3, 3, 0, 0);
    c.Redraw(QorRect(0, 0, 3, 3), 0, 0);
    c.Redraw(0, 0);
    EXPECT_EQ(port->GetPresentCount(), before);
    c.Redraw(0, 0, 3, 3, 0, 1);
    c.Redraw(QorRect(0, 0, 3, 3), 0, 1);
    c.Redraw(0, 1);
    EXPECT_EQ(port->GetPresentCount(), before + 3);
}

TEST(QorRedrawNoWindow, PresentingWithoutAWindowShowsTheNullWindowMessage)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorHeadlessVideoPort* video = QorGetHeadlessVideo();
    ASSERT_NE(video, nullptr);
    const unsigned long before = video->GetMessageBoxCount();
    c.Redraw(0, 1);
    EXPECT_EQ(video->GetMessageBoxCount(), before + 1);
    EXPECT_EQ(video->GetLastMessageBoxText(), "NULL WND");
    EXPECT_EQ(video->GetLastMessageBoxCaption(), "ERROR");
}
