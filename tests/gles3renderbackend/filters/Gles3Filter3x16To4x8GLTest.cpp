#include "host/FilterDescriptions.h"
#include "reference/SixteenToEight.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace {

using namespace filtertest;
using reference::packThreeChannel16;
using reference::Plane;
using reference::Planes3;
using reference::threeChannel16ToRgba8;

class Gles3Filter3x16To4x8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult shows(Texels const& pixels) {
        return rig.gives(description::filter3x16To4x8(), {rig.uploaded(pixels, Layout::kThreeChannel16)},
                         threeChannel16ToRgba8(pixels), Layout::kRgba8);
    }

    ::testing::AssertionResult showsPart(size_t x, std::array<size_t, 4> const& clip,
                                         std::array<size_t, 2> const& offset) {
        Planes3 const planes = randomPlanes(21, 9, 6, -100, 400);
        FilterRun const run{{{rig.uploaded(planes), x, 2, false}}, 11, 6, clip[0], clip[1], clip[2], clip[3], offset};
        Planes3 const kept = cropped(planes, static_cast<int>(x + clip[0]), static_cast<int>(2 + clip[2]),
                                     static_cast<int>(11 - clip[0] - clip[1]), static_cast<int>(6 - clip[2] - clip[3]));
        return rig.givesWithin(description::filter3x16To4x8(), run, threeChannel16ToRgba8(packThreeChannel16(kept)),
                               Layout::kRgba8);
    }
};

TEST_F(Gles3Filter3x16To4x8GLTest, ValuesAreShownUnscaledAndClamped) {
    Planes3 const planes{Plane(2, 1, {300, 0}), Plane(2, 1, {-5, 255}), Plane(2, 1, {17, 256})};
    size_t const destination = rig.target(Layout::kRgba8, 2, 1);
    rig.run(rig.instantiated(description::filter3x16To4x8()), {{{rig.uploaded(planes), 0, 0, false}}, 2, 1},
            destination);
    EXPECT_EQ(rig.read(destination).bytes, (std::vector<std::uint8_t>{255, 0, 17, 255, 0, 255, 255, 255}));
}

TEST_F(Gles3Filter3x16To4x8GLTest, EverySampleOfEveryChannelIsExact) {
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_TRUE(shows(packThreeChannel16(everySampleOfChannel(channel, 10)))) << channel;
}

TEST_F(Gles3Filter3x16To4x8GLTest, BoundariesAreExact) {
    EXPECT_TRUE(shows(packThreeChannel16(boundaryTriples())));
}

TEST_F(Gles3Filter3x16To4x8GLTest, AlphaOfTheInputIsNotRead) {
    EXPECT_TRUE(shows(randomTexels(64, 16, 5)));
}

TEST_F(Gles3Filter3x16To4x8GLTest, PartsLandAtAnyPixel) {
    EXPECT_TRUE(showsPart(0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(showsPart(7, {0, 0, 0, 0}, {1, 1}));
    EXPECT_TRUE(showsPart(4, {3, 2, 1, 1}, {6, 3}));
    EXPECT_TRUE(showsPart(5, {1, 0, 0, 3}, {5, 2}));
}

TEST_F(Gles3Filter3x16To4x8GLTest, WidestInputsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(shows(packThreeChannel16(randomPlanes(texels / 2, 2, 9, -300, 600)))) << texels;
}

} // namespace
