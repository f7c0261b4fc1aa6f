#include "host/view/EmptyAreas.h"

#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/ForwardingInstance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

namespace {

using testpictures::Content;
using testpictures::Picture;

// Counts the sets that are locked.
class CountingInstance final : public ForwardingInstance<CountingInstance> {
public:
    CountingInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : ForwardingInstance(std::move(instance), context) {}

    int locked() const { return locked_; }

private:
    friend ForwardingInstance<CountingInstance>;

    template <class Operation>
    auto call(char const* member, Operation const& operation) const -> decltype(operation()) {
        if (std::strcmp(member, "Instance::lockDataEnvelopes(") == 0) ++locked_;
        if (std::strcmp(member, "Instance::unlockDataEnvelopes(") == 0) --locked_;
        return operation();
    }

    int mutable locked_ = 0;
};

class EmptyAreasGLTest : public PictureViewFixture {
protected:
    // A flat picture with a few other pixels.
    StoreInfo importSpots(size_t width, size_t height, std::vector<std::array<size_t, 2>> const& spots) const {
        Picture picture = testpictures::picture(width, height, 1, 8, Content::Flat);
        for (auto const& [x, y] : spots)
            picture.bytes[y * width + x] ^= 0x40U;
        return import(picture, 32);
    }

    // Whether a tile of a level's high bands has a sample other than 0.
    static bool hasData(TileStore& store, size_t bandLevel, size_t column, size_t row) {
        return std::any_of(kHighBands.begin(), kHighBands.end(), [&](Band band) {
            return store.uniformValue({bandLevel, band, 0, column, row}) != std::int16_t{0};
        });
    }

    static constexpr std::array<Band, 3> kHighBands = {Band::HL, Band::LH, Band::HH};
};

} // namespace

TEST_F(EmptyAreasGLTest, ATileIsEmptyWhereAllHighBandsThatItIsRebuiltFromAre) {
    StoreInfo const info = importSpots(2600, 2200, {{1500, 700}, {40, 2150}, {2599, 0}, {1030, 1030}});
    ASSERT_GE(info.levels, 2U);
    TileStore store(path());
    EmptyAreas areas(instance_, store);
    size_t empty = 0;
    size_t others = 0;
    // The high bands of the coarsest level share their places with the lowest band, which has data everywhere.
    for (size_t level = 0; level + 1 < info.levels; ++level) {
        Size const extent = leveltile::levelExtent(info, level);
        for (LevelTile const& tile : leveltile::over(level, {0, 0, extent.width, extent.height})) {
            Region const bands = leveltile::bandRegion(info, tile);
            Size const cells = storegeometry::tileCount(info, level + 1);
            bool expected = true;
            for (size_t row = 0; row < cells.height; ++row) {
                for (size_t column = 0; column < cells.width; ++column) {
                    Region const shared = common({column * 32, row * 32, 32, 32}, bands);
                    if (shared.width > 0 && shared.height > 0 && hasData(store, level + 1, column, row))
                        expected = false;
                }
            }
            EXPECT_EQ(areas.empty(tile), expected) << tile.level << ": " << tile.column << "," << tile.row;
            ++(expected ? empty : others);
        }
    }
    EXPECT_GT(empty, 5U);
    EXPECT_GT(others, 3U);
    EXPECT_FALSE(areas.empty({info.levels, 0, 0})) << "the coarsest level is always read";
}

TEST_F(EmptyAreasGLTest, PartsWithDataAreTheTilesThatHaveSomeCutToTheRegion) {
    StoreInfo const info = importSpots(500, 400, {{250, 130}, {3, 390}, {499, 0}, {100, 100}, {101, 200}});
    ASSERT_GE(info.levels, 2U);
    TileStore store(path());
    EmptyAreas areas(instance_, store);
    size_t const cell = 64; // samples of level 0 along a tile of the bands
    for (Region const& region : {Region{0, 0, 500, 400},
                                 {60, 70, 200, 100},
                                 {64, 64, 64, 64},
                                 {63, 127, 1, 1},
                                 {499, 0, 1, 400},
                                 {200, 129, 100, 1}}) {
        std::vector<int> times(500 * 400, 0);
        for (Region const& area : areas.withData(0, region)) {
            for (size_t y = area.y; y < area.y + area.height; ++y) {
                for (size_t x = area.x; x < area.x + area.width; ++x)
                    ++times.at(y * 500 + x);
            }
        }
        for (size_t y = 0; y < 400; ++y) {
            for (size_t x = 0; x < 500; ++x) {
                bool const inside =
                    x >= region.x && x < region.x + region.width && y >= region.y && y < region.y + region.height;
                int const expected = inside && hasData(store, 1, x / cell, y / cell) ? 1 : 0;
                ASSERT_EQ(times[y * 500 + x], expected) << x << "," << y;
            }
        }
    }
}

TEST_F(EmptyAreasGLTest, SetsAreLockedAsLongAsItLives) {
    importSpots(500, 400, {{250, 130}});
    TileStore store(path());
    auto const counting = std::make_shared<CountingInstance>(instance_, context_);
    {
        EmptyAreas areas(counting, store);
        areas.empty({0, 0, 0});
        areas.empty({1, 0, 0});
        areas.withData(0, {0, 0, 500, 400});
        EXPECT_EQ(counting->locked(), 2) << "one per level";
    }
    EXPECT_EQ(counting->locked(), 0);
}
