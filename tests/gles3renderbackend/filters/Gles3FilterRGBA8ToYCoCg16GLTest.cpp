#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/YCoCgR.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/LongRun.h"

namespace {

using namespace filtertest;
using reference::rgba8ToYCoCg16;

class Gles3FilterRGBA8ToYCoCg16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult transforms(Texels const& rgba) {
        return rig.gives(description::filterRGBA8ToYCoCg16(), {rig.uploaded(rgba, Layout::kRgba8)},
                         rgba8ToYCoCg16(rgba), Layout::kThreeChannel16);
    }

    // Clips count pixels, the offset texels.
    ::testing::AssertionResult transformsPart(size_t x, std::array<size_t, 4> const& clip,
                                              std::array<size_t, 2> const& offset) {
        Texels const rgba = randomTexels(21, 9, 6);
        FilterRun const run{
            {{rig.uploaded(rgba, Layout::kRgba8), x, 2, false}}, 11, 6, clip[0], clip[1], clip[2], clip[3], offset};
        Texels const kept = cropped(rgba, static_cast<int>(x + clip[0]), static_cast<int>(2 + clip[2]),
                                    static_cast<int>(11 - clip[0] - clip[1]), static_cast<int>(6 - clip[2] - clip[3]));
        return rig.givesWithin(description::filterRGBA8ToYCoCg16(), run, rgba8ToYCoCg16(kept), Layout::kThreeChannel16);
    }
};

TEST_F(Gles3FilterRGBA8ToYCoCg16GLTest, PrimariesBecomeTheirCoefficients) {
    Texels const rgba(4, 1, {255, 0, 0, 9, 0, 255, 0, 255, 0, 0, 255, 0, 255, 255, 255, 255});
    size_t const destination = rig.target(Layout::kThreeChannel16, 8, 1);
    rig.run(rig.instantiated(description::filterRGBA8ToYCoCg16()),
            {{{rig.uploaded(rgba, Layout::kRgba8), 0, 0, false}}, 4, 1}, destination);
    auto const planes = unpackThreeChannel16(rig.read(destination));
    EXPECT_EQ(planes[0].samples, (std::vector<std::int32_t>{63, 127, 63, 255}));
    EXPECT_EQ(planes[1].samples, (std::vector<std::int32_t>{255, 0, -255, 0}));
    EXPECT_EQ(planes[2].samples, (std::vector<std::int32_t>{-127, 255, -127, 0}));
}

TEST_F(Gles3FilterRGBA8ToYCoCg16GLTest, EveryPairOfChannelsIsExact) {
    // Each channel pair over all 65536 combinations, the third one random.
    Texels const noise = randomTexels(256, 256, 1);
    for (size_t fixed = 0; fixed < 3; ++fixed) {
        Texels rgba = noise;
        for (size_t i = 0; i < 65536; ++i) {
            rgba.bytes[4 * i + (fixed + 1) % 3] = static_cast<std::uint8_t>(i >> 8);
            rgba.bytes[4 * i + (fixed + 2) % 3] = static_cast<std::uint8_t>(i);
        }
        EXPECT_TRUE(transforms(rgba)) << "channel " << fixed << " random";
    }
}

TEST_F(Gles3FilterRGBA8ToYCoCg16GLTest, EveryColourIsExact) {
    if (!isLongRun()) GTEST_SKIP() << "all 2^24 colours: VELMORA_LONG is not set";
    for (std::uint32_t part = 0; part < kColourParts; ++part)
        ASSERT_TRUE(transforms(colours(part))) << part;
}

TEST_F(Gles3FilterRGBA8ToYCoCg16GLTest, PartsLandAtEvenTexelsWhole) {
    EXPECT_TRUE(transformsPart(0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(transformsPart(7, {0, 0, 0, 0}, {2, 1}));
    EXPECT_TRUE(transformsPart(4, {3, 2, 1, 1}, {6, 3}));
    EXPECT_TRUE(transformsPart(5, {1, 0, 0, 3}, {4, 2}));
}

TEST_F(Gles3FilterRGBA8ToYCoCg16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(transforms(randomTexels(texels / 2, 2, 9))) << texels;
}

} // namespace
