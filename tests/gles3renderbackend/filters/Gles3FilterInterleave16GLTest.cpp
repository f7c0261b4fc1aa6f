#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Interleave16.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace {

using namespace filtertest;
using reference::interleave16;
using reference::packOneChannel16;
using reference::Plane;

class Gles3FilterInterleave16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult interleaves(Texels const& c0, Texels const& c1, Texels const& c2) {
        return rig.gives(description::filterInterleave16(),
                         {rig.uploaded(c0, Layout::kOneChannel16), rig.uploaded(c1, Layout::kOneChannel16),
                          rig.uploaded(c2, Layout::kOneChannel16)},
                         interleave16(c0, c1, c2), Layout::kThreeChannel16);
    }

    // Pixels x to x + 12 of three planes; clips count pixels, the offset texels.
    ::testing::AssertionResult interleavesPart(size_t x, std::array<size_t, 4> const& clip,
                                               std::array<size_t, 2> const& offset) {
        std::array<Texels, 3> planes;
        FilterRun run;
        for (size_t c = 0; c < planes.size(); ++c) {
            planes[c] = randomTexels(10, 7, static_cast<std::uint32_t>(c + 1));
            run.sources.push_back({rig.uploaded(planes[c], Layout::kOneChannel16), x, 1, false});
        }
        run.width = 13;
        run.height = 5;
        run.clipLeft = clip[0];
        run.clipRight = clip[1];
        run.clipTop = clip[2];
        run.clipBottom = clip[3];
        run.offset = offset;
        Texels const whole = interleave16(planes[0], planes[1], planes[2]);
        Texels const kept = cropped(whole, static_cast<int>(2 * (x + clip[0])), static_cast<int>(1 + clip[2]),
                                    static_cast<int>(2 * (run.width - clip[0] - clip[1])),
                                    static_cast<int>(run.height - clip[2] - clip[3]));
        return rig.givesWithin(description::filterInterleave16(), run, kept, Layout::kThreeChannel16);
    }
};

TEST_F(Gles3FilterInterleave16GLTest, SamplesComeInPairs) {
    Filter const filter = rig.instantiated(description::filterInterleave16());
    EXPECT_EQ(filter.alignXIn(), 2U);
    EXPECT_EQ(filter.effectiveAlignX(), 2U);
    EXPECT_EQ(filter.alignXOut(), 1U);
}

TEST_F(Gles3FilterInterleave16GLTest, PixelOfThreePlanesFillsTwoTexels) {
    Plane const c0(2, 1, {0x1234, 0x0102});
    Plane const c1(2, 1, {0x5678, 0x0304});
    Plane const c2(2, 1, {0x9ABC - 0x10000, 0x0506});
    size_t const destination = rig.target(Layout::kThreeChannel16, 4, 1);
    FilterRun const run{
        {{rig.uploaded(c0), 0, 0, false}, {rig.uploaded(c1), 0, 0, false}, {rig.uploaded(c2), 0, 0, false}}, 2, 1};
    rig.run(rig.instantiated(description::filterInterleave16()), run, destination);
    EXPECT_EQ(rig.read(destination).bytes, (std::vector<std::uint8_t>{0x34, 0x12, 0x78, 255, 0x56, 0xBC, 0x9A, 255, //
                                                                      0x02, 0x01, 0x04, 255, 0x03, 0x06, 0x05, 255}));
}

TEST_F(Gles3FilterInterleave16GLTest, EverySamplePassesUntouchedInEveryChannel) {
    Texels const every = packOneChannel16(everySample());
    EXPECT_TRUE(interleaves(every, randomTexels(128, 256, 1), randomTexels(128, 256, 2)));
    EXPECT_TRUE(interleaves(randomTexels(128, 256, 3), every, randomTexels(128, 256, 4)));
    EXPECT_TRUE(interleaves(randomTexels(128, 256, 5), randomTexels(128, 256, 6), every));
}

TEST_F(Gles3FilterInterleave16GLTest, TwiceTheSourceColumnGoesWithTheOffsetModuloFour) {
    EXPECT_TRUE(interleavesPart(0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(interleavesPart(1, {0, 0, 0, 0}, {2, 1}));
    EXPECT_TRUE(interleavesPart(2, {0, 0, 0, 0}, {4, 3}));
    EXPECT_TRUE(interleavesPart(5, {0, 0, 0, 0}, {6, 0}));
}

TEST_F(Gles3FilterInterleave16GLTest, ClipsOfOddPixelsKeepThePixelsWhole) {
    EXPECT_TRUE(interleavesPart(0, {1, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(interleavesPart(3, {3, 2, 1, 1}, {2, 1}));
    EXPECT_TRUE(interleavesPart(4, {2, 5, 0, 3}, {8, 2}));
}

TEST_F(Gles3FilterInterleave16GLTest, PlanesMayLieAnywhereInTexturesOfDifferentSizes) {
    Texels const c0 = randomTexels(6, 3, 1);
    Texels const c1 = randomTexels(40, 5, 2);
    Texels const c2 = randomTexels(31, 4, 3);
    FilterRun const run{{{rig.uploaded(c0, Layout::kOneChannel16), 0, 0, false},
                         {rig.uploaded(c1, Layout::kOneChannel16), 60, 2, false},
                         {rig.uploaded(c2, Layout::kOneChannel16), 20, 1, false}},
                        12,
                        3};
    Texels const expected = interleave16(c0, reference::cropped(c1, 30, 2, 6, 3), reference::cropped(c2, 10, 1, 6, 3));
    EXPECT_TRUE(rig.givesWithin(description::filterInterleave16(), run, expected, Layout::kThreeChannel16));
}

TEST_F(Gles3FilterInterleave16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(
            interleaves(randomTexels(texels / 4, 2, 4), randomTexels(texels / 4, 2, 5), randomTexels(texels / 4, 2, 6)))
            << texels;
}

} // namespace
