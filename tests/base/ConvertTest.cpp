#include <gtest/gtest.h>

#include "base/Convert.h"
#include "base/RuntimeError.h"

namespace {

TEST(Conversions, RoundHalfToEvenAtTies)
{
    EXPECT_EQ(rt::toInt16(2.5), 2);
    EXPECT_EQ(rt::toInt16(3.5), 4);
    EXPECT_EQ(rt::toInt16(-2.5), -2);
}

}  // namespace
