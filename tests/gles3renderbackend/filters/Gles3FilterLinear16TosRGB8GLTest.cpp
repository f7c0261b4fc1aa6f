#include "conformance/TableFilter.h"
#include "host/FilterDescriptions.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

#include <algorithm>

namespace {

using namespace filtertest;
using backendtest::failureOf;
using conformance::tableFilter;
using reference::gammaTable;
using reference::packThreeChannel16;
using reference::Planes3;
using reference::tableLookup16;
using reference::tableLookup8;

using Params = FilterLinear16TosRGB8Params;

struct Curve {
    double gamma;
    std::uint64_t black;
    std::uint64_t white;
};

class Gles3FilterLinear16TosRGB8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult maps(Filter const& filter, size_t source, Texels const& texels, Curve const& curve) {
        rig.run(filter,
                {{{source, 0, 0, false}}, static_cast<size_t>(texels.width / 2), static_cast<size_t>(texels.height)},
                destinationFor(texels), Params(curve.gamma, curve.black, curve.white));
        auto const depth = static_cast<unsigned>(filter.bitDepthIn());
        Texels const expected = tableLookup16(texels, gammaTable(depth, curve.gamma, curve.black, curve.white));
        return pixelsEqual(rig.read(destination_).bytes, expected.bytes, static_cast<size_t>(expected.width));
    }

private:
    size_t destinationFor(Texels const& texels) {
        if (destination_ == 0) destination_ = rig.target(Layout::kRgba8, texels.width / 2, texels.height);
        return destination_;
    }

    size_t destination_ = 0;
};

TEST_F(Gles3FilterLinear16TosRGB8GLTest, EverySampleOfEveryChannelIsExactAtEveryDepth) {
    Texels const texels = packThreeChannel16(everySampleThrice());
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    for (size_t depth = 9; depth <= 16; ++depth) {
        Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(depth));
        std::uint64_t const codes = std::uint64_t{1} << depth;
        // A steep ramp tells neighbouring entries apart.
        EXPECT_TRUE(maps(filter, source, texels, {1.0, codes / 4 - 60, codes / 4 + 190})) << depth;
        EXPECT_TRUE(maps(filter, source, texels, {2.2, 0, codes - 1})) << depth;
    }
}

// The ramp of 250 entries around each place where rows of the table meet or halves of the range end.
TEST_F(Gles3FilterLinear16TosRGB8GLTest, NeighbouringEntriesAreToldApartInEveryPartOfTheTable) {
    Texels const texels = packThreeChannel16(everySampleThrice());
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    for (size_t const depth : {11U, 12U, 13U, 15U, 16U}) {
        Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(depth));
        std::uint64_t const last = std::min<std::uint64_t>((std::uint64_t{1} << depth) - 1, 32767);
        for (std::uint64_t const middle : {last / 2, last - last / 5, last - 127})
            EXPECT_TRUE(maps(filter, source, texels, {1.0, middle - 125, middle + 125})) << depth << ", " << middle;
    }
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, CurvesOfEveryKindAreExact) {
    Texels const texels = packThreeChannel16(randomPlanes(128, 128, 1, -500, 5000));
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(12));
    for (Curve const& curve : {Curve{0.45, 0, 4095},
                               {1.0, 0, 4095},
                               {1.02, 10, 4000},
                               {1.055, 0, 4095},
                               {2.4, 5, 4095},
                               {2.4, 12, 4095},
                               {2.4, 1000, 3000},
                               {2.2, 3000, 1000},
                               {2.2, 0, 0},
                               {1.8, 70000, 70000},
                               {5.0, 1, 90000}})
        EXPECT_TRUE(maps(filter, source, texels, curve)) << curve.gamma << ", " << curve.black << ", " << curve.white;
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, BoundariesAreExact) {
    Texels const texels = packThreeChannel16(boundaryTriples());
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    EXPECT_TRUE(maps(rig.instantiated(description::filterLinear16TosRGB8(10)), source, texels, {1.0, 0, 1023}));
    EXPECT_TRUE(maps(rig.instantiated(description::filterLinear16TosRGB8(16)), source, texels, {0.3, 0, 65535}));
}

