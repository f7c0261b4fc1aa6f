// Orders of destruction over a real GL: the context is destroyed, is not current, or is lost.
#include "tests/gles3renderbackend/lifecycle/Teardown.h"
#include "tests/support/ContextFindings.h"
#include "tests/support/GlFaultPlan.h"
#include "tests/support/LivingGlObjects.h"
#include "tests/support/LongRun.h"
#include "tests/support/OwnContexts.h"

#include <gtest/gtest.h>

#include <iostream>
#include <ostream>

namespace {

using namespace lifecycle;

enum class End { Destroyed, NotCurrent, Lost };

void PrintTo(End end, std::ostream* stream) {
    *stream << (end == End::Destroyed ? "Destroyed" : end == End::NotCurrent ? "NotCurrent" : "Lost");
}

class TeardownGLTest : public testing::TestWithParam<End> {
protected:
    static Living living() {
        Living result;
        for (auto const& object : living_gl_objects::snapshot())
            ++result[object.substr(0, object.rfind(' '))];
        return result;
    }

    void endContext() {
        auto& plan = GlFaultPlan::instance();
        plan.count();
        if (GetParam() == End::Destroyed) contexts_.destroy();
        if (GetParam() == End::NotCurrent) contexts_.setCurrent(false);
        if (GetParam() != End::Lost) return;
        if (contexts_.canBeLost())
            contexts_.lose();
        else
            plan.play(0, GlFault::ContextLost, true);
    }

    // What was left in a context that was not current stays there, and is in nobody's way.
    void goOn() {
        if (GetParam() == End::NotCurrent && !wasUsedAgain_) {
            contexts_.setCurrent(true);
            wasUsedAgain_ = true;
            return;
        }
        contexts_.anew();
        wasUsedAgain_ = false;
    }

    OwnContexts contexts_;
    bool wasUsedAgain_ = false;
};

} // namespace

TEST_P(TeardownGLTest, AnyOrderOfDestructionDeletesEverythingAndNothingElse) {
    Bytes const expected = drawn();
    World const world{living, [this] { endContext(); }, [this] { goOn(); }};
    auto const chosen = orders(isSampleRun() ? 503 : 163);
    for (auto const& order : chosen) {
        tearDown(order, world, expected);
        if (HasFailure()) break;
    }
    context_findings::take(); // a context that was reset has errors
    if (GetParam() == End::Lost) std::cout << (contexts_.canBeLost() ? "lost by GL\n" : "lost by FaultyGl.cpp\n");
    RecordProperty("orders", std::to_string(chosen.size()));
}

INSTANTIATE_TEST_SUITE_P(Contexts, TeardownGLTest, testing::Values(End::Destroyed, End::NotCurrent, End::Lost),
                         testing::PrintToStringParamName());
