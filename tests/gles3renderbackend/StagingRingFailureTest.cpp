// The upload ring if GL refuses, memory runs out, or the instance is destroyed before its buffers.
#include "tests/gles3renderbackend/FailingAllocation.h"
#include "tests/gles3renderbackend/StagingRingRecordingTest.h"

namespace {

using namespace backendtest;

class StagingRingFailureTest : public StagingRingRecordingTest {
public:
    ~StagingRingFailureTest() override { letAllocationsSucceed(); }

protected:
    // With a pixel buffer bound, GL would take the pixels' address for an offset into it.
    void expectTilesFromHostMemoryToArrive() {
        EXPECT_EQ(gl.boundBuffer(GL_PIXEL_UNPACK_BUFFER), 0U);
        instance->setTile(999, {1, 2, 3, 4}, {1, 1, 4}, 0);
        EXPECT_EQ(gl.texture(gl.boundTexture()).image().pixels, (Bytes{1, 2, 3, 4}));
    }

    // Tiles of different sizes, so that a tile that is read from a wrong place has wrong pixels.
    static Sizes sizeOf(size_t tile) { return {tile, 2, 3}; }
    static Bytes pixelsOfTile(size_t tile) { return Bytes(tile * 2 * 3, static_cast<unsigned char>(10 * tile)); }

    Staged writtenTile(size_t tile) const {
        Staged buffer = reserve(tile, sizeOf(tile));
        buffer->write(pixelsOfTile(tile), 0);
        return buffer;
    }

    static constexpr size_t kTiles = 4;
};

// Refused by GL

TEST_F(StagingRingFailureTest, MapThatFailsInAReservationLeavesNoPixelBufferBound) {
    Staged const first = written(1, kWholeBuffer);
    gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY);
    EXPECT_THROW(reserve(2, kTwoTexels), VelmoraException);
    expectTilesFromHostMemoryToArrive();
}

TEST_F(StagingRingFailureTest, MapThatFailsWhileSynchronizingLeavesNoPixelBufferBound) {
    Staged buffer = written(1, kTwoTexels);
    gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY);
    EXPECT_THROW(synchronize(std::move(buffer)), VelmoraException);
    expectTilesFromHostMemoryToArrive();
}

// Deleting the buffers would unbind them too, but in the current context only.
TEST_F(StagingRingFailureTest, MapThatFailsInCreateInstanceIsUnboundBeforeTheBuffersGo) {
    instance.reset();
    gl.forgetCalls();
    gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY);
    EXPECT_THROW(backend.createInstance(surface), VelmoraException);
    auto const calls = gl.texts();
    auto const firstOf = [&](std::string const& start) {
        return std::find_if(calls.begin(), calls.end(), [&](auto const& call) { return call.find(start) == 0; });
    };
    auto const deleted = firstOf("glDeleteBuffers");
    EXPECT_NE(std::find(firstOf("glMapBufferRange"), deleted, "glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0)"), deleted);
    instance = backend.createInstance(surface);
}

TEST_F(StagingRingFailureTest, UnmapThatFailsLeavesNoPixelBufferBound) {
    Staged buffer = written(1, kTwoTexels);
    gl.failNext("glUnmapBuffer", GL_OUT_OF_MEMORY);
    EXPECT_THROW(synchronize(std::move(buffer)), VelmoraException);
    expectTilesFromHostMemoryToArrive();
}

TEST_F(StagingRingFailureTest, UnmapThatFailsInAReservationLeavesNoPixelBufferBound) {
    Staged const closed = written(1, kWholeBuffer);
    Staged const open = written(2, kTwoTexels);
    gl.failNext("glUnmapBuffer");
    EXPECT_THROW(reserve(3, kTwoTexels), VelmoraException);
    expectTilesFromHostMemoryToArrive();
}

// Out of memory

TEST_F(StagingRingFailureTest, UploadThatRunsOutOfMemoryGoesOnWhereItStopped) {
    size_t failures = 0;
    size_t partly = 0;
    for (bool failed = true; failed; ++failures) {
        SCOPED_TRACE(failures);
        instance.reset();
        instance = backend.createInstance(surface);
        std::vector<Staged> buffers;
        for (size_t tile = 1; tile <= kTiles; ++tile)
            buffers.push_back(writtenTile(tile));
        gl.forgetCalls();
        failAllocationAfter(failures);
        try {
            synchronize(std::move(buffers.back()));
        } catch (std::bad_alloc const&) { // NOLINT(bugprone-empty-catch): the code below states what must hold
        }
        failed = !letAllocationsSucceed();
        size_t const before = uploads().size();
        partly += before > 0 && before < kTiles ? 1U : 0U;
        EXPECT_EQ(gl.boundBuffer(GL_PIXEL_UNPACK_BUFFER), 0U);

        Staged const next = reserve(9, kTwoTexels); // uploads the rest
        next->write({}, 0);
        ASSERT_EQ(uploads().size(), kTiles) << "each tile once";
        for (size_t tile = 1; tile <= kTiles; ++tile) {
            EXPECT_TRUE(pixelsOf(uploads()[tile - 1]) == pixelsOfTile(tile)) << tile;
            EXPECT_TRUE(instance->tileSet(tile)) << tile;
        }
        synchronize(writtenTile(kTiles + 1));
        EXPECT_TRUE(instance->tileSet(kTiles + 1)) << "the ring goes on";
    }
    EXPECT_GE(partly, kTiles - 1) << "it stopped after the first tile, after the second, and so on";
}

TEST_F(StagingRingFailureTest, ReservationThatRunsOutOfMemoryReservesNothing) {
    Staged const first = writtenTile(1);
    Staged second;
    size_t const failures = failEachAllocation([&] { second = reserve(2, sizeOf(2)); },
                                               [&] {
                                                   EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0}));
                                               });
    EXPECT_GE(failures, 3U) << "the size of the texture, the buffer, its record";
    EXPECT_EQ(counters(), (std::vector<int>{3, 0, 0, 0}));
    second->write(pixelsOfTile(2), 0);
    gl.forgetCalls();
    synchronize(std::move(second));
    ASSERT_EQ(uploads().size(), 2U);
    EXPECT_EQ(pixelsOf(uploads()[0]), pixelsOfTile(1));
    EXPECT_EQ(pixelsOf(uploads()[1]), pixelsOfTile(2));
}

// Without an instance

TEST_F(StagingRingFailureTest, BufferWrittenAfterItsInstanceWritesNowhere) {
    Staged const buffer = reserve(1, kWholeBuffer);
    instance.reset();
    gl.forgetCalls();
    buffer->write(Bytes(size_t{4} << 20U, 9), 0); // AddressSanitizer sees a write into the ring that is gone
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(StagingRingFailureTest, BufferThatWasNeverWrittenDoesNotOutliveItsInstance) {
    Staged const buffer = reserve(1, kTwoTexels);
    instance.reset();
    instance = backend.createInstance(surface);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0})) << "a ring of its own";
    Watchdog const watchdog("a buffer of the instance before", std::chrono::seconds(20));
    EXPECT_TRUE(synchronize(written(2, kTwoTexels)));
    EXPECT_TRUE(instance->tileSet(2));
}

TEST_F(StagingRingFailureTest, LateWriteDoesNotCountInTheNextInstance) {
    Staged const buffer = reserve(1, kTwoTexels);
    instance.reset();
    instance = backend.createInstance(surface);
    Staged const own = reserve(2, kTwoTexels);
    buffer->write(Bytes(6, 9), 0);
    EXPECT_EQ(counters(), (std::vector<int>{3, 0, 0, 0}));
    own->write({}, 0);
}

} // namespace
