// Tiles from up to 32 writer threads through the upload ring, over the recording GL; every byte of each is compared.
// ThreadSanitizer checks that the ring alone orders the writers' stores to mapped memory and GL's reads.
#include "tests/gles3renderbackend/StagingRingRecordingTest.h"
#include "tests/support/LongRun.h"
#include "tests/support/WorkerThreads.h"

#include <deque>
#include <optional>
#include <random>
#include <utility>

namespace {

using namespace backendtest;

// A decoder's output for a tile, which the test expects in its texture.
Bytes decoded(size_t id, Sizes const& size) {
    std::minstd_rand random(static_cast<std::uint32_t>(id) + 1);
    Bytes pixels(size[0] * size[1] * size[2]);
    for (auto& byte : pixels)
        byte = static_cast<unsigned char>(random() >> 8U);
    return pixels;
}

using SizeOf = Sizes (*)(size_t id);

// 3 to 96 bytes: the smaller the tiles, the more often threads contend.
Sizes smallTile(size_t id) {
    return {1 + id % 8, 1 + id / 8 % 4, 3};
}

// Five or six of them fill a ring buffer.
Sizes largeTile(size_t id) {
    return {500 + id % 7, 500, 3};
}

// A host: the test is its GL thread, the writers are its decoders. It holds a buffer until its write has returned.
class StagingRingThreadsTest : public StagingRingRecordingTest, public ::testing::WithParamInterface<size_t> {
protected:
    // Gives buffers back at random, on average once per `period` tiles.
    void stageTiles(size_t count, SizeOf sizeOf, unsigned period) {
        Watchdog const watchdog("tiles through the upload ring", std::chrono::seconds(500));
        sizeOf_ = sizeOf;
        gl.forgetCalls(); // the instance has uploaded a texture of its own
        decoders_.emplace(GetParam());
        std::minstd_rand random(static_cast<std::uint32_t>(GetParam()));
        for (size_t id = 0; id < count && !HasFailure(); ++id) {
            stage(id);
            if (random() % period == 0) giveBackWritten();
        }
        decoders_.reset();
        giveBackWritten();
        EXPECT_TRUE(held_.empty());
        EXPECT_EQ(seen_, count);
    }

private:
    struct Tile {
        Tile(size_t id_, Staged buffer_) : id(id_), buffer(std::move(buffer_)) {}

        size_t id;
        Staged buffer;
        std::atomic<bool> written{false}; // its write has returned
    };

    void stage(size_t id) {
        Tile& tile = held_.emplace_back(id, reserve(id, sizeOf_(id)));
        decoders_->run([this, &tile] {
            tile.buffer->write(decoded(tile.id, sizeOf_(tile.id)), 0);
            tile.written.store(true);
        });
        lookAtUploads();
    }

    // Oldest first. The first buffer in the open ring buffer closes it, after all its writers are done.
    void giveBackWritten() {
        while (!held_.empty() && held_.front().written.load()) {
            EXPECT_TRUE(synchronize(std::move(held_.front().buffer)));
            lookAtUploads();
            instance->eraseTile(held_.front().id);
            held_.pop_front();
        }
    }

    // Tiles are uploaded in the order of their reservation.
    void lookAtUploads() {
        for (Upload const& upload : uploads()) {
            EXPECT_TRUE(pixelsOf(upload) == decoded(seen_, sizeOf_(seen_))) << "tile " << seen_;
            ++seen_;
        }
        gl.forgetCalls();
    }

    SizeOf sizeOf_ = nullptr;
    std::deque<Tile> held_; // reserved and not yet given back; a deque does not move its elements
    size_t seen_ = 0;       // tiles uploaded into a texture
    std::optional<WorkerThreads> decoders_;
};

// For each number of writers: 100000 tiles together, 1000000 in a long run.
TEST_P(StagingRingThreadsTest, SmallTilesArriveFromRingBuffersThatAreClosedWhileOthersAreWritten) {
    stageTiles(isLongRun() ? 250000 : 25000, smallTile, 64);
}

TEST_P(StagingRingThreadsTest, LargeTilesThatFillTheRingAgainAndAgainArrive) {
    stageTiles(isLongRun() ? 600 : 60, largeTile, 1000);
}

INSTANTIATE_TEST_SUITE_P(Writers, StagingRingThreadsTest,
                         ::testing::Values(size_t{1}, size_t{2}, size_t{8}, size_t{32}),
                         [](auto const& row) { return std::to_string(row.param); });

} // namespace
