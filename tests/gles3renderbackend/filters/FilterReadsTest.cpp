#include "bench/FilterReads.h"

#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "host/filter/FilterDescriptions.h"
#include "tests/support/RecordingGlTest.h"

#include <algorithm>
#include <iterator>

namespace {

class FilterReadsTest : public RecordingGlTest {
protected:
    // The fragment stage as GL got it; empty if the filter has no program.
    std::string fragmentStage(std::string const& name) {
        Gles3RenderBackend::FilterRegistry registry;
        registerBuiltInFilters(registry);
        Filter filter = description::byName(name);
        auto const shader = registry.create(name, filter);
        return shader->program() == 0 ? "" : gl.program(shader->program()).sources.at(GL_FRAGMENT_SHADER);
    }
};

bool hasRow(std::string const& name) {
    return std::any_of(std::begin(kFilterReads), std::end(kFilterReads),
                       [&](NamedFilterReads const& row) { return row.filter == name; });
}

// Once, and neither in a function that may be called more often nor in a loop.
bool readsOneTexel(std::string const& stage) {
    size_t const first = stage.find("texture2D(");
    return first != std::string::npos && stage.find("texture2D(", first + 1) == std::string::npos &&
           stage.find("void main()") < first && stage.find("for (") == std::string::npos;
}

TEST_F(FilterReadsTest, FilterWithoutARowReadsOneTexel) {
    for (std::string const& name : description::names()) {
        if (hasRow(name)) continue;
        EXPECT_TRUE(readsOneTexel(fragmentStage(name)))
            << name << " reads more than one texel: add a row to kFilterReads of bench/FilterReads.h";
        EXPECT_EQ(filterReads(name).first, 1U);
        EXPECT_TRUE(filterReads(name).draws());
    }
}

TEST_F(FilterReadsTest, FilterWithARowReadsSomethingElse) {
    for (NamedFilterReads const& row : kFilterReads) {
        std::string const stage = fragmentStage(row.filter);
        EXPECT_FALSE(readsOneTexel(stage)) << row.filter << " needs no row in kFilterReads of bench/FilterReads.h";
        EXPECT_EQ(filterReads(row.filter).draws(), !stage.empty()) << row.filter;
    }
}

} // namespace
