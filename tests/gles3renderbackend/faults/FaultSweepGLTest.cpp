// Every scenario over a real GL, in front of which FaultyGl.cpp stands, with each call of GL failing.
#include "tests/gles3renderbackend/faults/Sweep.h"
#include "tests/support/ContextFindings.h"
#include "tests/support/LivingGlObjects.h"
#include "tests/support/LongRun.h"

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

class FaultSweepGLTest : public ::testing::TestWithParam<Scenario> {};

size_t stepOf(Scenario const& scenario) {
    if (runsOffLlvmpipe()) return scenario.keepsFilter ? 25 : 200;
    return scenario.keepsFilter ? 1 : 20;
}

} // namespace

TEST_P(FaultSweepGLTest, CallsOfGl) {
    sweepGl(GetParam(), {living, tidyUp}, stepOf(GetParam())).report(GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweepGLTest, ::testing::ValuesIn(scenarios()),
                         ::testing::PrintToStringParamName());
