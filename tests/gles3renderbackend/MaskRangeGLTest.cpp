// Masks drawn by a real GL, byte for byte as loops over the pixels of rectangles copy them.
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendGLTest.h"
#include "tests/support/GlErrors.h"
#include "tests/support/PixelMatchers.h"
#include "tests/support/ShaderEdit.h"

#include <algorithm>
#include <ostream>

namespace {

using namespace backendtest;

// Cells from minimum to maximum, both of them in it. No two rectangles of a test touch.
struct Rectangle {
    unsigned int minX;
    unsigned int minY;
    unsigned int maxX;
    unsigned int maxY;
};

struct Scene {
    char const* name;
    char const* filter;
    RenderBackend::ImageFormatType format; // of both targets
    size_t bits;                           // of a logical pixel
    size_t pixelsPerTexel;                 // one of these two is 1
    size_t texelsPerPixel;
    Sizes source; // texels
    Sizes target;
    size_t xStart;
    size_t yStart;
    std::vector<Rectangle> shape;
};

void PrintTo(Scene const& scene, std::ostream* stream) {
    *stream << scene.name;
}

size_t logical(Scene const& scene, size_t texels) {
    return texels * scene.pixelsPerTexel / scene.texelsPerPixel;
}

// A rectangle of cells c0 to c1 covers the pixels c0 to c1 - 1. A pixel takes what the source has at its place; beyond
// its edge the source goes on with its last texels.
void maskedByHand(Scene const& scene, Picture const& source, Picture& target) {
    for (auto const& cells : scene.shape)
        for (size_t y = cells.minY; y < cells.maxY; ++y)
            for (size_t x = cells.minX; x < cells.maxX; ++x) {
                if (x < scene.xStart || y < scene.yStart) continue;
                size_t const column = x - scene.xStart;
                size_t const row = y - scene.yStart;
                if (column >= target.width || row >= target.height) continue;
                copyTexel(source, std::min(column, source.width - 1), std::min(row, source.height - 1), target, column,
                          row);
            }
}

Picture upsideDown(Picture const& picture) {
    Picture result = picture;
    for (size_t y = 0; y < picture.height; ++y)
        for (size_t x = 0; x < picture.width; ++x)
            copyTexel(picture, x, y, result, x, picture.height - 1 - y);
    return result;
}

class MaskRangeGLTest : public BackendGLTest {
protected:
    MaskFilterParams shapeOf(std::vector<Rectangle> const& shape) const {
        std::vector<std::vector<unsigned int>> cells;
        for (auto const& rectangle : shape)
            for (unsigned int y = rectangle.minY; y <= rectangle.maxY; ++y)
                for (unsigned int x = rectangle.minX; x <= rectangle.maxX; ++x)
                    cells.push_back({x, y});
        instance->dataEnvelopes(Bytes{1}, {{{}, cells}});
        MaskFilterParams params;
        params.envelopes = std::const_pointer_cast<DataEnvelopes>(instance->dataEnvelopes(Bytes{1}));
        EXPECT_EQ(params.envelopes->envelopes({0, 0}, {4294967295U, 4294967295U}).size(), shape.size());
        return params;
    }

    size_t filledTarget(Scene const& scene, Picture const& picture) const {
        size_t const width = logical(scene, picture.width);
        size_t const target =
            instance->createTarget({width, picture.height}, scene.bits, false, RenderBackend::NEAREST, scene.format);
        fill(target, picture, width);
        return target;
    }

    void mask(Scene const& scene, size_t source, size_t target) const {
        MaskFilterParams const params = shapeOf(scene.shape);
        Filter filter = instantiated(scene.filter); // its program is current now, so that the sampler is set in it
        instance->maskRange(
            source, target, filter,
            {scene.xStart, scene.xStart + scene.target[0] - 1, scene.yStart, scene.yStart + scene.target[1] - 1},
            params);
    }

