#include "qor/pictures.h"

#include <gtest/gtest.h>

TEST(Placeholder, Builds)
{
    QorPicBlock p;
    EXPECT_EQ(p.GetBitsPerPixel(), 8);
}
