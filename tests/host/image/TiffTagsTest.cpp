#include "host/image/TiffTags.h"

#include "tests/host/image/RawTiff.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

using rawtiff::Bytes;
using rawtiff::Directory;
using rawtiff::Layout;

namespace {

class TiffTagsTest : public testing::TestWithParam<Layout> {};

TiffStructure::Tags tagsOf(Bytes const& file) {
    TiffStructure const structure(TiffBytes::of(file));
    return structure.tags(structure.firstDirectory());
}

Bytes valuesOf(TiffStructure::Tags const& tags, std::string const& name) {
    for (TiffTag const& tag : tags.tags)
        if (tifftags::nameOf(tag.path) == name) return tag.values;
    ADD_FAILURE() << "there is no tag " << name;
    return {};
}

// All types, in an entry and beside it; fractions, floats and 64 bits too.
Directory allTypes() {
    Directory directory;
    directory.tags[1000] = {1, {7}};
    directory.tags[1001] = rawtiff::text("abc");
    directory.tags[1002] = rawtiff::text("a longer text");
    directory.tags[1003] = {3, {0x0102, 0x0304}};
    directory.tags[1004] = {4, {0x01020304}};
    directory.tags[1005] = {5, {720000, 10000}};
    directory.tags[1006] = {6, {0xff}};
    directory.tags[1007] = {7, {1, 2, 3, 4, 5, 6, 7, 8, 9}};
    directory.tags[1008] = {8, {0xfffe}};
    directory.tags[1009] = {9, {0xfffffffd}};
    directory.tags[1010] = {10, {1, 0xffffffff}};
    directory.tags[1011] = {11, {0x3fc00000}};
    directory.tags[1012] = rawtiff::doubles({1.5, -0.25});
    return directory;
}

// Numbers of each tag as little-endian bytes.
Bytes littleEndian(rawtiff::Tag const& tag, size_t width) {
    Bytes bytes;
    for (std::uint64_t const number : tag.numbers)
        for (size_t i = 0; i < width; ++i)
            bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    return bytes;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Layouts, TiffTagsTest,
                         testing::Values(Layout{false, false}, Layout{true, false}, Layout{false, true},
                                         Layout{true, true}),
                         [](auto const& test) {
                             return std::string(test.param.bigEndian ? "BigEndian" : "LittleEndian") +
                                    (test.param.big ? "BigTiff" : "");
                         });

TEST_P(TiffTagsTest, ValuesOfEachTypeAreLittleEndian) {
    Directory directory = allTypes();
    if (GetParam().big) {
        directory.tags[1016] = {16, {0x0102030405060708}};
        directory.tags[1017] = {17, {1, 2}};
    }
    auto const found = tagsOf(rawtiff::structure(directory, GetParam()));
    EXPECT_TRUE(found.leftOut.empty());
    ASSERT_EQ(found.tags.size(), directory.tags.size());
    std::vector<size_t> const widths{0, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8, 0, 0, 0, 8, 8};
    for (TiffTag const& tag : found.tags) {
        ASSERT_EQ(tag.path.size(), 1U);
        rawtiff::Tag const& expected = directory.tags.at(tag.number());
        EXPECT_EQ(tag.type, expected.type);
        EXPECT_EQ(tag.values, littleEndian(expected, widths.at(tag.type))) << tag.number();
        bool const isFraction = tag.type == 5 || tag.type == 10;
        EXPECT_EQ(tag.count(), expected.numbers.size() / (isFraction ? 2 : 1)) << tag.number();
    }
}

TEST_P(TiffTagsTest, TagsOfExifGpsAndInteroperabilityAreFollowed) {
    Directory directory;
    directory.tags[271] = rawtiff::text("Velmora");
    directory.inner[34665].tags[33434] = {5, {1, 125}};
    directory.inner[34665].inner[40965].tags[1] = rawtiff::text("R98");
    directory.inner[34853].tags[1] = rawtiff::text("N");
    auto const found = tagsOf(rawtiff::structure(directory, GetParam()));
    EXPECT_EQ(found.tags.size(), 4U);
    EXPECT_EQ(valuesOf(found, "34665/33434"), (Bytes{1, 0, 0, 0, 125, 0, 0, 0}));
    EXPECT_EQ(valuesOf(found, "34665/40965/1"), (Bytes{'R', '9', '8', 0}));
    EXPECT_EQ(valuesOf(found, "34853/1"), (Bytes{'N', 0}));
    EXPECT_EQ(valuesOf(found, "271"), (Bytes{'V', 'e', 'l', 'm', 'o', 'r', 'a', 0}));
}

TEST_P(TiffTagsTest, WhatCannotBeCopiedIsNamed) {
    Directory directory;
    directory.tags[900] = {3, {1}};
    directory.tags[901] = {99, {1}};                                                   // of no type
    directory.tags[902] = {static_cast<std::uint16_t>(GetParam().big ? 18 : 13), {8}}; // a directory that nobody knows
    auto const found = tagsOf(rawtiff::structure(directory, GetParam()));
    EXPECT_EQ(found.tags.size(), 1U);
    EXPECT_EQ(found.leftOut, (std::set<std::uint16_t>{901, 902}));
}

TEST_P(TiffTagsTest, ValuesBeyondTheFileAreLeftOut) {
    Directory directory;
    directory.tags[900] = rawtiff::text("a text that lies beside its entry");
    directory.tags[901] = {3, {5}};
    Bytes const whole = rawtiff::structure(directory, GetParam());
    size_t const entryAt = whole.size() - (GetParam().big ? 8 + 2 * 20 : 4 + 2 * 12);
    size_t const word = GetParam().big ? 8 : 4;
    for (size_t const field : {size_t{4}, 4 + word}) { // the count, the offset
        Bytes file = whole;
        std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(entryAt + field), word, std::uint8_t{0xff});
        auto const found = tagsOf(file);
        EXPECT_EQ(found.leftOut, (std::set<std::uint16_t>{900})) << field;
        ASSERT_EQ(found.tags.size(), 1U) << field;
        EXPECT_EQ(found.tags[0].number(), 901) << field;
    }
}