    // Onto a target full of noise, of which all is compared.
    void expectMaskedAsByHand(Scene const& scene) const {
        size_t const bytes = bytesPerTexel(scene.format);
        Picture const source = noise(scene.source[0], scene.source[1], bytes, 1);
        Picture expected = noise(scene.target[0], scene.target[1], bytes, 2);
        size_t const from = filledTarget(scene, source);
        size_t const to = filledTarget(scene, expected);
        mask(scene, from, to);
        maskedByHand(scene, source, expected);
        EXPECT_TRUE(pixelsEqual(readAll(to, scene).bytes, expected.bytes, expected.width, expected.bytesPerTexel));
    }

    // Onto the host's surface, coloured before.
    void expectSurfaceMaskedAsByHand(Scene const& scene) const {
        Picture const source = noise(scene.source[0], scene.source[1], 4, 1);
        size_t const from = filledTarget(scene, source);
        instance->clear(0, {10, 20, 30, 40});
        Picture expected(kSurfaceTexels, kSurfaceTexels, 4);
        for (size_t i = 0; i < expected.bytes.size(); ++i)
            expected.bytes[i] = static_cast<unsigned char>(10 * (i % 4 + 1));
        mask(scene, from, 0);
        maskedByHand(scene, source, expected);
        EXPECT_TRUE(pixelsEqual(read(0).bytes, upsideDown(expected).bytes, expected.width))
            << "rows are read bottom up";
    }

