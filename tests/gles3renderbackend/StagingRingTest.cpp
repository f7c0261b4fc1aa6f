// Reserving room in the upload ring, and the buffers' way through it.
#include "tests/gles3renderbackend/StagingRingRecordingTest.h"

namespace {

using namespace backendtest;

constexpr char const* kRefusedSize =
    "#Name:Can't set tile pixels with this size#Location:void Gles3RenderBackendInstance::setTile(size_t tile, "
    "std::vector<unsigned char> const& pixels, std::vector<size_t> const& size, size_t offset)";
class StagingRingTest : public StagingRingRecordingTest {};

// Handing out

TEST_F(StagingRingTest, HandedOutBufferTellsWhatItIsFor) {
    Staged const buffer = written(77, {4, 3, 3});
    EXPECT_EQ(buffer->targetOrTileId(), 77U);
    EXPECT_EQ(buffer->size(), (Sizes{4, 3, 3}));
    EXPECT_TRUE(buffer->ready());
    EXPECT_EQ(buffer->nativeHandle(), nullptr);
    EXPECT_EQ(buffer->keepAlive(), nullptr);
}

TEST_F(StagingRingTest, BufferTypeIsStoredAndChangesNothing) {
    for (int const value : {0, 1, 12345}) {
        auto const type = static_cast<RenderBackend::BufferType>(value);
        size_t const tile = 100 + static_cast<size_t>(value);
        Staged buffer = instance->concurrentStagingBuffer(tile, type, kTwoTexels);
        EXPECT_EQ(buffer->type(), type);
        buffer->write(Bytes(6, 1), 0);
        EXPECT_TRUE(synchronize(std::move(buffer)));
        EXPECT_TRUE(instance->tileSet(tile));
    }
}

TEST_F(StagingRingTest, SixteenBitTileBecomesHalfAsManyRgbaTexels) {
    EXPECT_EQ(written(1, {8, 3, 1})->size(), (Sizes{4, 3, 4}));
    EXPECT_EQ(written(2, {9, 3, 1})->size(), (Sizes{4, 3, 4})) << "the last sample of an odd width is lost";
}

TEST_F(StagingRingTest, OtherComponentCountsAreRefusedAndReserveNothing) {
    gl.forgetCalls();
    for (size_t const components : {0U, 2U, 4U, 5U})
        EXPECT_EQ(failureOf([&] { reserve(1, {4, 4, components}); }), kRefusedSize) << components;
    EXPECT_EQ(failureOf([&] { reserve(1, {4, 4}); }), kRefusedSize);
    EXPECT_EQ(failureOf([&] { reserve(1, {}); }), kRefusedSize);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_FALSE(instance->tileSet(1)) << "unlike setTile, no entry comes first";
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0}));
}

TEST_F(StagingRingTest, OneComponentIsRefusedWhereTheInstanceIsNotRGBA32) {
    instance.reset();
    for (auto const format : {RenderBackend::RGB24, RenderBackend::GRAY8, RenderBackend::UNDEFINED}) {
        Gles3RenderBackend other(format, kDefaultBudget);
        auto const otherInstance = other.createInstance(surface);
        EXPECT_EQ(failureOf([&] { otherInstance->concurrentStagingBuffer(1, {}, {4, 4, 1}); }), kRefusedSize);
        EXPECT_NO_THROW(otherInstance->concurrentStagingBuffer(1, {}, {4, 4, 3}));
    }
}

// Reservation

TEST_F(StagingRingTest, ReservationInTheOpenBufferMakesNoGlCall) {
    gl.forgetCalls();
    Staged const buffer = written(1, kTwoTexels);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_FALSE(instance->tileSet(1)) << "nothing is uploaded before the buffer is closed";
}

