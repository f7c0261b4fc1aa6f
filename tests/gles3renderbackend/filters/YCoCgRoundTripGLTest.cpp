// Colours through both transforms without leaving the GPU.
#include "host/filter/FilterDescriptions.h"
#include "reference/SixteenToEight.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;

struct Inverse {
    char const* filter;
    Layout out;
};

class YCoCgRoundTripGLTest : public FilterGLTest, public ::testing::WithParamInterface<Inverse> {
protected:
    // 8-bit colours, opaque.
    Texels thereAndBack(Texels const& rgba) {
        auto const width = static_cast<size_t>(rgba.width);
        auto const height = static_cast<size_t>(rgba.height);
        size_t const source = rig.uploaded(rgba, Layout::kRgba8);
        size_t const between = rig.target(Layout::kThreeChannel16, 2 * rgba.width, rgba.height);
        size_t const back = rig.target(GetParam().out, conformance::texelsOf(GetParam().out, rgba.width), rgba.height);
        rig.run(rig.instantiated(description::filterRGBA8ToYCoCg16()), {{{source, 0, 0, false}}, {width, height}},
                between);
        rig.run(rig.instantiated(description::byName(GetParam().filter)), {{{between, 0, 0, false}}, {width, height}},
                back);
        Texels const result = rig.read(back);
        return GetParam().out == Layout::kRgba8 ? result : reference::threeChannel16ToRgba8(result);
    }
};

TEST_P(YCoCgRoundTripGLTest, RoundTripIsLosslessForASampleOfAllColours) {
    for (Texels rgba : {Texels(4, 1, {255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 255, 255, 255, 255}), randomColours(1),
                        randomColours(2), randomColours(3), randomColours(4)}) {
        Texels const back = thereAndBack(rgba);
        for (size_t i = 3; i < rgba.bytes.size(); i += 4)
            rgba.bytes[i] = 255;
        EXPECT_TRUE(pixelsEqual(back.bytes, rgba.bytes, static_cast<size_t>(rgba.width)));
    }
}

INSTANTIATE_TEST_SUITE_P(Back, YCoCgRoundTripGLTest,
                         ::testing::Values(Inverse{"FilterYCoCg16ToRGB16", Layout::kThreeChannel16},
                                           Inverse{"FilterYCoCg16ToRGBA8", Layout::kRgba8}),
                         [](auto const& row) { return std::string(row.param.filter); });

} // namespace