    Picture readAll(size_t target, Scene const& scene) const {
        Picture picture(scene.target[0], scene.target[1], bytesPerTexel(scene.format));
        picture.bytes = instance->getPixels(target, {0, logical(scene, scene.target[0]), 0, scene.target[1]});
        return picture;
    }
};

class MaskSceneGLTest : public MaskRangeGLTest, public ::testing::WithParamInterface<Scene> {};
class MaskedSurfaceGLTest : public MaskRangeGLTest, public ::testing::WithParamInterface<Scene> {};

TEST_P(MaskSceneGLTest, PixelsOfTheShapeComeFromTheSource) {
    expectMaskedAsByHand(GetParam());
}

TEST_P(MaskedSurfaceGLTest, PixelsOfTheShapeComeFromTheSource) {
    expectSurfaceMaskedAsByHand(GetParam());
}

constexpr auto kRgb = RenderBackend::RGB24;
constexpr auto kRgba = RenderBackend::RGBA32;
Sizes const kSize = {38, 23}; // texels; even, for pixels in two texels
std::vector<Rectangle> const kThree = {{3, 2, 9, 7}, {15, 5, 30, 6}, {12, 11, 21, 19}};
// Reaches over each edge of an image part that starts at (100, 50), and two lie outside.
std::vector<Rectangle> const kAcrossEdges = {{95, 45, 104, 55},  {130, 48, 140, 53}, {97, 69, 106, 80},
                                             {132, 68, 150, 90}, {110, 56, 118, 63}, {20, 10, 40, 30},
                                             {160, 55, 170, 60}};

std::vector<Scene> scenes() {
    return {
        {"RgbaPixels", "MaskFilter4x8", kRgba, 32, 1, 1, kSize, kSize, 0, 0, kThree},
        {"RgbPixels", "MaskFilter3x8", kRgb, 24, 1, 1, kSize, kSize, 0, 0, kThree},
        {"OneChannelOf16Bits", "MaskFilter4x8", kRgba, 16, 2, 1, kSize, kSize, 0, 0, kThree},
        {"ThreeChannelsOf16Bits", "MaskFilter3x16", kRgba, 48, 1, 2, kSize, kSize, 0, 0, kThree},
        {"RangeAmidTheImage", "MaskFilter4x8", kRgba, 32, 1, 1, kSize, kSize, 100, 50, kAcrossEdges},
        {"RangeAmidTheImageInRgb", "MaskFilter3x8", kRgb, 24, 1, 1, kSize, kSize, 100, 50, kAcrossEdges},
        {"RangeAmidTheImageInOneChannel", "MaskFilter4x8", kRgba, 16, 2, 1, kSize, kSize, 100, 50, kAcrossEdges},
        {"RangeAmidTheImageInThreeChannels", "MaskFilter3x16", kRgba, 48, 1, 2, kSize, kSize, 100, 50, kAcrossEdges},
        {"CellsZeroToTheSizeCoverTheTarget", "MaskFilter4x8", kRgba, 32, 1, 1, kSize, kSize, 0, 0, {{0, 0, 38, 23}}},
        {"CellsOfTheTargetLeaveItsLastRowAndColumn",
         "MaskFilter4x8",
         kRgba,
         32,
         1,
         1,
         kSize,
         kSize,
         0,
         0,
         {{0, 0, 37, 22}}},
        {"SingleRowsColumnsAndCellsDrawNothing",
         "MaskFilter4x8",
         kRgba,
         32,
         1,
         1,
         kSize,
         kSize,
         0,
         0,
         {{2, 2, 20, 2}, {4, 5, 4, 15}, {10, 10, 10, 10}}},
        {"NothingOfTheShapeInTheRange", "MaskFilter4x8", kRgba, 32, 1, 1, kSize, kSize, 100, 50, {{0, 0, 90, 40}}},
        {"NoCells", "MaskFilter4x8", kRgba, 32, 1, 1, kSize, kSize, 0, 0, {}},
        {"LargerSource", "MaskFilter4x8", kRgba, 32, 1, 1, {64, 40}, kSize, 0, 0, kThree},
        {"LargerSourceOfThreeChannels", "MaskFilter3x16", kRgba, 48, 1, 2, {64, 40}, kSize, 0, 0, kThree},
        {"SmallerSourceGoesOnWithItsEdge", "MaskFilter4x8", kRgba, 32, 1, 1, {16, 12}, kSize, 0, 0, kThree},
        {"OneTexel", "MaskFilter4x8", kRgba, 32, 1, 1, {1, 1}, {1, 1}, 0, 0, {{0, 0, 1, 1}}},
    };
}

// The surface has 16 x 16 texels.
std::vector<Scene> surfaceScenes() {
    std::vector<Rectangle> const shape = {{1, 2, 6, 5}, {9, 1, 14, 3}, {3, 8, 5, 15}};
    std::vector<Rectangle> const across = {{95, 45, 104, 55}, {110, 60, 120, 70}, {111, 48, 113, 52}};
    return {
        {"WholeImage", "MaskFilter4x8", kRgba, 32, 1, 1, {16, 16}, {16, 16}, 0, 0, shape},
        {"RangeAmidTheImage", "MaskFilter4x8", kRgba, 32, 1, 1, {16, 16}, {16, 16}, 100, 50, across},
        {"AllOfIt", "MaskFilter4x8", kRgba, 32, 1, 1, {16, 16}, {16, 16}, 0, 0, {{0, 0, 16, 16}}},
        {"LargerSource", "MaskFilter4x8", kRgba, 32, 1, 1, {32, 20}, {16, 16}, 0, 0, shape},
        {"NoCells", "MaskFilter4x8", kRgba, 32, 1, 1, {16, 16}, {16, 16}, 0, 0, {}},
    };
}

INSTANTIATE_TEST_SUITE_P(Masks, MaskSceneGLTest, ::testing::ValuesIn(scenes()),
                         [](auto const& row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(Masks, MaskedSurfaceGLTest, ::testing::ValuesIn(surfaceScenes()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_F(MaskRangeGLTest, MaskIsDrawnAlthoughItsSamplerWasSetInNoProgram) {
    Picture const source = noise(16, 16, 4, 1);
    size_t const from = targetOf(source);
    size_t const to = targetOf(Picture(16, 16, 4));
    MaskFilterParams const params = shapeOf({{0, 0, 16, 16}});
    Filter const filter = instantiated("MaskFilter4x8");
    glUseProgram(0);
    expectGlError(GL_INVALID_OPERATION);
    instance->maskRange(from, to, filter, {0, 15, 0, 15}, params);
    EXPECT_TRUE(pixelsEqual(read(to).bytes, source.bytes, 16));
}

TEST_F(MaskRangeGLTest, OverlappingElementsDrawTheSamePixels) {
    Picture const source = noise(16, 16, 4, 1);
    size_t const from = targetOf(source);
    size_t const to = targetOf(Picture(16, 16, 4));
    // Two elements whose cells overlap are merged each alone.
    instance->dataEnvelopes(Bytes{2}, {{{}, {{2, 2}, {3, 2}, {2, 3}, {3, 3}}}, {{}, {{3, 3}, {4, 3}, {3, 4}, {4, 4}}}});
    MaskFilterParams params;
    params.envelopes = std::const_pointer_cast<DataEnvelopes>(instance->dataEnvelopes(Bytes{2}));
    Filter const filter = instantiated("MaskFilter4x8");
    instance->maskRange(from, to, filter, {0, 15, 0, 15}, params);
    Picture expected(16, 16, 4);
    copyTexel(source, 2, 2, expected, 2, 2);
    copyTexel(source, 3, 3, expected, 3, 3);
    EXPECT_TRUE(pixelsEqual(read(to).bytes, expected.bytes, 16));
}

// A mask filter with invalid borders, by which only a part of the source is shown, stretched over the target: a pixel
// shows what lies at border + part * (pixel + 1/2) / extent. Neither axis meets a whole number there.
class BorderedMaskGLTest : public MaskRangeGLTest {
protected:
    ::testing::AssertionResult showsItsPart() const {
        Picture const source = noise(16, 12, 4, 1);
        size_t const from = targetOf(source);
        size_t const to = targetOf(Picture(16, 12, 4));
        Filter bordered("MaskFilter4x8", 3, 5, 1, 5, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
        MaskFilterParams const params = shapeOf({{2, 1, 15, 10}});
        instance->createFilterInstance(bordered);
        instance->maskRange(from, to, bordered, {0, 15, 0, 11}, params);
        instance->destroyFilterInstance(bordered);
        Picture expected(16, 12, 4);
        for (size_t row = 1; row < 10; ++row)
            for (size_t column = 2; column < 15; ++column) // 8 columns of 16 and 6 rows of 12
                copyTexel(source, 3 + (2 * column + 1) / 4, 1 + (2 * row + 1) / 4, expected, column, row);
        return pixelsEqual(read(to).bytes, expected.bytes, 16);
    }
};

TEST_F(BorderedMaskGLTest, BordersLeaveAPartOfTheSource) {
    EXPECT_TRUE(showsItsPart());
}

TEST_F(BorderedMaskGLTest, BordersMoveThePartOfALargerSource) {
    Picture const source = noise(40, 24, 4, 1);
    size_t const from = targetOf(source);
    size_t const to = targetOf(Picture(16, 12, 4));
    Filter bordered("MaskFilter4x8", 12, 0, 9, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    MaskFilterParams const params = shapeOf({{0, 0, 16, 12}});
    instance->createFilterInstance(bordered);
    instance->maskRange(from, to, bordered, {0, 15, 0, 11}, params);
    Picture expected(16, 12, 4);
    for (size_t row = 0; row < 12; ++row)
        for (size_t column = 0; column < 16; ++column) // 4 columns of 40 and 3 rows of 24
            copyTexel(source, 12 + (2 * column + 1) / 8, 9 + (2 * row + 1) / 8, expected, column, row);
    EXPECT_TRUE(pixelsEqual(read(to).bytes, expected.bytes, 16));
}

// The cases above would notice a vertex stage that left out either half of the range.
TEST_F(BorderedMaskGLTest, RangeMissingInTheVertexStageShows) {
    for (std::string const half : {"a_texRange00.zw * underneath", "underneath + a_texRange00.xy"}) {
        ShaderEdit const edit(ShaderEdit::Stage::kVertex, "a_texRange00.zw * underneath + a_texRange00.xy", half);
        EXPECT_FALSE(showsItsPart()) << "with no more than " << half;
        EXPECT_EQ(edit.replacements(), 1U);
    }
}

} // namespace