TEST_P(TiffTagsTest, AnyTruncatedFileComesToAnEnd) {
    Directory directory = allTypes();
    directory.inner[34665].tags[33434] = {5, {1, 125}};
    Bytes const whole = rawtiff::structure(directory, GetParam());
    for (size_t bytes = 0; bytes < whole.size(); ++bytes) {
        Bytes const file(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(bytes));
        EXPECT_LE(tagsOf(file).tags.size(), directory.tags.size() + 1);
    }
}

TEST(TiffTagsOfExifTest, TheMarkerIsPassedOver) {
    Directory directory;
    directory.tags[274] = {3, {6}};
    Bytes block = rawtiff::structure(directory, {true, false});
    std::string const marker("Exif\0\0", 6);
    block.insert(block.begin(), marker.begin(), marker.end());
    EXPECT_EQ(valuesOf(tagsOf(block), "274"), (Bytes{6, 0}));
}

TEST(TiffTagsOfExifTest, NoBlockHasNoTags) {
    EXPECT_TRUE(tagsOf({}).tags.empty());
    EXPECT_TRUE(tagsOf({'E', 'x', 'i', 'f', 0, 0}).tags.empty());
}

TEST(TiffTagsOfExifTest, ADirectoryThatLeadsToItselfComesToAnEnd) {
    Directory directory;
    directory.inner[34665].tags[1] = {3, {1}};
    directory.inner[34853].tags[1] = {3, {1}};
    Bytes file = rawtiff::structure(directory, {});
    std::uint32_t first = 0;
    std::memcpy(&first, &file[4], 4);
    std::memcpy(&file[first + 2 + 8], &first, 4); // the first entry's value: its own directory
    EXPECT_LE(tagsOf(file).tags.size(), 4U);
}

// 65535 entries that share 60 KiB of values would be 4 GB.
TEST(TiffTagsOfExifTest, EntriesThatShareTheirValuesAreLimited) {
    Directory directory;
    for (std::uint16_t number = 1; number < 20000; ++number)
        directory.tags[number] = {3, {0}};
    Bytes file = rawtiff::structure(directory, {});
    file.resize(file.size() + 65536);
    std::uint32_t first = 0;
    std::memcpy(&first, &file[4], 4);
    std::uint32_t const count = 30000;
    std::uint32_t const offset = 8;
    for (size_t entry = 0; entry < directory.tags.size(); ++entry) {
        std::memcpy(&file[first + 2 + 12 * entry + 4], &count, 4);
        std::memcpy(&file[first + 2 + 12 * entry + 8], &offset, 4);
    }
    auto const found = tagsOf(file);
    size_t bytes = 0;
    for (TiffTag const& tag : found.tags)
        bytes += tag.values.size();
    EXPECT_LE(bytes, size_t{1} << 26);
    EXPECT_EQ(found.tags.size() + found.leftOut.size(), directory.tags.size());
}

TEST(TiffTagNamesTest, ANameIsReadBack) {
    for (std::vector<std::uint16_t> const& path :
         {std::vector<std::uint16_t>{34735}, {34665, 33434}, {34665, 40965, 1}, {0}})
        EXPECT_EQ(tifftags::pathOf(tifftags::nameOf(path)), path);
    EXPECT_EQ(tifftags::nameOf({34665, 33434}), "34665/33434");
}

TEST(TiffTagNamesTest, OtherTextsNameNoTag) {
    for (char const* const text : {"", "a", "1/", "/1", "1//2", "65536", "-1", "01", "1 ", "1/x"})
        EXPECT_THROW(tifftags::pathOf(text), std::invalid_argument) << text;
}
