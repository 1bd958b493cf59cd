#include "qor/core.h"

#include <gtest/gtest.h>

TEST(Smoke, Builds)
{
    QorString s("abc");
    EXPECT_EQ(s.GetLength(), 3u);
}
