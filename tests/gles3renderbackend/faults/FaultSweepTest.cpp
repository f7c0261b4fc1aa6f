// Every scenario over the recording GL, with each call of GL failing, each `new` failing and the context
// lost with each call.
#include "tests/gles3renderbackend/FailingAllocation.h"
#include "tests/gles3renderbackend/faults/Sweep.h"
#include "tests/support/RecordingGl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace {

using namespace faults;

Living living() {
    Living result;
    for (auto const& object : RecordingGl::instance().living())
        ++result[object.substr(0, object.find(' '))];
    return result;
}

class FaultSweepTest : public ::testing::TestWithParam<Scenario> {
public:
    FaultSweepTest() { newContext(); }
    ~FaultSweepTest() override { RecordingGl::instance().reset(); }

protected:
    static void tidyUp() {
        RecordingGl::instance().forgetCalls();
        while (glGetError() != GL_NO_ERROR) {} // what calls that follow a fault have raised
    }

    static void newContext() {
        RecordingGl::instance().reset();
        RecordingGl::instance().drawDigests();
    }

    Surroundings surroundings{living, tidyUp, newContext};
};

} // namespace

TEST_P(FaultSweepTest, CallsOfGl) {
    sweepGl(GetParam(), surroundings, GetParam().isLarge ? 25 : GetParam().keepsFilter ? 1 : 5).report(GetParam().name);
}

TEST_P(FaultSweepTest, Allocations) {
    Allocations const allocations = {backendtest::failAllocationAfter, backendtest::letAllocationsSucceed};
    sweepAllocations(GetParam(), surroundings, allocations, GetParam().isLarge ? 7 : 1).report(GetParam().name);
}

TEST_P(FaultSweepTest, LostContexts) {
    sweepLostContexts(GetParam(), surroundings, 3).report(GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweepTest, ::testing::ValuesIn(scenarios()),
                         ::testing::PrintToStringParamName());

// The list that tests/symbols compares with the library.
TEST(FaultScenariosTest, CallEveryExportedMember) {
    RecordingGl::instance().reset();
    {
        Stage stage;
        for (auto const& scenario : scenarios())
            scenario.play(stage);
    }
    RecordingGl::instance().reset();
    std::ifstream list(VELMORA_EXPORTED_MEMBERS);
    size_t members = 0;
    for (std::string line; std::getline(list, line);) {
        bool const isMember = line.rfind("Gles3RenderBackend", 0) == 0;
        if (!isMember) continue;
        ++members;
        auto const& used = Judge::instance().used();
        EXPECT_TRUE(
            std::any_of(used.begin(), used.end(),
                        [&](std::string const& member) { return line.rfind("Gles3RenderBackend" + member, 0) == 0; }))
            << line << " is in no scenario";
    }
    EXPECT_GE(members, 51U);
}
