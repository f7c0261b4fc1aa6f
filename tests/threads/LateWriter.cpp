// late-writer [write-again]: a host that writes a tile into the upload ring from a second thread, over the recording
// GL. With "write-again" the host is wrong: when its write has returned, and the ring has counted it as done, it writes
// into the same room once more, while GL may be reading it. ThreadSanitizer has to report this race, or it would detect
// none.
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/RecordingGl.h"

#include <atomic>
#include <cstring>
#include <thread>

namespace {

using namespace backendtest;

// Relaxed: it tells the thread when to continue, without an order that ThreadSanitizer would see.
void waitFor(std::atomic<bool> const& flag) {
    while (!flag.load(std::memory_order_relaxed))
        std::this_thread::yield();
}

int stageTwoTiles(bool writeAgain) {
    Surface const surface(640, 480);
    Gles3RenderBackend backend(RenderBackend::RGBA32, kDefaultBudget);
    auto const instance = backend.createInstance(surface);
    Sizes const size = {8, 8, 3};
    Bytes const pixels(192, 7);
    auto const late = instance->concurrentStagingBuffer(1, {}, size);
    auto punctual = instance->concurrentStagingBuffer(2, {}, size);

    std::atomic<bool> uploaded{false};
    std::thread writer([&] {
        late->write(pixels, 0);
        waitFor(uploaded);
        if (writeAgain) late->write(pixels, 0);
    });
    punctual->write(pixels, 0);
    instance->synchronizeConcurrentStagingBuffer(std::move(punctual)); // waits for both writes, uploads both tiles
    bool const arrived = instance->tileSet(1) && instance->tileSet(2);
    uploaded.store(true, std::memory_order_relaxed);
    writer.join();
    return arrived ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    return stageTwoTiles(argc > 1 && std::strcmp(argv[1], "write-again") == 0);
}
