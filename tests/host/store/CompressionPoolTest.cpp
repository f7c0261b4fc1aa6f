#include "host/store/CompressionPool.h"

#include "tests/support/FailingThreads.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

using Samples = std::vector<std::int16_t>;

StoreInfo infoOf(size_t side) {
    StoreInfo info;
    info.width = info.height = side;
    info.bands = 1;
    info.tileSize = 16;
    return info;
}

Samples noise(unsigned number) {
    std::mt19937 random(number);
    Samples samples(16 * 16);
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(random());
    return samples;
}

RawTile tileOf(size_t column, Samples const& samples) {
    return {{1, Band::HL, 0, column, 0}, {16, 16}, samples};
}

} // namespace

TEST(CompressionPoolTest, EveryTileComesOutOnceWhateverTheNumberOfJobs) {
    constexpr size_t kTiles = 500;
    for (size_t const jobs : {1u, 2u, 7u}) {
        StoreInfo const info = infoOf(32 * kTiles);
        TileCodec codec(info);
        std::map<size_t, Samples> decoded;
        auto const keep = [&](std::vector<StoredTile> const& tiles) {
            for (StoredTile const& tile : tiles)
                EXPECT_TRUE(decoded.emplace(tile.address.column, codec.decode(tile).value()).second);
        };
        CompressionPool pool(info, jobs);
        for (size_t column = 0; column < kTiles; ++column) {
            pool.add(tileOf(column, noise(static_cast<unsigned>(column))));
            keep(pool.take());
        }
        keep(pool.finish());
        ASSERT_EQ(decoded.size(), kTiles);
        for (auto const& [column, samples] : decoded)
            EXPECT_EQ(samples, noise(static_cast<unsigned>(column)));
    }
}

TEST(CompressionPoolTest, TheThreadsThatTheSystemGivesDoTheWork) {
    constexpr size_t kTiles = 100;
    for (size_t const given : {0u, 1u, 2u}) {
        ThreadLimit const limit(given);
        StoreInfo const info = infoOf(32 * kTiles);
        TileCodec codec(info);
        std::map<size_t, Samples> decoded;
        auto const keep = [&](std::vector<StoredTile> const& tiles) {
            for (StoredTile const& tile : tiles)
                EXPECT_TRUE(decoded.emplace(tile.address.column, codec.decode(tile).value()).second);
        };
        CompressionPool pool(info, 4);
        EXPECT_EQ(ThreadLimit::refused(), 1u);
        for (size_t column = 0; column < kTiles; ++column) {
            pool.add(tileOf(column, noise(static_cast<unsigned>(column))));
            if (column == kTiles / 2) keep(pool.take());
        }
        keep(pool.finish());
        ASSERT_EQ(decoded.size(), kTiles) << given;
        for (auto const& [column, samples] : decoded)
            EXPECT_EQ(samples, noise(static_cast<unsigned>(column)));
    }
}

TEST(CompressionPoolTest, ItEndsInTheMiddleOfItsWork) {
    for (size_t tiles = 0; tiles < 40; ++tiles) {
        CompressionPool pool(infoOf(10'000), 3);
        for (size_t column = 0; column < tiles; ++column)
            pool.add(tileOf(column, noise(1)));
    }
}
