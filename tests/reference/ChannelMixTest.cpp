#include "reference/ChannelMix.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace reference;

ChannelEntries blank(bool isAlpha = false) {
    return {std::vector<std::uint8_t>(65536 * 4), isAlpha};
}

void put(ChannelEntries& entries, size_t code, std::array<std::uint8_t, 4> const& rgba) {
    for (size_t i = 0; i < 4; ++i)
        entries.rgba[4 * code + i] = rgba[i];
}

TEST(ChannelMixTest, CodesAreTwoBytesEachTheLowOneFirst) {
    ChannelEntries first = blank();
    ChannelEntries second = blank();
    put(first, 0x0201, {1, 2, 3, 255});
    put(second, 0xFFFE, {10, 20, 30, 255});
    Texels const codes(2, 1, {0x01, 0x02, 0, 0, 0, 0, 0xFE, 0xFF});
    EXPECT_EQ(channelMix(codes, Texels(2, 1), first, second), Texels(2, 1, {1, 2, 3, 255, 10, 20, 30, 255}));
}

TEST(ChannelMixTest, ColoursAreAddedUpTo255AndTheLargestAlphaStays) {
    ChannelEntries first = blank();
    ChannelEntries second = blank();
    put(first, 0, {100, 200, 0, 7});
    put(second, 0, {1, 100, 0, 9});
    EXPECT_EQ(channelMix(Texels(1, 1), Texels(1, 1, {2, 3, 4, 8}), first, second), Texels(1, 1, {103, 255, 4, 9}));
    EXPECT_EQ(channelMix(Texels(1, 1), Texels(1, 1, {2, 3, 4, 80}), first, second), Texels(1, 1, {103, 255, 4, 80}));
}

TEST(ChannelMixTest, AlphaChannelsLimitAlphaAlone) {
    ChannelEntries colour = blank();
    ChannelEntries alpha = blank(true);
    put(colour, 0, {100, 200, 0, 255});
    put(alpha, 0, {0, 0, 0, 60});
    Texels const expected(1, 1, {100, 200, 0, 60});
    EXPECT_EQ(channelMix(Texels(1, 1), Texels(1, 1), colour, alpha), expected);
    EXPECT_EQ(channelMix(Texels(1, 1), Texels(1, 1), alpha, colour), expected);
    EXPECT_EQ(channelMix(Texels(1, 1), Texels(1, 1, {0, 0, 0, 50}), blank(), alpha), Texels(1, 1, {0, 0, 0, 50}));
}

} // namespace
