// The names that filters are known by.
#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/filters/Gles3FilterLinear16TosRGB8.h"
#include "gles3renderbackend/filters/Gles3FilterLinearTo8bitSRGB.h"
#include "host/filter/FilterDescriptions.h"
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/RecordingGlTest.h"

#include <cxxabi.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <typeinfo>

namespace {

using namespace backendtest;

// The names that the build registers.
std::set<std::string> registeredNames() {
    std::istringstream stream(VELMORA_FILTER_NAMES);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string classNameOf(Gles3Shader const& shader) {
    std::unique_ptr<char, decltype(&std::free)> const name(
        abi::__cxa_demangle(typeid(shader).name(), nullptr, nullptr, nullptr), &std::free);
    return name.get();
}

// A class is named after its filter, unless several names share it.
std::string expectedClassOf(std::string const& filter) {
    static std::map<std::string, std::string> const shared = {
        {"BlitFilter1x16", "Gles3BlitFilter16"},
        {"BlitFilter3x16", "Gles3BlitFilter16"},
        {"BlitFilter3x8", "Gles3BlitFilter8"},
        {"BlitFilter4x8", "Gles3BlitFilter8"},
        {"FilterRemoveAlpha8", "Gles3BlitFilter8"},
        {"FilterLinear8ToSRGB8", "Gles3FilterLinearTo8bitSRGB"},
        {"FilterLinear16ToSRGB8", "Gles3FilterLinearTo8bitSRGB"},
        {"MaskFilter3x8", "Gles3FilterMask"},
        {"MaskFilter4x8", "Gles3FilterMask"},
        {"MaskFilter3x16", "Gles3FilterMask"},
    };
    auto const found = shared.find(filter);
    return found == shared.end() ? "Gles3" + filter : found->second;
}

class Gles3RenderBackendFilterRegistryTest : public RecordingGlTest {
protected:
    Gles3RenderBackendFilterRegistryTest() { registerBuiltInFilters(registry); }

    Gles3RenderBackend::FilterRegistry registry;
};

TEST_F(Gles3RenderBackendFilterRegistryTest, RegisteredFiltersAreTheDescribedOnes) {
    std::set<std::string> const described(description::names().begin(), description::names().end());
    for (std::string const& name : registeredNames()) {
        EXPECT_TRUE(registry.has(name)) << name;
        EXPECT_EQ(described.count(name), 1U)
            << name << " is registered and not described: add a row to kDescriptions of "
            << "host/filter/FilterDescriptions.cpp";
    }
    for (std::string const& name : described)
        EXPECT_EQ(registeredNames().count(name), 1U)
            << name << " is described and not registered: add it to a velmora_filter line of "
            << "gles3renderbackend/CMakeLists.txt";
}

TEST_F(Gles3RenderBackendFilterRegistryTest, EachNameBuildsItsClass) {
    for (std::string const& name : registeredNames()) {
        Filter filter = namedFilter(name);
        auto const shader = registry.create(name, filter);
        EXPECT_EQ(classNameOf(*shader), expectedClassOf(name))
            << "a class that " << name << " shares stands in expectedClassOf";
        EXPECT_EQ(shader->name(), name);
    }
}

TEST_F(Gles3RenderBackendFilterRegistryTest, EachNameHasAFactoryOfItsOwn) {
    std::set<void const*> factories;
    for (std::string const& name : registeredNames())
        factories.insert(registry.get(name).get());
    EXPECT_EQ(factories.size(), registeredNames().size());
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
