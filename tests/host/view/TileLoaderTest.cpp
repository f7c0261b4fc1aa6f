#include "host/view/TileLoader.h"

#include "host/HostError.h"
#include "host/store/Sqlite.h"
#include "host/view/BandReader.h"
#include "tests/host/store/TestPictures.h"
#include "tests/host/view/BandParts.h"
#include "tests/support/FailingThreads.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

constexpr size_t kCacheBytes = 10 * 1000 * 1000;

class TileLoaderTest : public testing::Test {
protected:
    StoreInfo import(Picture const& picture, size_t tileSize = 32) const {
        ImportOptions options;
        options.tileSize = tileSize;
        options.replace = true;
        return testpictures::import(picture, path(), options);
    }

    std::unique_ptr<LoadedTile> next(TileLoader& loader) const {
        while (true) {
            if (auto tile = loader.take()) return tile;
            if (loader.pending() == 0) return nullptr;
            loader.wait(1000ms);
        }
    }

    static std::vector<LevelTile> tilesOf(StoreInfo const& info, size_t level) {
        Size const extent = leveltile::levelExtent(info, level);
        return leveltile::over(level, {0, 0, extent.width, extent.height});
    }

    std::string path() const { return folder_.path("a.vlm"); }
    std::shared_ptr<SampleCache> cache(size_t bytes = kCacheBytes) const {
        return std::make_shared<SampleCache>(bytes);
    }

    TemporaryFolder folder_;
};

std::vector<TileJob> bandsOf(std::vector<LevelTile> const& tiles) {
    std::vector<TileJob> jobs;
    jobs.reserve(tiles.size());
    for (LevelTile const& tile : tiles)
        jobs.push_back({tile});
    return jobs;
}

// A sample of a band, looked up in the store's tiles one by one.
std::int16_t sampleOf(TileStore& store, size_t level, BandPart const& part, size_t x, size_t y) {
    size_t const side = store.info().tileSize;
    return store.tile({level, part.band, part.plane, x / side, y / side})[y % side * side + x % side];
}

void expectPartsOf(TileStore& store, LoadedTile const& tile) {
    size_t const level = std::min(tile.job.tile.level + 1, store.info().levels);
    for (BandPart const& part : tile.parts) {
        // Some of them: each look-up decompresses a tile.
        for (size_t y = 0; y < part.region.height; y += 7) {
            for (size_t x = 0; x < part.region.width; x += 13) {
                size_t const place = 2 * (y * part.region.width + x);
                auto const sample = part.value
                                        ? *part.value
                                        : static_cast<std::int16_t>(part.bytes[place] | part.bytes[place + 1] << 8U);
                ASSERT_EQ(sample, sampleOf(store, level, part, part.region.x + x, part.region.y + y));
            }
        }
    }
}

} // namespace

TEST_F(TileLoaderTest, EveryTileComesOnceWithTheSamplesOfTheStore) {
    StoreInfo const info = import(testpictures::picture(700, 530, 3, 8, Content::Noise), 64);
    TileStore store(path());
    for (size_t const threads : {1U, 2U, 8U}) {
        TileLoader loader(bandReaders(path(), threads, cache()));
        std::vector<LevelTile> wanted;
        for (size_t level = 0; level <= info.levels; ++level) {
            auto const tiles = tilesOf(info, level);
            wanted.insert(wanted.end(), tiles.begin(), tiles.end());
        }
        loader.want(bandsOf(wanted));
        std::set<LevelTile> got;
        while (auto const tile = next(loader)) {
            EXPECT_TRUE(got.insert(tile->job.tile).second);
            EXPECT_EQ(tile->parts.size(), tile->job.tile.level == info.levels ? 3U : 9U);
            if (threads == 1) expectPartsOf(store, *tile);
        }
        EXPECT_EQ(got, std::set<LevelTile>(wanted.begin(), wanted.end()));
    }
}

TEST_F(TileLoaderTest, OneThreadReadsInTheOrderThatIsWanted) {
    StoreInfo const info = import(testpictures::picture(2100, 530, 1, 8, Content::Ramp));
    auto wanted = tilesOf(info, 0);
    std::swap(wanted[0], wanted[3]);
    TileLoader loader(bandReaders(path(), 1, cache()));
    loader.want(bandsOf(wanted));
    for (LevelTile const& tile : wanted)
        EXPECT_TRUE(next(loader)->job.tile == tile);
}

