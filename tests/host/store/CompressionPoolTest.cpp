#include "host/store/CompressionPool.h"

#include "tests/host/store/TestTiles.h"
#include "tests/support/FailingThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;

namespace {

using testtiles::infoOf;
using testtiles::noise;
using testtiles::Samples;
using testtiles::tileOf;

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

namespace {

// Encoders that wait until they are released.
class Gate {
public:
    CompressionPool::EncoderMaker encoders() {
        return [this] {
            ++makers_;
            return [this](RawTile const& tile) {
                std::unique_lock<std::mutex> lock(mutex_);
                ++begun_;
                changed_.notify_all();
                changed_.wait(lock, [this] { return open_; });
                return StoredTile{tile.address, std::int16_t{0}, 0, {}};
            };
        };
    }

    void open() {
        std::lock_guard<std::mutex> const lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

    // Waits until this many have begun; a test that waits for more runs into its time limit.
    void waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return begun_ >= count; });
    }

    size_t begun() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return begun_;
    }

    size_t makers() const { return makers_; }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    size_t begun_ = 0;
    bool open_ = false;
    std::atomic<size_t> makers_{0};
};

// A pool whose encoders fail, from the tile of a column on.
CompressionPool::EncoderMaker failingFrom(size_t column) {
    return [column] {
        return [column](RawTile const& tile) {
            if (tile.address.column >= column) throw std::runtime_error("zstd fails");
            return StoredTile{tile.address, std::int16_t{0}, 0, {}};
        };
    };
}

} // namespace

TEST(CompressionPoolTest, AReaderThatIsFasterWaits) {
    for (size_t const jobs : {1u, 3u}) {
        Gate gate;
        std::atomic<size_t> added{0};
        CompressionPool pool(gate.encoders(), jobs);
        size_t const room = jobs + 16 * jobs; // in work and in the queue
        std::thread reader([&] {
            for (size_t column = 0; column < room + 5; ++column, ++added)
                pool.add(tileOf(column, noise(1)));
        });
        gate.waitFor(jobs);
        while (added < room)
            std::this_thread::sleep_for(1ms);
        // It may come a little later, but it has to stay away for good.
        std::this_thread::sleep_for(50ms);
        EXPECT_EQ(added, room);
        EXPECT_EQ(gate.begun(), jobs);
        gate.open();
        reader.join();
        EXPECT_EQ(pool.finish().size(), room + 5);
        EXPECT_EQ(gate.makers(), jobs) << "one a thread";
    }
}

TEST(CompressionPoolTest, WithoutJobsThereIsOne) {
    Gate gate;
    gate.open();
    std::atomic<bool> isReaders{false};
    CompressionPool pool(
        [&, reader = std::this_thread::get_id()] {
            if (std::this_thread::get_id() == reader) isReaders = true;
            return gate.encoders()();
        },
        0);
    for (size_t column = 0; column < 40; ++column)
        pool.add(tileOf(column, noise(1)));
    EXPECT_EQ(pool.finish().size(), 40u);
    EXPECT_EQ(gate.makers(), 1u);
    EXPECT_FALSE(isReaders) << "a thread, not the reader's own";
}

TEST(CompressionPoolTest, TilesThatWaitAtItsEndAreDropped) {
    std::atomic<size_t> encoded{0};
    {
        CompressionPool pool(
            [&] {
                return [&](RawTile const& tile) {
                    std::this_thread::sleep_for(50ms);
                    ++encoded;
                    return StoredTile{tile.address, std::int16_t{0}, 0, {}};
                };
            },
            2);
        for (size_t column = 0; column < 32; ++column)
            pool.add(tileOf(column, noise(1)));
    }
    EXPECT_LT(encoded, 32u) << "which would have taken most of a second";
}

TEST(CompressionPoolTest, WhatAThreadThrowsReachesTheReader) {
    for (size_t const jobs : {1u, 4u}) {
        CompressionPool pool(failingFrom(0), jobs);
        EXPECT_THROW(
            {
                for (size_t column = 0; column < 1000; ++column)
                    pool.add(tileOf(column, noise(1)));
            },
            std::runtime_error)
            << "also one that waits for room, which nobody will make";
        EXPECT_THROW(pool.take(), std::runtime_error);
        EXPECT_THROW(pool.finish(), std::runtime_error);
    }
}

TEST(CompressionPoolTest, AReaderThatWaitsForRoomIsToldWhatAThreadThrows) {
    constexpr size_t kRoom = 1 + 16; // in work and in the queue
    std::atomic<size_t> added{0};
    CompressionPool pool(
        [&] {
            return [&](RawTile const&) -> StoredTile {
                while (added < kRoom)
                    std::this_thread::sleep_for(1ms);
                // The reader is about to wait for room that is never made.
                std::this_thread::sleep_for(50ms);
                throw std::runtime_error("zstd fails");
            };
        },
        1);
    for (; added < kRoom; ++added)
        pool.add(tileOf(added, noise(1)));
    EXPECT_THROW(pool.add(tileOf(kRoom, noise(1))), std::runtime_error);
}

TEST(CompressionPoolTest, WhatTheLastTileThrowsReachesTheReaderAtTheEnd) {
    CompressionPool pool(failingFrom(7), 2);
    for (size_t column = 0; column < 8; ++column)
        pool.add(tileOf(column, noise(1)));
    EXPECT_THROW(pool.finish(), std::runtime_error);
}

TEST(CompressionPoolTest, AThreadThatCannotBeginReachesTheReaderToo) {
    CompressionPool pool([]() -> CompressionPool::Encoder { throw std::bad_alloc(); }, 2);
    EXPECT_THROW(
        {
            for (size_t column = 0; column < 1000; ++column)
                pool.add(tileOf(column, noise(1)));
        },
        std::bad_alloc);
}

TEST(CompressionPoolTest, WhatHasBeenTakenDoesNotComeAgain) {
    Gate gate;
    gate.open();
    CompressionPool pool(gate.encoders(), 1);
    pool.add(tileOf(0, noise(1)));
    std::vector<StoredTile> taken;
    while (taken.empty())
        taken = pool.take();
    EXPECT_EQ(taken.size(), 1u);
    EXPECT_TRUE(pool.take().empty());
    EXPECT_TRUE(pool.finish().empty());
}