TEST_F(StagingRingTest, EachReservationAddsThreeAndEachWriteTakesThree) {
    Staged const first = reserve(1, kTwoTexels);
    EXPECT_EQ(counters(), (std::vector<int>{3, 0, 0, 0}));
    Staged const second = reserve(2, kTwoTexels);
    EXPECT_EQ(counters(), (std::vector<int>{6, 0, 0, 0}));
    Staged const third = reserve(3, kWholeBuffer);
    EXPECT_EQ(counters(), (std::vector<int>{6, 3, 0, 0}));
    second->write(Bytes(6), 0);
    EXPECT_EQ(counters(), (std::vector<int>{3, 3, 0, 0}));
    third->write({}, 0); // a short vector counts as a write
    EXPECT_EQ(counters(), (std::vector<int>{3, 0, 0, 0}));
    first->write(Bytes(6), 0);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0}));
}

TEST_F(StagingRingTest, DestroyingAnUnwrittenBufferReturnsNothing) {
    reserve(1, kTwoTexels);
    EXPECT_EQ(counters(), (std::vector<int>{3, 0, 0, 0}));
}

TEST_F(StagingRingTest, TilesThatFillABufferToItsLastByteStayInIt) {
    EXPECT_EQ(ringIndexOf(written(1, kThreeMiB)), 0U);
    EXPECT_EQ(ringIndexOf(written(2, kOneMiB)), 0U);
    EXPECT_EQ(ringIndexOf(written(3, {1, 1, 3})), 1U);
}

TEST_F(StagingRingTest, TileOfAWholeBufferFitsAndArrives) {
    Staged buffer = reserve(1, kWholeBuffer);
    EXPECT_EQ(ringIndexOf(buffer), 0U);
    EXPECT_EQ(buffer->size(), (Sizes{1024, 1024, 4}));
    Bytes pixels(size_t{4} << 20U);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(i * 31 / 7);
    buffer->write(pixels, 0);
    gl.forgetCalls();
    EXPECT_TRUE(synchronize(std::move(buffer)));
    ASSERT_EQ(uploads().size(), 1U);
    EXPECT_TRUE(pixelsOf(uploads()[0]) == pixels);
}

TEST_F(StagingRingTest, TileThatDoesNotFitOpensTheNextBuffer) {
    Staged const unwritten = reserve(1, kThreeMiB); // keeps buffer 0 from being uploaded
    gl.forgetCalls();
    Staged const next = written(2, kTwoMiB);
    EXPECT_EQ(ringIndexOf(next), 1U);
    EXPECT_EQ(mappedBuffers(), 2U);
    auto const bound = gl.callsOf("glBindBuffer");
    ASSERT_EQ(bound.size(), 2U);
    EXPECT_EQ(gl.texts(),
              (std::vector<std::string>{bound[0].text(),
                                        "glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 4194304, GL_MAP_WRITE_BIT | "
                                        "GL_MAP_INVALIDATE_BUFFER_BIT)",
                                        "glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0)"}));
    EXPECT_EQ(gl.boundBuffer(GL_PIXEL_UNPACK_BUFFER), 0U);
}

// Deliberate: hosts keep to 4 MiB; the ring moves on once and asks no further.
TEST_F(StagingRingTest, LargerTileThanABufferIsNotRefusedAndMovesOnOnce) {
    Staged const buffer = reserve(1, {2048, 1024, 3});
    EXPECT_EQ(ringIndexOf(buffer), 1U);
    EXPECT_EQ(counters(), (std::vector<int>{0, 3, 0, 0}));
}

TEST_F(StagingRingTest, ReservationsGoRoundTheRing) {
    std::vector<size_t> indices;
    for (size_t tile = 0; tile < 9; ++tile)
        indices.push_back(ringIndexOf(written(tile, kWholeBuffer)));
    EXPECT_EQ(indices, (std::vector<size_t>{0, 1, 2, 3, 0, 1, 2, 3, 0}));
}

// Uploading

