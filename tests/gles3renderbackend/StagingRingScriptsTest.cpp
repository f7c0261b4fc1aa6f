// Random scripts of reservations, writes and synchronisations, in which writers are late, write twice or never. A model
// of the counters says what each operation does: it returns, throws, or waits, and then for exactly so many writes.
#include "tests/gles3renderbackend/StagingRingRecordingTest.h"
#include "tests/support/LongRun.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <random>
#include <set>
#include <thread>

namespace {

using namespace backendtest;
using namespace std::chrono_literals;

constexpr size_t kRing = 4;
constexpr size_t kRingBytes = size_t{4} << 20U;
constexpr int kUse = Gles3ConcurrentStagingBuffer::kUsePerWriter;

enum class Outcome { Returns, Exhausted };

// Counters, indices and names of tiles, as docs/THREADS.md describes them.
struct Model {
    size_t writeIndex = 0;
    size_t readIndex = 0;
    size_t fill = 0;
    std::array<int, kRing> counters{};
    std::array<std::vector<size_t>, kRing> pending;
    std::set<size_t> cached;

    size_t following() const { return (writeIndex + 1) % kRing; }

    void upload() {
        while (readIndex != writeIndex && counters[readIndex] == 0) {
            cached.insert(pending[readIndex].begin(), pending[readIndex].end());
            pending[readIndex].clear();
            readIndex = (readIndex + 1) % kRing;
        }
    }

    void open(size_t index) {
        writeIndex = index;
        fill = 0;
    }

    // `await(ring buffer)` makes the writes for which the operation waits.
    template <class Await>
    Outcome reserve(size_t tile, size_t bytes, Await const& await) {
        upload();
        if (fill + bytes > kRingBytes) {
            if (following() == readIndex) {
                await(following());
                upload();
                if (following() == readIndex) return Outcome::Exhausted;
            }
            open(following());
        }
        pending[writeIndex].push_back(tile);
        fill += bytes;
        counters[writeIndex] += kUse;
        return Outcome::Returns;
    }

    template <class Await>
    Outcome synchronize(size_t tile, size_t ringIndex, Await const& await) {
        if (cached.count(tile) != 0) return Outcome::Returns;
        upload();
        if (ringIndex != writeIndex) return Outcome::Returns;
        await(writeIndex);
        if (following() == readIndex) {
            await(following());
            if (counters[following()] < 0) return Outcome::Exhausted;
            upload();
        }
        open(following());
        upload();
        return Outcome::Returns;
    }
};

class StagingRingScriptsTest : public StagingRingRecordingTest {
protected:
    void play(std::uint32_t seed, size_t steps, bool twice) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Watchdog const watchdog("the script of seed " + std::to_string(seed), 100s);
        random_.seed(seed);
        twice_ = twice;
        model_ = Model();
        instance.reset();
        instance = backend.createInstance(surface);
        for (size_t step = 0; step < steps && !HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            if (held_.empty() || oneIn(2))
                stageOne();
            else
                giveBack();
            if (oneIn(3)) writeOneOf(oneIn(kRing));
            EXPECT_EQ(counters(), std::vector<int>(model_.counters.begin(), model_.counters.end()));
            for (size_t tile = 0; tile < nextTile_; ++tile)
                EXPECT_EQ(instance->tileSet(tile), model_.cached.count(tile) != 0) << tile;
        }
        endInstance();
    }

    size_t waits() const { return waits_; }
    size_t exhaustions() const { return exhaustions_; }

private:
    struct Tile {
        size_t id;
        Staged buffer;
        size_t ringIndex;
        bool written;
    };

    bool oneIn(unsigned n) { return random_() % n == 0; }

    void stageOne() {
        static std::array<Sizes, 4> const sizes = {kThreeMiB, kTwoMiB, kOneMiB, kTwoTexels};
        Sizes const& size = sizes.at(random_() % sizes.size());
        bool const halves = size[2] == 1; // 16-bit samples: two bytes each
        size_t const bytes = size[0] * size[1] * size[2] * (halves ? 2 : 1);
        size_t const tile = nextTile_++;
        Staged buffer;
        run([&](auto const& await) { return model_.reserve(tile, bytes, await); },
            [&] { buffer = StagingRingRecordingTest::reserve(tile, size); });
        if (!buffer) return;
        EXPECT_EQ(ringIndexOf(buffer), model_.writeIndex);
        held_.push_back({tile, std::move(buffer), model_.writeIndex, false});
        if (oneIn(2)) return; // late, or never
        write(held_.back());
        if (twice_ && oneIn(6)) write(held_.back());
    }

