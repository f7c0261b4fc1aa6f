#include "reference/TableLookup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

using namespace reference;

TEST(TableLookupTest, BytesIndexAFullTableByThemselvesAndAlphaPasses) {
    ByteTable inverted(256);
    for (size_t i = 0; i < 256; ++i)
        inverted[i] = static_cast<std::uint8_t>(255 - i);
    Texels image(64, 1);
    std::iota(image.bytes.begin(), image.bytes.end(), std::uint8_t{0});
    Texels const out = tableLookup8(image, inverted);
    for (size_t i = 0; i < 256; ++i)
        EXPECT_EQ(out.bytes[i], i % 4 == 3 ? i : 255 - i) << i;
}

TEST(TableLookupTest, EveryByteFindsTheTexelAtItsNormalisedPosition) {
    for (size_t size = 2; size <= 256; size *= 2) {
        ByteTable table(size);
        std::iota(table.begin(), table.end(), std::uint8_t{0});
        for (int byte = 0; byte < 256; ++byte) {
            auto const b = static_cast<std::uint8_t>(byte);
            double const position = std::floor(byte / 255.0 * static_cast<double>(size));
            double const texel = std::min(position, static_cast<double>(size - 1));
            ASSERT_EQ(tableLookup8(Texels(1, 1, {b, b, b, b}), table).bytes[0], texel) << size << " " << byte;
        }
    }
}

// 16 entries: byte b reads texel floor(16 b / 255), the last at the right end: 15 is 0.94, 16 is 1.004, 254 is 15.9.
TEST(TableLookupTest, SmallTableIsReadAtTheNormalisedByte) {
    ByteTable table(16);
    std::iota(table.begin(), table.end(), std::uint8_t{100});
    Texels const out = tableLookup8(Texels(2, 1, {0, 15, 16, 9, 127, 254, 255, 8}), table);
    EXPECT_EQ(out, Texels(2, 1, {100, 100, 101, 9, 107, 115, 115, 8}));
}

TEST(TableLookupTest, SixteenBitValuesAreClampedToTheTable) {
    ByteTable table(1024, 7);
    table[0] = 1;
    table[5] = 2;
    table[1023] = 3;
    Planes3 const in{Plane(2, 1, {-1, 1024}), Plane(2, 1, {5, 6}), Plane(2, 1, {1023, -32768})};
    EXPECT_EQ(tableLookup16(packThreeChannel16(in), table), Texels(2, 1, {1, 2, 3, 255, 3, 7, 1, 255}));
}

TEST(TableLookupTest, CodesFrom32768OnReadEntryZeroOfASixteenBitTable) {
    ByteTable table(65536, 9);
    table[0] = 1;
    table[32767] = 2;
    // 32768 and 65535 arrive as -32768 and -1.
    Planes3 const in{Plane(1, 1, {32767}), Plane(1, 1, {32768}), Plane(1, 1, {65535})};
    EXPECT_EQ(tableLookup16(packThreeChannel16(in), table), Texels(1, 1, {2, 1, 1, 255}));
}

} // namespace
