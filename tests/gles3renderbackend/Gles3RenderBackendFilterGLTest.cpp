// Blits run by a real GL with executeFilter, byte for byte as loops over texels copy them.
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendGLTest.h"
#include "tests/support/EnabledVertexArrays.h"
#include "tests/support/PixelMatchers.h"

#include <array>
#include <ostream>

namespace {

using namespace backendtest;

// All of the source, to the start of the destination, unless a word says otherwise.
struct BlitRun {
    char const* name;
    char const* filter = nullptr;
    TargetLayout layout = kRgba8; // of both targets
    Sizes sourceSize;             // logical
    Sizes destinationSize;
    Sizes position = {0, 0};         // in the source, logical
    Sizes input;                     // extent, logical
    std::array<size_t, 4> clip = {}; // left, right, top, bottom; logical
    Sizes offset = {0, 0};           // in the destination, texels

    explicit BlitRun(char const* runName) : name(runName) {}

    BlitRun& through(char const* filterName, TargetLayout const& targets) {
        filter = filterName;
        layout = targets;
        return *this;
    }
    BlitRun& copies(Sizes const& source, Sizes const& destination) {
        sourceSize = source;
        destinationSize = destination;
        input = source;
        return *this;
    }
    BlitRun& part(Sizes const& place, Sizes const& extent) {
        position = place;
        input = extent;
        return *this;
    }
    BlitRun& clipped(std::array<size_t, 4> const& sides) {
        clip = sides;
        return *this;
    }
    BlitRun& at(Sizes const& place) {
        offset = place;
        return *this;
    }
};

void PrintTo(BlitRun const& run, std::ostream* stream) {
    *stream << run.name;
}

Picture sourcePicture(BlitRun const& run) {
    return noise(run.layout.texels(run.sourceSize[0]), run.sourceSize[1], 4, 1);
}

// The bytes of a picture in a target of fewer bytes per texel.
Picture kept(Picture const& picture, size_t bytesPerTexel) {
    Picture result(picture.width, picture.height, bytesPerTexel);
    for (size_t y = 0; y < picture.height; ++y)
        for (size_t x = 0; x < picture.width; ++x)
            copyTexel(picture, x, y, result, x, y);
    return result;
}

void copiedByHand(BlitRun const& run, Picture const& source, Picture& destination) {
    auto const [left, right, top, bottom] = run.clip;
    for (size_t y = 0; y < run.input[1] - top - bottom; ++y)
        for (size_t x = 0; x < run.layout.texels(run.input[0] - left - right); ++x)
            copyTexel(source, run.layout.texels(run.position[0] + left) + x, run.position[1] + top + y, destination,
                      run.offset[0] + x, run.offset[1] + y);
}

class Gles3RenderBackendFilterGLTest : public BackendGLTest {
protected:
    void execute(BlitRun const& run, size_t source, size_t destination) const {
        instance->executeFilter(instantiated(run.filter), {{source, run.position[0], run.position[1], false}},
                                run.input[0], run.input[1], destination, run.clip[0], run.clip[1], run.clip[2],
                                run.clip[3], SingleFilterParameters(), run.offset);
    }
};

class Gles3RenderBackendRunGLTest : public Gles3RenderBackendFilterGLTest,
                                    public ::testing::WithParamInterface<BlitRun> {};

TEST_P(Gles3RenderBackendRunGLTest, BlitCopiesWhatTheLoopsCopy) {
    BlitRun const& run = GetParam();
    Picture const filled = sourcePicture(run);
    Picture const before = noise(run.layout.texels(run.destinationSize[0]), run.destinationSize[1], 4, 2);
    size_t const source = createTarget(run.layout, run.sourceSize);
    size_t const destination = createTarget(run.layout, run.destinationSize);
    fill(source, filled, run.sourceSize[0]);
    fill(destination, before, run.destinationSize[0]);
    execute(run, source, destination);

    Picture expected = kept(before, bytesPerTexel(run.layout.format));
    copiedByHand(run, kept(filled, expected.bytesPerTexel), expected);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, expected.width, expected.bytesPerTexel));
    Picture const untouched = kept(filled, expected.bytesPerTexel);
    EXPECT_TRUE(pixelsEqual(read(source).bytes, untouched.bytes, untouched.width, untouched.bytesPerTexel));
}

BlitRun whole(char const* name, char const* filter, TargetLayout const& layout) {
    return BlitRun(name).through(filter, layout).copies({41, 29}, {41, 29});
}

