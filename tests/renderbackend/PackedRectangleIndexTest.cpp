#include "renderbackend/PackedRectangleIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace {

using Corner = DataEnvelopes::Corner;
using Cells = std::vector<std::vector<unsigned int>>;

// Where a cell of a square comes on the Hilbert curve that starts in its upper left corner and ends in the upper right.
std::uint64_t onCurve(std::uint64_t x, std::uint64_t y, std::uint64_t side) {
    if (side == 1) return 0;
    std::uint64_t const half = side / 2;
    std::uint64_t const quarter = half * half;
    bool const isRight = x >= half;
    bool const isLower = y >= half;
    x %= half;
    y %= half;
    if (isLower) return (isRight ? 2 : 1) * quarter + onCurve(x, y, half);
    return isRight ? 3 * quarter + onCurve(half - 1 - y, half - 1 - x, half) : onCurve(y, x, half);
}

// Of the rectangles that the cells make, in the order of the tree: the places of their centres on the curve through the
// least square around all of them whose side is a power of two.
std::vector<std::uint64_t> placesOf(Cells const& cells) {
    DataEnvelopes envelopes;
    envelopes.set({}, {{{}, cells}});
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    auto const rectangles = envelopes.envelopes({0, 0}, {kMost, kMost}); // min x, max x, min y, max y
    auto const least = [&](size_t i) {
        return (*std::min_element(rectangles.begin(), rectangles.end(),
                                  [i](auto const& a, auto const& b) { return a[i] < b[i]; }))[i];
    };
    auto const most = [&](size_t i) {
        return (*std::max_element(rectangles.begin(), rectangles.end(),
                                  [i](auto const& a, auto const& b) { return a[i] < b[i]; }))[i];
    };
    std::uint64_t side = 1;
    while (side <= std::max(most(1) - least(0), most(3) - least(2)))
        side *= 2;
    std::vector<std::uint64_t> places;
    places.reserve(rectangles.size());
    for (auto const& r : rectangles)
        places.push_back(onCurve((r[0] + r[1]) / 2 - least(0), (r[2] + r[3]) / 2 - least(2), side));
    return places;
}

TEST(PackedRectangleIndexTest, CellsFollowTheHilbertCurve) {
    for (std::uint32_t const side : {1U, 2U, 4U, 16U, 64U}) {
        Cells cells; // a chequerboard: each is a rectangle of its own
        for (std::uint32_t y = 0; y < side; ++y) {
            for (std::uint32_t x = y % 2; x < side; x += 2)
                cells.push_back({70 + x, 10 + y});
        }
        auto const places = placesOf(cells);
        EXPECT_EQ(places.size(), cells.size());
        EXPECT_TRUE(std::is_sorted(places.begin(), places.end())) << side;
    }
}

TEST(PackedRectangleIndexTest, RectanglesFollowTheCurveByTheirCentres) {
    std::mt19937 engine(3);
    auto const below = [&engine](std::uint32_t bound) { return static_cast<std::uint32_t>(engine() % bound); };
    Cells cells;
    constexpr std::uint32_t kBlocks = 25;
    for (std::uint32_t block = 0; block < kBlocks * kBlocks; ++block) {
        std::uint32_t const x = 500 + block % kBlocks * 40 + below(20);
        std::uint32_t const y = 8000 + block / kBlocks * 40 + below(20);
        std::uint32_t const width = 1 + below(19);
        std::uint32_t const height = 1 + below(19);
        for (std::uint32_t row = y; row < y + height; ++row) {
            for (std::uint32_t column = x; column < x + width; ++column)
                cells.push_back({column, row});
        }
    }
    auto const places = placesOf(cells);
    EXPECT_EQ(places.size(), kBlocks * kBlocks);
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
}

} // namespace
