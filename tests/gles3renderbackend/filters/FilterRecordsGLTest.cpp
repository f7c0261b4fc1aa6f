// A record that another filter reads is refused, and nothing is drawn.
#include "host/filter/FilterDescriptions.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

#include <memory>

namespace {

using namespace filtertest;
using backendtest::failureOf;

constexpr char const* kNotTheRecord = "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()";
constexpr char const* kNoKey = "#Name:Error: bad cast, provided filter parameters are expected to be of type "
                               "ComparableSingleFilterParameters#Location:virtual void "
                               "Gles3FilterLut::uploadParameters(SingleFilterParameters const& params) override";

struct Row {
    char const* name;
    char const* filter;
    std::shared_ptr<SingleFilterParameters> record;
    char const* failure;
};

template <class Record>
Row with(char const* name, char const* filter, char const* failure) {
    return {name, filter, std::make_shared<Record>(), failure};
}

std::vector<Row> rows() {
    return {
        with<SingleFilterParameters>("Matrix16AndNone", "Filter3x3Matrix16", kNotTheRecord),
        with<FilterClaheParams>("Matrix8AndClahe", "Filter3x3Matrix8", kNotTheRecord),
        with<FilterSharpness16Params>("Sharpness8AndSharpness16", "FilterSharpness8", kNotTheRecord),
        with<FilterSharpness8Params>("Sharpness16AndSharpness8", "FilterSharpnessV16", kNotTheRecord),
        with<SingleFilterParameters>("TruncateAndNone", "FilterTruncate16", kNotTheRecord),
        with<FilterSharpness8Params>("TruncateAndSharpness8", "FilterTruncate16", kNotTheRecord),
        with<SingleFilterParameters>("ClaheAndNone", "FilterCLAHE", kNotTheRecord),
        with<FilterSharpness8Params>("ClaheAndSharpness8", "FilterCLAHE", kNotTheRecord),
        with<FilterLinear16TosRGB8Params>("BlackWhiteGammaAndLinear16", "FilterBlackWhiteGamma8", kNotTheRecord),
        with<SingleFilterParameters>("BlackWhiteGammaAndNone", "FilterBlackWhiteGamma8", kNoKey),
        with<FilterBlackWhiteGamma8Params>("Linear16AndBlackWhiteGamma", "FilterLinear16TosRGB8", kNotTheRecord),
        with<FilterSharpness8Params>("Linear16AndSharpness8", "FilterLinear16TosRGB8", kNoKey),
        with<ComparableSingleFilterParameters<std::string>>("SrgbAndAnotherKey", "FilterLinear8ToSRGB8", kNoKey),
    };
}

Layout layoutOf(size_t bitsPerPixel) {
    switch (bitsPerPixel) {
    case 16:
        return Layout::kOneChannel16;
    case 48:
        return Layout::kThreeChannel16;
    case 64:
        return Layout::kFourChannel16;
    default:
        return Layout::kRgba8;
    }
}

class FilterRecordsGLTest : public FilterGLTest, public ::testing::WithParamInterface<Row> {};

TEST_P(FilterRecordsGLTest, RecordOfAnotherFilterIsRefusedAndNothingIsDrawn) {
    Filter const filter = rig.instantiated(description::byName(GetParam().filter));
    Layout const in = layoutOf(filter.bitsPerPixelIn());
    FilterRun run;
    for (std::uint32_t i = 0; i < filter.numTexturesIn(); ++i)
        run.sources.push_back({rig.uploaded(randomTexels(100, 50, i), in), 0, 0, false});
    run.input.width = conformance::logicalWidth(in, 100);
    run.input.height = 50;
    Layout const out = layoutOf(filter.bitsPerPixelOut());
    Texels const noise = randomTexels(100, 50, 7);
    size_t const destination = rig.uploaded(noise, out);
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, *GetParam().record); }), GetParam().failure);
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 100));
}

INSTANTIATE_TEST_SUITE_P(Wrong, FilterRecordsGLTest, ::testing::ValuesIn(rows()),
                         [](auto const& wrong) { return std::string(wrong.param.name); });

} // namespace