// A part, clipped on every side, to a place amid the destination.
BlitRun amid(char const* name, char const* filter, TargetLayout const& layout) {
    return BlitRun(name)
        .through(filter, layout)
        .copies({41, 29}, {53, 19})
        .part({7, 5}, {31, 17})
        .clipped({3, 5, 2, 7})
        .at({13, 11});
}

BlitRun amidOneChannel(char const* name) {
    return amid(name, "BlitFilter1x16", kOneChannel16).copies({82, 29}, {106, 19});
}

BlitRun amidThreeChannels(char const* name, TargetLayout const& layout) {
    return amid(name, "BlitFilter3x16", layout).copies({23, 29}, {29, 19}).part({3, 5}, {17, 17}).clipped({1, 4, 2, 7});
}

std::vector<BlitRun> runs() {
    Sizes const source = {41, 29};
    Sizes const other = {23, 31};
    return {
        whole("AllOfARgbaTarget", "BlitFilter4x8", kRgba8),
        whole("AllOfAnRgbTarget", "BlitFilter3x8", kRgb8),
        whole("PartOfTheSource", "BlitFilter4x8", kRgba8).copies(source, other).part({7, 5}, {11, 13}),
        whole("OffsetInTheDestination", "BlitFilter4x8", kRgba8)
            .copies(source, other)
            .part({0, 0}, {11, 13})
            .at({9, 17}),
        whole("ClipsOnEverySide", "BlitFilter4x8", kRgba8).clipped({3, 5, 2, 7}).at({1, 4}),
        amid("PositionClipsAndOffset", "BlitFilter4x8", kRgba8),
        amid("PositionClipsAndOffsetOfRgb", "BlitFilter3x8", kRgb8),
        amid("RemovedAlpha", "FilterRemoveAlpha8", kRgba8),
        amidOneChannel("OneChannelOf16Bits").part({14, 5}, {62, 17}).clipped({6, 10, 2, 7}),
        amidOneChannel("OneChannelOf16BitsOddPositionAndClipMakeAnEvenStart")
            .part({13, 5}, {62, 17})
            .clipped({7, 9, 2, 7}),
        amidThreeChannels("ThreeChannelsOf16Bits", kThreeChannels16InRgb),
        amidThreeChannels("ThreeChannelsOf16BitsInRgba", kThreeChannels16),
        amid("ThreePixelsPerTexel", "BlitFilter3x8", kThreePixelsInRgb)
            .copies({99, 29}, {90, 19})
            .part({9, 5}, {60, 17})
            .clipped({6, 3, 2, 7})
            .at({7, 11}),
    };
}

INSTANTIATE_TEST_SUITE_P(Runs, Gles3RenderBackendRunGLTest, ::testing::ValuesIn(runs()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_F(Gles3RenderBackendFilterGLTest, HostsSurfaceShowsTheFirstRowAtItsTop) {
    BlitRun const run = BlitRun("")
                            .through("BlitFilter4x8", kRgba8)
                            .copies({20, 20}, {16, 16})
                            .part({2, 3}, {12, 11})
                            .clipped({1, 2, 3, 1})
                            .at({3, 5});
    Picture const filled = sourcePicture(run);
    Picture expected = colourSurface();
    execute(run, targetOf(filled), 0);
    copiedByHand(run, filled, expected);
    EXPECT_TRUE(pixelsEqual(read(0).bytes, upsideDown(expected).bytes, 16)) << "rows are read bottom up";
}

TEST_F(Gles3RenderBackendFilterGLTest, WholeTextureGoesIntoTheOutputRectangle) {
    Picture const filled = noise(12, 10, 4, 1);
    size_t const source = targetOf(filled);
    size_t const destination = targetOf(Picture(20, 20, 4));
    instance->executeFilter(instantiated("BlitFilter4x8"), {{source, 5, 6, true}}, 12, 10, destination, 0, 0, 0, 0,
                            SingleFilterParameters(), {3, 4});
    Picture expected(20, 20, 4);
    for (size_t y = 0; y < 10; ++y)
        for (size_t x = 0; x < 12; ++x)
            copyTexel(filled, x, y, expected, x + 3, y + 4);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, 20));
}

