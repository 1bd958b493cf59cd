// Running animations: CreateAnim and the operations on a running record, the record's TimerClick with its
// return values and rectangles, the set's TimerClick with and without redraw, use counts of shared pool
// pictures, the frame tables kept while a unit still runs, and a golden image over six ticks.
#include "animation_util.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using qortest::Probe;
using qortest::SetProbe;
using qortest::TempPath;
using qortest::WriteTestSet;
using AnimRecord = SetProbe::QorAnimUnitRun;

const unsigned char kGarbage = 0xEE;

// An 8-bit 64 x 48 main buffer and the test set opened with flag 2.
class AnimRun : public ::testing::Test
{
protected:
    void SetUp() override
    {
        buffer.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, 64, 48, nullptr);
        basePictures = buffer.GetPicNum();
        set.SetOffScreenBufferPtr(&buffer);
        ASSERT_EQ(set.Open(WriteTestSet(TempPath("set.qas")).c_str(), QorAnimSet::kReadHeaders), 1);
    }

    QorSprite& SpriteOf(QorGuider& g)
    {
        QorGuider* sprite = set.GetSprite(g);
        EXPECT_NE(sprite, nullptr);
        QorSprite* s = sprite ? buffer.Sprite(*sprite) : nullptr;
        EXPECT_NE(s, nullptr);
        return *s;
    }
    QorPicBlock* Pool(long i) { return &buffer.Picture(set.GetPicGuider(i)); }

    // Position, last area, picture and visibility of g's sprite.
    void ExpectSprite(QorGuider& g, long x, long y, long lastX, long lastY, long lastW, long lastH, long pic,
                      char show)
    {
        QorSprite& s = SpriteOf(g);
        EXPECT_EQ(s.GetX(), x);
        EXPECT_EQ(s.GetY(), y);
        EXPECT_EQ(s.GetLastX(), lastX);
        EXPECT_EQ(s.GetLastY(), lastY);
        EXPECT_EQ(s.GetLastWidth(), lastW);
        EXPECT_EQ(s.GetLastHeight(), lastH);
        EXPECT_EQ(s.GetPicBlock(), Pool(pic));
        EXPECT_EQ(s.GetWidth(), Pool(pic)->GetWidth());
        EXPECT_EQ(s.GetHeight(), Pool(pic)->GetHeight());
        EXPECT_EQ(s.IsShow(), show);
    }

    void Smear() { std::memset(buffer.GetMainBufferPicBlockPtr()->GetDataPtr(), kGarbage, 64 * 48); }
    unsigned char Pixel(long x, long y) { return *buffer.GetMainBufferPicBlockPtr()->GetPixel(x, y); }

    Probe buffer;
    SetProbe set;
    unsigned long basePictures = 0;
};

void ExpectRect(const QorRect& r, long l, long t, long rt, long b)
{
    EXPECT_EQ(r.left, l);
    EXPECT_EQ(r.top, t);
    EXPECT_EQ(r.right, rt);
    EXPECT_EQ(r.bottom, b);
}
} // namespace

// CreateAnim.

TEST_F(AnimRun, CreateAnimMakesAnInvisibleSpriteAtFrameZeroPlusTheOriginAtTheUnitsDepth)
{
    QorGuider g = set.CreateAnim("walk");
    ASSERT_TRUE(g.IsValid());
    EXPECT_EQ(g.identifier, 0u);
    EXPECT_EQ(buffer.GetSpriteNum(), 1u);
    EXPECT_EQ(buffer.GetPicNum(), basePictures + 3);
    // Placed from (0, 0): the last area is the old place with the picture's size.
    ExpectSprite(g, 10, 20, 0, 0, 4, 3, 0, 0);
    EXPECT_EQ(SpriteOf(g).GetZ(), 700);
    AnimRecord* run = SetProbe::Run(g);
    EXPECT_EQ(run->GetFrameIndex(), 0u);
    EXPECT_EQ(run->IsRunning(), 0);
    EXPECT_EQ(run->IsFinished(), 0);
    EXPECT_EQ(run->GetOriginX(), 10);
    EXPECT_EQ(run->GetOriginY(), 20);
    ASSERT_EQ(run->GetFrameCount(), 3u);
    EXPECT_EQ(run->GetFrame(2), set.GetPicGuider(2));
    EXPECT_EQ(set.IsAnimActive(g), 0);
    EXPECT_EQ(set.GetActAnimNum(), 0);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 3u);
    // Pool pictures are QGB pictures of the file.
    EXPECT_EQ(Pool(1)->GetWidth(), 2);
    EXPECT_EQ(Pool(1)->GetHeight(), 5);
    EXPECT_EQ(*Pool(1)->GetPixel(1, 4), 20);
}

