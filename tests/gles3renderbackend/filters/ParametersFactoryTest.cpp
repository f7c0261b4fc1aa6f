// The record that each filter class offers to those who do not know it.
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "host/filter/FilterDescriptions.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;

// The names of the filters that read a record, which is that of their description.
std::vector<std::string> namesWithRecords() {
    std::vector<std::string> names;
    for (std::string const& name : description::names())
        if (description::byName(name).supportsParameters()) names.push_back(name);
    return names;
}

std::type_info const& classOf(SingleFilterParameters const& record) {
    return typeid(record);
}

class ParametersFactoryTest : public BackendRecordingTest {
protected:
    Filter instantiated(Filter filter) const {
        instance->createFilterInstance(filter);
        return filter;
    }
};

TEST_F(ParametersFactoryTest, FilterWithParametersMakesItsRecordOnceItIsInstantiated) {
    for (std::string const& name : namesWithRecords()) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(namedFilter(name).supportsParameters()) << "the host's description knows no records";
        Filter const filter = instantiated(namedFilter(name));
        ASSERT_TRUE(filter.supportsParameters());
        auto const record = filter.getParametersObject();
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(classOf(*record), classOf(*description::byName(name).getParametersObject()));
        EXPECT_NE(filter.getParametersObject(), record) << "a fresh one each time";
    }
}

TEST_F(ParametersFactoryTest, FilterWithoutParametersMakesNone) {
    for (std::string const& name : description::names())
        EXPECT_EQ(instantiated(namedFilter(name)).supportsParameters(), description::byName(name).supportsParameters())
            << name;
}

TEST_F(ParametersFactoryTest, RecordThatAFilterMakesIsOneThatItReads) {
    size_t const target = instance->createTarget({4, 4}, 48, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    for (std::string const& name : namesWithRecords()) {
        if (name.find("Mask") == 0) continue; // run by maskRange, which needs a shape in its record
        bool const eightBits = name.find("16") == std::string::npos;
        Filter const filter = instantiated(Filter(name, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, 32, 32, 4, 4, 1, 1, 1, 1,
                                                  {false}, false, eightBits ? 8 : 12, RenderBackend::NEAREST));
        std::vector<FilterSource> const sources(2, {target, 0, 0, true});
        EXPECT_EQ(failureOf([&] {
                      instance->executeFilter(filter, sources, 4, 4, target, 0, 0, 0, 0, *filter.getParametersObject(),
                                              {0, 0});
                  }),
                  "nothing was thrown")
            << name;
    }
}

TEST_F(ParametersFactoryTest, FactoryOfTheHostIsKept) {
    for (std::string const& name : namesWithRecords()) {
        Filter description = namedFilter(name);
        auto own = std::make_shared<FilterClaheParams>();
        description.setParametersFactory([own] { return own; });
        EXPECT_EQ(instantiated(description).getParametersObject(), own) << name;
    }
}

} // namespace