TEST_F(TileLoaderTest, WhatWaitsIsDroppedWhenOtherTilesAreWanted) {
    StoreInfo const info = import(testpictures::picture(6000, 5000, 1, 8, Content::Flat), 256);
    auto const many = tilesOf(info, 0);
    ASSERT_GT(many.size(), 100U);
    TileLoader loader(bandReaders(path(), 1, cache()));
    loader.want(bandsOf(many));
    // The thread rests when so many are finished that nobody has taken.
    while (loader.pending() < many.size())
        loader.wait(1ms);
    LevelTile const other = tilesOf(info, 1).front();
    loader.want(bandsOf({other}));
    size_t before = 0;
    while (!(next(loader)->job.tile == other))
        ++before;
    EXPECT_LE(before, 17U);
    EXPECT_EQ(next(loader), nullptr);
}

TEST_F(TileLoaderTest, TilesThatAreFinishedAreNotReadAgain) {
    StoreInfo const info = import(testpictures::picture(600, 500, 1, 8, Content::Noise));
    auto const tiles = tilesOf(info, 0);
    TileLoader loader(bandReaders(path(), 2, cache()));
    for (int i = 0; i < 50; ++i)
        loader.want(bandsOf(tiles));
    size_t count = 0;
    while (next(loader))
        ++count;
    EXPECT_EQ(count, tiles.size());
}

TEST_F(TileLoaderTest, TilesThatCannotBeReadComeOutWithTheFailure) {
    StoreInfo const info = import(testpictures::picture(1500, 1400, 3, 8, Content::Noise), 256);
    sqlite::Database(path(), sqlite::Database::Mode::ReadWrite)
        .execute("UPDATE tiles SET crc = crc + 1 WHERE id = (SELECT min(id) FROM tiles WHERE data IS NOT NULL)");
    auto const tiles = tilesOf(info, 0);
    TileLoader loader(bandReaders(path(), 2, cache()));
    for (int again = 0; again < 2; ++again) {
        loader.want(bandsOf(tiles));
        std::set<LevelTile> got;
        size_t failed = 0;
        while (auto const tile = next(loader)) {
            EXPECT_TRUE(got.insert(tile->job.tile).second);
            if (!tile->failure) continue;
            ++failed;
            EXPECT_TRUE(tile->parts.empty());
            EXPECT_THROW(std::rethrow_exception(tile->failure), HostError);
        }
        EXPECT_EQ(got.size(), tiles.size()) << "the others come all the same";
        EXPECT_EQ(failed, 1U);
    }
}

TEST_F(TileLoaderTest, TheThreadsThatTheSystemGivesDoTheWork) {
    StoreInfo const info = import(testpictures::picture(1200, 1100, 1, 8, Content::Noise));
    auto const tiles = tilesOf(info, 0);
    for (size_t const given : {0U, 1U, 3U}) {
        std::unique_ptr<TileLoader> loader;
        {
            ThreadLimit const limit(given);
            loader = std::make_unique<TileLoader>(bandReaders(path(), 4, cache()));
            EXPECT_EQ(ThreadLimit::refused(), 1U);
        }
        EXPECT_EQ(loader->threads(), given);
        loader->want(bandsOf(tiles));
        std::set<LevelTile> got;
        while (auto const tile = next(*loader)) {
            EXPECT_FALSE(tile->failure);
            got.insert(tile->job.tile);
        }
        EXPECT_EQ(got, std::set<LevelTile>(tiles.begin(), tiles.end())) << given;
        loader->wait(100000ms);       // returns: nothing is in work
        loader->want(bandsOf(tiles)); // and goes while tiles wait
    }
}

TEST_F(TileLoaderTest, ALoaderGoesWhileTilesWait) {
    StoreInfo const info = import(testpictures::picture(3000, 3000, 1, 8, Content::Noise), 256);
    for (int i = 0; i < 10; ++i) {
        TileLoader loader(bandReaders(path(), 4, cache()));
        loader.want(bandsOf(tilesOf(info, 0)));
        loader.wait(std::chrono::milliseconds(i));
    }
    TileLoader idle(bandReaders(path(), 4, cache()));
    idle.wait(100000ms); // returns: nothing is in work
    EXPECT_EQ(idle.pending(), 0U);
}

TEST_F(TileLoaderTest, AMissingStoreIsKnownAtOnce) {
    EXPECT_THROW(bandReaders(folder_.path("none"), 2, cache()), HostError);
}

