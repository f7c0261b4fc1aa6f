// Table filters, apart from their lookups.
#include "conformance/TableFilter.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;

using AnyKey = ComparableSingleFilterParameters<unsigned char>;
using TableFiltersGLTest = FilterGLTest;

TEST_F(TableFiltersGLTest, TableOfAnEarlierKeyIsUsedAgain) {
    Texels const texels = packThreeChannel16(randomPlanes(16, 16, 3, 0, 1023));
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    size_t const destination = rig.target(Layout::kRgba8, 16, 16);
    Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(10));
    // Twelve curves, so that the first two have left and are computed again.
    for (int round = 0; round < 2; ++round) {
        for (std::uint64_t black = 0; black < 720; black += 60) {
            rig.run(filter, {{{source, 0, 0, false}}, {16, 16}}, destination,
                    FilterLinear16TosRGB8Params(2.2, black, 1023));
            Texels const expected = tableLookup16(texels, reference::gammaTable(10, 2.2, black, 1023));
            ASSERT_TRUE(pixelsEqual(rig.read(destination).bytes, expected.bytes, 16)) << round << ", " << black;
        }
    }
}

TEST_F(TableFiltersGLTest, DepthsAboveSixteenAreRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kRgba8);
    size_t const source = rig.uploaded(randomPlanes(4, 4, 2));
    for (size_t const depth : {17U, 32U, 64U, 1000U}) {
        Filter const filter = rig.instantiated(conformance::tableFilter("FilterLinear16ToSRGB8", depth));
        EXPECT_EQ(failureOf([&] {
                      rig.run(filter, {{{source, 0, 0, false}}, {4, 4}}, destination, AnyKey());
                  }),
                  "unsupported bit depth for Gles3FilterLinearTo8bitSRGB")
            << depth;
    }
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

TEST_F(TableFiltersGLTest, TilesAreDrawnRightAfterATable) {
    Texels const image = randomTexels(16, 16, 6);
    EXPECT_TRUE(rig.gives(description::filterLinear8ToSRGB8(), {rig.uploaded(image, Layout::kRgba8)},
                          tableLookup8(image, reference::srgbTable(8)), Layout::kRgba8, AnyKey()));
    EXPECT_TRUE(pixelsEqual(rig.read(rig.uploaded(image, Layout::kRgba8)).bytes, image.bytes, 16));
}

} // namespace
