// Tiles drawn by a real GL, byte for byte as loops over pixels place them.
#include "tests/gles3renderbackend/DrawnScene.h"
#include "tests/support/PixelMatchers.h"

#include <algorithm>
#include <map>

namespace {

using namespace backendtest;

class Gles3RenderBackendDrawingGLTest : public BackendGLTest {
protected:
    std::map<size_t, Picture> setTiles(Scene const& scene) const {
        std::map<size_t, Picture> tiles;
        for (auto const& block : scene.blocks) {
            bool const missing =
                std::find(scene.missing.begin(), scene.missing.end(), block.tile) != scene.missing.end();
            if (missing || tiles.count(block.tile) != 0) continue;
            Picture const picture = tilePicture(scene, block.tile);
            size_t const width = scene.tileComponents == 1 ? scene.tileSize[0] : picture.width;
            instance->setTile(block.tile, picture.bytes, {width, picture.height, scene.tileComponents}, 0);
            tiles.emplace(block.tile, picture);
        }
        return tiles;
    }

    void draw(Scene const& scene, size_t target, Filter const& filter) const {
        std::vector<Sizes> cells;
        Sizes ids;
        for (auto const& block : scene.blocks) {
            cells.push_back(block.cell);
            ids.push_back(block.tile);
        }
        instance->drawTiles(target, filter, scene.range, {scene.grid[0], 0, scene.grid[1], 0}, scene.tileSize, cells,
                            ids, scene.offsets);
    }

