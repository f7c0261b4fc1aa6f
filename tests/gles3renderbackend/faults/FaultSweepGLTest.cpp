// Every scenario over a real GL, in front of which FaultyGl.cpp stands, with each call of GL failing, the context lost
// with each call, and the context ended between operations.
#include "tests/gles3renderbackend/faults/Sweep.h"
#include "tests/support/ContextFindings.h"
#include "tests/support/LivingGlObjects.h"
#include "tests/support/LongRun.h"
#include "tests/support/OwnContexts.h"

#include <gtest/gtest.h>

namespace {

using namespace faults;

Living living() {
    Living result;
    for (auto const& object : living_gl_objects::snapshot())
        ++result[object.substr(0, object.rfind(' '))];
    return result;
}

void tidyUp() {
    context_findings::take(); // what GL says of the calls that follow a fault
    for (auto const& finding : living_gl_objects::findingsSince(living_gl_objects::snapshot()))
        ADD_FAILURE() << finding;
}

class FaultSweepGLTest : public ::testing::TestWithParam<Scenario> {
protected:
    // A context for each fault takes long to make. Filters have nearly the same calls.
    static bool isLeftToLlvmpipe() { return isSampleRun() && GetParam().name.find("Filter") != std::string::npos; }
};

size_t stepOf(Scenario const& scenario) {
    if (runsOffLlvmpipe()) return scenario.keepsFilter ? 25 : 200;
    return scenario.keepsFilter ? 1 : 20;
}

} // namespace

TEST_P(FaultSweepGLTest, CallsOfGl) {
    sweepGl(GetParam(), {living, tidyUp, {}}, stepOf(GetParam())).report(GetParam().name);
}

TEST_P(FaultSweepGLTest, LostContexts) {
    if (isLeftToLlvmpipe()) GTEST_SKIP() << "it runs on llvmpipe";
    OwnContexts contexts;
    Surroundings const surroundings{living, tidyUp, [&] { contexts.anew(); }};
    sweepLostContexts(GetParam(), surroundings, 1).report(GetParam().name);
}

// The context is destroyed, or not current any more, or reset, which of these implementations ANGLE alone offers.
TEST_P(FaultSweepGLTest, EndedContexts) {
    if (isLeftToLlvmpipe()) GTEST_SKIP() << "it runs on llvmpipe";
    OwnContexts contexts;
    Surroundings const surroundings{living, tidyUp, [&] { contexts.anew(); }};
    constexpr size_t kSample = 1;
    Tally tally = sweepEndedContexts(
        GetParam(), surroundings, [&] { contexts.destroy(); }, false, kSample);
    tally += sweepEndedContexts(
        GetParam(), surroundings, [&] { contexts.setCurrent(false); }, false, kSample);
    if (contexts.canBeLost())
        tally += sweepEndedContexts(
            GetParam(), surroundings, [&] { contexts.lose(); }, true, kSample);
    tally.report(GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweepGLTest, ::testing::ValuesIn(scenarios()),
                         ::testing::PrintToStringParamName());
