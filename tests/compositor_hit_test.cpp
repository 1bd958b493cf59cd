// QorOffScreenBuffer point tests: CheckCollision, FindFirstCollisionSprite and FindFirstCollisionChild.
#include "qor/compositor.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{
class Probe : public QorOffScreenBuffer
{
public:
    QorSprite* Sprite(const QorGuider& g) { return FindSprite(g); }
    QorGuider MainGuider() const { return m_mainBuffer; }

    // A registry picture w x h whose pixels are all fill; the mask colour is mask.
    QorGuider MakePic(long w, long h, unsigned char fill, unsigned char mask)
    {
        QorGuider g = CreateNewPic();
        QorPicBlock& p = FindPic(g)->picture;
        p.Reset(GetSystemColorType(), w, h);
        for (unsigned long i = 0; i < p.GetSize(); ++i)
            p.GetDataPtr()[i] = fill;
        p.SetMask(&mask);
        return g;
    }
    QorPicBlock& Picture(const QorGuider& g) { return FindPicOrSurface(g)->picture; }
    void SetHitTestable(const QorGuider& child, char on) { FindBuffer(child)->hitTestable = on; }
};

// A shown sprite of a w x h opaque picture at (x, y) and depth z in the main buffer.
QorGuider Place(Probe& c, long x, long y, long w, long h, long z)
{
    QorGuider pic = c.MakePic(w, h, 1, 0);
    QorGuider s = c.CreateSprite(pic, z);
    c.MoveSprite(s, x, y);
    return s;
}

bool IsNull(const QorGuider& g)
{
    return g.identifier == 0 && g.object == nullptr && g.tag == 0;
}
} // namespace

// CheckCollision with one sprite.

TEST(QorOffScreenBufferHit, CheckCollisionWithANullGuiderIs255)
{
    Probe c;
    EXPECT_EQ(static_cast<unsigned char>(c.CheckCollision(QorGuider(), 0, 0, 0, 1)), 255);
}

TEST(QorOffScreenBufferHit, CheckCollisionWithARemovedSpriteIs255)
{
    Probe c;
    QorGuider s = Place(c, 0, 0, 4, 4, 1);
    QorGuider stale = s;
    c.RemoveSprite(s);
    EXPECT_EQ(static_cast<unsigned char>(c.CheckCollision(stale, 1, 1, 0, 1)), 255);
}

TEST(QorOffScreenBufferHit, CheckCollisionHitsAndMissesByTheSpritesArea)
{
    Probe c;
    QorGuider s = Place(c, 10, 20, 5, 5, 1);
    EXPECT_EQ(c.CheckCollision(s, 10, 20, 0, 0), 1);
    EXPECT_EQ(c.CheckCollision(s, 14, 24, 0, 0), 1);
    EXPECT_EQ(c.CheckCollision(s, 15, 24, 0, 0), 0);
    EXPECT_EQ(c.CheckCollision(s, 9, 20, 0, 0), 0);
}

TEST(QorOffScreenBufferHit, AHiddenSpriteIsNeverHit)
{
    Probe c;
    QorGuider s = Place(c, 0, 0, 5, 5, 1);
    c.SetSpriteVisible(s, 0);
    EXPECT_EQ(c.CheckCollision(s, 2, 2, 0, 0), 0);
    EXPECT_EQ(c.CheckCollision(s, 2, 2, 0, 1), 0);
}

TEST(QorOffScreenBufferHit, OutsideTheVisibleRectangleCountsOnlyWithAnywhere)
{
    Probe c;
    QorGuider s = Place(c, 630, 470, 20, 20, 1);
    EXPECT_EQ(c.CheckCollision(s, 639, 479, 0, 0), 1);
    EXPECT_EQ(c.CheckCollision(s, 640, 479, 0, 0), 0);
    EXPECT_EQ(c.CheckCollision(s, 639, 480, 0, 0), 0);
    EXPECT_EQ(c.CheckCollision(s, 640, 480, 0, 1), 1);
    QorGuider left = Place(c, -10, 0, 5, 5, 1);
    EXPECT_EQ(c.CheckCollision(left, -8, 2, 0, 0), 0);
    EXPECT_EQ(c.CheckCollision(left, -8, 2, 0, 1), 1);
}

TEST(QorOffScreenBufferHit, ExactCheckSkipsMaskColouredPixels)
{
    Probe c;
    QorGuider pic = c.MakePic(3, 1, 5, 5);
    c.Picture(pic).GetPixel(1, 0)[0] = 6;
    QorGuider s = c.CreateSprite(pic, 1);
    EXPECT_EQ(c.CheckCollision(s, 0, 0, 1, 0), 0);
    EXPECT_EQ(c.CheckCollision(s, 1, 0, 1, 0), 1);
    EXPECT_EQ(c.CheckCollision(s, 0, 0, 0, 0), 1);
}

