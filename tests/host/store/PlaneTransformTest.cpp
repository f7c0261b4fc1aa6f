#include "host/store/PlaneTransform.h"
#include "reference/LeGall53Plane.h"
#include "tests/host/store/WaveletModel.h"

#include <gtest/gtest.h>

#include <map>

using Plane64 = waveletmodel::Plane;

namespace {

using Sample = PlaneTransform::Sample;
using Key = std::pair<size_t, Band>; // level, band

StoreInfo infoOf(size_t width, size_t height, size_t tileSize, size_t levels) {
    StoreInfo info;
    info.width = width;
    info.height = height;
    info.bands = 1;
    info.tileSize = tileSize;
    info.levels = levels;
    return info;
}

void push(PlaneTransform& transform, Plane64 const& plane) {
    std::vector<Sample> row(static_cast<size_t>(plane.width));
    for (std::int64_t y = 0; y < plane.height; ++y) {
        for (std::int64_t x = 0; x < plane.width; ++x)
            row[static_cast<size_t>(x)] = static_cast<Sample>(plane.at(x, y));
        transform.push(row.data());
    }
}

// Every band as one plane of whole tiles, assembled from the tiles.
std::map<Key, reference::Plane> assembledBands(StoreInfo const& info, Plane64 const& plane) {
    std::map<Key, reference::Plane> bands;
    size_t tiles = 0;
    PlaneTransform transform(info, 0, [&](RawTile&& tile) {
        ++tiles;
        TileAddress const& at = tile.address;
        EXPECT_TRUE(storegeometry::contains(info, at)) << toText(at);
        Size const count = storegeometry::tileCount(info, at.level);
        int const side = static_cast<int>(info.tileSize);
        auto& band = bands
                         .try_emplace({at.level, at.band}, static_cast<int>(count.width) * side,
                                      static_cast<int>(count.height) * side)
                         .first->second;
        ASSERT_EQ(tile.samples.size(), info.tileSize * info.tileSize);
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x) {
                Sample const sample = tile.samples.at(static_cast<size_t>(y) * info.tileSize + static_cast<size_t>(x));
                bool const filled = x < static_cast<int>(tile.filled.width) && y < static_cast<int>(tile.filled.height);
                if (!filled) {
                    ASSERT_EQ(sample, 0) << toText(at);
                }
                band.at(static_cast<int>(at.column) * side + x, static_cast<int>(at.row) * side + y) = sample;
            }
    });
    push(transform, plane);
    EXPECT_EQ(tiles, storegeometry::totalTiles(info));
    return bands;
}

