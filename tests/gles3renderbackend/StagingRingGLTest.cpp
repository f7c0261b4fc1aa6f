// Tiles that worker threads write into the upload ring of a real GL, drawn and compared byte for byte.
#include "tests/gles3renderbackend/BackendGLTest.h"
#include "tests/gles3renderbackend/StagingRing.h"
#include "tests/support/PixelMatchers.h"
#include "tests/support/WorkerThreads.h"

namespace {

using namespace backendtest;

struct Tiles {
    size_t columns;
    size_t rows;
    size_t width; // texels
    size_t height;
    size_t bytesPerTexel;  // 3, or 4 for 16-bit samples, two to a texel
    size_t synchronizedAt; // after so many tiles the latest is synchronised, which closes the open buffer; 0: never
};

class StagingRingGLTest : public BackendGLTest, public ::testing::WithParamInterface<size_t> {
protected:
    static Picture tilePicture(Tiles const& tiles, size_t tile) {
        return noise(tiles.width, tiles.height, tiles.bytesPerTexel, static_cast<std::uint32_t>(tile) + 1);
    }

    static Sizes sizeOf(Tiles const& tiles) {
        bool const samples = tiles.bytesPerTexel == 4;
        return {samples ? 2 * tiles.width : tiles.width, tiles.height, samples ? size_t{1} : size_t{3}};
    }

    // Reserves and hands to the writers, one tile after the other, and synchronises all of them.
    void stage(Tiles const& tiles, size_t writers) const {
        Watchdog const watchdog("tiles through the upload ring");
        std::vector<Staged> staged;
        {
            WorkerThreads pool(writers);
            size_t const count = tiles.columns * tiles.rows;
            for (size_t tile = 0; tile < count; ++tile) {
                staged.push_back(instance->concurrentStagingBuffer(tile, {}, sizeOf(tiles)));
                pool.run([&buffer = *staged.back(), &tiles, tile] { buffer.write(tilePicture(tiles, tile).bytes, 0); });
                bool const due = tiles.synchronizedAt != 0 && tile % tiles.synchronizedAt == tiles.synchronizedAt - 1;
                if (!due && tile + 1 != count) continue;
                // It lies in the open buffer, whose writers are waited for: nobody writes it any more when it is
                // destroyed.
                EXPECT_TRUE(instance->synchronizeConcurrentStagingBuffer(std::move(staged.back())));
                staged.pop_back();
            }
        }
        // Those in closed buffers are not waited for, so their writers are done before they are given back.
        for (auto& buffer : staged)
            EXPECT_TRUE(instance->synchronizeConcurrentStagingBuffer(std::move(buffer)));
    }

    // Draws all tiles side by side and compares them with the same pictures laid by loops.
    void expectDrawn(Tiles const& tiles) const {
        size_t const width = tiles.columns * tiles.width;
        size_t const height = tiles.rows * tiles.height;
        bool const rgb = tiles.bytesPerTexel == 3;
        size_t const target =
            instance->createTarget({width, height}, 8 * tiles.bytesPerTexel, false, RenderBackend::NEAREST,
                                   rgb ? RenderBackend::RGB24 : RenderBackend::RGBA32);
        Picture expected(width, height, tiles.bytesPerTexel);
        std::vector<Sizes> cells;
        Sizes ids;
        for (size_t tile = 0; tile < tiles.columns * tiles.rows; ++tile) {
            size_t const column = tile % tiles.columns;
            size_t const row = tile / tiles.columns;
            cells.push_back({column, row});
            ids.push_back(tile);
            ASSERT_TRUE(instance->tileSet(tile)) << tile;
            Picture const picture = tilePicture(tiles, tile);
            for (size_t y = 0; y < tiles.height; ++y)
                for (size_t x = 0; x < tiles.width; ++x)
                    copyTexel(picture, x, y, expected, column * tiles.width + x, row * tiles.height + y);
        }
        Filter const blit = instantiated(rgb ? "BlitFilter3x8" : "BlitFilter4x8");
        instance->drawTiles(target, blit, {0, width - 1, 0, height - 1}, {0, 0, 0, 0}, {tiles.width, tiles.height},
                            cells, ids, {});
        EXPECT_TRUE(pixelsEqual(read(target).bytes, expected.bytes, width, tiles.bytesPerTexel));
    }
};

TEST_P(StagingRingGLTest, SixteenBitTilesThatRollOverArrive) {
    Tiles const tiles = {20, 16, 64, 64, 4, 0}; // 5 MiB
    stage(tiles, GetParam());
    expectDrawn(tiles);
}

TEST_P(StagingRingGLTest, SixteenBitTilesOfBuffersThatAreClosedEarlyArrive) {
    Tiles const tiles = {20, 15, 32, 32, 4, 7}; // closes 43 buffers: ten times round the ring
    stage(tiles, GetParam());
    expectDrawn(tiles);
}

TEST_P(StagingRingGLTest, RgbTilesWithOddRowsArrive) {
    Tiles const tiles = {20, 15, 37, 13, 3, 45};
    stage(tiles, GetParam());
    expectDrawn(tiles);
}

TEST_P(StagingRingGLTest, TilesOfWholeBuffersGoRoundTheRingAndArrive) {
    Tiles const tiles = {3, 2, 1024, 1024, 4, 0};
    stage(tiles, GetParam());
    expectDrawn(tiles);
}

INSTANTIATE_TEST_SUITE_P(Writers, StagingRingGLTest, ::testing::Values(size_t{1}, size_t{2}, size_t{8}, size_t{32}),
                         [](auto const& row) { return std::to_string(row.param); });

TEST_F(StagingRingGLTest, ShortVectorGivesATileOfZerosInABufferThatHeldOthers) {
    Watchdog const watchdog("a tile of zeros");
    Tiles const tiles = {1, 1, 8, 8, 4, 0};
    for (size_t tile = 0; tile < 8; ++tile) { // every buffer is dirty then
        Staged buffer = instance->concurrentStagingBuffer(100 + tile, {}, sizeOf(tiles));
        buffer->write(Bytes(256, 0xEE), 0);
        EXPECT_TRUE(instance->synchronizeConcurrentStagingBuffer(std::move(buffer)));
    }
    Staged buffer = instance->concurrentStagingBuffer(0, {}, sizeOf(tiles));
    buffer->write(Bytes(255, 0xEE), 0);
    EXPECT_TRUE(instance->synchronizeConcurrentStagingBuffer(std::move(buffer)));

    size_t const target = targetOf(noise(8, 8, 4, 3));
    instance->drawTiles(target, instantiated("BlitFilter4x8"), {0, 7, 0, 7}, {0, 0, 0, 0}, {8, 8}, {{0, 0}}, {0}, {});
    EXPECT_EQ(read(target).bytes, Bytes(256, 0));
}

} // namespace
