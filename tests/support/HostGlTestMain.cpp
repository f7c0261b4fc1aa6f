// The main of GL tests that use the backend as a host does: they link the shared library, read files and make contexts
// of their own. It checks after each test that nothing was left behind.
#include "tests/support/ContextFindings.h"
#include "tests/support/GlErrors.h"
#include "tests/support/GlImplementation.h"
#include "tests/support/LivingGlObjects.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

class Janitor : public ::testing::EmptyTestEventListener {
    void OnTestStart(::testing::TestInfo const&) override {
        for (auto const& finding : context_findings::take())
            ADD_FAILURE() << "before the test: " << finding;
        before_ = living_gl_objects::snapshot();
    }

    // Fixtures, and their contexts, are destroyed by now.
    void OnTestEnd(::testing::TestInfo const&) override {
        for (auto const& finding : context_findings::take())
            ADD_FAILURE() << finding;
        for (auto const& finding : living_gl_objects::findingsSince(before_))
            ADD_FAILURE() << finding;
    }

    living_gl_objects::Snapshot before_;
};

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    auto const implementation = GlImplementation::open();
    std::cout << implementation.description << "\n";
    if (implementation.context == nullptr) return GlImplementation::exitCodeWhenMissing();
    gl_errors::installDebugCallback();
    ::testing::UnitTest::GetInstance()->listeners().Append(new Janitor);
    return RUN_ALL_TESTS();
}
