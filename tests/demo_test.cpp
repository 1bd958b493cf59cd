// The demo (examples/DemoScene.cpp) run headless through its window timer for the whole timeline: its
// screenshots match the goldens and its effect and animation summaries give the expected counts.
#include "DemoScene.h"
#include "compositor_probe.h"

#include <gtest/gtest.h>

#include <string>

TEST(QorDemo, GoldenScreenshotsAndSummariesOfTheWholeTimeline)
{
    ASSERT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
    stDemoOptions options;
    options.ticks = kDemoTicks;
    stDemoResult result;
    const unsigned long start = QorGetClock().GetMillis();
    ASSERT_TRUE(RunDemo(options, result));
    EXPECT_EQ(result.ticksRun, kDemoTicks);
    // Driven by the 50 ms timer on the manual clock.
    EXPECT_EQ(QorGetClock().GetMillis() - start, 50ul * kDemoTicks);

    ASSERT_EQ(result.summary.size(), 8u);
    EXPECT_EQ(result.summary[0], "animation set: 8699 bytes, 9 pictures, 2 units, opened 1 with flag 2");
    EXPECT_EQ(result.summary[1], "text sprite: 12 Big5 bytes rendered as a 420 x 32 picture at (40, 24)");
    EXPECT_EQ(result.summary[2], "fade out: 21 steps of 50 ms over 1000 ms; yellow (255, 255, 0) -> (0, 0, 0)");
    EXPECT_EQ(result.summary[3], "fade in: 21 steps of 50 ms over 1000 ms; yellow (0, 0, 0) -> (255, 255, 0)");
    EXPECT_EQ(result.summary[4], "mosaic in: 21 steps of 50 ms over a 200 x 150 child, cells 16 down to 1");
    EXPECT_EQ(result.summary[5],
              "random dissolve: 23954 points, 798 a step over 31 steps; 23940 pasted, 14 never pasted");
    // The loop was shown at activation and then once a tick: 160 ticks end on frame 160 mod 6 = 4.
    EXPECT_EQ(result.summary[6], "looping animation: 6 frames, 160 ticks, next frame 5, at (450, 345)");
    // Activated at tick 46 (frame 0, then frame 1 in the same tick), frame 5 at tick 50, stopped at 51.
    EXPECT_EQ(result.summary[7], "play-once animation: 6 frames from tick 46, stopped at tick 51, reported at tick 52, "
                                 "resting at (332, 270); 2 animations counted active");

    ASSERT_EQ(result.shots.size(), 7u);
    for (const stDemoShot& shot : result.shots)
    {
        char name[64];
        std::snprintf(name, sizeof name, "demo-%03d-%s", shot.tick, shot.name.c_str());
        qortest::ExpectMatchesGolden(shot.picture, "demo", name);
    }
}
