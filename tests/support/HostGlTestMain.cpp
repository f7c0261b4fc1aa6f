// The main of GL tests that stand where a host stands: they link the shared library and read files. GL objects are the
// library's own there, so none are counted.
#include "tests/support/EnabledVertexArrays.h"
#include "tests/support/GlErrors.h"
#include "tests/support/GlImplementation.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

class Janitor : public ::testing::EmptyTestEventListener {
    void OnTestEnd(::testing::TestInfo const& /*test*/) override {
        for (auto const& finding : enabled_vertex_arrays::findings())
            ADD_FAILURE() << finding;
    }
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