    // Unwritten ones too: nobody will ever write them.
    void giveBack() {
        size_t const which = random_() % held_.size();
        Tile tile = std::move(held_[which]);
        held_.erase(held_.begin() + static_cast<std::ptrdiff_t>(which));
        // The operation takes it; whoever is to write it must have it as long as it waits.
        if (!tile.written && tile.ringIndex == model_.writeIndex) write(tile);
        run([&](auto const& await) { return model_.synchronize(tile.id, tile.ringIndex, await); },
            [&] { synchronize(std::move(tile.buffer)); });
    }

    // The operation, next to the model of it.
    template <class Modelled, class Operation>
    void run(Modelled const& modelled, Operation const& operation) {
        std::atomic<bool> released{false};
        std::vector<Tile*> late;
        bool mustWait = false;
        bool forEver = false;
        Outcome const expected = modelled([&](size_t ringIndex) {
            for (Tile& tile : held_) {
                if (model_.counters.at(ringIndex) <= 0) break;
                if (tile.written || tile.ringIndex != ringIndex) continue;
                late.push_back(&tile);
                tile.written = true;
                model_.counters.at(ringIndex) -= kUse;
                mustWait = true;
            }
            forEver = forEver || model_.counters.at(ringIndex) > 0;
        });
        if (forEver) return giveUp();
        std::thread writer([&] {
            if (!mustWait) return;
            std::this_thread::sleep_for(2ms);
            released = true;
            for (Tile* tile : late)
                tile->buffer->write({}, 0);
        });
        bool returned = true;
        try {
            operation();
        } catch (VelmoraException const& failure) {
            returned = false;
            EXPECT_NE(std::string(failure.what()).find("ringbuffer exhausted"), std::string::npos) << failure.what();
        }
        EXPECT_EQ(released, mustWait) << "whether it waited";
        writer.join();
        EXPECT_EQ(returned, expected == Outcome::Returns);
        waits_ += mustWait ? 1U : 0U;
        exhaustions_ += returned ? 0U : 1U;
    }

    // The documented way on: an instance anew.
    void giveUp() {
        endInstance();
        model_ = Model();
        instance = backend.createInstance(surface);
    }

    void endInstance() {
        instance.reset();
        for (Tile& tile : held_)
            tile.buffer->write({}, 0); // goes nowhere
        held_.clear();
        nextTile_ = 0;
    }

    void write(Tile& tile) {
        tile.buffer->write({}, 0);
        tile.written = true;
        model_.counters.at(tile.ringIndex) -= kUse;
    }

    void writeOneOf(bool newest) {
        auto const isLate = [](Tile const& tile) { return !tile.written; };
        if (newest) {
            auto const found = std::find_if(held_.rbegin(), held_.rend(), isLate);
            if (found != held_.rend()) write(*found);
            return;
        }
        auto const found = std::find_if(held_.begin(), held_.end(), isLate);
        if (found != held_.end()) write(*found);
    }

    std::minstd_rand random_;
    bool twice_ = false;
    Model model_;
    std::deque<Tile> held_;
    size_t nextTile_ = 0;
    size_t waits_ = 0;
    size_t exhaustions_ = 0;
};

constexpr std::uint32_t kFirstSeed = 1;
size_t scripts() {
    return isLongRun() ? 1000 : 12;
}

} // namespace

TEST_F(StagingRingScriptsTest, LateAndMissingWritersAreWaitedForWhereTheDocumentsSaySo) {
    for (std::uint32_t seed = kFirstSeed; seed < kFirstSeed + scripts() && !HasFailure(); ++seed)
        play(seed, 60, false);
    EXPECT_GT(waits(), scripts() / 2);
    EXPECT_EQ(exhaustions(), 0U);
}

TEST_F(StagingRingScriptsTest, WritersThatWriteTwiceExhaustTheRingButHoldUpNobody) {
    for (std::uint32_t seed = kFirstSeed; seed < kFirstSeed + scripts() && !HasFailure(); ++seed)
        play(seed, 60, true);
    EXPECT_GT(exhaustions(), scripts() / 2);
}

// docs/THREADS.md: there is no time limit.
TEST_F(StagingRingScriptsTest, AWriterThatNeverWritesMakesTheGlThreadWaitForEver) {
    Staged never = reserve(1, kTwoTexels);
    EXPECT_EXIT(
        {
            Watchdog const watchdog("a synchronisation", 1s);
            synchronize(written(2, kTwoTexels));
        },
        testing::ExitedWithCode(EXIT_FAILURE), "still waiting: a synchronisation");
    for (size_t tile = 2; tile < 6; ++tile)
        written(tile, kThreeMiB);
    EXPECT_EXIT(
        {
            Watchdog const watchdog("a reservation on the full ring", 1s);
            reserve(6, kThreeMiB);
        },
        testing::ExitedWithCode(EXIT_FAILURE), "still waiting: a reservation on the full ring");
    never->write({}, 0); // and nothing else was missing
    reserve(6, kThreeMiB)->write({}, 0);
}