TEST_F(AnimRun, CreateAnimCountsAPictureUsedTwiceTwiceAndLoadsItOnce)
{
    QorGuider g = set.CreateAnim("blink");
    ASSERT_TRUE(g.IsValid());
    EXPECT_EQ(set.GetPicUseCount(2), 2);
    EXPECT_EQ(set.GetPicUseCount(0), 0);
    EXPECT_FALSE(set.GetPicGuider(0).IsValid());
    EXPECT_EQ(buffer.GetPicNum(), basePictures + 1);
    ExpectSprite(g, 31, 5, 0, 0, 3, 3, 2, 0);
    EXPECT_EQ(SpriteOf(g).GetZ(), 400);
}

TEST_F(AnimRun, CreateAnimOfAnUnknownNameOrAUnitWithoutFramesGivesAnEmptyGuider)
{
    EXPECT_FALSE(set.CreateAnim("Walk").IsValid());
    EXPECT_FALSE(set.CreateAnim(nullptr).IsValid());
    EXPECT_FALSE(set.CreateAnim("empty").IsValid());
    EXPECT_EQ(set.GetAnimCount(), 0u);
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
    EXPECT_EQ(buffer.GetPicNum(), basePictures);
}

TEST_F(AnimRun, CreateAnimWithoutACompositorGivesAnEmptyGuider)
{
    set.SetOffScreenBufferPtr(nullptr);
    EXPECT_EQ(set.GetOffScreenBufferPtr(), nullptr);
    EXPECT_FALSE(set.CreateAnim("walk").IsValid());
    set.TimerClick(1);
    set.SetOffScreenBufferPtr(&buffer);
    EXPECT_TRUE(set.CreateAnim("walk").IsValid());
}

// Operations on an empty or foreign guider.

TEST_F(AnimRun, OperationsOnAnEmptyOrForeignGuiderAreRefused)
{
    QorGuider empty;
    int other = 0;
    QorGuider foreign;
    foreign.object = &other;
    for (QorGuider* g : {&empty, &foreign})
    {
        EXPECT_EQ(set.DestroyAnim(*g), 0);
        EXPECT_EQ(set.ActiveAnim(*g), 0);
        EXPECT_EQ(set.DeactiveAnim(*g), 0);
        EXPECT_EQ(set.ResetAnim(*g), 0);
        EXPECT_EQ(set.PauseAnim(*g), 0);
        EXPECT_EQ(set.ResumeAnim(*g), 0);
        EXPECT_EQ(set.IsAnimActive(*g), 0xFF);
        EXPECT_EQ(set.ShowAnim(*g, 1), 0);
        EXPECT_EQ(set.MoveAnim(*g, 1, 1, 1), 0);
        EXPECT_EQ(set.GetSprite(*g), nullptr);
    }
    EXPECT_EQ(set.GetActAnimNum(), 0);
}

// Activation and ticks.

TEST_F(AnimRun, ActiveAnimShowsFrameZeroAtOnceAndTheFirstTickShowsFrameOne)
{
    QorGuider g = set.CreateAnim("walk");
    ASSERT_EQ(set.ActiveAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    EXPECT_EQ(set.IsAnimActive(g), 1);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 1u);
    // Moved onto its own place, then given frame 0's picture: the last area is the place with the old size.
    ExpectSprite(g, 10, 20, 10, 20, 4, 3, 0, 1);

    set.TimerClick(0);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 2u);
    ExpectSprite(g, 15, 21, 15, 21, 4, 3, 1, 1);
}

