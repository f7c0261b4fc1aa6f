// The record that each filter class offers to those who do not know it.
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;

using KeyedByDepth = ComparableSingleFilterParameters<unsigned char>;

template <class Record>
bool isExactly(SingleFilterParameters const& record) {
    return typeid(record) == typeid(Record);
}

struct Row {
    char const* name;
    bool (*matches)(SingleFilterParameters const&);
};

std::vector<Row> const kRows = {
    {"FilterSharpness8", isExactly<FilterSharpness8Params>},
    {"FilterSharpnessV16", isExactly<FilterSharpness16Params>},
    {"FilterLinear8ToSRGB8", isExactly<KeyedByDepth>},
    {"FilterLinear16ToSRGB8", isExactly<KeyedByDepth>},
    {"MaskFilter3x8", isExactly<MaskFilterParams>},
    {"MaskFilter4x8", isExactly<MaskFilterParams>},
    {"MaskFilter3x16", isExactly<MaskFilterParams>},
    {"FilterLinear16TosRGB8", isExactly<FilterLinear16TosRGB8Params>},
    {"FilterTruncate16", isExactly<FilterTruncate16Params>},
    {"Filter3x3Matrix8", isExactly<Filter3x3MatrixParams>},
    {"Filter3x3Matrix16", isExactly<Filter3x3MatrixParams>},
    {"FilterBlackWhiteGamma8", isExactly<FilterBlackWhiteGamma8Params>},
    {"FilterCLAHE", isExactly<FilterClaheParams>},
};

class ParametersFactoryTest : public BackendRecordingTest {
protected:
    Filter instantiated(Filter filter) const {
        instance->createFilterInstance(filter);
        return filter;
    }
};

TEST_F(ParametersFactoryTest, FilterWithParametersMakesItsRecordOnceItIsInstantiated) {
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(namedFilter(row.name).supportsParameters()) << "the host's description knows no records";
        Filter const filter = instantiated(namedFilter(row.name));
        ASSERT_TRUE(filter.supportsParameters());
        auto const record = filter.getParametersObject();
        ASSERT_NE(record, nullptr);
        EXPECT_TRUE(row.matches(*record));
        EXPECT_NE(filter.getParametersObject(), record) << "a fresh one each time";
    }
}

TEST_F(ParametersFactoryTest, FilterWithoutParametersMakesNone) {
    for (auto const* const name :
         {"FilterFirIH53LeGall16", "FilterFirIV53LeGall16", "BlitFilter1x16", "BlitFilter3x16", "BlitFilter3x8",
          "BlitFilter4x8", "Filter1x16ToRGB8", "FilterInterleave16", "FilterYCoCg16ToRGBA8", "FilterYCoCg16ToRGB16",
          "Filter3x16To4x8", "FilterSharpnessH16", "FilterRemoveAlpha8", "FilterRGBA8ToYCoCg16"})
        EXPECT_FALSE(instantiated(namedFilter(name)).supportsParameters()) << name;
}

TEST_F(ParametersFactoryTest, RecordThatAFilterMakesIsOneThatItReads) {
    size_t const target = instance->createTarget({4, 4}, 48, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    for (auto const& row : kRows) {
        if (std::string(row.name).find("Mask") == 0) continue; // run by maskRange, which needs a shape in its record
        bool const eightBits = std::string(row.name).find("16") == std::string::npos;
        Filter const filter = instantiated(Filter(row.name, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, 32, 32, 4, 4, 1, 1,
                                                  1, 1, {false}, false, eightBits ? 8 : 12, RenderBackend::NEAREST));
        std::vector<FilterSource> const sources(2, {target, 0, 0, true});
        EXPECT_EQ(failureOf([&] {
                      instance->executeFilter(filter, sources, 4, 4, target, 0, 0, 0, 0, *filter.getParametersObject(),
                                              {0, 0});
                  }),
                  "nothing was thrown")
            << row.name;
    }
}

TEST_F(ParametersFactoryTest, FactoryOfTheHostIsKept) {
    for (auto const& row : kRows) {
        Filter description = namedFilter(row.name);
        auto own = std::make_shared<FilterClaheParams>();
        description.setParametersFactory([own] { return own; });
        EXPECT_EQ(instantiated(description).getParametersObject(), own) << row.name;
    }
}

} // namespace
