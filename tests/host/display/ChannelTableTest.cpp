#include "host/display/ChannelTable.h"

#include <gtest/gtest.h>

namespace {

using Entry = std::array<std::uint8_t, 4>;

Entry entryOf(ChannelTable const& table, size_t code) {
    auto const& entries = table.entries();
    return {entries.at(4 * code), entries.at(4 * code + 1), entries.at(4 * code + 2), entries.at(4 * code + 3)};
}

TEST(ChannelTableTest, EachCodeHasTheColourOfItsBrightness) {
    SampleCodes const codes(SampleType::Unsigned16, 300, {100, 355});
    ChannelTable const table(codes, colourmap::rampTo({255, 128, 0}));
    EXPECT_EQ(table.entries().size(), 65536u * 4);
    EXPECT_EQ(table.role(), ChannelTable::Role::Added);
    EXPECT_EQ(entryOf(table, 0), (Entry{0, 0, 0, 255}));
    EXPECT_EQ(entryOf(table, 228), (Entry{128, 64, 0, 255}));
    EXPECT_EQ(entryOf(table, 65535), (Entry{255, 128, 0, 255}));
    EXPECT_EQ(entryOf(table, 300), (Entry{0, 0, 0, 0})) << "nodata";
}

TEST(ChannelTableTest, AlphaHasNoColour) {
    ChannelTable const table = ChannelTable::alpha(SampleCodes(SampleType::Unsigned16, 7, {0, 65535}));
    EXPECT_EQ(table.role(), ChannelTable::Role::Alpha);
    EXPECT_EQ(entryOf(table, 65535), (Entry{0, 0, 0, 255}));
    EXPECT_EQ(entryOf(table, 257 * 100), (Entry{0, 0, 0, 100}));
    EXPECT_EQ(entryOf(table, 7), (Entry{0, 0, 0, 0}));
    // From the first code on: (0 + 51) / 255 of the range.
    ChannelTable const lifted = ChannelTable::alpha(SampleCodes(SampleType::Unsigned8, {}, {-51, 204}));
    EXPECT_EQ(entryOf(lifted, 0), (Entry{0, 0, 0, 51}));
    EXPECT_EQ(entryOf(lifted, 1), (Entry{0, 0, 0, 52}));
}

TEST(ChannelTableTest, NothingAddsNothing) {
    ChannelTable const table = ChannelTable::nothing();
    EXPECT_EQ(table.role(), ChannelTable::Role::Added);
    EXPECT_EQ(table.entries(), std::vector<std::uint8_t>(65536 * 4));
}

TEST(ChannelTableTest, KeysTellTablesApart) {
    ChannelTable const table = ChannelTable::nothing();
    ChannelTable const other = ChannelTable::nothing();
    EXPECT_NE(table.key(), other.key());
    ChannelTable const copy = table;
    EXPECT_EQ(table.key(), copy.key());
}

} // namespace
