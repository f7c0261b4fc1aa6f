// Do the comparisons with the references notice a fault? Each case puts one into the GLSL of a filter and looks.
#include "gles3renderbackend/Gl.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/gles3renderbackend/filters/mutants/FilterComparisons.h"
#include "tests/gles3renderbackend/filters/mutants/GlslMutants.h"
#include "tests/support/ShaderEdit.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

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

bool equalsReference(std::vector<FilterComparison> const& comparisons, FilterRig& rig) {
    return std::all_of(comparisons.begin(), comparisons.end(),
                       [&](FilterComparison const& comparison) { return static_cast<bool>(comparison(rig)); });
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
    auto const& comparisons = comparisonsOf(mutant.filter);
    // Without the fault first: the rig then has the blits that it fills targets with, and later makes the filter alone.
    ASSERT_TRUE(equalsReference(comparisons, rig)) << "before the edit";

    ShaderEdit edit(stageOf(mutant.file), mutant.search, mutant.replacement);
    bool equal = false;
    ASSERT_NO_THROW(equal = equalsReference(comparisons, rig)) << "the edited text is no GLSL";
    ASSERT_GT(edit.texts(), 0U);
    ASSERT_EQ(edit.replacements(), edit.texts()) << "once in each text of the stage";
    EXPECT_EQ(equal, mutant.fate == Fate::kEquivalent) << (equal ? "survives" : "is no equivalent");
}

std::string nameOf(::testing::TestParamInfo<Mutant> const& info) {
    return std::string(info.param.filter) + "_" + info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Table, GlslMutantGLTest, ::testing::ValuesIn(glslMutants()), nameOf);

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
        EXPECT_EQ(files.count(std::filesystem::relative(entry.path(), kGlsl)), 1U) << entry.path();
    }
    EXPECT_GT(seen, 0U);
}

} // namespace
