#include "host/FilterDescriptions.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::blackWhiteGamma8Table;
using reference::tableLookup8;

using Params = FilterBlackWhiteGamma8Params;

class Gles3FilterBlackWhiteGamma8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult maps(Texels const& image, double gamma, std::uint64_t black, std::uint64_t white) {
        return rig.gives(description::filterBlackWhiteGamma8(), {rig.uploaded(image, Layout::kRgba8)},
                         tableLookup8(image, blackWhiteGamma8Table(gamma, black, white)), Layout::kRgba8,
                         Params(gamma, black, white));
    }
};

TEST_F(Gles3FilterBlackWhiteGamma8GLTest, EveryCodeIsExactForCurvesOfEveryKind) {
    Texels image(256, 2);
    for (int code = 0; code < 256; ++code) {
        auto const up = static_cast<std::uint8_t>(code);
        auto const down = static_cast<std::uint8_t>(255 - code);
        image.set(code, 0, {up, down, up, down});
        image.set(code, 1, {down, up, down, up});
    }
    for (double const gamma : {0.45, 1.0, 1.02, 1.055, 1.8, 2.2, 2.4, 4.0}) {
        EXPECT_TRUE(maps(image, gamma, 0, 3500)) << gamma;
        EXPECT_TRUE(maps(image, gamma, 0, 4095)) << gamma;
        EXPECT_TRUE(maps(image, gamma, 300, 2000)) << gamma;
        EXPECT_TRUE(maps(image, gamma, 900, 100)) << gamma;
    }
}

TEST_F(Gles3FilterBlackWhiteGamma8GLTest, AlphaPassesThroughAndColoursAreExact) {
    EXPECT_TRUE(maps(randomColours(2), 2.2, 40, 3300));
}

TEST_F(Gles3FilterBlackWhiteGamma8GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(maps(randomTexels(texels, 2, 3), 2.2, 40, 3300)) << texels;
}

TEST_F(Gles3FilterBlackWhiteGamma8GLTest, RecordsOfOtherFiltersAreRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kRgba8);
    FilterRun const run{{{rig.uploaded(randomTexels(4, 4, 2), Layout::kRgba8), 0, 0, false}}, 4, 4};
    Filter const filter = rig.instantiated(description::filterBlackWhiteGamma8());
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, FilterLinear16TosRGB8Params()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, SingleFilterParameters()); }),
              "#Name:Error: bad cast, provided filter parameters are expected to be of type "
              "ComparableSingleFilterParameters#Location:virtual void "
              "Gles3FilterLut::uploadParameters(SingleFilterParameters const& params) override");
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

} // namespace
