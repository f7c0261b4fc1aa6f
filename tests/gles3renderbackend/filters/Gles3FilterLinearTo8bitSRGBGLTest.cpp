#include "conformance/TableFilter.h"
#include "host/FilterDescriptions.h"
#include "reference/TableLookup.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;
using conformance::tableFilter;
using reference::packThreeChannel16;
using reference::srgbTable;
using reference::tableLookup16;
using reference::tableLookup8;

using Params = ComparableSingleFilterParameters<unsigned char>;
using Gles3FilterLinearTo8bitSRGBGLTest = FilterGLTest;

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, EveryCodeOfEveryChannelIsExactAt8Bits) {
    Texels const image = colours(5);
    EXPECT_TRUE(rig.gives(description::filterLinear8ToSRGB8(), {rig.uploaded(image, Layout::kRgba8)},
                          tableLookup8(image, srgbTable(8)), Layout::kRgba8, Params()));
    Texels row(256, 1);
    for (int code = 0; code < 256; ++code) {
        auto const byte = static_cast<std::uint8_t>(code);
        row.set(code, 0, {byte, static_cast<std::uint8_t>(255 - code), byte, static_cast<std::uint8_t>(code / 2)});
    }
    EXPECT_TRUE(rig.gives(description::filterLinear8ToSRGB8(), {rig.uploaded(row, Layout::kRgba8)},
                          tableLookup8(row, srgbTable(8)), Layout::kRgba8, Params()));
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, WhiteOf8BitsGives254BecauseTheFloorIsRequired) {
    Texels const source(2, 1, {0, 1, 2, 9, 128, 254, 255, 255});
    EXPECT_TRUE(rig.gives(description::filterLinear8ToSRGB8(), {rig.uploaded(source, Layout::kRgba8)},
                          Texels(2, 1, {0, 12, 21, 9, 187, 254, 254, 255}), Layout::kRgba8, Params()));
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, AlphaPassesThroughAt8Bits) {
    Texels image = randomTexels(64, 64, 3);
    size_t const destination = rig.target(Layout::kRgba8, 64, 64);
    rig.run(rig.instantiated(description::filterLinear8ToSRGB8()),
            {{{rig.uploaded(image, Layout::kRgba8), 0, 0, false}}, 64, 64}, destination, Params());
    Texels const result = rig.read(destination);
    for (size_t i = 3; i < image.bytes.size(); i += 4)
        ASSERT_EQ(result.bytes[i], image.bytes[i]);
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, EverySampleIsExactAtEveryDeeperDepth) {
    for (size_t depth = 9; depth <= 16; ++depth) {
        Texels const texels = packThreeChannel16(everySampleOfChannel(depth % 3, static_cast<std::uint32_t>(depth)));
        EXPECT_TRUE(rig.gives(description::filterLinear16ToSRGB8(depth),
                              {rig.uploaded(texels, Layout::kThreeChannel16)},
                              tableLookup16(texels, srgbTable(static_cast<unsigned>(depth))), Layout::kRgba8, Params()))
            << depth;
    }
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, DepthsBelowEightUseTheGammaCurve) {
    Texels const image = colours(9);
    for (size_t depth = 1; depth < 8; ++depth)
        EXPECT_TRUE(rig.gives(tableFilter("FilterLinear8ToSRGB8", depth), {rig.uploaded(image, Layout::kRgba8)},
                              tableLookup8(image, srgbTable(static_cast<unsigned>(depth))), Layout::kRgba8, Params()))
            << depth;
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, KeyOfTheRecordDoesNotMatter) {
    Texels const image = randomTexels(32, 8, 4);
    Filter const filter = rig.instantiated(description::filterLinear8ToSRGB8());
    size_t const source = rig.uploaded(image, Layout::kRgba8);
    size_t const destination = rig.target(Layout::kRgba8, 32, 8);
    for (auto const key : std::vector<unsigned char>{0, 8, 12, 200}) {
        rig.run(filter, {{{source, 0, 0, false}}, 32, 8}, destination, Params(key));
        EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, tableLookup8(image, srgbTable(8)).bytes, 32)) << +key;
    }
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, DepthsAboveSixteenAreRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kRgba8);
    size_t const source = rig.uploaded(reference::Planes3(randomPlanes(4, 4, 2)));
    for (size_t const depth : {17U, 32U, 64U, 1000U}) {
        Filter const filter = rig.instantiated(tableFilter("FilterLinear16ToSRGB8", depth));
        EXPECT_EQ(failureOf([&] {
                      rig.run(filter, {{{source, 0, 0, false}}, 4, 4}, destination, Params());
                  }),
                  "unsupported bit depth for Gles3FilterLinearTo8bitSRGB")
            << depth;
    }
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, TilesAreDrawnRightAfterATable) {
    Texels const image = randomTexels(16, 16, 6);
    EXPECT_TRUE(rig.gives(description::filterLinear8ToSRGB8(), {rig.uploaded(image, Layout::kRgba8)},
                          tableLookup8(image, srgbTable(8)), Layout::kRgba8, Params()));
    EXPECT_TRUE(pixelsEqual(rig.read(rig.uploaded(image, Layout::kRgba8)).bytes, image.bytes, 16));
}

TEST_F(Gles3FilterLinearTo8bitSRGBGLTest, RecordOfAnotherKeyTypeIsRefused) {
    size_t const target = rig.target(Layout::kRgba8, 4, 4);
    Filter const filter = rig.instantiated(description::filterLinear8ToSRGB8());
    FilterRun const run{{{rig.uploaded(randomTexels(4, 4, 2), Layout::kRgba8), 0, 0, false}}, 4, 4};
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, target, ComparableSingleFilterParameters<std::string>("8")); }),
              "#Name:Error: bad cast, provided filter parameters are expected to be of type "
              "ComparableSingleFilterParameters#Location:virtual void "
              "Gles3FilterLut::uploadParameters(SingleFilterParameters const& params) override");
}

} // namespace