    // Draws into a target that is black, or coloured where it may be, and compares all of it.
    void expectDrawnAsByHand(Scene const& scene, size_t target, Picture expected) const {
        bool const packed = scene.pixelsPerTexel != 1 || scene.texelsPerPixel != 1;
        Sizes const color = packed ? Sizes{0, 0, 0, 40} : Sizes{10, 20, 30, 40};
        instance->clear(target, color);
        for (size_t i = 0; i < expected.bytes.size(); ++i)
            expected.bytes[i] = static_cast<unsigned char>(color[i % expected.bytesPerTexel]);

        auto const tiles = setTiles(scene);
        draw(scene, target, instantiated(scene.filter));
        drawnByHand(scene, tiles, expected);
        EXPECT_TRUE(pixelsEqual(read(target).bytes, expected.bytes, expected.width, expected.bytesPerTexel));
    }
};

class Gles3RenderBackendSceneGLTest : public Gles3RenderBackendDrawingGLTest,
                                      public ::testing::WithParamInterface<Scene> {};

TEST_P(Gles3RenderBackendSceneGLTest, TilesLieWhereTheLoopsPutThem) {
    Scene const& scene = GetParam();
    size_t const target =
        instance->createTarget(scene.targetSize, scene.bits, false, RenderBackend::NEAREST, scene.format);
    expectDrawnAsByHand(scene, target,
                        Picture(texels(scene, scene.targetSize[0]), scene.targetSize[1], bytesPerTexel(scene.format)));
}

// A grid of columns x rows cells from cell (column, row) on, tiles numbered as they come.
std::vector<Block> cells(size_t column, size_t row, size_t columns, size_t rows) {
    std::vector<Block> blocks;
    for (size_t y = 0; y < rows; ++y)
        for (size_t x = 0; x < columns; ++x)
            blocks.push_back({{column + x, row + y}, blocks.size()});
    return blocks;
}

std::vector<Scene> scenes() {
    auto const rgb = RenderBackend::RGB24;
    auto const rgba = RenderBackend::RGBA32;
    return {
        {"RgbaTilesOfOddSizeFillAnRgbaTarget",
         "BlitFilter4x8",
         rgba,
         32,
         1,
         1,
         4,
         {41, 29},
         {7, 5},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 6, 6),
         {}},
        {"RgbTilesOfOddSizeFillAnRgbTarget",
         "BlitFilter3x8",
         rgb,
         24,
         1,
         1,
         3,
         {41, 29},
         {13, 11},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 4, 3),
         {}},
        {"RgbTilesAreOpaqueInAnRgbaTarget",
         "BlitFilter3x8",
         rgba,
         32,
         1,
         1,
         3,
         {41, 29},
         {13, 11},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 4, 3),
         {}},
        {"RemovedAlphaLeavesTheColours",
         "FilterRemoveAlpha8",
         rgb,
         24,
         1,
         1,
         4,
         {41, 29},
         {13, 11},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 4, 3),
         {}},
        {"RegionInTheMiddleOfTheGridAtAnOddOffset",
         "BlitFilter4x8",
         rgba,
         32,
         1,
         1,
         4,
         {53, 47},
         {7, 5},
         {20, 44, 13, 31},
         {3, 2},
         {11, 17},
         cells(1, 1, 7, 6),
         {}},
        {"RgbRegionInTheMiddleOfTheGridAtAnOddOffset",
         "BlitFilter3x8",
         rgb,
         24,
         1,
         1,
         3,
         {53, 47},
         {13, 11},
         {20, 44, 13, 31},
         {3, 2},
         {11, 17},
         cells(0, 0, 5, 4),
         {}},
        {"RegionLeftOfTheGrid",
         "BlitFilter4x8",
         rgba,
         32,
         1,
         1,
         4,
         {41, 29},
         {7, 5},
         {10, 34, 10, 24},
         {17, 13},
         {5, 3},
         cells(0, 0, 4, 4),
         {}},
        {"RegionFarFromTheOrigin",
         "BlitFilter4x8",
         rgba,
         32,
         1,
         1,
         4,
         {41, 29},
         {7, 5},
         {1000300, 1000324, 2000200, 2000214},
         {1000003, 2000001},
         {5, 3},
         cells(42, 39, 5, 5),
         {}},
        {"MissingTilesAreTransparentBlack",
         "BlitFilter4x8",
         rgba,
         32,
         1,
         1,
         4,
         {41, 29},
         {7, 5},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 6, 6),
         {0, 7, 8, 35}},
        {"MissingTilesAreBlackInAnRgbTarget",
         "BlitFilter3x8",
         rgb,
         24,
         1,
         1,
         3,
         {41, 29},
         {13, 11},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 4, 3),
         {1, 6}},
        {"LaterTileOfACellCoversTheEarlierOne",
         "BlitFilter4x8",
         rgba,
         32,
         1,
         1,
         4,
         {41, 29},
         {7, 5},
         {0, 40, 0, 28},
         {0, 0},
         {0, 0},
         {{{1, 1}, 1}, {{1, 1}, 2}, {{2, 1}, 2}, {{2, 1}, 1}},
         {}},
        {"OneChannelOf16BitsTwoSamplesATexel",
         "BlitFilter1x16",
         rgba,
         16,
         2,
         1,
         1,
         {82, 29},
         {14, 5},
         {0, 81, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 6, 6),
         {}},
        {"OneChannelOf16BitsInTheMiddleOfTheGrid",
         "BlitFilter1x16",
         rgba,
         16,
         2,
         1,
         1,
         {82, 29},
         {14, 5},
         {30, 79, 7, 23},
         {4, 3},
         {6, 5},
         cells(1, 0, 6, 6),
         {9}},
        {"ThreeChannelsOf16BitsAPixelInTwoRgbTexels",
         "BlitFilter3x16",
         rgb,
         48,
         1,
         2,
         3,
         {23, 29},
         {7, 5},
         {0, 22, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 4, 6),
         {}},
        {"ThreeChannelsOf16BitsInTheMiddleOfTheGrid",
         "BlitFilter3x16",
         rgb,
         48,
         1,
         2,
         3,
         {23, 29},
         {7, 5},
         {11, 25, 8, 20},
         {2, 1},
         {5, 9},
         cells(0, 0, 5, 5),
         {7}},
        {"ThreeChannelsOf16BitsAPixelInTwoRgbaTexels",
         "BlitFilter3x16",
         rgba,
         48,
         1,
         2,
         4,
         {23, 29},
         {7, 5},
         {11, 25, 8, 20},
         {2, 1},
         {5, 9},
         cells(0, 0, 5, 5),
         {}},
        {"ThreePixelsOf8BitsInAnRgbTexel",
         "BlitFilter3x8",
         rgb,
         8,
         3,
         1,
         3,
         {99, 29},
         {21, 5},
         {0, 98, 0, 28},
         {0, 0},
         {0, 0},
         cells(0, 0, 5, 6),
         {}},
        {"FourPixelsOf8BitsInAnRgbaTexel",
         "BlitFilter4x8",
         rgba,
         8,
         4,
         1,
         4,
         {100, 29},
         {20, 5},
         {24, 83, 6, 22},
         {4, 1},
         {12, 7},
         cells(0, 0, 5, 6),
         {}},
    };
}

