#include "reference/Blit.h"

#include <gtest/gtest.h>

#include <numeric>
#include <stdexcept>

namespace {

using namespace reference;

TEST(BlitTest, CopiesTheRectangleAndLeavesTheRest) {
    Texels source(3, 2);
    std::iota(source.bytes.begin(), source.bytes.end(), std::uint8_t{1});
    Texels destination(4, 3);
    blit(source, 1, 0, 2, 2, destination, 2, 1);
    EXPECT_EQ(destination.at(2, 1), (Texel{5, 6, 7, 8}));
    EXPECT_EQ(destination.at(3, 1), (Texel{9, 10, 11, 12}));
    EXPECT_EQ(destination.at(2, 2), (Texel{17, 18, 19, 20}));
    EXPECT_EQ(destination.at(3, 2), (Texel{21, 22, 23, 24}));
    EXPECT_EQ(std::accumulate(destination.bytes.begin(), destination.bytes.begin() + 24, 0), 0);
}

TEST(BlitTest, CroppedIsTheRectangleAlone) {
    Texels source(3, 2);
    std::iota(source.bytes.begin(), source.bytes.end(), std::uint8_t{0});
    EXPECT_EQ(cropped(source, 2, 0, 1, 2), Texels(1, 2, {8, 9, 10, 11, 20, 21, 22, 23}));
    EXPECT_EQ(cropped(source, 0, 0, 3, 2), source);
    EXPECT_THROW(cropped(source, 2, 0, 2, 1), std::out_of_range);
}

} // namespace
