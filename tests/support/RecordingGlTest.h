#pragma once

#include "tests/support/RecordingGl.h"

#include <gtest/gtest.h>

/// Base of the tests that look at GL calls without a context. Each test starts with an empty recorder and fails when
/// objects outlive it, when a call was wrong and nobody expected it, when a vertex attribute array is left enabled, or
/// when a script was not reached. Members of a derived fixture may own GL objects: the look is taken after they are
/// gone.
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