TEST(QorOffScreenBufferHit, CheckCollisionReachesSpritesOfChildren)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider pic = c.MakePic(2, 2, 1, 0);
    QorGuider s = c.CreateSprite(child, pic, 1);
    EXPECT_EQ(c.CheckCollision(s, 1, 1, 1, 0), 1);
    EXPECT_EQ(c.CheckCollision(s, 2, 1, 1, 0), 0);
}

// FindFirstCollisionSprite.

TEST(QorOffScreenBufferHit, TheSmallerDepthIsFoundFirst)
{
    Probe c;
    QorGuider deep = Place(c, 0, 0, 10, 10, 50);
    QorGuider near = Place(c, 5, 5, 10, 10, 10);
    EXPECT_TRUE(c.FindFirstCollisionSprite(7, 7, 0, 0) == near);
    EXPECT_TRUE(c.FindFirstCollisionSprite(2, 2, 0, 0) == deep);
    c.SetSpriteVisible(near, 0);
    EXPECT_TRUE(c.FindFirstCollisionSprite(7, 7, 0, 0) == deep);
    c.SetSpriteVisible(deep, 0);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionSprite(7, 7, 0, 0)));
}

TEST(QorOffScreenBufferHit, TheReturnedGuiderNamesTheSprite)
{
    Probe c;
    QorGuider s = Place(c, 0, 0, 3, 3, 1);
    QorGuider found = c.FindFirstCollisionSprite(1, 1, 0, 0);
    EXPECT_EQ(found.identifier, s.identifier);
    EXPECT_EQ(found.object, s.object);
    EXPECT_EQ(found.tag, 0u);
}

TEST(QorOffScreenBufferHit, AmongEqualDepthsTheNewerSpriteIsFound)
{
    Probe c;
    Place(c, 0, 0, 10, 10, 20);
    QorGuider newer = Place(c, 0, 0, 10, 10, 20);
    EXPECT_TRUE(c.FindFirstCollisionSprite(3, 3, 0, 0) == newer);
}

TEST(QorOffScreenBufferHit, AnExactMissOnTheTopSpriteFallsThrough)
{
    Probe c;
    QorGuider below = Place(c, 0, 0, 10, 10, 50);
    QorGuider holed = c.MakePic(10, 10, 1, 0);
    c.Picture(holed).GetPixel(4, 4)[0] = 0;
    QorGuider top = c.CreateSprite(holed, 10);
    EXPECT_TRUE(c.FindFirstCollisionSprite(4, 4, 1, 0) == below);
    EXPECT_TRUE(c.FindFirstCollisionSprite(4, 4, 0, 0) == top);
    EXPECT_TRUE(c.FindFirstCollisionSprite(5, 4, 1, 0) == top);
}

TEST(QorOffScreenBufferHit, ChildSpritesAreSkipped)
{
    Probe c;
    QorGuider plain = Place(c, 0, 0, 10, 10, 500);
    QorGuider child = c.CreateChild(20, 20);
    ASSERT_NE(child.object, nullptr);
    EXPECT_TRUE(c.FindFirstCollisionSprite(5, 5, 0, 0) == plain);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionSprite(15, 15, 0, 0)));
}

TEST(QorOffScreenBufferHit, PointsOutsideTheScreenNeedAnywhere)
{
    Probe c;
    QorGuider s = Place(c, -20, -20, 10, 10, 1);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionSprite(-15, -15, 0, 0)));
    EXPECT_TRUE(c.FindFirstCollisionSprite(-15, -15, 0, 1) == s);
    QorRect narrow(0, 0, 9, 9);
    c.SetMainVisibleRect(narrow);
    QorGuider inside = Place(c, 0, 0, 20, 20, 5);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionSprite(15, 15, 0, 0)));
    EXPECT_TRUE(c.FindFirstCollisionSprite(15, 15, 0, 1) == inside);
}

TEST(QorOffScreenBufferHit, TheChildFormNeverFindsAnything)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider pic = c.MakePic(5, 5, 1, 0);
    c.CreateSprite(child, pic, 1);
    Place(c, 0, 0, 5, 5, 1);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionSprite(child, 1, 1, 0, 1)));
    EXPECT_TRUE(IsNull(c.FindFirstCollisionSprite(c.MainGuider(), 1, 1, 0, 1)));
}

// FindFirstCollisionChild.

