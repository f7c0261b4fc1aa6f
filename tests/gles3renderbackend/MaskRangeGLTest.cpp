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

Sizes const kSize = {38, 23}; // texels; even, for pixels in two texels

// A source and a target of the same size, from the image's first pixel on, unless a word says otherwise.
struct MaskScene {
    char const* name;
    char const* filter = nullptr;
    TargetLayout layout = kRgba8; // of both targets
    Sizes sourceSize = kSize;     // texels
    Sizes targetSize = kSize;
    size_t xStart = 0;
    size_t yStart = 0;
    std::vector<Rectangle> rectangles;

    explicit MaskScene(char const* sceneName) : name(sceneName) {}

    MaskScene& through(char const* filterName, TargetLayout const& targets) {
        filter = filterName;
        layout = targets;
        return *this;
    }
    MaskScene& source(Sizes const& size) {
        sourceSize = size;
        return *this;
    }
    MaskScene& target(Sizes const& size) {
        targetSize = size;
        return *this;
    }
    MaskScene& from(size_t x, size_t y) {
        xStart = x;
        yStart = y;
        return *this;
    }
    MaskScene& shape(std::vector<Rectangle> const& cells) {
        rectangles = cells;
        return *this;
    }
};

void PrintTo(MaskScene const& scene, std::ostream* stream) {
    *stream << scene.name;
}

// A rectangle of cells c0 to c1 covers the pixels c0 to c1 - 1. A pixel takes what the source has at its place; beyond
// its edge the source goes on with its last texels.
void maskedByHand(MaskScene const& scene, Picture const& source, Picture& target) {
    for (auto const& cells : scene.rectangles)
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

    size_t filledTarget(MaskScene const& scene, Picture const& picture) const {
        size_t const width = scene.layout.pixels(picture.width);
        size_t const target = createTarget(scene.layout, {width, picture.height});
        fill(target, picture, width);
        return target;
    }

    void mask(MaskScene const& scene, size_t source, size_t target) const {
        MaskFilterParams const params = shapeOf(scene.rectangles);
        Filter filter = instantiated(scene.filter); // its program is current now, so that the sampler is set in it
        instance->maskRange(source, target, filter,
                            {scene.xStart, scene.xStart + scene.targetSize[0] - 1, scene.yStart,
                             scene.yStart + scene.targetSize[1] - 1},
                            params);
    }

    // Onto a target full of noise, of which all is compared.
    void expectMaskedAsByHand(MaskScene const& scene) const {
        size_t const bytes = bytesPerTexel(scene.layout.format);
        Picture const source = noise(scene.sourceSize[0], scene.sourceSize[1], bytes, 1);
        Picture expected = noise(scene.targetSize[0], scene.targetSize[1], bytes, 2);
        size_t const from = filledTarget(scene, source);
        size_t const to = filledTarget(scene, expected);
        mask(scene, from, to);
        maskedByHand(scene, source, expected);
        EXPECT_TRUE(pixelsEqual(readAll(to, scene).bytes, expected.bytes, expected.width, expected.bytesPerTexel));
    }

    // Onto the host's surface, coloured before.
    void expectSurfaceMaskedAsByHand(MaskScene const& scene) const {
        Picture const source = noise(scene.sourceSize[0], scene.sourceSize[1], 4, 1);
        size_t const from = filledTarget(scene, source);
        Picture expected = colourSurface();
        mask(scene, from, 0);
        maskedByHand(scene, source, expected);
        EXPECT_TRUE(pixelsEqual(read(0).bytes, upsideDown(expected).bytes, expected.width))
            << "rows are read bottom up";
    }

    Picture readAll(size_t target, MaskScene const& scene) const {
        Picture picture(scene.targetSize[0], scene.targetSize[1], bytesPerTexel(scene.layout.format));
        picture.bytes =
            instance->getPixels(target, {0, scene.layout.pixels(scene.targetSize[0]), 0, scene.targetSize[1]});
        return picture;
    }
};

