// Choosing the port and the clocks. Each test runs in a process of its own, so each starts unchosen.
#include "qor/platform.h"

#include <gtest/gtest.h>

TEST(QorPort, WithoutACallTheHeadlessPortAndItsManualClockAreUsed)
{
    EXPECT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
    QorManualClock* clock = QorGetManualClock();
    ASSERT_NE(clock, nullptr);
    EXPECT_EQ(&QorGetClock(), clock);
}

TEST(QorPort, ManualClockMovesOnlyWhenAdvancedOrDelayed)
{
    QorManualClock* clock = QorGetManualClock();
    ASSERT_NE(clock, nullptr);
    const unsigned long start = clock->GetMillis();
    EXPECT_EQ(clock->GetMillis(), start);
    clock->Advance(250);
    EXPECT_EQ(clock->GetMillis(), start + 250);
    QorGetClock().Delay(40);
    EXPECT_EQ(clock->GetMillis(), start + 290);
}

TEST(QorPort, SelectingAfterTheClockIsInUseIsRefused)
{
    QorGetClock();
    EXPECT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 0);
    EXPECT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
}

TEST(QorPort, SelectingTwiceIsRefusedAndKeepsTheFirstChoice)
{
    EXPECT_EQ(QorSelectPort(QorPortKind::kHeadless), 1);
    EXPECT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 0);
    EXPECT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
}

TEST(QorPort, SdlPortWithDummyDriversRunsOnSdlsClock)
{
    ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 1);
    EXPECT_EQ(QorGetPortKind(), QorPortKind::kSdl2);
    EXPECT_EQ(QorGetManualClock(), nullptr);
    QorClock& clock = QorGetClock();
    const unsigned long before = clock.GetMillis();
    clock.Delay(20);
    EXPECT_GE(clock.GetMillis(), before + 20);
}