TEST(QorOffScreenBufferHit, AChildUnderThePointIsFound)
{
    Probe c;
    QorGuider child = c.CreateChild(20, 20);
    QorGuider found = c.FindFirstCollisionChild(5, 5, 0);
    EXPECT_EQ(found.identifier, child.identifier);
    EXPECT_EQ(found.object, child.object);
    EXPECT_EQ(found.tag, 0u);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(20, 5, 0)));
}

TEST(QorOffScreenBufferHit, AHiddenChildIsStillFoundButNotAnUntestableOne)
{
    Probe c;
    QorGuider child = c.CreateChild(20, 20);
    c.SetChildVisible(child, 0);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 0) == child);
    c.SetHitTestable(child, 0);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(5, 5, 0)));
}

TEST(QorOffScreenBufferHit, TheTopmostChildIsFoundAndFocusChangesIt)
{
    Probe c;
    QorGuider a = c.CreateChild(20, 20);
    QorGuider b = c.CreateChild(20, 20);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 0) == b);
    c.SetFocus(a);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 0) == a);
    c.SetChildAlwaysOnTop(b, 1);
    c.SetFocus(a);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 0) == b);
    // An untestable top child lets the one below be found.
    c.SetHitTestable(b, 0);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 0) == a);
}

TEST(QorOffScreenBufferHit, AnExactChildTestSkipsItsMaskColour)
{
    Probe c;
    QorGuider below = c.CreateChild(20, 20);
    c.GetChildPicBlockPtr(below)->GetPixel(5, 5)[0] = 3;
    QorGuider top = c.CreateChild(20, 20);
    unsigned char mask = 7;
    QorPicBlock* surface = c.GetChildPicBlockPtr(top);
    surface->SetMask(&mask);
    for (long x = 0; x < 20; ++x)
        surface->GetPixel(x, 5)[0] = 7;
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 1) == below);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 5, 0) == top);
    EXPECT_TRUE(c.FindFirstCollisionChild(5, 6, 1) == top);
    // The lower child's pixel there is its mask colour (zero): nothing is found.
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(6, 5, 1)));
}

TEST(QorOffScreenBufferHit, TheVisibleRectangleIsComparedWithTheUnshiftedPoint)
{
    Probe c;
    QorGuider child = c.CreateChild(200, 200);
    c.MoveChild(child, 50, 50);
    // On the child's surface and inside its rectangle (0..199) as given.
    EXPECT_TRUE(c.FindFirstCollisionChild(60, 60, 0) == child);
    // On the surface (offset 170) but outside the rectangle when taken unshifted.
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(220, 220, 0)));
    // Inside the rectangle but not on the moved surface.
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(10, 10, 0)));
}

TEST(QorOffScreenBufferHit, TheSurfaceIsTestedWholeNotJustItsVisiblePart)
{
    Probe c;
    QorGuider child = c.CreateChild(20, 20);
    c.SetChildVisibleRect(child, 0, 0, 100, 100);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(50, 50, 0)));
    c.SetChildVisibleRect(child, 0, 0, 4, 4);
    EXPECT_TRUE(c.FindFirstCollisionChild(3, 3, 0) == child);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(10, 10, 0)));
}

TEST(QorOffScreenBufferHit, ARemovedChildIsNotFound)
{
    Probe c;
    QorGuider child = c.CreateChild(20, 20);
    c.RemoveChild(child);
    EXPECT_TRUE(IsNull(c.FindFirstCollisionChild(5, 5, 0)));
}

// CheckCollision with two sprites.

TEST(QorOffScreenBufferHit, WithinOneChildTheCornerIsTakenWithoutTheOffset)
{
    Probe c;
    QorGuider child = c.CreateChild(50, 50);
    QorGuider pic = c.MakePic(10, 10, 1, 0);
    QorGuider target = c.CreateSprite(child, pic, 1);
    QorGuider probe = c.CreateSprite(child, QorGuider(), 1);
    c.MoveSprite(target, 10, 10);
    c.MoveSprite(probe, 12, 12);
    EXPECT_EQ(c.CheckCollision(child, target, child, probe, 0, 0, 0, 0), 1);
    EXPECT_EQ(c.CheckCollision(child, target, child, probe, 100, 100, 0, 0), 1);
    c.MoveSprite(probe, 30, 30);
    EXPECT_EQ(c.CheckCollision(child, target, child, probe, -18, -18, 0, 0), 0);
}

TEST(QorOffScreenBufferHit, WithinOneChildTheVisibleRectangleIsNotTested)
{
    Probe c;
    QorGuider child = c.CreateChild(50, 50);
    c.SetChildVisibleRect(child, 0, 0, 1, 1);
    QorGuider pic = c.MakePic(10, 10, 1, 0);
    QorGuider target = c.CreateSprite(child, pic, 1);
    QorGuider probe = c.CreateSprite(child, QorGuider(), 1);
    c.MoveSprite(target, 10, 10);
    c.MoveSprite(probe, 12, 12);
    EXPECT_EQ(c.CheckCollision(child, target, child, probe, 0, 0, 0, 0), 1);
}