TEST_F(AnimRun, ALoopShowsEveryFrameAndWrapsOnTheTickAfterTheLast)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    AnimRecord* run = SetProbe::Run(g);
    QorRect changed;

    EXPECT_EQ(run->TimerClick(&changed), 1);
    ExpectRect(changed, 10, 20, 16, 25);
    ExpectSprite(g, 15, 21, 15, 21, 4, 3, 1, 1);

    EXPECT_EQ(run->TimerClick(&changed), 1);
    ExpectRect(changed, 7, 21, 16, 25);
    ExpectSprite(g, 7, 22, 7, 22, 2, 5, 2, 1);
    EXPECT_EQ(run->GetFrameIndex(), 3u);

    EXPECT_EQ(run->TimerClick(&changed), 1);
    ExpectRect(changed, 7, 20, 13, 24);
    ExpectSprite(g, 10, 20, 10, 20, 3, 3, 0, 1);
    EXPECT_EQ(run->GetFrameIndex(), 1u);

    EXPECT_EQ(run->TimerClick(nullptr), 1);
    ExpectSprite(g, 15, 21, 15, 21, 4, 3, 1, 1);
    EXPECT_EQ(set.GetActAnimNum(), 1);
}

TEST_F(AnimRun, APlayOnceAnimationStopsOnItsLastFrameReportsOnceAndStaysCounted)
{
    QorGuider g = set.CreateAnim("blink");
    set.ActiveAnim(g);
    AnimRecord* run = SetProbe::Run(g);
    QorRect changed;

    EXPECT_EQ(run->TimerClick(&changed), 1);
    ExpectRect(changed, 31, 5, 34, 7);
    ExpectSprite(g, 32, 5, 32, 5, 3, 3, 2, 1);

    // The index has reached F: it stops, the sprite stays on the last frame and nothing is reported yet.
    changed = QorRect(1, 1, 1, 1);
    EXPECT_EQ(run->TimerClick(&changed), 0);
    ExpectRect(changed, 1, 1, 1, 1);
    EXPECT_EQ(run->IsRunning(), 0);
    EXPECT_EQ(run->IsFinished(), 1);
    EXPECT_EQ(set.IsAnimActive(g), 0);
    ExpectSprite(g, 32, 5, 32, 5, 3, 3, 2, 1);

    // The next tick reports the final rectangle, once.
    EXPECT_EQ(run->TimerClick(&changed), 0);
    ExpectRect(changed, 32, 5, 34, 7);
    EXPECT_EQ(run->IsFinished(), 0);
    changed = QorRect(1, 1, 1, 1);
    EXPECT_EQ(run->TimerClick(&changed), 0xFF);
    ExpectRect(changed, 1, 1, 1, 1);
    // Ending by itself does not lower the active count.
    EXPECT_EQ(set.GetActAnimNum(), 1);
}

TEST_F(AnimRun, AnotherModeIsInertButActivationStillShowsTheSprite)
{
    QorGuider g = set.CreateAnim("inert");
    ASSERT_EQ(set.ActiveAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 0u);
    ExpectSprite(g, 0, 0, 0, 0, 2, 5, 1, 1);
    QorRect changed(3, 3, 3, 3);
    EXPECT_EQ(SetProbe::Run(g)->TimerClick(&changed), 0xFF);
    ExpectRect(changed, 3, 3, 3, 3);
    set.DeactiveAnim(g);
    EXPECT_EQ(SetProbe::Run(g)->IsFinished(), 1);
    EXPECT_EQ(SetProbe::Run(g)->TimerClick(&changed), 0xFF);
}

