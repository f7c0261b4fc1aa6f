#include "reference/SixteenToEight.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using namespace reference;

TEST(SixteenToEightTest, ValuesAreClampedNotScaled) {
    Texels const out = oneChannel16ToRgb8(packOneChannel16(Plane(6, 1, {300, -5, 0, 255, 256, 128})));
    ASSERT_EQ(out.width, 6);
    std::vector<std::uint8_t> const greys{255, 0, 0, 255, 255, 128};
    for (int x = 0; x < 6; ++x) {
        std::uint8_t const grey = greys[static_cast<size_t>(x)];
        EXPECT_EQ(out.at(x, 0), (Texel{grey, grey, grey, 255})) << x;
    }
}

TEST(SixteenToEightTest, OnlyTheValues0To255AreNeitherBlackNorWhite) {
    Plane plane(256, 256);
    std::iota(plane.samples.begin(), plane.samples.end(), -32768);
    Texels const out = oneChannel16ToRgb8(packOneChannel16(plane));
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            // Row 128 holds 0..255: 128 * 256 = 32768.
            int const expected = y < 128 ? 0 : (y > 128 ? 255 : x);
            ASSERT_EQ(out.at(x, y)[0], expected) << plane.at(x, y);
        }
    }
}

TEST(SixteenToEightTest, ThreeChannelsAreClampedEachOnItsOwn) {
    Planes3 const in{Plane(2, 1, {300, -1}), Plane(2, 1, {-32768, 12}), Plane(2, 1, {200, 32767})};
    Texels const out = threeChannel16ToRgba8(packThreeChannel16(in));
    EXPECT_EQ(out, Texels(2, 1, {255, 0, 200, 255, 0, 12, 255, 255}));
}

} // namespace
