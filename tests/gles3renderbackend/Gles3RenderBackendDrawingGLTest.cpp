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
        instance->drawTiles(target, filter, scene.range, {scene.gridOrigin[0], 0, scene.gridOrigin[1], 0},
                            scene.tileSize, cells, ids, scene.offset);
    }

    // Draws into a target that is black, or coloured if its layout permits, and compares all of it.
    void expectDrawnAsByHand(Scene const& scene, size_t target, Picture expected) const {
        bool const packed = scene.layout.pixelsPerTexel != 1 || scene.layout.texelsPerPixel != 1;
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
    expectDrawnAsByHand(
        scene, createTarget(scene.layout, scene.targetSize),
        Picture(scene.layout.texels(scene.targetSize[0]), scene.targetSize[1], bytesPerTexel(scene.layout.format)));
}

// 41 x 29 texels each, and tiles that do not fill them.
Scene rgba(char const* name) {
    return Scene(name).through("BlitFilter4x8").target({41, 29}, kRgba8).tiles({7, 5});
}

Scene rgb(char const* name) {
    return Scene(name).through("BlitFilter3x8").target({41, 29}, kRgb8).tiles({13, 11});
}

Scene oneChannel(char const* name) {
    return Scene(name).through("BlitFilter1x16").target({82, 29}, kOneChannel16).tiles({14, 5});
}

Scene threeChannels(char const* name, TargetLayout const& layout) {
    return Scene(name).through("BlitFilter3x16").target({23, 29}, layout).tiles({7, 5});
}

std::vector<Scene> amidTheGrid() {
    Sizes const large = {53, 47};
    std::vector<size_t> const odd = {20, 44, 13, 31};
    std::vector<size_t> const far = {1000300, 1000324, 2000200, 2000214};
    std::vector<size_t> const amid = {11, 25, 8, 20};
    return {
        rgba("RegionInTheMiddle").target(large, kRgba8).region(odd, {3, 2}).at({11, 17}).grid(7, 6, {1, 1}),
        rgb("RegionOfRgbInTheMiddle").target(large, kRgb8).region(odd, {3, 2}).at({11, 17}).grid(5, 4),
        rgba("RegionLeftOfTheGrid").region({10, 34, 10, 24}, {17, 13}).at({5, 3}).grid(4, 4),
        rgba("RegionFarFromTheOrigin").region(far, {1000003, 2000001}).at({5, 3}).grid(5, 5, {42, 39}),
        oneChannel("OneChannel").region({30, 79, 7, 23}, {4, 3}).at({6, 5}).grid(6, 6, {1, 0}).without({9}),
        threeChannels("InRgb", kThreeChannels16InRgb).region(amid, {2, 1}).at({5, 9}).grid(5, 5).without({7}),
        threeChannels("InRgba", kThreeChannels16).region(amid, {2, 1}).at({5, 9}).grid(5, 5),
        rgba("FourPixelsInATexel")
            .target({100, 29}, kFourPixelsInRgba)
            .tiles({20, 5})
            .region({24, 83, 6, 22}, {4, 1})
            .at({12, 7})
            .grid(5, 6),
    };
}

std::vector<Scene> scenes() {
    return {
        rgba("RgbaTilesOfOddSizeFillAnRgbaTarget").grid(6, 6),
        rgb("RgbTilesOfOddSizeFillAnRgbTarget").grid(4, 3),
        rgb("RgbTilesAreOpaqueInAnRgbaTarget").target({41, 29}, kRgba8).components(3).grid(4, 3),
        rgb("RemovedAlphaLeavesTheColours").through("FilterRemoveAlpha8").components(4).grid(4, 3),
        rgba("MissingTilesAreTransparentBlack").grid(6, 6).without({0, 7, 8, 35}),
        rgb("MissingTilesAreBlackInAnRgbTarget").grid(4, 3).without({1, 6}),
        rgba("LaterTileOfACellCoversTheEarlierOne").put({{{1, 1}, 1}, {{1, 1}, 2}, {{2, 1}, 2}, {{2, 1}, 1}}),
        oneChannel("OneChannelOf16BitsTwoSamplesATexel").grid(6, 6),
        threeChannels("ThreeChannelsOf16BitsAPixelInTwoRgbTexels", kThreeChannels16InRgb).grid(4, 6),
        rgb("ThreePixelsOf8BitsInAnRgbTexel").target({99, 29}, kThreePixelsInRgb).tiles({21, 5}).grid(5, 6),
    };
}

INSTANTIATE_TEST_SUITE_P(AmidTheGrid, Gles3RenderBackendSceneGLTest, ::testing::ValuesIn(amidTheGrid()),
                         [](auto const& row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(Scenes, Gles3RenderBackendSceneGLTest, ::testing::ValuesIn(scenes()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_F(Gles3RenderBackendDrawingGLTest, HostsSurfaceTakesTilesInGlsOrderOfRows) {
    Scene const scene = Scene("")
                            .through("BlitFilter4x8")
                            .target({16, 16}, kRgba8)
                            .tiles({5, 3})
                            .region({4, 14, 2, 11}, {1, 1})
                            .at({3, 5})
                            .grid(3, 4)
                            .without({4});
    expectDrawnAsByHand(scene, 0, Picture(16, 16, 4));
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
