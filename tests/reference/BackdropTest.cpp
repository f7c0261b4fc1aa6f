#include "reference/Backdrop.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

TEST(BackdropTest, WhatIsOpaqueStaysAndWhatIsTransparentGoes) {
    EXPECT_EQ(overBackdrop(Texels(2, 1, {1, 2, 3, 255, 9, 9, 9, 0}), {32, 64, 96}),
              Texels(2, 1, {1, 2, 3, 255, 32, 64, 96, 255}));
}

// 100 * 51 + 200 * 204 = 45900 = 180 * 255; 1 * 127 + 0 * 128 = 127, 0.498; 1 * 128 = 0.502.
TEST(BackdropTest, InBetweenIsRounded) {
    EXPECT_EQ(overBackdrop(Texels(1, 1, {100, 100, 100, 51}), {200, 200, 200}), Texels(1, 1, {180, 180, 180, 255}));
    EXPECT_EQ(overBackdrop(Texels(2, 1, {1, 0, 0, 127, 1, 0, 0, 128}), {0, 0, 0}),
              Texels(2, 1, {0, 0, 0, 255, 1, 0, 0, 255}));
}

} // namespace