TEST_F(Gles3RenderBackendFilterGLTest, ScaleOfTwoRepeatsEachTexel) {
    Filter twice = Filter("BlitFilter4x8", 0, 0, 0, 0, 0, 1, 0, 1, 2, 1, 2, 1, 1, RenderBackend::NEAREST);
    instance->createFilterInstance(twice);
    Picture const filled = noise(12, 10, 4, 1);
    size_t const source = targetOf(filled);
    size_t const destination = targetOf(Picture(20, 20, 4));
    instance->executeFilter(twice, {{source, 2, 1, false}}, 7, 5, destination, 2, 4, 2, 2, SingleFilterParameters(),
                            {3, 4});
    // 7 * 2 - 2 - 4 by 5 * 2 - 2 - 2 texels, from column 2 * 2 + 2 and row 1 * 2 + 2 of the doubled source.
    Picture expected(20, 20, 4);
    for (size_t y = 0; y < 6; ++y)
        for (size_t x = 0; x < 8; ++x)
            copyTexel(filled, (x + 6) / 2, (y + 4) / 2, expected, x + 3, y + 4);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, 20));
}

TEST_F(Gles3RenderBackendFilterGLTest, InvalidBordersAreLeftOut) {
    Filter bordered = Filter("BlitFilter4x8", 2, 1, 3, 1, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    instance->createFilterInstance(bordered);
    Picture const filled = noise(12, 10, 4, 1);
    size_t const source = targetOf(filled);
    size_t const destination = targetOf(Picture(20, 20, 4));
    instance->executeFilter(bordered, {{source, 0, 0, false}}, 12, 10, destination, 0, 0, 0, 0,
                            SingleFilterParameters(), {5, 6});
    Picture expected(20, 20, 4);
    for (size_t y = 0; y < 6; ++y)
        for (size_t x = 0; x < 9; ++x)
            copyTexel(filled, x + 2, y + 3, expected, x + 5, y + 6);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, 20));
}

// The host's next draw would read through an array that stays enabled, from the buffers of a destroyed filter.
TEST_F(Gles3RenderBackendFilterGLTest, RunThatIsRefusedForItsRecordLeavesNoVertexArrayEnabled) {
    Filter sharpness = instantiated("FilterSharpness8");
    size_t const source = targetOf(noise(8, 8, 4, 1));
    size_t const destination = targetOf(noise(8, 8, 4, 2));
    EXPECT_THROW(instance->executeFilter(sharpness, {{source, 0, 0, false}}, 8, 8, destination, 0, 0, 0, 0,
                                         FilterClaheParams(), {0, 0}),
                 VelmoraException);
    EXPECT_EQ(enabled_vertex_arrays::findings(), std::vector<std::string>());
    instance->destroyFilterInstance(sharpness);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, noise(8, 8, 4, 2).bytes, 8)) << "and nothing is drawn";
}

TEST_F(Gles3RenderBackendFilterGLTest, SourcesBeyondTheInputsOfTheFilterChangeNothing) {
    Filter const blit = instantiated("BlitFilter4x8");
    size_t const first = targetOf(noise(8, 8, 4, 1));
    size_t const second = targetOf(noise(8, 8, 4, 2));
    size_t const destination = targetOf(Picture(8, 8, 4));
    instance->executeFilter(blit, {{first, 0, 0, false}, {second, 0, 0, false}}, 8, 8, destination, 0, 0, 0, 0,
                            SingleFilterParameters(), {0, 0});
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, noise(8, 8, 4, 1).bytes, 8));
}

// The interface's statement about TRILINEAR: no operation makes the mipmaps without which GL samples black.
TEST_F(Gles3RenderBackendFilterGLTest, TrilinearTargetIsReadAsItWasDrawnAndSampledBlack) {
    size_t const trilinear = instance->createTarget({8, 8}, 32, false, RenderBackend::TRILINEAR, RenderBackend::RGBA32);
    fill(trilinear, noise(8, 8, 4, 1), 8);
    EXPECT_TRUE(pixelsEqual(read(trilinear).bytes, noise(8, 8, 4, 1).bytes, 8));
    size_t const destination = targetOf(noise(8, 8, 4, 2));
    Filter const blit = instantiated("BlitFilter4x8");
    instance->executeFilter(blit, {{trilinear, 0, 0, false}}, 8, 8, destination, 0, 0, 0, 0, SingleFilterParameters(),
                            {0, 0});
    Picture black(8, 8, 4);
    for (size_t i = 3; i < black.bytes.size(); i += 4)
        black.bytes[i] = 255;
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, black.bytes, 8));
}

} // namespace