TEST_F(StagingRingTest, TilesAreUploadedInTheOrderOfReservationFromConsecutiveBytes) {
    Staged const first = reserve(1, {2, 1, 3});
    Staged const second = reserve(2, {4, 2, 1});
    Staged third = reserve(3, {1, 1, 3});
    third->write(Bytes(3, 33), 0);
    first->write({1, 2, 3, 4, 5, 6}, 0);
    second->write(Bytes(16, 22), 0);
    gl.forgetCalls();
    EXPECT_TRUE(synchronize(std::move(third)));

    auto const done = uploads();
    EXPECT_EQ(done, (std::vector<Upload>{{"offset 0", 0}, {"offset 6", 0}, {"offset 22", 0}}));
    EXPECT_EQ(pixelsOf(done[0]), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(pixelsOf(done[1]), Bytes(16, 22));
    EXPECT_EQ(pixelsOf(done[2]), Bytes(3, 33));
    EXPECT_EQ(gl.texture(done[0].texture).image().format, static_cast<GLenum>(GL_RGB));
    EXPECT_EQ(gl.texture(done[1].texture).image().format, static_cast<GLenum>(GL_RGBA));
    EXPECT_EQ(gl.texture(done[1].texture).image().width, 2U);
    EXPECT_EQ(gl.boundBuffer(GL_PIXEL_UNPACK_BUFFER), 0U);
}

TEST_F(StagingRingTest, BufferIsUnmappedBeforeItsTilesAreUploaded) {
    Staged buffer = written(1, kTwoTexels);
    GLuint const closed = mappedBuffer();
    gl.forgetCalls();
    synchronize(std::move(buffer));
    std::vector<std::string> steps;
    for (auto const& call : gl.calls())
        if (call.name == "glMapBufferRange" || call.name == "glUnmapBuffer" || call.name == "glTexImage2D")
            steps.push_back(call.name);
    EXPECT_EQ(steps, (std::vector<std::string>{"glMapBufferRange", "glUnmapBuffer", "glTexImage2D"}))
        << "the next one is open before this one goes";
    EXPECT_FALSE(gl.buffer(closed).mapped);
    EXPECT_EQ(mappedBuffers(), 1U);
}

TEST_F(StagingRingTest, OddRowsNeedNoPadding) {
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ALIGNMENT), 1) << "since the first upload, that of the shared resources";
    Bytes const pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};
    Staged buffer = reserve(1, {3, 2, 3});
    buffer->write(pixels, 0);
    gl.forgetCalls();
    synchronize(std::move(buffer));
    EXPECT_EQ(pixelsOf(uploads().at(0)), pixels);
}

TEST_F(StagingRingTest, TilesAreUploadedOnceAlthoughTheBufferIsUsedAgain) {
    for (size_t tile = 0; tile < 8; ++tile)
        synchronize(written(tile, kTwoTexels));
    EXPECT_EQ(gl.count("glTexImage2D"), 8U + 1U) << "and the texture that stands for missing tiles";
}

TEST_F(StagingRingTest, TileReservedTwiceKeepsTheLaterPixels) {
    Staged const first = written(1, kTwoTexels, 1);
    gl.forgetCalls();
    synchronize(written(1, kTwoTexels, 2));
    auto const done = uploads();
    ASSERT_EQ(done.size(), 2U);
    EXPECT_EQ(done[0].texture, done[1].texture);
    EXPECT_EQ(pixelsOf(done[1]), Bytes(6, 2));
}

TEST_F(StagingRingTest, ReservationUploadsWhatIsClosedAndWritten) {
    Staged const first = written(1, kWholeBuffer);
    Staged const second = written(2, kWholeBuffer);
    EXPECT_FALSE(instance->tileSet(1)) << "closed by the second reservation, after its look at the ring";
    Staged const third = written(3, kTwoTexels);
    EXPECT_TRUE(instance->tileSet(1));
    EXPECT_FALSE(instance->tileSet(2));
}

TEST_F(StagingRingTest, RefusedSizeUploadsNothing) {
    Staged const first = written(1, kWholeBuffer);
    Staged const second = written(2, kWholeBuffer);
    EXPECT_EQ(failureOf([&] { reserve(3, {1, 1, 2}); }), kRefusedSize);
    EXPECT_FALSE(instance->tileSet(1));
}

TEST_F(StagingRingTest, UploadsRelyOnTheUnpackAlignmentThatCreatingTheInstanceLeaves) {
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ALIGNMENT), 1);
    gl.forgetCalls();
    synchronize(written(1, {5, 5, 3}));
    EXPECT_EQ(uploads().size(), 1U);
    EXPECT_EQ(gl.count("glPixelStorei"), 0U);
}