class MaskSceneGLTest : public MaskRangeGLTest, public ::testing::WithParamInterface<MaskScene> {};
class MaskedSurfaceGLTest : public MaskRangeGLTest, public ::testing::WithParamInterface<MaskScene> {};

TEST_P(MaskSceneGLTest, PixelsOfTheShapeComeFromTheSource) {
    expectMaskedAsByHand(GetParam());
}

TEST_P(MaskedSurfaceGLTest, PixelsOfTheShapeComeFromTheSource) {
    expectSurfaceMaskedAsByHand(GetParam());
}

std::vector<Rectangle> const kThree = {{3, 2, 9, 7}, {15, 5, 30, 6}, {12, 11, 21, 19}};
// Reaches over each edge of an image part that starts at (100, 50), and two lie outside.
std::vector<Rectangle> const kAcrossEdges = {{95, 45, 104, 55},  {130, 48, 140, 53}, {97, 69, 106, 80},
                                             {132, 68, 150, 90}, {110, 56, 118, 63}, {20, 10, 40, 30},
                                             {160, 55, 170, 60}};

// Sources and targets of one layout.
MaskScene rgba(char const* name) {
    return MaskScene(name).through("MaskFilter4x8", kRgba8);
}

MaskScene oneChannel(char const* name) {
    return MaskScene(name).through("MaskFilter4x8", kOneChannel16);
}

MaskScene threeChannels(char const* name) {
    return MaskScene(name).through("MaskFilter3x16", kThreeChannels16);
}

MaskScene rgb(char const* name) {
    return MaskScene(name).through("MaskFilter3x8", kRgb8);
}

std::vector<MaskScene> scenes() {
    return {
        rgba("RgbaPixels").shape(kThree),
        rgb("RgbPixels").shape(kThree),
        oneChannel("OneChannelOf16Bits").shape(kThree),
        threeChannels("ThreeChannelsOf16Bits").shape(kThree),
        rgba("RangeAmidTheImage").from(100, 50).shape(kAcrossEdges),
        rgb("RangeAmidTheImageInRgb").from(100, 50).shape(kAcrossEdges),
        oneChannel("RangeAmidTheImageInOneChannel").from(100, 50).shape(kAcrossEdges),
        threeChannels("RangeAmidTheImageInThreeChannels").from(100, 50).shape(kAcrossEdges),
        rgba("CellsZeroToTheSizeCoverTheTarget").shape({{0, 0, 38, 23}}),
        rgba("CellsOfTheTargetLeaveItsLastRowAndColumn").shape({{0, 0, 37, 22}}),
        rgba("SingleRowsColumnsAndCellsDrawNothing").shape({{2, 2, 20, 2}, {4, 5, 4, 15}, {10, 10, 10, 10}}),
        rgba("NothingOfTheShapeInTheRange").from(100, 50).shape({{0, 0, 90, 40}}),
        rgba("NoCells"),
        rgba("LargerSource").source({64, 40}).shape(kThree),
        threeChannels("LargerSourceOfThreeChannels").source({64, 40}).shape(kThree),
        rgba("SmallerSourceGoesOnWithItsEdge").source({16, 12}).shape(kThree),
        rgba("OneTexel").source({1, 1}).target({1, 1}).shape({{0, 0, 1, 1}}),
    };
}

// The surface has 16 x 16 texels.
std::vector<MaskScene> surfaceScenes() {
    std::vector<Rectangle> const shape = {{1, 2, 6, 5}, {9, 1, 14, 3}, {3, 8, 5, 15}};
    std::vector<Rectangle> const across = {{95, 45, 104, 55}, {110, 60, 120, 70}, {111, 48, 113, 52}};
    auto const onSurface = [](char const* name) { return rgba(name).source({16, 16}).target({16, 16}); };
    return {
        onSurface("WholeImage").shape(shape),
        onSurface("RangeAmidTheImage").from(100, 50).shape(across),
        onSurface("AllOfIt").shape({{0, 0, 16, 16}}),
        onSurface("LargerSource").source({32, 20}).shape(shape),
        onSurface("NoCells"),
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
