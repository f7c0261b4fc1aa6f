#include "reference/Interleave16.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace reference;

TEST(Interleave16Test, EvenPixelWritesItsTwoTexelsInThreeChannelOrder) {
    Plane const c0(2, 1, {0x1234, 0x0102});
    Plane const c1(2, 1, {0x5678, 0x0304});
    Plane const c2(2, 1, {-0x6544, 0x0506}); // 0x9ABC as two's complement
    Texels const out = interleave16(packOneChannel16(c0), packOneChannel16(c1), packOneChannel16(c2));
    ASSERT_EQ(out.width, 4);
    EXPECT_EQ(out.at(0, 0), (Texel{0x34, 0x12, 0x78, 255}));
    EXPECT_EQ(out.at(1, 0), (Texel{0x56, 0xBC, 0x9A, 255}));
    EXPECT_EQ(out.at(2, 0), (Texel{0x02, 0x01, 0x04, 255}));
    EXPECT_EQ(out.at(3, 0), (Texel{0x03, 0x06, 0x05, 255}));
}

TEST(Interleave16Test, SamplesOfEveryChannelPassUntouched) {
    std::mt19937 random(11);
    Planes3 channels{Plane(14, 5), Plane(14, 5), Plane(14, 5)};
    for (Plane& channel : channels) {
        for (std::int32_t& sample : channel.samples)
            sample = static_cast<std::int32_t>(random() % 65536) - 32768;
    }
    Texels const out =
        interleave16(packOneChannel16(channels[0]), packOneChannel16(channels[1]), packOneChannel16(channels[2]));
    EXPECT_EQ(out, packThreeChannel16(channels));
}

} // namespace
