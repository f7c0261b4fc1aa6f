// Orders of destruction over the recording GL, where the end of the context is that no call is carried out any more.
#include "tests/gles3renderbackend/lifecycle/Teardown.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/RenderContext.h"
#include "tests/support/GlFaultPlan.h"
#include "tests/support/RecordingGl.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace lifecycle;

// A prime: in the orders that are taken every part is the first of some, and the last.
constexpr size_t kStep = 53;

struct Surface final : RenderContext {
    size_t width() const override { return 16; }
    size_t height() const override { return 16; }
};

class TeardownTest : public testing::Test {
public:
    TeardownTest() { goOn(); }
    ~TeardownTest() override { RecordingGl::instance().reset(); }

protected:
    static Living living() {
        Living result;
        for (auto const& object : RecordingGl::instance().living())
            ++result[object.substr(0, object.find(' '))];
        return result;
    }
    static void endContext() { GlFaultPlan::instance().play(0, GlFault::ContextLost, true); }
    static void goOn() {
        GlFaultPlan::instance().stop();
        RecordingGl::instance().reset();
        RecordingGl::instance().drawDigests();
    }
};

} // namespace

TEST_F(TeardownTest, AnyOrderOfDestructionDeletesEverythingAndNothingElse) {
    Bytes const expected = drawn();
    goOn();
    World const world{living, endContext, goOn};
    auto const chosen = orders(kStep);
    for (auto const& order : chosen) {
        tearDown(order, world, expected);
        if (HasFailure()) return;
    }
    RecordProperty("orders", std::to_string(chosen.size()));
}

// GL_STATE.md warns of it: GL has the same names for objects of every context.
TEST_F(TeardownTest, WhatOutlivesItsContextDeletesNamesOfTheNextOne) {
    Surface const surface;
    Gles3RenderBackend backend;
    auto const envelopes = [&] {
        auto const instance = backend.createInstance(surface);
        instance->dataEnvelopes({1}, {{{}, {{2, 1}, {3, 1}}}});
        return std::as_const(*instance).dataEnvelopes({1});
    };
    auto old = envelopes();
    endContext();
    goOn();
    auto const present = envelopes();
    EXPECT_EQ(living(), (Living{{"buffer", 2}}));
    old.reset();
    EXPECT_EQ(living(), Living());
}
