// Runs the GL tests in one context and checks after each test that it left nothing behind.
#include "tests/support/EnabledVertexArrays.h"
#include "tests/support/GlErrors.h"
#include "tests/support/GlImplementation.h"
#include "tests/support/LivingGlObjects.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

// LeakSanitizer reports at exit, when an unloaded driver has no symbols any more. A driver that stays loaded gives its
// frames names.
#if VELMORA_ADDRESS_SANITIZER
extern "C" __attribute__((visibility("default"))) int dlclose(void*) {
    return 0;
}
#endif

namespace {

class Janitor : public ::testing::EmptyTestEventListener {
    void OnTestStart(::testing::TestInfo const&) override {
        for (auto const& finding : gl_errors::findings())
            ADD_FAILURE() << "before the test: " << finding;
        before_ = living_gl_objects::snapshot();
    }

    // Fixtures are destroyed by now.
    void OnTestEnd(::testing::TestInfo const&) override {
        for (auto const& finding : enabled_vertex_arrays::findings())
            ADD_FAILURE() << finding;
        for (auto const& finding : gl_errors::findings())
            ADD_FAILURE() << finding;
        for (auto const& finding : living_gl_objects::findingsSince(before_))
            ADD_FAILURE() << finding;
    }

    living_gl_objects::Snapshot before_;
};

// Skips every test and gives the reason.
class Missing : public ::testing::Environment {
public:
    explicit Missing(std::string const& reason) : reason_(reason) {}
    void SetUp() override { GTEST_SKIP() << reason_; }

private:
    std::string reason_;
};

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    auto const implementation = GlImplementation::open();
    if (implementation.context == nullptr) {
        std::cerr << implementation.description << "\n";
        ::testing::AddGlobalTestEnvironment(new Missing(implementation.description));
        auto const failed = RUN_ALL_TESTS();
        return failed != 0 ? failed : GlImplementation::exitCodeWhenMissing();
    }
    std::cout << implementation.description << "\n";
    gl_errors::installDebugCallback();
    ::testing::UnitTest::GetInstance()->listeners().Append(new Janitor);
    return RUN_ALL_TESTS();
}