// The high byte has a sign: samples of 16 unsigned bits are negative from 32768 on.
TEST_F(Gles3FilterLinear16TosRGB8GLTest, CodesFrom32768OnReadTheFirstEntryAt16Bits) {
    Texels const source(4, 1, {255, 127, 0, 255, 128, 255, 255, 255, 0, 128, 1, 255, 0, 0, 0, 255});
    // (32767, 32768, -1), (-32768, 1, 0)
    Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(16));
    size_t const destination = rig.target(Layout::kRgba8, 2, 1);
    rig.run(filter, {{{rig.uploaded(source, Layout::kThreeChannel16), 0, 0, false}}, 2, 1}, destination,
            Params(1.0, 0, 65535));
    EXPECT_EQ(rig.read(destination).bytes, tableLookup16(source, gammaTable(16, 1.0, 0, 65535)).bytes);
    EXPECT_EQ(rig.read(destination).at(0, 0), (reference::Texel{127, 0, 0, 255}));
    EXPECT_EQ(rig.read(destination).at(1, 0), (reference::Texel{0, 0, 0, 255}));
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, EveryCodeOf8BitsIsExact) {
    Texels image = colours(77);
    Filter const filter = rig.instantiated(tableFilter("FilterLinear16TosRGB8", 8));
    size_t const source = rig.uploaded(image, Layout::kRgba8);
    size_t const destination = rig.target(Layout::kRgba8, 256, 256);
    for (Curve const& curve : {Curve{1.0, 0, 255}, {2.2, 0, 255}, {0.5, 20, 200}, {2.4, 30, 10}}) {
        rig.run(filter, {{{source, 0, 0, false}}, 256, 256}, destination,
                Params(curve.gamma, curve.black, curve.white));
        Texels const expected = tableLookup8(image, gammaTable(8, curve.gamma, curve.black, curve.white));
        EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, expected.bytes, 256)) << curve.gamma;
    }
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, DepthsBelowEightUseTheTopBitsOfEachByte) {
    Texels const image = colours(78);
    size_t const source = rig.uploaded(image, Layout::kRgba8);
    size_t const destination = rig.target(Layout::kRgba8, 256, 256);
    for (size_t depth = 1; depth < 8; ++depth) {
        std::uint64_t const white = (std::uint64_t{1} << depth) - 1;
        rig.run(rig.instantiated(tableFilter("FilterLinear16TosRGB8", depth)), {{{source, 0, 0, false}}, 256, 256},
                destination, Params(1.0, 0, white));
        Texels const expected = tableLookup8(image, gammaTable(static_cast<unsigned>(depth), 1.0, 0, white));
        EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, expected.bytes, 256)) << depth;
    }
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, TableOfAnEarlierKeyIsUsedAgain) {
    Texels const texels = packThreeChannel16(randomPlanes(16, 16, 3, 0, 1023));
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(10));
    // Twelve curves, so that the first two have left and are computed again.
    for (int round = 0; round < 2; ++round) {
        for (std::uint64_t black = 0; black < 12; ++black)
            ASSERT_TRUE(maps(filter, source, texels, {2.2, 60 * black, 1023})) << round << ", " << black;
    }
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, PartsLandAnywhere) {
    Planes3 const pixels = randomPlanes(27, 15, 4, -100, 1200);
    size_t const source = rig.uploaded(pixels);
    struct Row {
        size_t x;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row :
         {Row{0, {0, 0, 0, 0}, {1, 0}}, Row{5, {1, 0, 0, 2}, {2, 3}}, Row{12, {4, 3, 5, 1}, {5, 1}}}) {
        FilterRun const run{
            {{source, row.x, 2, false}}, 15, 13, row.clip[0], row.clip[1], row.clip[2], row.clip[3], row.offset};
        Planes3 const kept =
            cropped(pixels, static_cast<int>(row.x + row.clip[0]), static_cast<int>(2 + row.clip[2]),
                    static_cast<int>(15 - row.clip[0] - row.clip[1]), static_cast<int>(13 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filterLinear16TosRGB8(10), run,
                                    tableLookup16(packThreeChannel16(kept), gammaTable(10, 2.2, 5, 1000)),
                                    Layout::kRgba8, Params(2.2, 5, 1000)));
    }
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()}) {
        Texels const input = packThreeChannel16(randomPlanes(texels / 2, 2, 5, -100, 4500));
        EXPECT_TRUE(rig.gives(description::filterLinear16TosRGB8(12), {rig.uploaded(input, Layout::kThreeChannel16)},
                              tableLookup16(input, gammaTable(12, 1.0, 100, 4000)), Layout::kRgba8,
                              Params(1.0, 100, 4000)))
            << texels;
    }
}

TEST_F(Gles3FilterLinear16TosRGB8GLTest, WrongRecordsAreRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kRgba8);
    FilterRun const run{{{rig.uploaded(randomPlanes(4, 4, 2)), 0, 0, false}}, 4, 4};
    Filter const filter = rig.instantiated(description::filterLinear16TosRGB8(12));
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, FilterBlackWhiteGamma8Params()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, FilterSharpness8Params()); }),
              "#Name:Error: bad cast, provided filter parameters are expected to be of type "
              "ComparableSingleFilterParameters#Location:virtual void "
              "Gles3FilterLut::uploadParameters(SingleFilterParameters const& params) override");
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

} // namespace
