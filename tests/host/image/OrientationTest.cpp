// Turning pictures upright.
#include "host/image/Orientation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

// A pixel is a letter, and a byte after it.
std::vector<std::uint8_t> pixelsOf(std::vector<std::string> const& rows) {
    std::vector<std::uint8_t> pixels;
    for (std::string const& row : rows)
        for (char const c : row) {
            pixels.push_back(static_cast<std::uint8_t>(c));
            pixels.push_back(static_cast<std::uint8_t>(c + 100));
        }
    return pixels;
}

std::vector<std::string> part(std::vector<std::string> const& rows, Region const& region) {
    std::vector<std::string> cut;
    for (size_t y = 0; y < region.height; ++y)
        cut.push_back(rows.at(region.y + y).substr(region.x, region.width));
    return cut;
}

} // namespace

// TIFF says where the first row and the first column are: 6: right, top.
TEST(OrientationTest, EveryRegionIsUpright) {
    std::vector<std::string> const file{"abc", "def"};
    std::vector<std::vector<std::string>> const upright{{"abc", "def"},     {"cba", "fed"},     {"fed", "cba"},
                                                        {"def", "abc"},     {"ad", "be", "cf"}, {"da", "eb", "fc"},
                                                        {"fc", "eb", "da"}, {"cf", "be", "ad"}};
    for (int tag = 1; tag <= 8; ++tag) {
        std::vector<std::string> const& expected = upright[static_cast<size_t>(tag - 1)];
        Size const size = orientation::turned({3, 2}, tag);
        ASSERT_EQ(size.width, expected.front().size()) << tag;
        ASSERT_EQ(size.height, expected.size()) << tag;
        EXPECT_EQ(orientation::swapsSides(tag), size.width == 2);
        EXPECT_EQ(orientation::turned(size, tag).width, 3u);
        for (size_t x = 0; x < size.width; ++x)
            for (size_t y = 0; y < size.height; ++y)
                for (size_t width = 1; x + width <= size.width; ++width)
                    for (size_t height = 1; y + height <= size.height; ++height) {
                        Region const region{x, y, width, height};
                        Region const inFile = orientation::inFile(region, {3, 2}, tag);
                        auto const read = pixelsOf(part(file, inFile));
                        std::vector<std::uint8_t> turned(read.size());
                        orientation::turn(read.data(), sizeOf(region), 2, tag, turned.data());
                        EXPECT_EQ(turned, pixelsOf(part(expected, region))) << tag << ": " << toText(region);
                    }
    }
}