TEST(QorOffScreenBufferHit, TwoMainSpritesUseTheSameChildRule)
{
    Probe c;
    QorGuider target = Place(c, 0, 0, 10, 10, 1);
    QorGuider probe = Place(c, 3, 3, 1, 1, 1);
    c.SetSpriteVisible(target, 0);
    // Null children are equal guiders; Show flags are not consulted.
    EXPECT_EQ(c.CheckCollision(QorGuider(), target, QorGuider(), probe, 50, 50, 1, 0), 1);
}

TEST(QorOffScreenBufferHit, AcrossChildrenThePointIsCarriedIntoTheFirstChild)
{
    Probe c;
    QorGuider child1 = c.CreateChild(100, 100);
    QorGuider child2 = c.CreateChild(100, 100);
    c.MoveChild(child1, 100, 0);
    c.MoveChild(child2, 0, 0);
    QorGuider pic = c.MakePic(10, 10, 1, 0);
    QorGuider target = c.CreateSprite(child1, pic, 1);
    c.MoveSprite(target, 20, 20);
    QorGuider probe = c.CreateSprite(child2, QorGuider(), 1);
    // probe at (125, 25) in child2 is (125 - 100 + 0, 25) = (25, 25) in child1.
    c.MoveSprite(probe, 125, 25);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, 0, 0, 0, 1), 1);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, 4, 4, 0, 1), 1);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, 5, 0, 0, 1), 0);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, -6, 0, 0, 1), 0);
    c.MoveChild(child2, 10, 0);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, -6, 0, 0, 1), 1);
}

TEST(QorOffScreenBufferHit, AcrossChildrenThePointMustBeInTheFirstChildsRectangleUnlessAnywhere)
{
    Probe c;
    QorGuider child1 = c.CreateChild(100, 100);
    QorGuider child2 = c.CreateChild(100, 100);
    QorGuider pic = c.MakePic(10, 10, 1, 0);
    QorGuider target = c.CreateSprite(child1, pic, 1);
    c.MoveSprite(target, 20, 20);
    QorGuider probe = c.CreateSprite(child2, QorGuider(), 1);
    c.MoveSprite(probe, 25, 25);
    c.SetChildVisibleRect(child1, 0, 0, 22, 22);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, 0, 0, 0, 0), 0);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, 0, 0, 0, 1), 1);
    EXPECT_EQ(c.CheckCollision(child1, target, child2, probe, -3, -3, 0, 0), 1);
}

TEST(QorOffScreenBufferHit, ANullFirstChildHasNoOffsetAndNoRectangle)
{
    Probe c;
    QorGuider child2 = c.CreateChild(100, 100);
    c.MoveChild(child2, 700, 0);
    QorGuider target = Place(c, 700, 0, 10, 10, 1);
    QorGuider probe = c.CreateSprite(child2, QorGuider(), 1);
    c.MoveSprite(probe, 5, 5);
    // (5 - 0 + 700, 5) lies off the screen; without child1 no rectangle is tested.
    EXPECT_EQ(c.CheckCollision(QorGuider(), target, child2, probe, 0, 0, 0, 0), 1);
}

TEST(QorOffScreenBufferHit, TwoSpriteFormRefusesUnknownGuidersAndHugeOffsets)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider target = Place(c, 0, 0, 10, 10, 1);
    QorGuider probe = Place(c, 1, 1, 1, 1, 1);
    QorGuider gone = c.CreateChild(10, 10);
    QorGuider stale = gone;
    c.RemoveChild(gone);
    auto check = [&](const QorGuider& c1, const QorGuider& s1, const QorGuider& c2, const QorGuider& s2, long dx)
    { return static_cast<unsigned char>(c.CheckCollision(c1, s1, c2, s2, dx, 0, 0, 1)); };
    EXPECT_EQ(check(QorGuider(), QorGuider(), QorGuider(), probe, 0), 255);
    EXPECT_EQ(check(QorGuider(), target, QorGuider(), QorGuider(), 0), 255);
    EXPECT_EQ(check(stale, target, QorGuider(), probe, 0), 255);
    EXPECT_EQ(check(QorGuider(), target, stale, probe, 0), 255);
    EXPECT_EQ(check(child, target, QorGuider(), probe, 0), 1);
    EXPECT_EQ(check(child, target, QorGuider(), probe, LONG_MAX), 0);
    EXPECT_EQ(check(child, target, QorGuider(), probe, LONG_MIN), 0);
}
