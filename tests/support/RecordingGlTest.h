#pragma once

#include "tests/support/RecordingGl.h"

#include <gtest/gtest.h>

/// Base of the tests of GL calls without a context. Each test starts with an empty recorder and fails if objects
/// outlive it, if a call was wrong and not expected, if a vertex attribute array is left enabled, or if a script was
/// not used. Members of a derived fixture may own GL objects: the check comes after their destruction.
class RecordingGlTest : public ::testing::Test {
public:
    RecordingGlTest() { gl.reset(); }
    ~RecordingGlTest() override {
        for (auto const& object : gl.living())
            ADD_FAILURE() << object << " outlives the test";
        for (auto const& finding : gl.findings())
            ADD_FAILURE() << finding;
        gl.reset();
    }

protected:
    RecordingGl& gl = RecordingGl::instance();
};
