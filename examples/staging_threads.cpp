// Decoders fill tiles on threads of their own, while one GL thread reserves room, uploads and draws. docs/THREADS.md
// says which thread may do what, and when.
#include "GlContext.h" // any current OpenGL ES 3 context works

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "renderbackend/ConcurrentStagingBuffer.h"
#include "renderbackend/Filter.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/RenderContext.h"

#include <condition_variable>
#include <deque>
#include <future>
#include <iostream>
#include <mutex>
#include <vector>

namespace {

constexpr size_t kTiles = 12; // per side of the picture
constexpr size_t kTileSide = 128;
constexpr size_t kSide = kTiles * kTileSide;

using Bytes = std::vector<std::uint8_t>;

// A square of the picture, RGB. A real decoder reads it from a file.
Bytes decode(size_t left, size_t top, size_t side) {
    Bytes pixels;
    for (size_t y = top; y < top + side; ++y)
        for (size_t x = left; x < left + side; ++x)
            for (size_t const channel : {x, y, x * y / 128})
                pixels.push_back(static_cast<std::uint8_t>(channel));
    return pixels;
}

// Threads that decode tiles into reserved rooms. After its destructor all rooms are filled.
class Decoders {
public:
    explicit Decoders(size_t threads) {
        for (size_t i = 0; i < threads; ++i)
            threads_.push_back(std::async(std::launch::async, [this] { work(); }));
    }
    ~Decoders() {
        for (size_t i = 0; i < threads_.size(); ++i)
            fill(nullptr); // ends one of the threads
    }

    void fill(ConcurrentStagingBuffer* room) {
        std::lock_guard<std::mutex> const lock(mutex_);
        rooms_.push_back(room);
        changed_.notify_one();
    }

private:
    void work() {
        while (ConcurrentStagingBuffer* const room = nextRoom()) {
            size_t const tile = room->targetOrTileId();
            room->write(decode(tile % kTiles * kTileSide, tile / kTiles * kTileSide, kTileSide), 0); // exactly once
        }
    }
    ConcurrentStagingBuffer* nextRoom() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return !rooms_.empty(); });
        auto* const room = rooms_.front();
        rooms_.pop_front();
        return room;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<ConcurrentStagingBuffer*> rooms_;
    std::vector<std::future<void>> threads_; // last, so that they end before the other members are destroyed
};

void stageAllTiles(RenderBackendInstance& gl) {
    std::vector<std::unique_ptr<ConcurrentStagingBuffer>> rooms;
    {
        Decoders decoders(4);
        for (size_t tile = 0; tile < kTiles * kTiles; ++tile) {
            // Uploads filled rooms, and waits for the decoders if the ring is full.
            rooms.push_back(gl.concurrentStagingBuffer(tile, RenderBackend::TILE, {kTileSide, kTileSide, 3}));
            decoders.fill(rooms.back().get());
        }
    } // every write() has returned: rooms must live until then
    for (auto& room : rooms)
        gl.synchronizeConcurrentStagingBuffer(std::move(room)); // uploads the rest
}

Bytes drawAllTiles(RenderBackendInstance& gl) {
    Filter blit("BlitFilter3x8", 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    gl.createFilterInstance(blit);
    size_t const target = gl.createTarget({kSide, kSide}, 24, false, RenderBackend::NEAREST, RenderBackend::RGB24);
    std::vector<size_t> const whole = {0, kSide - 1, 0, kSide - 1};
    for (size_t tile = 0; tile < kTiles * kTiles; ++tile) {
        gl.drawTiles(target, blit, whole, whole, {kTileSide, kTileSide}, {{tile % kTiles, tile / kTiles}}, {tile}, {});
        gl.unlockTile(tile); // staged tiles are locked; from here on the cache may evict it
    }
    return gl.getPixels(target, {0, kSide, 0, kSide});
}

struct NoSurface : RenderContext {
    size_t width() const override { return 0; }
    size_t height() const override { return 0; }
};

} // namespace

int main() try {
    GlContext const context;
    NoSurface const surface;
    Gles3RenderBackend backend;
    auto const gl = backend.createInstance(surface);
    stageAllTiles(*gl);
    bool const same = drawAllTiles(*gl) == decode(0, 0, kSide);
    std::cout << kTiles * kTiles << (same ? " tiles arrived byte for byte\n" : " tiles: the picture differs\n");
    return same ? 0 : 1;
} catch (std::exception const& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