TEST_F(AnimRun, ARecordNeitherRunningNorFinishedAnswers0xFF)
{
    QorGuider g = set.CreateAnim("walk");
    QorRect changed(2, 2, 2, 2);
    EXPECT_EQ(SetProbe::Run(g)->TimerClick(&changed), 0xFF);
    ExpectRect(changed, 2, 2, 2, 2);
}

TEST_F(AnimRun, DeactiveAnimStopsHidesAndClearsItsOwnFinishedMark)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    set.TimerClick(0);
    ASSERT_EQ(set.DeactiveAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 0);
    EXPECT_EQ(set.IsAnimActive(g), 0);
    // A loop reports its end in the same call (the finished case of its step), so the mark is gone.
    EXPECT_EQ(SetProbe::Run(g)->IsFinished(), 0);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 2u);
    ExpectSprite(g, 15, 21, 15, 21, 4, 3, 1, 0);
    // Deactivating again does not count twice.
    ASSERT_EQ(set.DeactiveAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 0);
}

TEST_F(AnimRun, PauseAndResumeToggleRunningWithoutMovingTheIndex)
{
    QorGuider g = set.CreateAnim("walk");
    EXPECT_EQ(set.PauseAnim(g), 0);
    set.ActiveAnim(g);
    EXPECT_EQ(set.ResumeAnim(g), 0);
    ASSERT_EQ(set.PauseAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 0);
    EXPECT_EQ(set.PauseAnim(g), 0);
    set.TimerClick(0);
    set.TimerClick(1);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 1u);
    ExpectSprite(g, 10, 20, 10, 20, 4, 3, 0, 1);
    ASSERT_EQ(set.ResumeAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    set.TimerClick(0);
    ExpectSprite(g, 15, 21, 15, 21, 4, 3, 1, 1);
}

TEST_F(AnimRun, ResetAnimMakesTheNextTickShowFrameZero)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    set.TimerClick(0);
    ASSERT_EQ(set.ResetAnim(g), 1);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 0u);
    set.TimerClick(0);
    ExpectSprite(g, 10, 20, 10, 20, 2, 5, 0, 1);
}

TEST_F(AnimRun, ShowAnimSetsTheSpritesVisibility)
{
    QorGuider g = set.CreateAnim("walk");
    ASSERT_EQ(set.ShowAnim(g, 1), 1);
    EXPECT_EQ(SpriteOf(g).IsShow(), 1);
    ASSERT_EQ(set.ShowAnim(g, 0), 1);
    EXPECT_EQ(SpriteOf(g).IsShow(), 0);
}

TEST_F(AnimRun, MoveAnimPlacesTheSpriteByTheFrameAtTheIndexPlusTheNewOrigin)
{
    QorGuider g = set.CreateAnim("walk");
    ASSERT_EQ(set.MoveAnim(g, 100, 200, 0), 1);
    EXPECT_EQ(SetProbe::Run(g)->GetOriginX(), 100);
    EXPECT_EQ(SetProbe::Run(g)->GetOriginY(), 200);
    ExpectSprite(g, 100, 200, 10, 20, 4, 3, 0, 0);
    set.ActiveAnim(g);
    set.TimerClick(0);
    ExpectSprite(g, 105, 201, 105, 201, 4, 3, 1, 1);
    // The index now names frame 2, whose offsets are taken although frame 1 is shown.
    ASSERT_EQ(set.MoveAnim(g, 0, 0, 0), 1);
    ExpectSprite(g, -3, 2, 105, 201, 2, 5, 1, 1);
}

TEST_F(AnimRun, MoveAnimAfterAPlayOnceAnimationEndedTakesTheLastFrame)
{
    QorGuider g = set.CreateAnim("blink");
    set.ActiveAnim(g);
    set.TimerClick(0);
    set.TimerClick(0);
    ASSERT_EQ(SetProbe::Run(g)->GetFrameIndex(), 2u);
    ASSERT_EQ(set.MoveAnim(g, 40, 10, 0), 1);
    ExpectSprite(g, 42, 10, 32, 5, 3, 3, 2, 1);
}