// The part of a plane; the high bands' tiles start one sample earlier, so the same indices are one position earlier.
reference::Plane window(reference::Plane const& plane, int x0, int y0, int width, int height) {
    reference::Plane part(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            part.at(x, y) = plane.at(x0 + x, y0 + y);
    return part;
}

// The GPU's result for windows of equal size of the four bands: columns first.
reference::Plane rebuilt(reference::Plane const& ll, reference::Plane const& hl, reference::Plane const& lh,
                         reference::Plane const& hh) {
    return reference::inverseFilter53Horizontal(reference::inverseFilter53Vertical(ll, lh),
                                                reference::inverseFilter53Vertical(hl, hh));
}

void expectPart(reference::Plane const& part, Plane64 const& whole, int x0, int y0) {
    for (int y = 0; y < part.height && y0 + y < whole.height; ++y)
        for (int x = 0; x < part.width && x0 + x < whole.width; ++x)
            ASSERT_EQ(part.at(x, y), whole.at(x0 + x, y0 + y)) << x0 + x << ", " << y0 + y;
}

struct Case {
    size_t width, height, tileSize, levels;
};

class PlaneTransformSizesTest : public testing::TestWithParam<Case> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(Sizes, PlaneTransformSizesTest,
                         testing::Values(Case{1, 1, 16, 1}, Case{1, 1, 16, 5}, Case{1, 100, 16, 4}, Case{100, 1, 16, 4},
                                         Case{2, 3, 16, 3}, Case{16, 16, 16, 1}, Case{17, 31, 16, 2},
                                         Case{63, 64, 16, 3}, Case{65, 66, 32, 5}, Case{127, 40, 16, 4}),
                         [](auto const& test) {
                             Case const& c = test.param;
                             return std::to_string(c.width) + "x" + std::to_string(c.height) + "Tile" +
                                    std::to_string(c.tileSize) + "Levels" + std::to_string(c.levels);
                         });

TEST_P(PlaneTransformSizesTest, EveryLevelIsRebuiltUpToItsEdgesByTheFiltersAlone) {
    Case const& c = GetParam();
    StoreInfo const info = infoOf(c.width, c.height, c.tileSize, c.levels);
    std::mt19937 random(7);
    std::vector<Plane64> truth{
        waveletmodel::noise(static_cast<std::int64_t>(c.width), static_cast<std::int64_t>(c.height), 0, 1000, random)};
    for (size_t level = 1; level <= c.levels; ++level)
        truth.push_back(waveletmodel::coarser(truth.back()));
    auto const bands = assembledBands(info, truth.front());

    reference::Plane low = bands.at({c.levels, Band::LL});
    expectPart(low, truth[c.levels], 0, 0);
    for (size_t level = c.levels; level > 0; --level) {
        Size const extent = storegeometry::bandExtent(info, level);
        int const width = static_cast<int>(extent.width);
        int const height = static_cast<int>(extent.height);
        auto const whole = [&](Band band) { return window(bands.at({level, band}), 0, 0, width, height); };
        low = rebuilt(window(low, 0, 0, width, height), whole(Band::HL), whole(Band::LH), whole(Band::HH));
        ASSERT_GE(low.width, truth[level - 1].width);
        ASSERT_GE(low.height, truth[level - 1].height);
        expectPart(low, truth[level - 1], 0, 0);
    }
}

TEST(PlaneTransformTest, AWindowOfTheBandsRebuildsItsPartOfTheLevelBelow) {
    StoreInfo const info = infoOf(150, 130, 16, 2);
    std::mt19937 random(8);
    Plane64 const picture = waveletmodel::noise(150, 130, -500, 500, random);
    auto const bands = assembledBands(info, picture);
    Plane64 const low = waveletmodel::coarser(picture);
    reference::Plane lowPlane(static_cast<int>(low.width), static_cast<int>(low.height));
    for (int y = 0; y < lowPlane.height; ++y)
        for (int x = 0; x < lowPlane.width; ++x)
            lowPlane.at(x, y) = static_cast<std::int32_t>(low.at(x, y));
    // Windows that lie across tile borders, and those at the right and bottom edge.
    for (auto const& [a, b, width, height] : std::vector<std::array<int, 4>>{
             {0, 0, 20, 10}, {14, 6, 8, 36}, {30, 46, 36, 22}, {lowPlane.width - 12, lowPlane.height - 18, 12, 18}}) {
        auto const part = [&, a = a, b = b, width = width, height = height](Band band) {
            return window(bands.at({1, band}), a, b, width, height);
        };
        expectPart(rebuilt(window(lowPlane, a, b, width, height), part(Band::HL), part(Band::LH), part(Band::HH)),
                   picture, 2 * a, 2 * b);
    }
}

TEST(PlaneTransformTest, WhatItHoldsDoesNotGrowWithTheHeight) {
    auto const held = [](size_t width, size_t height) {
        PlaneTransform const transform(infoOf(width, height, 64, 6), 0, [](RawTile&&) {});
        return transform.bufferedSamples();
    };
    size_t const tall = held(300, 10'000);
    EXPECT_EQ(held(300, 10'000'000), tall);
    EXPECT_LT(tall, 6 * (64 + 16) * 4 * 300u);
    // Tiles come out while rows go in: after all but a few rows only those of the last rows are missing.
    size_t tiles = 0;
    StoreInfo const info = infoOf(20, 5000, 16, 3);
    PlaneTransform transform(info, 0, [&](RawTile&&) { ++tiles; });
    std::vector<Sample> const row(20, 9);
    for (size_t y = 0; y < 5000 - 16; ++y)
        transform.push(row.data());
    Size const finest = storegeometry::tileCount(info, 1);
    EXPECT_GT(tiles, storegeometry::totalTiles(info) - 24 * finest.width);
}

TEST(PlaneTransformTest, AutomaticLevelsEndWhereTheLongerSideFitsInATile) {
    for (size_t const side : {1u, 200u, 252u, 253u, 1000u, 16384u, 30000u})
        for (size_t const tile : {16u, 64u, 256u}) {
            size_t const levels = storegeometry::autoLevels(side, 3, tile);
            EXPECT_EQ(storegeometry::autoLevels(3, side, tile), levels);
            EXPECT_LE(storegeometry::bandExtent(infoOf(side, 3, tile, levels), levels).width, tile);
            EXPECT_TRUE(levels == 1 ||
                        storegeometry::bandExtent(infoOf(side, 3, tile, levels), levels - 1).width > tile);
        }
    EXPECT_EQ(storegeometry::autoLevels(size_t{1} << 27, 1, 16), StoreInfo::kMaxLevels);
}