INSTANTIATE_TEST_SUITE_P(Scenes, Gles3RenderBackendSceneGLTest, ::testing::ValuesIn(scenes()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_F(Gles3RenderBackendDrawingGLTest, HostsSurfaceTakesTilesInGlsOrderOfRows) {
    expectDrawnAsByHand({"",
                         "BlitFilter4x8",
                         RenderBackend::RGBA32,
                         32,
                         1,
                         1,
                         4,
                         {16, 16},
                         {5, 3},
                         {4, 14, 2, 11},
                         {1, 1},
                         {3, 5},
                         cells(0, 0, 3, 4),
                         {4}},
                        0, Picture(16, 16, 4));
}

TEST_F(Gles3RenderBackendDrawingGLTest, TileIsStretchedOverItsCell) {
    // A tile of 3 x 2 texels in cells of 6 x 6 pixels: each texel two wide and three high.
    Picture const tile = noise(3, 2, 4, 5);
    size_t const target = instance->createTarget({6, 6}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    instance->setTile(1, tile.bytes, {3, 2, 4}, 0);
    instance->drawTiles(target, instantiated("BlitFilter4x8"), {0, 5, 0, 5}, {0, 5, 0, 5}, {6, 6}, {{0, 0}}, {1}, {});
    Picture expected(6, 6, 4);
    for (size_t y = 0; y < 6; ++y)
        for (size_t x = 0; x < 6; ++x)
            copyTexel(tile, x / 2, y / 3, expected, x, y);
    EXPECT_TRUE(pixelsEqual(read(target).bytes, expected.bytes, 6));
}

TEST_F(Gles3RenderBackendDrawingGLTest, WholeTileIsDrawnAfterAnExecutedFilterUsedPartOfASource) {
    Filter const blit = instantiated("BlitFilter4x8");
    size_t const source = targetOf(noise(8, 8, 4, 1));
    size_t const target = targetOf(Picture(8, 8, 4));
    instance->executeFilter(blit, {{source, 3, 2, false}}, 4, 4, target, 0, 0, 0, 0, SingleFilterParameters(), {1, 1});
    Picture const tile = noise(8, 8, 4, 2);
    instance->setTile(1, tile.bytes, {8, 8, 4}, 0);
    instance->drawTiles(target, blit, {0, 7, 0, 7}, {0, 7, 0, 7}, {8, 8}, {{0, 0}}, {1}, {});
    EXPECT_TRUE(pixelsEqual(read(target).bytes, tile.bytes, 8));
}

TEST_F(Gles3RenderBackendDrawingGLTest, TilesOfTwoInstancesWithOneCacheStayApart) {
    Picture const mine = noise(8, 8, 4, 1);
    Picture const theirs = noise(8, 8, 4, 2);
    instance->eraseTarget(0);
    auto const second = backend.createInstance(surface);
    instance->setTile(1, mine.bytes, {8, 8, 4}, 0);
    second->setTile(1, theirs.bytes, {8, 8, 4}, 0);
    Filter const blit = instantiated("BlitFilter4x8");
    size_t const target = targetOf(Picture(8, 8, 4));
    instance->drawTiles(target, blit, {0, 7, 0, 7}, {0, 7, 0, 7}, {8, 8}, {{0, 0}}, {1}, {});
    EXPECT_TRUE(pixelsEqual(read(target).bytes, mine.bytes, 8));
    second->drawTiles(target, blit, {0, 7, 0, 7}, {0, 7, 0, 7}, {8, 8}, {{0, 0}}, {1}, {});
    EXPECT_TRUE(pixelsEqual(read(target).bytes, theirs.bytes, 8));
}

} // namespace