TEST_F(AnimRun, MoveAnimWithRedrawRepaintsTheOldAndNewAreas)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    Smear();
    ASSERT_EQ(set.MoveAnim(g, 20, 20, 1), 1);
    // Frame 1's offsets with frame 0's picture (keyed corner).
    ExpectSprite(g, 25, 21, 10, 20, 4, 3, 0, 1);
    EXPECT_EQ(Pixel(25, 21), 0);
    EXPECT_EQ(Pixel(26, 21), 10);
    EXPECT_EQ(Pixel(28, 23), 10);
    EXPECT_EQ(Pixel(11, 21), 0);
    EXPECT_EQ(Pixel(24, 21), kGarbage);
    EXPECT_EQ(Pixel(29, 21), kGarbage);
}

TEST_F(AnimRun, GetSpriteGivesTheGuiderInsideTheRecord)
{
    QorGuider g = set.CreateAnim("walk");
    QorGuider* sprite = set.GetSprite(g);
    ASSERT_NE(sprite, nullptr);
    EXPECT_EQ(set.GetSprite(g), sprite);
    EXPECT_NE(buffer.Sprite(*sprite), nullptr);
    EXPECT_EQ(buffer.GetSpriteCoordinate(*sprite), Point<long>(10, 20));
}

// The set's TimerClick.

TEST_F(AnimRun, TimerClickWithRedrawRecomposesTheUnionOfTheOldAndNewRectangles)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    Smear();
    set.TimerClick(1);
    ExpectSprite(g, 15, 21, 15, 21, 4, 3, 1, 1);
    EXPECT_EQ(Pixel(15, 21), 20);
    EXPECT_EQ(Pixel(16, 25), 20);
    EXPECT_EQ(Pixel(10, 20), 0);
    EXPECT_EQ(Pixel(13, 22), 0);
    EXPECT_EQ(Pixel(9, 20), kGarbage);
    EXPECT_EQ(Pixel(17, 21), kGarbage);
    EXPECT_EQ(Pixel(10, 26), kGarbage);
    EXPECT_EQ(Pixel(10, 19), kGarbage);
    EXPECT_EQ(Pixel(0, 0), kGarbage);
}

TEST_F(AnimRun, TimerClickWithRedrawUnitesTheRectanglesOfEveryAnimation)
{
    QorGuider a = set.CreateAnim("walk");
    QorGuider b = set.CreateAnim("blink");
    set.ActiveAnim(a);
    set.ActiveAnim(b);
    Smear();
    set.TimerClick(1);
    EXPECT_EQ(Pixel(20, 10), 0);
    EXPECT_EQ(Pixel(10, 5), 0);
    EXPECT_EQ(Pixel(34, 25), 0);
    EXPECT_EQ(Pixel(33, 6), 30);
    EXPECT_EQ(Pixel(9, 10), kGarbage);
    EXPECT_EQ(Pixel(35, 10), kGarbage);
    EXPECT_EQ(Pixel(20, 4), kGarbage);
    EXPECT_EQ(Pixel(20, 26), kGarbage);
}

TEST_F(AnimRun, TimerClickWithRedrawAndNothingRunningStillRedrawsTheEmptyRectangle)
{
    Smear();
    set.TimerClick(1);
    EXPECT_EQ(Pixel(0, 0), 0);
    EXPECT_EQ(Pixel(1, 0), kGarbage);
    EXPECT_EQ(Pixel(0, 1), kGarbage);
}

TEST_F(AnimRun, TimerClickWithRedrawReportsAFinishedAnimationOnce)
{
    QorGuider g = set.CreateAnim("blink");
    set.ActiveAnim(g);
    set.TimerClick(1);
    // Stops: nothing is reported, so only the empty rectangle is redrawn.
    Smear();
    set.TimerClick(1);
    EXPECT_EQ(SetProbe::Run(g)->IsFinished(), 1);
    EXPECT_EQ(Pixel(0, 0), 0);
    EXPECT_EQ(Pixel(33, 6), kGarbage);
    // Reports the sprite's rectangle.
    set.TimerClick(1);
    EXPECT_EQ(SetProbe::Run(g)->IsFinished(), 0);
    EXPECT_EQ(Pixel(33, 6), 30);
    EXPECT_EQ(Pixel(32, 5), 30);
    EXPECT_EQ(Pixel(31, 6), kGarbage);
    EXPECT_EQ(Pixel(35, 6), kGarbage);
    // Then nothing any more.
    Smear();
    set.TimerClick(1);
    EXPECT_EQ(Pixel(33, 6), kGarbage);
    EXPECT_EQ(set.GetActAnimNum(), 1);
}

