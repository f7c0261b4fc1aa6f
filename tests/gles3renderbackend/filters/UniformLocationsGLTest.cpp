#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "host/filter/FilterDescriptions.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bool isGuarded(std::string const& name) {
    return name == "a_modelView" || name.rfind("a_texRange", 0) == 0;
}

class UniformLocationsGLTest : public ::testing::TestWithParam<std::string> {};

// A guarded uniform at location 0 is never set, and then nothing is drawn. Locations follow the order of declaration on
// the drivers known, hence a_geometry, which is not guarded, stands first in every vertex stage.
TEST_P(UniformLocationsGLTest, NoGuardedUniformIsAtLocationZero) {
    Gles3RenderBackend::FilterRegistry registry;
    registerBuiltInFilters(registry);
    Filter filter = description::byName(GetParam());
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

INSTANTIATE_TEST_SUITE_P(BuiltIn, UniformLocationsGLTest, ::testing::ValuesIn(description::names()),
                         [](auto const& row) { return row.param; });

} // namespace
