#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/resources/Gles3Shader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Every name that FilterRegistry.cpp registers.
char const* const kBuiltInFilters[] = {
    "FilterFirIH53LeGall16",  "FilterFirIV53LeGall16", "BlitFilter1x16",       "BlitFilter3x16",
    "BlitFilter3x8",          "BlitFilter4x8",         "Filter1x16ToRGB8",     "FilterInterleave16",
    "FilterYCoCg16ToRGBA8",   "FilterYCoCg16ToRGB16",  "Filter3x16To4x8",      "FilterSharpness8",
    "FilterSharpnessH16",     "FilterSharpnessV16",    "FilterLinear8ToSRGB8", "FilterLinear16ToSRGB8",
    "MaskFilter3x8",          "MaskFilter4x8",         "MaskFilter3x16",       "FilterLinear16TosRGB8",
    "FilterTruncate16",       "Filter3x3Matrix8",      "Filter3x3Matrix16",    "FilterRemoveAlpha8",
    "FilterBlackWhiteGamma8", "FilterRGBA8ToYCoCg16",  "FilterCLAHE",
};

bool isGuarded(std::string const& name) {
    return name == "a_modelView" || name.rfind("a_texRange", 0) == 0;
}

class UniformLocationsGLTest : public ::testing::TestWithParam<char const*> {};

// A guarded uniform at location 0 is never set, and then nothing is drawn. Locations follow the order of declaration on the drivers known,
// hence a_geometry, which is not guarded, stands first in every vertex stage.
TEST_P(UniformLocationsGLTest, NoGuardedUniformIsAtLocationZero) {
    Gles3RenderBackend::FilterRegistry registry;
    registerBuiltInFilters(registry);
    Filter filter(GetParam(), 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    auto const shader = registry.create(GetParam(), filter);
    if (shader->program() == 0) return; // computes without a program
    size_t guarded = 0;
    for (auto const& [name, location] : shader->uniforms()) {
        if (!isGuarded(name)) continue;
        EXPECT_NE(location, 0) << name;
        ++guarded;
    }
    EXPECT_GT(guarded, 0U) << "every stage maps at least one input";
    EXPECT_NE(shader->attributeLocation("a_position"), -1);
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, UniformLocationsGLTest, ::testing::ValuesIn(kBuiltInFilters),
                         [](auto const& row) { return std::string(row.param); });

} // namespace