TEST_F(AnimRun, TimerClickWithoutRedrawStepsOnlyRunningAnimationsAndDrawsNothing)
{
    QorGuider g = set.CreateAnim("blink");
    set.ActiveAnim(g);
    set.TimerClick(0);
    set.TimerClick(0);
    EXPECT_EQ(SetProbe::Run(g)->IsFinished(), 1);
    Smear();
    set.TimerClick(0);
    set.TimerClick(0);
    EXPECT_EQ(SetProbe::Run(g)->IsFinished(), 1);
    EXPECT_EQ(Pixel(0, 0), kGarbage);
    EXPECT_EQ(Pixel(33, 6), kGarbage);
}

// Destruction, use counts and the unit's frames.

TEST_F(AnimRun, TwoAnimationsOfOneUnitSharePicturesAndTheFramesStayUntilTheLastIsDestroyed)
{
    QorGuider a = set.CreateAnim("walk");
    QorGuider b = set.CreateAnim("walk");
    ASSERT_TRUE(a.IsValid());
    ASSERT_TRUE(b.IsValid());
    EXPECT_NE(a, b);
    for (long i = 0; i < 3; ++i)
        EXPECT_EQ(set.GetPicUseCount(i), 2);
    EXPECT_EQ(buffer.GetPicNum(), basePictures + 3);
    EXPECT_EQ(buffer.GetSpriteNum(), 2u);
    EXPECT_EQ(SetProbe::Run(a)->GetFrame(1), SetProbe::Run(b)->GetFrame(1));
    set.ActiveAnim(a);
    set.ActiveAnim(b);
    EXPECT_EQ(set.GetActAnimNum(), 2);

    ASSERT_EQ(set.DestroyAnim(a), 1);
    EXPECT_FALSE(a.IsValid());
    EXPECT_EQ(set.DestroyAnim(a), 0);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    for (long i = 0; i < 3; ++i)
        EXPECT_EQ(set.GetPicUseCount(i), 1);
    EXPECT_EQ(buffer.GetPicNum(), basePictures + 3);
    EXPECT_EQ(buffer.GetSpriteNum(), 1u);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 3u);
    // The other one keeps stepping through the unit's frames.
    set.TimerClick(1);
    ExpectSprite(b, 15, 21, 15, 21, 4, 3, 1, 1);
    set.TimerClick(1);
    ExpectSprite(b, 7, 22, 7, 22, 2, 5, 2, 1);
    set.TimerClick(1);
    ExpectSprite(b, 10, 20, 10, 20, 3, 3, 0, 1);

    ASSERT_EQ(set.DestroyAnim(b), 1);
    EXPECT_EQ(set.GetActAnimNum(), 0);
    for (long i = 0; i < 3; ++i)
    {
        EXPECT_EQ(set.GetPicUseCount(i), 0);
        EXPECT_FALSE(set.GetPicGuider(i).IsValid());
    }
    EXPECT_EQ(buffer.GetPicNum(), basePictures);
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 0u);
    EXPECT_EQ(set.GetAnimCount(), 0u);

    // Created again, the frames and pictures are read again.
    QorGuider c = set.CreateAnim("walk");
    ASSERT_TRUE(c.IsValid());
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 3u);
    EXPECT_EQ(buffer.GetPicNum(), basePictures + 3);
}