TEST_F(TileLoaderTest, CacheKeepsNoMoreThanItsBudget) {
    import(testpictures::picture(700, 530, 3, 8, Content::Noise), 64);
    auto const small = cache(20000);
    BandReader reader(path(), small);
    auto const first = partsOf(reader, {0, 0, 0});
    EXPECT_GT(small->bytes(), 0U);
    EXPECT_LE(small->bytes(), 20000U);
    BandReader roomy(path(), cache());
    auto const second = partsOf(roomy, {0, 0, 0});
    ASSERT_EQ(first.size(), second.size());
    for (size_t i = 0; i < first.size(); ++i)
        EXPECT_EQ(first[i].bytes, second[i].bytes);
}

TEST_F(TileLoaderTest, FlatAreasAreOneValueWithoutSamples) {
    import(testpictures::picture(700, 530, 3, 8, Content::Flat), 64);
    BandReader reader(path(), cache());
    for (BandPart const& part : partsOf(reader, {0, 0, 0})) {
        EXPECT_EQ(part.value, 0);
        EXPECT_TRUE(part.bytes.empty());
    }
}

namespace {

// Room for one tile, which counts how often it is written.
class CountingRoom final : public ConcurrentStagingBuffer {
public:
    CountingRoom(std::vector<std::uint8_t>& to, std::atomic<int>& writes) : to_(to), writes_(writes) {}

    void write(std::vector<std::uint8_t> const& pixels, size_t offset) override {
        to_.assign(pixels.begin() + static_cast<std::ptrdiff_t>(offset), pixels.end());
        ++writes_;
    }
    bool ready() const override { return true; }
    void* nativeHandle() const override { return nullptr; }
    std::shared_ptr<void> keepAlive() const override { return nullptr; }

private:
    std::vector<std::uint8_t>& to_;
    std::atomic<int>& writes_;
};

// Says that it reads, once, and reads nothing before it is let go.
class WaitingReader final : public TileReader {
public:
    WaitingReader(std::promise<void>& reading, std::shared_future<void> go) : reading_(reading), go_(std::move(go)) {}

    void read(LoadedTile& /*tile*/) override {
        if (!told_) reading_.set_value();
        told_ = true;
        go_.wait();
    }

private:
    std::promise<void>& reading_;
    std::shared_future<void> go_;
    bool told_ = false;
};

class HandedTilesTest : public testing::Test {
protected:
    std::unique_ptr<LoadedTile> tile() {
        auto tile = std::make_unique<LoadedTile>();
        tile->job.tile = {0, 7, 7};
        tile->pixels = {1, 2, 3};
        tile->room = std::make_unique<CountingRoom>(room_, writes_);
        return tile;
    }
    std::vector<std::unique_ptr<TileReader>> reader() {
        std::vector<std::unique_ptr<TileReader>> readers;
        readers.push_back(std::make_unique<WaitingReader>(reading_, go_.get_future().share()));
        return readers;
    }

    std::promise<void> reading_;
    std::promise<void> go_;
    std::vector<std::uint8_t> room_;
    std::atomic<int> writes_{0};
};

} // namespace

TEST_F(HandedTilesTest, AThreadCopiesThemAndTheyAreTakenOnceMore) {
    TileLoader loader(reader());
    loader.hand(tile());
    loader.wait(10s);
    auto const copied = loader.take();
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->job.tile.column, 7U);
    EXPECT_EQ(room_, (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(writes_, 1);
    EXPECT_EQ(loader.pending(), 0U);
}

TEST_F(HandedTilesTest, TheCallerCopiesThemWhereThreadsRead) {
    TileLoader loader(reader());
    loader.want({{{0, 0, 0}}});
    reading_.get_future().wait();
    loader.hand(tile());
    loader.copyHanded();
    EXPECT_EQ(writes_, 1);
    EXPECT_EQ(loader.pending(), 2U);
    go_.set_value();
}

TEST_F(HandedTilesTest, ClosingCopiesThemAndReadsNothingMore) {
    TileLoader loader(reader());
    loader.want({{{0, 0, 0}}, {{0, 1, 0}}});
    go_.set_value();
    loader.hand(tile());
    loader.close();
    EXPECT_EQ(writes_, 1);
    bool handed = false;
    while (auto const taken = loader.take())
        handed = handed || taken->job.tile.column == 7;
    EXPECT_TRUE(handed);
    EXPECT_EQ(loader.take(), nullptr);
}
