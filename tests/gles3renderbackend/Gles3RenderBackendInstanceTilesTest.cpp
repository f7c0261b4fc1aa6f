#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <limits>

namespace {

using namespace backendtest;

constexpr size_t kLargestId = std::numeric_limits<size_t>::max();

constexpr char const* kRefusedSize =
    "#Name:Can't set tile pixels with this size#Location:void Gles3RenderBackendInstance::setTile(size_t tile, "
    "std::vector<unsigned char> const& pixels, std::vector<size_t> const& size, size_t offset)";

class Gles3RenderBackendInstanceTilesTest : public BackendRecordingTest {
protected:
    // An instance with another format or budget; the one of the fixture is gone then.
    void restart(RenderBackend::ImageFormatType format, size_t budget) {
        instance.reset();
        other = std::make_unique<Gles3RenderBackend>(format, budget);
        instance = other->createInstance(surface);
    }

    // 100 bytes.
    void setHundredBytes(size_t tile) const { instance->setTile(tile, {}, {5, 5, 4}, 0); }

    std::vector<size_t> present(std::vector<size_t> const& tiles) const {
        std::vector<size_t> result;
        for (size_t const tile : tiles)
            if (instance->tileSet(tile)) result.push_back(tile);
        return result;
    }

    // The image that the last setTile left.
    RecordingGl::Image const& lastImage() const { return gl.texture(gl.boundTexture()).image(); }