TEST_F(AnimRun, AnimationsOfDifferentUnitsShareAPoolPictureByCount)
{
    QorGuider walk = set.CreateAnim("walk");
    QorGuider blink = set.CreateAnim("blink");
    EXPECT_EQ(set.GetPicUseCount(2), 3);
    const QorGuider shared = set.GetPicGuider(2);
    EXPECT_EQ(SetProbe::Run(blink)->GetFrame(0), shared);
    set.DestroyAnim(walk);
    EXPECT_EQ(set.GetPicUseCount(2), 2);
    EXPECT_EQ(set.GetPicGuider(2), shared);
    EXPECT_EQ(buffer.GetPicNum(), basePictures + 1);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 0u);
    EXPECT_EQ(set.GetUnit(1)->GetFrameCount(), 2u);
}

TEST_F(AnimRun, DestroyingAnAnimationThatIsNotRunningLeavesTheActiveCount)
{
    QorGuider a = set.CreateAnim("walk");
    QorGuider b = set.CreateAnim("blink");
    set.ActiveAnim(a);
    set.ActiveAnim(b);
    set.PauseAnim(b);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    ASSERT_EQ(set.DestroyAnim(b), 1);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    EXPECT_EQ(set.IsAnimActive(a), 1);
}

TEST_F(AnimRun, AResidentUnitKeepsItsFramesAfterItsLastAnimation)
{
    EXPECT_EQ(set.SetUnitResident(4, 1), 0);
    EXPECT_EQ(set.SetUnitResident(-1, 1), 0);
    ASSERT_EQ(set.SetUnitResident(0, 1), 1);
    EXPECT_EQ(set.GetUnit(0)->IsResident(), 1);
    // A resident unit that has no frames yet is read like any other.
    QorGuider g = set.CreateAnim("walk");
    ASSERT_TRUE(g.IsValid());
    set.DestroyAnim(g);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 3u);
    EXPECT_EQ(buffer.GetPicNum(), basePictures);
    EXPECT_EQ(set.GetPicUseCount(0), 0);
    g = set.CreateAnim("walk");
    ASSERT_TRUE(g.IsValid());
    EXPECT_EQ(set.GetPicUseCount(0), 1);
    ASSERT_EQ(set.SetUnitResident(0, 0), 1);
    set.DestroyAnim(g);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 0u);
}

TEST_F(AnimRun, SetOffScreenBufferPtrMovesEveryRunningAnimationToTheNewCompositor)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    Probe other;
    set.SetOffScreenBufferPtr(&other);
    EXPECT_EQ(set.GetOffScreenBufferPtr(), &other);
    // The sprite lives in the first compositor: the second refuses it and nothing moves.
    set.TimerClick(1);
    ExpectSprite(g, 10, 20, 10, 20, 4, 3, 0, 1);
    set.SetOffScreenBufferPtr(&buffer);
    // The index went on in the meantime: frame 2 follows frame 0's picture.
    set.TimerClick(1);
    ExpectSprite(g, 7, 22, 7, 22, 4, 3, 2, 1);
}

TEST_F(AnimRun, ResetOfARecordClearsItsFieldsAndCopiesOwnTheirFrames)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    AnimRecord copy(*SetProbe::Run(g));
    EXPECT_EQ(copy.GetFrameCount(), 3u);
    EXPECT_EQ(copy.GetFrameIndex(), 1u);
    EXPECT_EQ(copy.IsRunning(), 1);
    EXPECT_EQ(copy.GetOriginX(), 10);
    copy.Reset();
    EXPECT_EQ(copy.GetFrameCount(), 0u);
    EXPECT_EQ(copy.GetFrameIndex(), 0u);
    EXPECT_EQ(copy.IsRunning(), 0);
    EXPECT_EQ(copy.GetOriginX(), 0);
    EXPECT_EQ(copy.GetUnit(), nullptr);
    EXPECT_EQ(copy.TimerClick(nullptr), 0xFF);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameCount(), 3u);
}

