// Do the runs beside the models notice a fault? Each case puts one into the GLSL of a filter and looks.
#include "gles3renderbackend/Gl.h"
#include "conformance/Verification.h"
#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "host/filter/FilterDescriptions.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/gles3renderbackend/filters/SurfaceScenes.h"
#include "tests/gles3renderbackend/filters/mutants/GlslMutants.h"
#include "tests/support/ShaderEdit.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>

namespace {

using filtertest::FilterRig;

std::filesystem::path const kGlsl = VELMORA_FILTER_GLSL;

std::string textOf(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The pieces of vertex stages lie in a folder of their own.
ShaderEdit::Stage stageOf(std::filesystem::path const& file) {
    bool const isVertex = file.extension() == ".vert" || file.parent_path().filename() == "vertex";
    return isVertex ? ShaderEdit::Stage::kVertex : ShaderEdit::Stage::kFragment;
}

// Off and on the host's surface.
bool equalsItsModel(FilterRig& rig, std::string const& filter) {
    conformance::Outcome const outcome =
        conformance::verifyFilter(filter, rig, FilterRig::scope(conformance::Depth::kSharp));
    EXPECT_EQ(outcome.failure, "");
    return outcome.exact() && filtertest::appearsOnSurface(rig, filter);
}

// Looked at once a filter, however many faults it gets.
bool equalsItsModelWithoutAFault(FilterRig& rig, std::string const& filter) {
    static std::map<std::string, bool> known;
    auto const found = known.find(filter);
    return found != known.end() ? found->second : known.emplace(filter, equalsItsModel(rig, filter)).first->second;
}

// Puts the mutant's fault into each text that has the place for it, and keeps the largest number of places in one.
ShaderEdit::Rewriting faultOf(Mutant const& mutant, size_t& mostPlaces) {
    return [&mostPlaces, search = std::string(mutant.search), replacement = mutant.replacement](std::string& text) {
        size_t const places = occurrences(text, search);
        mostPlaces = std::max(mostPlaces, places);
        if (places > 0) text.replace(text.find(search), search.size(), replacement);
        return places;
    };
}

// Other drivers name the same precision and compute in 32 bits all the same.
bool computesMediumpIn16Bits() {
    std::string const renderer = reinterpret_cast<char const*>(glGetString(GL_RENDERER));
    return renderer.rfind("llvmpipe", 0) == 0;
}

class GlslMutantGLTest : public ::testing::TestWithParam<Mutant> {
protected:
    FilterRig rig;
};

TEST_P(GlslMutantGLTest, IsNoticed) {
    Mutant const& mutant = GetParam();
    if (mutant.fate == Fate::kDiffersInHalfPrecision && !computesMediumpIn16Bits())
        GTEST_SKIP() << "shows where mediump has 16 bits: on llvmpipe";
    ASSERT_EQ(occurrences(textOf(kGlsl / mutant.file), mutant.search), 1U) << "in " << mutant.file;
    ASSERT_TRUE(equalsItsModelWithoutAFault(rig, mutant.filter)) << "before the edit";
    rig.makeCopies();

    size_t mostPlaces = 0;
    ShaderEdit const edit(stageOf(mutant.file), faultOf(mutant, mostPlaces));
    bool equal = false;
    ASSERT_NO_THROW(equal = equalsItsModel(rig, mutant.filter)) << "the edited text is no GLSL";
    ASSERT_EQ(mostPlaces, 1U) << "times in a text of the stage";
    EXPECT_EQ(equal, mutant.fate == Fate::kEquivalent) << (equal ? "survives" : "is no equivalent");
}

std::string nameOf(::testing::TestParamInfo<Mutant> const& info) {
    return std::string(info.param.filter) + "_" + info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Table, GlslMutantGLTest, ::testing::ValuesIn(glslMutants()), nameOf);

class FilterMutantsGLTest : public ::testing::TestWithParam<std::string> {};

TEST_P(FilterMutantsGLTest, EveryFilterHasAMutantThatIsNoticed) {
    Gles3RenderBackend::FilterRegistry registry;
    registerBuiltInFilters(registry);
    Filter filter = description::byName(GetParam());
    if (registry.create(GetParam(), filter)->program() == 0) return; // computed without GLSL
    auto const& mutants = glslMutants();
    EXPECT_TRUE(
        std::any_of(mutants.begin(), mutants.end(),
                    [](Mutant const& mutant) { return mutant.filter == GetParam() && mutant.fate == Fate::kDiffers; }))
        << GetParam() << " has no fault that its runs must notice: add one to GlslMutants.cpp";
}

INSTANTIATE_TEST_SUITE_P(All, FilterMutantsGLTest, ::testing::ValuesIn(description::names()),
                         [](auto const& row) { return row.param; });

// A new file is in no mutant yet.
TEST(GlslMutantsGLTest, EveryFileOfGlslHasAMutantThatIsNoticed) {
    std::set<std::string> files;
    for (Mutant const& mutant : glslMutants()) {
        if (mutant.fate != Fate::kEquivalent) files.insert(mutant.file);
    }
    size_t seen = 0;
    for (auto const& entry : std::filesystem::recursive_directory_iterator(kGlsl)) {
        std::string const extension = entry.path().extension();
        if (extension != ".frag" && extension != ".vert" && extension != ".glsl") continue;
        ++seen;
        EXPECT_EQ(files.count(std::filesystem::relative(entry.path(), kGlsl)), 1U)
            << entry.path() << " has no fault that is noticed: add one to GlslMutants.cpp";
    }
    EXPECT_GT(seen, 0U);
}

} // namespace
