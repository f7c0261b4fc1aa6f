// Random scripts of a host whose writers, on threads of their own, are late or never write, over the recording GL. The
// GL thread waits for those that are late. Behind one that never writes it would wait for ever: it does what the
// documents say and makes the instance anew, while late ones may still write.
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "tests/gles3renderbackend/StagingRingRecordingTest.h"
#include "tests/support/LongRun.h"
#include "tests/support/WorkerThreads.h"

#include <array>
#include <deque>
#include <optional>
#include <random>
#include <thread>

namespace {

using namespace backendtest;

constexpr size_t kWriters = 3;
constexpr size_t kRing = 4;

class StagingRingWritersTest : public StagingRingRecordingTest {
protected:
    void play(std::uint32_t seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Watchdog const watchdog("the script of seed " + std::to_string(seed), std::chrono::seconds(200));
        std::minstd_rand random(seed);
        writers_.emplace(kWriters);
        for (size_t step = 0; step < kSteps && !HasFailure(); ++step) {
            if (held_.empty() || random() % 3 != 0)
                stage(random);
            else
                giveBack();
        }
        anew();
        writers_.reset();
    }

    size_t instancesAnew() const { return anew_; }
    size_t tilesSeen() const { return seen_; }

private:
    static constexpr size_t kSteps = 200;

    struct Tile {
        Tile(size_t id_, Staged buffer_, bool missing_) : id(id_), buffer(std::move(buffer_)), missing(missing_) {}

        size_t id;
        Staged buffer;
        bool missing;
        std::atomic<bool> written{false};
    };

    static Sizes sizeOf(size_t id) { return {400 + id % 200, 700, 3}; }
    static size_t bytesOfTile(size_t id) { return sizeOf(id)[0] * sizeOf(id)[1] * sizeOf(id)[2]; }
    static Bytes pixelsOfTile(size_t id) { return Bytes(bytesOfTile(id), static_cast<unsigned char>(id % 251 + 1)); }

    void stage(std::minstd_rand& random) {
        size_t const id = nextTile_++;
        bool const moves = fill_ + bytesOfTile(id) > Gles3Pbo::kMappedBytes;
        // All four are taken, and the oldest, which is next, is not complete.
        if (moves && missing_.at((open_ + 1) % kRing)) anew();
        bool const missing = random() % 40 == 0;
        Tile& tile = held_.emplace_back(id, reserve(id, sizeOf(id)), missing);
        size_t const ringIndex = ringIndexOf(tile.buffer);
        fill_ = (ringIndex == open_ ? fill_ : 0) + bytesOfTile(id);
        open_ = ringIndex;
        if (missing) {
            missing_.at(ringIndex) = true;
            return;
        }
        auto const delay = std::chrono::microseconds(random() % 300);
        writers_->run([&tile, delay] {
            std::this_thread::sleep_for(delay);
            tile.buffer->write(pixelsOfTile(tile.id), 0);
            tile.written.store(true);
        });
        lookAtUploads();
    }

    // The oldest, if its write has returned.
    void giveBack() {
        Tile& tile = held_.front();
        if (!tile.missing && !tile.written.load()) return;
        bool const waits = !instance->tileSet(tile.id) && ringIndexOf(tile.buffer) == open_;
        size_t const next = (open_ + 1) % kRing;
        if (waits && (missing_.at(open_) || missing_.at(next))) return anew();
        if (waits) {
            open_ = next;
            fill_ = 0;
        }
        EXPECT_TRUE(synchronize(std::move(tile.buffer)));
        lookAtUploads();
        instance->eraseTile(tile.id);
        held_.pop_front();
    }

    // All writes return before the instance goes. Buffers that were never written may outlive it.
    void anew() {
        lookAtUploads();
        for (Tile& tile : held_)
            while (!tile.missing && !tile.written.load())
                std::this_thread::yield();
        instance.reset();
        instance = backend.createInstance(surface);
        gl.forgetCalls();
        held_.clear();
        missing_ = {};
        open_ = fill_ = 0;
        ++anew_;
    }

    void lookAtUploads() {
        for (Upload const& upload : uploads()) {
            Bytes const& pixels = pixelsOf(upload);
            ASSERT_FALSE(pixels.empty());
            EXPECT_TRUE(std::all_of(pixels.begin(), pixels.end(), [&](unsigned char byte) {
                return byte == pixels.front() && byte != 0;
            })) << "a tile of which not all was written";
            ++seen_;
        }
        gl.forgetCalls();
    }

    std::optional<WorkerThreads> writers_;
    std::deque<Tile> held_;
    std::array<bool, kRing> missing_{}; // whether a ring buffer waits for a writer that never writes
    size_t open_ = 0;
    size_t fill_ = 0;
    size_t nextTile_ = 1;
    size_t anew_ = 0;
    size_t seen_ = 0;
};

} // namespace

TEST_F(StagingRingWritersTest, LateWritersAreWaitedForAndMissingOnesGivenUp) {
    gl.forgetCalls();
    std::uint32_t const scripts = isLongRun() ? 300 : 6;
    for (std::uint32_t seed = 1; seed <= scripts && !HasFailure(); ++seed)
        play(seed);
    EXPECT_GT(instancesAnew(), scripts) << "one at the end of each, and others";
    EXPECT_GT(tilesSeen(), scripts * 20U);
}
