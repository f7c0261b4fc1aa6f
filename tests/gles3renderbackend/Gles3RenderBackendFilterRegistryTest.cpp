// The names that filters are known by.
#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/filters/Gles3BlitFilter16.h"
#include "gles3renderbackend/filters/Gles3BlitFilter8.h"
#include "gles3renderbackend/filters/Gles3Filter1x16ToRGB8.h"
#include "gles3renderbackend/filters/Gles3Filter3x16To4x8.h"
#include "gles3renderbackend/filters/Gles3Filter3x3Matrix16.h"
#include "gles3renderbackend/filters/Gles3Filter3x3Matrix8.h"
#include "gles3renderbackend/filters/Gles3FilterBlackWhiteGamma8.h"
#include "gles3renderbackend/filters/Gles3FilterCLAHE.h"
#include "gles3renderbackend/filters/Gles3FilterFirIH53LeGall16.h"
#include "gles3renderbackend/filters/Gles3FilterFirIV53LeGall16.h"
#include "gles3renderbackend/filters/Gles3FilterInterleave16.h"
#include "gles3renderbackend/filters/Gles3FilterLinear16TosRGB8.h"
#include "gles3renderbackend/filters/Gles3FilterLinearTo8bitSRGB.h"
#include "gles3renderbackend/filters/Gles3FilterMask.h"
#include "gles3renderbackend/filters/Gles3FilterRGBA8ToYCoCg16.h"
#include "gles3renderbackend/filters/Gles3FilterSharpness8.h"
#include "gles3renderbackend/filters/Gles3FilterSharpnessH16.h"
#include "gles3renderbackend/filters/Gles3FilterSharpnessV16.h"
#include "gles3renderbackend/filters/Gles3FilterTruncate16.h"
#include "gles3renderbackend/filters/Gles3FilterYCoCg16ToRGB16.h"
#include "gles3renderbackend/filters/Gles3FilterYCoCg16ToRGBA8.h"
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/RecordingGlTest.h"

#include <set>

namespace {

using namespace backendtest;

struct Row {
    std::string name;
    std::type_info const& built;
};

std::vector<Row> const kRows = {
    {"FilterFirIH53LeGall16", typeid(Gles3FilterFirIH53LeGall16)},
    {"FilterFirIV53LeGall16", typeid(Gles3FilterFirIV53LeGall16)},
    {"BlitFilter1x16", typeid(Gles3BlitFilter16)},
    {"BlitFilter3x16", typeid(Gles3BlitFilter16)},
    {"BlitFilter3x8", typeid(Gles3BlitFilter8)},
    {"BlitFilter4x8", typeid(Gles3BlitFilter8)},
    {"Filter1x16ToRGB8", typeid(Gles3Filter1x16ToRGB8)},
    {"FilterInterleave16", typeid(Gles3FilterInterleave16)},
    {"FilterYCoCg16ToRGBA8", typeid(Gles3FilterYCoCg16ToRGBA8)},
    {"FilterYCoCg16ToRGB16", typeid(Gles3FilterYCoCg16ToRGB16)},
    {"Filter3x16To4x8", typeid(Gles3Filter3x16To4x8)},
    {"FilterSharpness8", typeid(Gles3FilterSharpness8)},
    {"FilterSharpnessH16", typeid(Gles3FilterSharpnessH16)},
    {"FilterSharpnessV16", typeid(Gles3FilterSharpnessV16)},
    {"FilterLinear8ToSRGB8", typeid(Gles3FilterLinearTo8bitSRGB)},
    {"FilterLinear16ToSRGB8", typeid(Gles3FilterLinearTo8bitSRGB)},
    {"MaskFilter3x8", typeid(Gles3FilterMask)},
    {"MaskFilter4x8", typeid(Gles3FilterMask)},
    {"MaskFilter3x16", typeid(Gles3FilterMask)},
    {"FilterLinear16TosRGB8", typeid(Gles3FilterLinear16TosRGB8)},
    {"FilterTruncate16", typeid(Gles3FilterTruncate16)},
    {"Filter3x3Matrix8", typeid(Gles3Filter3x3Matrix8)},
    {"Filter3x3Matrix16", typeid(Gles3Filter3x3Matrix16)},
    {"FilterRemoveAlpha8", typeid(Gles3BlitFilter8)},
    {"FilterBlackWhiteGamma8", typeid(Gles3FilterBlackWhiteGamma8)},
    {"FilterRGBA8ToYCoCg16", typeid(Gles3FilterRGBA8ToYCoCg16)},
    {"FilterCLAHE", typeid(Gles3FilterCLAHE)},
};

class Gles3RenderBackendFilterRegistryTest : public RecordingGlTest {
protected:
    Gles3RenderBackendFilterRegistryTest() { registerBuiltInFilters(registry); }

    Gles3RenderBackend::FilterRegistry registry;
};

TEST_F(Gles3RenderBackendFilterRegistryTest, EachNameBuildsItsClass) {
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(registry.has(row.name));
        Filter filter = namedFilter(row.name);
        auto const shader = registry.create(row.name, filter);
        Gles3Shader const& built = *shader;
        EXPECT_EQ(typeid(built), row.built);
        EXPECT_EQ(shader->name(), row.name);
    }
}

TEST_F(Gles3RenderBackendFilterRegistryTest, EachNameHasAFactoryOfItsOwn) {
    std::set<void const*> factories;
    for (auto const& row : kRows)
        factories.insert(registry.get(row.name).get());
    EXPECT_EQ(factories.size(), kRows.size());
}

TEST_F(Gles3RenderBackendFilterRegistryTest, NamesThatDifferInTheCaseOfOneLetterBuildDifferentClasses) {
    Filter filter = namedFilter("any");
    auto const capital = registry.create("FilterLinear16ToSRGB8", filter);
    auto const small = registry.create("FilterLinear16TosRGB8", filter);
    EXPECT_NE(dynamic_cast<Gles3FilterLinearTo8bitSRGB*>(capital.get()), nullptr);
    EXPECT_NE(dynamic_cast<Gles3FilterLinear16TosRGB8*>(small.get()), nullptr);
}

TEST_F(Gles3RenderBackendFilterRegistryTest, NamesAreMatchedByCase) {
    for (std::string const name : {"blitfilter4x8", "BLITFILTER4X8", "Maskfilter3x8", "filterclahe", ""})
        EXPECT_FALSE(registry.has(name)) << name;
}

TEST_F(Gles3RenderBackendFilterRegistryTest, SixteenBitBlitsAlignTheirOutputToPairs) {
    Filter filter = namedFilter("any");
    EXPECT_EQ(registry.create("BlitFilter1x16", filter)->alignXOut(), 2U);
    EXPECT_EQ(registry.create("BlitFilter3x16", filter)->alignXOut(), 2U);
    EXPECT_EQ(registry.create("BlitFilter3x8", filter)->alignXOut(), 1U);
    EXPECT_EQ(registry.create("BlitFilter4x8", filter)->alignXOut(), 1U);
    EXPECT_EQ(registry.create("FilterRemoveAlpha8", filter)->alignXOut(), 1U);
}

} // namespace