TEST_F(AnimRun, ActivatingARunningAnimationAgainRestartsItWithoutCountingTwice)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    set.TimerClick(0);
    ASSERT_EQ(set.ActiveAnim(g), 1);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    EXPECT_EQ(SetProbe::Run(g)->GetFrameIndex(), 1u);
    ExpectSprite(g, 10, 20, 10, 20, 2, 5, 0, 1);
}

TEST_F(AnimRun, ARecordWhoseSpriteWasRemovedElsewhereStaysSafe)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    // The compositor clears the guider it is given: the one inside the record.
    ASSERT_EQ(buffer.RemoveSprite(*set.GetSprite(g)), 1);
    EXPECT_FALSE(set.GetSprite(g)->IsValid());
    EXPECT_EQ(set.ShowAnim(g, 1), 1);
    EXPECT_EQ(set.MoveAnim(g, 5, 5, 1), 1);
    QorRect changed(4, 4, 4, 4);
    EXPECT_EQ(SetProbe::Run(g)->TimerClick(&changed), 1);
    set.TimerClick(1);
    set.DeactiveAnim(g);
    EXPECT_EQ(set.DestroyAnim(g), 1);
    EXPECT_EQ(buffer.GetPicNum(), basePictures);
}

TEST_F(AnimRun, PicturesDeletedByTheCompositorAreNeverFollowed)
{
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    buffer.RestartSystem();
    EXPECT_EQ(buffer.GetPicNum(), 0u);
    set.TimerClick(1);
    set.TimerClick(1);
    EXPECT_EQ(SpriteOf(g).GetPicBlock(), nullptr);
    EXPECT_EQ(set.DestroyAnim(g), 1);
    EXPECT_EQ(set.GetPicUseCount(0), 0);
}

// Six ticks of a looping and a play-once animation, composed at 32 bits.

TEST(QorAnimSetGolden, SixTicksOfALoopAndAPlayOnceAnimation)
{
    const auto picture = [](long w, long h, unsigned char b, unsigned char g, unsigned char r)
    {
        unsigned char colour[4] = {b, g, r, 0};
        QorPicBlock p(QorPicBlock::Bit32, w, h, colour);
        const unsigned char key[4] = {0, 0, 0, 0};
        p.SetMask(key);
        std::memset(p.GetPixel(0, 0), 0, 4);
        std::memset(p.GetPixel(w - 1, h - 1), 0, 4);
        return p;
    };
    QorAnimSetWriter w;
    w.AddPicture(picture(8, 8, 0x20, 0x40, 0xE0));
    w.AddPicture(picture(6, 10, 0x30, 0xD0, 0x40));
    w.AddPicture(picture(10, 4, 0xF0, 0x80, 0x10));
    const long loopPics[] = {0, 1, 2, 1}, loopXs[] = {0, 6, 12, 6}, loopYs[] = {0, 2, 6, 10};
    w.AddUnit("loop", 1, 4, 4, 500, loopPics, loopXs, loopYs, 4);
    const long oncePics[] = {2, 0, 1}, onceXs[] = {0, 3, 6}, onceYs[] = {0, -2, -4};
    w.AddUnit("once", 0, 26, 20, 300, oncePics, onceXs, onceYs, 3);
    const std::string path = TempPath("golden.qas");
    ASSERT_GT(w.Write(path.c_str()), 0u);

    Probe buffer;
    buffer.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 48, 32, nullptr);
    QorAnimSet set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    QorGuider loop = set.CreateAnim("loop");
    QorGuider once = set.CreateAnim("once");
    set.ActiveAnim(loop);
    set.ActiveAnim(once);
    buffer.Redraw(0, 0);

    QorPicBlock strip(QorPicBlock::Bit32, 48 * 6, 32);
    const QorPicBlock& main = *buffer.GetMainBufferPicBlockPtr();
    for (long tick = 0; tick < 6; ++tick)
    {
        set.TimerClick(1);
        for (long y = 0; y < 32; ++y)
            std::memcpy(strip.GetPixel(tick * 48, y), main.GetPixel(0, y), 48 * 4);
    }
    qortest::ExpectMatchesGolden(strip, "animation", "six_ticks");
}
