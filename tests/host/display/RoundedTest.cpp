#include "host/display/Rounded.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(RoundedTest, TheNearestWholeNumberIsTakenAndHalvesGoUp) {
    for (int whole = 0; whole < 255; ++whole) {
        EXPECT_EQ(roundedByte(whole), whole);
        EXPECT_EQ(roundedByte(std::nextafter(whole + 0.5, 0)), whole);
        EXPECT_EQ(roundedByte(whole + 0.5), whole + 1);
    }
    EXPECT_EQ(roundedByte(255), 255);
}

// As sums of products of floats end up.
TEST(RoundedTest, RoundingErrorsBeyondTheEndsAreCutOff) {
    EXPECT_EQ(roundedByte(std::nextafter(0.0, -1)), 0);
    EXPECT_EQ(roundedByte(std::nextafter(255.0, 256)), 255);
}

} // namespace
