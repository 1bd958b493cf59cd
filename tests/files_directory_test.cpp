#include "qor.h"

#include <gtest/gtest.h>

TEST(Placeholder, Builds)
{
    QorString s("x");
    EXPECT_EQ(s.GetLength(), 1u);
}