TEST_F(StagingRingTest, ClosedBufferWaitsForItsLastWriter) {
    Staged const missing = reserve(1, kTwoTexels);
    Staged const present = written(2, kTwoTexels);
    Staged const next = written(3, kWholeBuffer); // closes buffer 0
    Staged const look = written(4, kWholeBuffer);
    EXPECT_FALSE(instance->tileSet(1));
    EXPECT_FALSE(instance->tileSet(2));
    missing->write(Bytes(6, 9), 0);
    EXPECT_FALSE(instance->tileSet(1)) << "a write uploads nothing";
    written(5, kTwoTexels);
    EXPECT_TRUE(instance->tileSet(1));
    EXPECT_TRUE(instance->tileSet(2));
}

TEST_F(StagingRingTest, LaterBufferWaitsForTheEarlierOne) {
    Staged const missing = reserve(1, kTwoTexels);
    Staged const second = written(2, kWholeBuffer);
    Staged const third = written(3, kWholeBuffer); // buffers 0 and 1 are closed, 1 is written
    gl.forgetCalls();
    Staged const fourth = written(4, kTwoTexels); // buffer 3
    EXPECT_TRUE(uploads().empty());
    missing->write(Bytes(6, 1), 0);
    Staged const fifth = written(5, kTwoTexels);
    auto const done = uploads();
    ASSERT_EQ(done.size(), 3U) << "buffers 0, 1 and 2";
    EXPECT_EQ(pixelsOf(done[0]), Bytes(6, 1));
    EXPECT_EQ(pixelsOf(done[1]).size(), size_t{4} << 20U);
}

TEST_F(StagingRingTest, UploadedTileIsLockedAndCostsNothing) {
    instance.reset();
    Gles3RenderBackend small(RenderBackend::RGBA32, 100);
    instance = small.createInstance(surface);
    synchronize(written(1, {5, 5, 3}));
    for (size_t tile = 10; tile < 20; ++tile)
        instance->setTile(tile, Bytes(100), {5, 5, 4}, 0);
    EXPECT_TRUE(instance->tileSet(1)) << "locked";
    EXPECT_FALSE(instance->tileSet(18));
    EXPECT_TRUE(instance->tileSet(19)) << "the budget is all for the other tiles";

    instance->unlockTile(1);
    instance->setTile(20, Bytes(100), {5, 5, 4}, 0);
    EXPECT_FALSE(instance->tileSet(1)) << "unlocked, it is the oldest";
    synchronize(written(2, {5, 5, 3}));
    EXPECT_EQ(instance->eraseTile(2), 0U);
    instance.reset();
}

TEST_F(StagingRingTest, TileThatIsSetWhileItIsStagedTakesTheStagedPixelsAndKeepsItsCost) {
    Staged const buffer = written(1, kTwoTexels, 9);
    instance->setTile(1, Bytes(12, 5), {2, 2, 3}, 0);
    GLuint const texture = gl.boundTexture();
    synchronize(written(2, kTwoTexels)); // closes the buffer that holds both
    EXPECT_EQ(gl.texture(texture).image().pixels, Bytes(6, 9));
    EXPECT_EQ(instance->eraseTile(1), 12U);
}

TEST_F(StagingRingTest, TilesKeepTheInstanceThatReservedThem) {
    Staged const first = written(5, kTwoTexels, 1);
    auto const firstInstance = instance;
    instance->eraseTarget(0); // an empty target table lets the backend make a second instance on the same caches
    instance = backend.createInstance(surface);
    ASSERT_NE(InstanceId::of(*instance), InstanceId::of(*firstInstance));
    gl.forgetCalls();
    synchronize(written(6, kTwoTexels, 2)); // the same ring, so this uploads both
    ASSERT_EQ(uploads().size(), 2U);
    EXPECT_TRUE(firstInstance->tileSet(5));
    EXPECT_FALSE(instance->tileSet(5));
    EXPECT_TRUE(instance->tileSet(6));
    EXPECT_FALSE(firstInstance->tileSet(6));
}

} // namespace
