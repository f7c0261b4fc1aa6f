// Writing into the upload ring, giving buffers back, waiting, and GL's refusals.
#include "tests/gles3renderbackend/StagingRingRecordingTest.h"

#include <limits>

namespace {

using namespace backendtest;

constexpr char const* kReservation =
    "#Location:Gles3ConcurrentStagingBuffer::Gles3ConcurrentStagingBuffer(size_t targetOrTileId, std::vector<size_t> "
    "const& size, Gles3RenderBackendInstance& instance)";
constexpr char const* kForeignBuffer =
    "#Name:could cast ConcurrentStagingBuffer to this backend#Location:bool "
    "Gles3RenderBackendInstance::synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer)";

// A buffer that some other backend handed out.
class ForeignBuffer final : public ConcurrentStagingBuffer {
public:
    ForeignBuffer() : ConcurrentStagingBuffer(1, {}, {1, 1, 3}) {}
    void write(std::vector<std::uint8_t> const& /*pixels*/, size_t /*offset*/) override {}
    bool ready() const override { return true; }
    void* nativeHandle() const override { return nullptr; }
    std::shared_ptr<void> keepAlive() const override { return nullptr; }
};

class StagingRingSynchronizingTest : public StagingRingRecordingTest {};

// Writing

TEST_F(StagingRingSynchronizingTest, WriteMakesNoGlCall) {
    Staged const buffer = reserve(1, kTwoTexels);
    Staged const other = reserve(2, kTwoTexels);
    gl.forgetCalls();
    buffer->write(Bytes(6), 0);
    other->write({}, 0);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(StagingRingSynchronizingTest, PixelsAreTakenFromTheOffsetOn) {
    EXPECT_EQ(uploadedAfterWriting({9, 9, 1, 2, 3, 4, 5, 6, 9}, 2), (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(StagingRingSynchronizingTest, PixelsMayEndWithTheVector) {
    EXPECT_EQ(uploadedAfterWriting({9, 1, 2, 3, 4, 5, 6}, 1), (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(StagingRingSynchronizingTest, ShortVectorGivesATileOfZeros) {
    EXPECT_EQ(uploadedAfterWriting(Bytes(5, 9), 0), Bytes(6, 0));
}

TEST_F(StagingRingSynchronizingTest, EmptyVectorGivesATileOfZeros) {
    EXPECT_EQ(uploadedAfterWriting({}, 0), Bytes(6, 0));
}

TEST_F(StagingRingSynchronizingTest, VectorThatEndsOneByteBehindTheOffsetTooEarlyGivesATileOfZeros) {
    EXPECT_EQ(uploadedAfterWriting(Bytes(7, 9), 2), Bytes(6, 0));
}

TEST_F(StagingRingSynchronizingTest, OffsetWhoseSumWrapsGivesATileOfZeros) {
    size_t const largest = std::numeric_limits<size_t>::max();
    EXPECT_EQ(uploadedAfterWriting(Bytes(64, 9), largest), Bytes(6, 0));
    instance->eraseTile(1);
    EXPECT_EQ(uploadedAfterWriting(Bytes(64, 9), largest - 5), Bytes(6, 0)) << "plus 6 it is 0";
    instance->eraseTile(1);
    EXPECT_EQ(uploadedAfterWriting(Bytes(64, 9), largest - 2), Bytes(6, 0)) << "plus 6 it is 3";
}

TEST_F(StagingRingSynchronizingTest, ZeroFillStaysInsideItsTile) {
    Staged const before = written(1, kTwoTexels, 1);
    Staged const zeros = reserve(2, kTwoTexels);
    Staged after = written(3, kTwoTexels, 3);
    zeros->write(Bytes(2), 0);
    gl.forgetCalls();
    synchronize(std::move(after));
    auto const done = uploads();
    ASSERT_EQ(done.size(), 3U);
    EXPECT_EQ(pixelsOf(done[0]), Bytes(6, 1));
    EXPECT_EQ(pixelsOf(done[1]), Bytes(6, 0));
    EXPECT_EQ(pixelsOf(done[2]), Bytes(6, 3));
}

// Synchronising

TEST_F(StagingRingSynchronizingTest, SynchronizingInTheOpenBufferUploadsItAndOpensTheNext) {
    EXPECT_TRUE(synchronize(written(1, kTwoTexels)));
    EXPECT_TRUE(instance->tileSet(1));
    EXPECT_EQ(ringIndexOf(written(2, kTwoTexels)), 1U);
}

TEST_F(StagingRingSynchronizingTest, NextBufferIsFilledFromItsStart) {
    synchronize(written(1, kThreeMiB));
    gl.forgetCalls();
    synchronize(written(2, kTwoMiB, 5));
    EXPECT_EQ(uploads(), (std::vector<Upload>{{"offset 0", 0}}));
    EXPECT_EQ(pixelsOf(uploads().at(0)), Bytes(size_t{2} << 20U, 5));
}

TEST_F(StagingRingSynchronizingTest, SynchronizingInAClosedBufferUploadsItAndLeavesTheOpenOneAlone) {
    Staged first = written(1, kWholeBuffer);
    Staged const second = written(2, kTwoTexels); // closes the first one's buffer
    EXPECT_FALSE(instance->tileSet(1));
    gl.forgetCalls();
    EXPECT_TRUE(synchronize(std::move(first)));
    EXPECT_TRUE(instance->tileSet(1));
    EXPECT_FALSE(instance->tileSet(2));
    EXPECT_EQ(gl.count("glMapBufferRange"), 0U);
    EXPECT_EQ(ringIndexOf(written(3, kTwoTexels)), 1U);
}

TEST_F(StagingRingSynchronizingTest, SynchronizingInAClosedBufferDoesNotWaitForItsWriters) {
    Staged const missing = reserve(1, kTwoTexels);
    Staged second = written(2, kTwoTexels);
    Staged const third = written(3, kWholeBuffer);
    Watchdog const watchdog("a closed buffer's writers");
    EXPECT_TRUE(synchronize(std::move(second)));
    EXPECT_FALSE(instance->tileSet(2)) << "it will be uploaded";
    missing->write(Bytes(6), 0);
    synchronize(written(4, kTwoTexels));
    EXPECT_TRUE(instance->tileSet(2));
}

TEST_F(StagingRingSynchronizingTest, SynchronizingACachedTileReturnsAtOnce) {
    instance->setTile(1, Bytes(6, 5), {2, 1, 3}, 0);
    Staged unwritten = reserve(1, kTwoTexels);
    gl.forgetCalls();
    Watchdog const watchdog("a tile that is cached already");
    EXPECT_TRUE(synchronize(std::move(unwritten)));
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(counters(), (std::vector<int>{3, 0, 0, 0}));
    EXPECT_EQ(ringIndexOf(reserve(2, kTwoTexels)), 0U) << "the buffer stays open";
}

TEST_F(StagingRingSynchronizingTest, SynchronizingWaitsForAllWritersOfTheOpenBuffer) {
    Staged const slow = reserve(1, kTwoTexels);
    Staged buffer = written(2, kTwoTexels);
    Watchdog const watchdog("a writer of the open buffer");
    std::thread writer([&] { slow->write(Bytes(6, 4), 0); });
    EXPECT_TRUE(synchronize(std::move(buffer)));
    EXPECT_TRUE(instance->tileSet(1));
    EXPECT_TRUE(instance->tileSet(2));
    writer.join();
}

TEST_F(StagingRingSynchronizingTest, SynchronizingOnAFullRingWaitsForTheOldestBuffer) {
    Staged const slow = reserve(1, kWholeBuffer);
    Staged const second = written(2, kWholeBuffer);
    Staged const third = written(3, kWholeBuffer);
    Staged last = written(4, kWholeBuffer);
    EXPECT_EQ(ringIndexOf(last), 3U);
    Watchdog const watchdog("the oldest of four buffers");
    std::thread writer([&] { slow->write(Bytes(size_t{4} << 20U, 4), 0); });
    gl.forgetCalls();
    EXPECT_TRUE(synchronize(std::move(last)));
    writer.join();
    EXPECT_EQ(uploads().size(), 4U);
    EXPECT_EQ(pixelsOf(uploads().at(0)), Bytes(size_t{4} << 20U, 4));
    EXPECT_EQ(ringIndexOf(written(5, kTwoTexels)), 0U);
}

TEST_F(StagingRingSynchronizingTest, SynchronizingTakesTheBuffer) {
    Staged buffer = written(1, kTwoTexels);
    instance->synchronizeConcurrentStagingBuffer(std::move(buffer));
    EXPECT_EQ(buffer, nullptr); // NOLINT(bugprone-use-after-move): the interface promises it
}

TEST_F(StagingRingSynchronizingTest, ForeignBufferIsRefusedAndTaken) {
    gl.forgetCalls();
    Staged foreign = std::make_unique<ForeignBuffer>();
    EXPECT_EQ(failureOf([&] { instance->synchronizeConcurrentStagingBuffer(std::move(foreign)); }), kForeignBuffer);
    EXPECT_EQ(foreign, nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(StagingRingSynchronizingTest, ForeignBufferIsRefusedEvenWhereItsTileIsCached) {
    instance->setTile(1, Bytes(3), {1, 1, 3}, 0);
    EXPECT_EQ(failureOf([&] { synchronize(std::make_unique<ForeignBuffer>()); }), kForeignBuffer);
}

TEST_F(StagingRingSynchronizingTest, EmptyPointerIsRefusedLikeAForeignBuffer) {
    EXPECT_EQ(failureOf([&] { synchronize(nullptr); }), kForeignBuffer);
}

// A full ring

TEST_F(StagingRingSynchronizingTest, ReservationOnAFullRingWaitsForTheOldestBuffer) {
    Staged const slow = reserve(1, kWholeBuffer);
    for (size_t tile = 2; tile <= 4; ++tile)
        written(tile, kWholeBuffer);
    Watchdog const watchdog("the oldest of four buffers");
    std::thread writer([&] { slow->write(Bytes(size_t{4} << 20U, 4), 0); });
    Staged const fifth = written(5, kWholeBuffer);
    writer.join();
    EXPECT_EQ(ringIndexOf(fifth), 0U);
    for (size_t tile = 1; tile <= 3; ++tile)
        EXPECT_TRUE(instance->tileSet(tile)) << tile;
}

// The one way there: a counter below zero ends the wait but is not the zero that uploading asks for.
TEST_F(StagingRingSynchronizingTest, TileWrittenTwiceExhaustsTheRing) {
    Staged const twice = written(1, kWholeBuffer);
    twice->write({}, 0);
    EXPECT_EQ(counters(), (std::vector<int>{-3, 0, 0, 0}));
    written(2, kWholeBuffer);
    written(3, kWholeBuffer);
    written(4, kThreeMiB);
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] { reserve(5, kTwoMiB); }),
              std::string("#Name:could not map PBO: ringbuffer exhausted") + kReservation);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(counters(), (std::vector<int>{-3, 0, 0, 0}));
    EXPECT_EQ(ringIndexOf(written(6, kOneMiB)), 3U) << "the open buffer is as it was";
    EXPECT_EQ(failureOf([&] {
                  reserve(7, {1, 1, 3});
              }),
              std::string("#Name:could not map PBO: ringbuffer exhausted") + kReservation);
}

// It must not wait for a counter that never becomes zero.
TEST_F(StagingRingSynchronizingTest, SynchronizingWhereATileWasWrittenTwiceReportsTheExhaustedRing) {
    Staged const twice = written(1, kWholeBuffer);
    twice->write({}, 0);
    written(2, kWholeBuffer);
    written(3, kWholeBuffer);
    Watchdog const watchdog("a synchronisation behind a tile that was written twice", std::chrono::seconds(20));
    for (size_t tile = 4; tile < 6; ++tile)
        EXPECT_EQ(failureOf([&] { synchronize(written(tile, kTwoTexels)); }),
                  "#Name:could not map PBO: ringbuffer exhausted#Location:bool "
                  "Gles3RenderBackendInstance::synchronizeConcurrentStagingBuffer(std::unique_ptr<"
                  "ConcurrentStagingBuffer>&& buffer)");
    instance.reset();
    instance = backend.createInstance(surface);
    EXPECT_TRUE(synchronize(written(4, kTwoTexels)));
    EXPECT_TRUE(instance->tileSet(4));
}

// Failures of GL

TEST_F(StagingRingSynchronizingTest, UnmapThatGlRefusesIsReportedWithItsReason) {
    Staged buffer = written(1, kTwoTexels);
    gl.failNext("glUnmapBuffer", GL_INVALID_OPERATION);
    EXPECT_EQ(failureOf([&] { synchronize(std::move(buffer)); }),
              "#Name:could not unmap PBO range#Location:void* Gles3Pbo::unmap() #Description:invalid operation: buffer "
              "not mapped or does not exist");
}

TEST_F(StagingRingSynchronizingTest, UnmapThatFailsOtherwiseIsReportedWithTheErrorsNumber) {
    Staged buffer = written(1, kTwoTexels);
    gl.failNext("glUnmapBuffer", GL_OUT_OF_MEMORY);
    EXPECT_EQ(failureOf([&] { synchronize(std::move(buffer)); }),
              "#Name:could not unmap PBO range#Location:void* Gles3Pbo::unmap()#Description:unknown error#Errno:1285");
}

TEST_F(StagingRingSynchronizingTest, UnmapThatFailsWithoutAnErrorIsReportedAsNumberZero) {
    Staged buffer = written(1, kTwoTexels);
    gl.failNext("glUnmapBuffer");
    EXPECT_EQ(failureOf([&] { synchronize(std::move(buffer)); }),
              "#Name:could not unmap PBO range#Location:void* Gles3Pbo::unmap()#Description:unknown error#Errno:0");
}

TEST_F(StagingRingSynchronizingTest, BufferThatCouldNotBeUnmappedIsUploadedTheNextTime) {
    Staged buffer = written(1, kTwoTexels, 8);
    gl.failNext("glUnmapBuffer");
    gl.forgetCalls();
    EXPECT_THROW(synchronize(std::move(buffer)), VelmoraException);
    EXPECT_TRUE(uploads().empty());
    EXPECT_FALSE(instance->tileSet(1));
    Staged const next = written(2, kTwoTexels);
    ASSERT_EQ(uploads().size(), 1U);
    EXPECT_EQ(pixelsOf(uploads()[0]), Bytes(6, 8));
    EXPECT_TRUE(instance->tileSet(1));
}

TEST_F(StagingRingSynchronizingTest, MapThatFailsInAReservationLeavesTheRingUnusableUntilANewInstance) {
    Staged const first = written(1, kWholeBuffer);
    gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY);
    EXPECT_EQ(failureOf([&] { reserve(2, kTwoTexels); }),
              "#Name:could not map PBO range#Location:void* Gles3Pbo::mapRange(size_t offset, size_t "
              "size)#Description:out of memory");
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0})) << "nothing was reserved";

    std::string const noRange = std::string("#Name:could not map PBO range") + kReservation;
    for (size_t tile = 3; tile < 6; ++tile)
        EXPECT_EQ(failureOf([&] { reserve(tile, kTwoTexels); }), noRange);
    EXPECT_EQ(failureOf([&] { reserve(6, kWholeBuffer); }), noRange);
    EXPECT_TRUE(instance->tileSet(1)) << "what was closed is uploaded all the same";
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(mappedBuffers(), 0U);

    instance.reset();
    instance = backend.createInstance(surface);
    EXPECT_EQ(ringIndexOf(written(7, kTwoTexels)), 0U);
    EXPECT_TRUE(synchronize(written(8, kTwoTexels)));
    EXPECT_TRUE(instance->tileSet(7));
    EXPECT_TRUE(instance->tileSet(8));
}

TEST_F(StagingRingSynchronizingTest, MapThatFailsWhileSynchronizingIsReportedAndTheTilesFollow) {
    Staged buffer = written(1, kTwoTexels);
    gl.failNext("glMapBufferRange", GL_INVALID_VALUE);
    EXPECT_EQ(failureOf([&] { synchronize(std::move(buffer)); }),
              "#Name:could not map PBO range#Location:void* Gles3Pbo::mapRange(size_t offset, size_t "
              "size)#Description:invalid access flags, offset or length");
    EXPECT_FALSE(instance->tileSet(1));
    EXPECT_EQ(failureOf([&] { reserve(2, kTwoTexels); }), std::string("#Name:could not map PBO range") + kReservation);
    EXPECT_TRUE(instance->tileSet(1));
}

} // namespace