    std::unique_ptr<Gles3RenderBackend> other;
};

TEST_F(Gles3RenderBackendInstanceTilesTest, RgbTileBecomesAnRgbTexture) {
    Bytes const pixels = {1, 2, 3, 4, 5, 6};
    instance->setTile(5, pixels, {2, 1, 3}, 0);
    EXPECT_TRUE(instance->tileSet(5));
    EXPECT_EQ(lastImage().width, 2U);
    EXPECT_EQ(lastImage().height, 1U);
    EXPECT_EQ(lastImage().format, static_cast<GLenum>(GL_RGB));
    EXPECT_EQ(lastImage().pixels, pixels);
    EXPECT_EQ(instance->eraseTile(5), 6U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, RgbaTileBecomesAnRgbaTextureThatIsSampledAsItIs) {
    Bytes const pixels = {1, 2, 3, 4, 5, 6, 7, 8};
    instance->setTile(5, pixels, {1, 2, 4}, 0);
    EXPECT_EQ(lastImage().format, static_cast<GLenum>(GL_RGBA));
    EXPECT_EQ(lastImage().pixels, pixels);
    auto const& parameters = gl.texture(gl.boundTexture()).parameters;
    EXPECT_EQ(parameters.at(GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(parameters.at(GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(parameters.at(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameters.at(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(instance->eraseTile(5), 8U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, ColourTilesNeedNoParticularInstanceFormat) {
    for (auto const format :
         {RenderBackend::RGB24, RenderBackend::RGBA32, RenderBackend::GRAY8, RenderBackend::UNDEFINED}) {
        restart(format, kDefaultBudget);
        EXPECT_NO_THROW(instance->setTile(1, {}, {2, 2, 3}, 0));
        EXPECT_NO_THROW(instance->setTile(2, {}, {2, 2, 4}, 0));
    }
}

TEST_F(Gles3RenderBackendInstanceTilesTest, SixteenBitTileIsHalfAsWideAndCostsOneByteAPixel) {
    Bytes const samples = {1, 2, 3, 4, 5, 6, 7, 8}; // four samples, little-endian
    instance->setTile(5, samples, {4, 1, 1}, 0);
    EXPECT_EQ(lastImage().width, 2U);
    EXPECT_EQ(lastImage().height, 1U);
    EXPECT_EQ(lastImage().format, static_cast<GLenum>(GL_RGBA));
    EXPECT_EQ(lastImage().pixels, samples);
    EXPECT_EQ(instance->eraseTile(5), 4U) << "4 x 1 x 1, as the caller gave it";
}

TEST_F(Gles3RenderBackendInstanceTilesTest, OddSixteenBitWidthLosesItsLastSample) {
    instance->setTile(5, {}, {5, 3, 1}, 0);
    EXPECT_EQ(lastImage().width, 2U);
    EXPECT_EQ(instance->eraseTile(5), 15U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, OneComponentTileIsRefusedWhereTheInstanceIsNotRGBA32) {
    for (auto const format : {RenderBackend::RGB24, RenderBackend::GRAY8, RenderBackend::UNDEFINED}) {
        restart(format, kDefaultBudget);
        EXPECT_EQ(failureOf([&] { instance->setTile(5, {}, {4, 1, 1}, 0); }), kRefusedSize);
    }
}

TEST_F(Gles3RenderBackendInstanceTilesTest, RefusedTileExistsEmptyAfterwards) {
    for (size_t const components : {0U, 2U, 5U}) {
        EXPECT_EQ(failureOf([&] { instance->setTile(components, Bytes(64), {4, 1, components}, 0); }), kRefusedSize);
        EXPECT_TRUE(instance->tileSet(components));
        EXPECT_EQ(instance->eraseTile(components), 0U) << "it costs nothing";
        EXPECT_FALSE(instance->tileSet(components));
    }
}

TEST_F(Gles3RenderBackendInstanceTilesTest, ShortSizeIsRefusedLikeAWrongComponentCount) {
    EXPECT_EQ(failureOf([&] { instance->setTile(5, Bytes(64), {4, 4}, 0); }), kRefusedSize);
    EXPECT_EQ(failureOf([&] { instance->setTile(6, Bytes(64), {}, 0); }), kRefusedSize);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, RefusedComponentsLeaveAnExistingTileAsItWas) {
    instance->setTile(5, Bytes(16, 9), {2, 2, 4}, 0);
    EXPECT_EQ(failureOf([&] { instance->setTile(5, Bytes(64), {4, 4, 2}, 0); }), kRefusedSize);
    EXPECT_EQ(lastImage().pixels, Bytes(16, 9));
    EXPECT_EQ(instance->eraseTile(5), 16U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, FailedUploadPassesThroughAndTheTileKeepsItsCost) {
    setHundredBytes(5);
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    EXPECT_THROW(instance->setTile(5, {}, {65, 5, 4}, 0), VelmoraRangeException);
    EXPECT_EQ(instance->eraseTile(5), 100U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, PixelsAreReadFromTheOffsetOn) {
    instance->setTile(5, {99, 99, 99, 1, 2, 3, 4}, {1, 1, 4}, 3);
    EXPECT_EQ(lastImage().pixels, (Bytes{1, 2, 3, 4}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, OffsetBehindThePixelsAllocatesWithoutFilling) {
    instance->setTile(5, {1, 2, 3, 4}, {1, 1, 4}, 4);
    EXPECT_EQ(gl.last("glTexImage2D").text(),
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)");
}

TEST_F(Gles3RenderBackendInstanceTilesTest, PixelsThatEndInsideTheTileAreRefused) {
    EXPECT_THROW(instance->setTile(5, Bytes(15), {2, 2, 4}, 0), VelmoraException);
    EXPECT_THROW(instance->setTile(5, Bytes(16), {2, 2, 4}, 1), VelmoraException);
    EXPECT_NO_THROW(instance->setTile(5, Bytes(17), {2, 2, 4}, 1));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, TileAfterARefusedOneArrives) {
    for (size_t const components : {3U, 4U}) {
        size_t const tile = 70 + components;
        EXPECT_THROW(instance->setTile(tile, Bytes(15), {4, 4, components}, 0), VelmoraException);
        EXPECT_TRUE(instance->tileSet(tile)) << "it is there, empty";
        instance->setTile(tile, Bytes(4 * components, 7), {2, 2, components}, 0);
        EXPECT_EQ(lastImage().pixels, Bytes(4 * components, 7));
    }
}

// Required: a size that GL cannot take is the texture's from then on.
TEST_F(Gles3RenderBackendInstanceTilesTest, TileTooLargeForGlIsErasedBeforeItIsSetAgain) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    EXPECT_THROW(instance->setTile(5, {}, {65, 65, 4}, 0), VelmoraRangeException);
    instance->eraseTile(5);
    instance->setTile(5, Bytes(16, 7), {2, 2, 4}, 0);
    EXPECT_EQ(lastImage().pixels, Bytes(16, 7));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, BudgetKeepsTheMostRecentlyUsedTiles) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    setHundredBytes(2);
    EXPECT_EQ(present({1, 2}), (std::vector<size_t>{1, 2}));
    setHundredBytes(3);
    EXPECT_EQ(present({1, 2, 3}), (std::vector<size_t>{2, 3}));
    setHundredBytes(2); // used again, so 3 is the oldest now
    setHundredBytes(4);
    EXPECT_EQ(present({2, 3, 4}), (std::vector<size_t>{2, 4}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, AskingForATileIsNotAUse) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    setHundredBytes(2);
    EXPECT_TRUE(instance->tileSet(1));
    setHundredBytes(3);
    EXPECT_EQ(present({1, 2, 3}), (std::vector<size_t>{2, 3}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, EvictionDeletesTheTexture) {
    restart(RenderBackend::RGBA32, 100);
    setHundredBytes(1);
    GLuint const texture = gl.boundTexture();
    setHundredBytes(2);
    EXPECT_FALSE(gl.isLiving(texture));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, TileLargerThanTheBudgetStaysUntilTheNextOne) {
    restart(RenderBackend::RGBA32, 99);
    setHundredBytes(1);
    EXPECT_TRUE(instance->tileSet(1));
    EXPECT_THROW(instance->setTile(2, {}, {1, 1, 2}, 0), VelmoraException);
    EXPECT_FALSE(instance->tileSet(1)) << "making the entry evicts before the size is looked at";
}

TEST_F(Gles3RenderBackendInstanceTilesTest, LockedTileSurvivesAndItsBytesDoNotCount) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    instance->lockTile(1);
    for (size_t tile = 2; tile < 20; ++tile)
        setHundredBytes(tile);
    EXPECT_EQ(present({1, 16, 17, 18, 19}), (std::vector<size_t>{1, 18, 19}));
    instance->unlockTile(1);
    setHundredBytes(20);
    EXPECT_EQ(present({1, 18, 19, 20}), (std::vector<size_t>{19, 20}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, LockingIsAFlagNotACount) {
    restart(RenderBackend::RGBA32, 100);
    setHundredBytes(1);
    instance->lockTile(1);
    instance->lockTile(1);
    instance->unlockTile(1);
    setHundredBytes(2);
    EXPECT_EQ(present({1, 2}), (std::vector<size_t>{2}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, LockingAndUnlockingAreNoUses) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    setHundredBytes(2);
    instance->lockTile(1);
    instance->unlockTile(1);
    setHundredBytes(3);
    EXPECT_EQ(present({1, 2, 3}), (std::vector<size_t>{2, 3}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, SmallerUploadNeverEvicts) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    setHundredBytes(2);
    instance->setTile(2, {}, {5, 4, 4}, 0);
    instance->setTile(1, Bytes(64), {4, 4, 4}, 0);
    EXPECT_EQ(present({1, 2}), (std::vector<size_t>{1, 2}));
    EXPECT_EQ(instance->eraseTile(1), 64U);
    EXPECT_EQ(instance->eraseTile(2), 80U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, LockedTileCountsItsNewSizeAsLocked) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    instance->lockTile(1);
    instance->setTile(1, {}, {10, 10, 4}, 0);
    setHundredBytes(2);
    setHundredBytes(3);
    EXPECT_EQ(present({1, 2, 3}), (std::vector<size_t>{1, 2, 3}));
}

TEST_F(Gles3RenderBackendInstanceTilesTest, OperationsOnAbsentTilesDoNothing) {
    gl.forgetCalls();
    EXPECT_FALSE(instance->tileSet(5));
    instance->lockTile(5);
    instance->unlockTile(5);
    EXPECT_FALSE(instance->tileSet(5));
    EXPECT_EQ(instance->eraseTile(5), 0U);
    EXPECT_EQ(instance->eraseTiles(0, kLargestId), 0U);
    EXPECT_EQ(instance->clearTiles(), 0U);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendInstanceTilesTest, ErasingDeletesTheTextureAndReturnsTheBytes) {
    setHundredBytes(1);
    GLuint const texture = gl.boundTexture();
    EXPECT_EQ(instance->eraseTile(1), 100U);
    EXPECT_FALSE(gl.isLiving(texture));
    EXPECT_FALSE(instance->tileSet(1));
    EXPECT_EQ(instance->eraseTile(1), 0U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, ErasingRemovesLockedTilesAndTheirShareOfTheBudget) {
    restart(RenderBackend::RGBA32, 200);
    setHundredBytes(1);
    instance->lockTile(1);
    EXPECT_EQ(instance->eraseTile(1), 100U);
    for (size_t tile = 2; tile < 5; ++tile)
        setHundredBytes(tile);
    EXPECT_EQ(present({1, 2, 3, 4}), (std::vector<size_t>{3, 4})) << "no more than 200 bytes of unlocked tiles";
}

TEST_F(Gles3RenderBackendInstanceTilesTest, ErasedRangeIsHalfOpen) {
    for (size_t tile = 4; tile < 8; ++tile)
        setHundredBytes(tile);
    EXPECT_EQ(instance->eraseTiles(5, 5), 0U);
    EXPECT_EQ(present({4, 5, 6, 7}), (std::vector<size_t>{4, 5, 6, 7}));
    EXPECT_EQ(instance->eraseTiles(5, 6), 100U);
    EXPECT_EQ(present({4, 5, 6, 7}), (std::vector<size_t>{4, 6, 7}));
    instance->lockTile(6);
    EXPECT_EQ(instance->eraseTiles(0, 7), 200U);
    EXPECT_EQ(present({4, 5, 6, 7}), (std::vector<size_t>{7}));
    EXPECT_EQ(instance->eraseTiles(9, 5), 0U) << "a range that ends before it starts";
}

TEST_F(Gles3RenderBackendInstanceTilesTest, ClearingTilesLeavesTheLargestId) {
    for (size_t const tile : {size_t{0}, size_t{1}, kLargestId - 1, kLargestId})
        setHundredBytes(tile);
    EXPECT_EQ(instance->clearTiles(), 300U);
    EXPECT_EQ(present({0, 1, kLargestId - 1, kLargestId}), (std::vector<size_t>{kLargestId}));
    EXPECT_EQ(instance->eraseTile(kLargestId), 100U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, FreeSlotsAreUnlimitedInEveryState) {
    restart(RenderBackend::RGBA32, 0);
    EXPECT_EQ(instance->freeSlots(), kLargestId);
    setHundredBytes(1);
    instance->lockTile(1);
    EXPECT_EQ(instance->freeSlots(), kLargestId);
}

// An image smaller in both directions goes into the corner of the texture, and only its cost shrinks.
TEST_F(Gles3RenderBackendInstanceTilesTest, SmallerTileIsWrittenIntoTheCornerOfTheOldOne) {
    instance->setTile(5, Bytes(16, 9), {2, 2, 4}, 0);
    instance->setTile(5, {1, 2, 3, 4}, {1, 1, 4}, 0);
    EXPECT_EQ(lastImage().pixels, (Bytes{1, 2, 3, 4, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(instance->eraseTile(5), 4U);
}

TEST_F(Gles3RenderBackendInstanceTilesTest, SmallerTileOfThreeComponentsIsRefusedWhereGlWouldReadPastIt) {
    instance->setTile(5, Bytes(16, 9), {2, 2, 4}, 0);
    EXPECT_THROW(instance->setTile(5, {1, 2, 3}, {1, 1, 3}, 0), VelmoraException);
    EXPECT_EQ(lastImage().pixels, Bytes(16, 9));
    EXPECT_EQ(instance->eraseTile(5), 16U);
}

} // namespace
