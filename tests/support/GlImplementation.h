#pragma once

#include "host/gl/EglContext.h"

#include <memory>
#include <string>

/// The GL implementation that a test program runs on, chosen by its environment.
///
/// VELMORA_EXPECT_RENDERER: a file name pattern that GL_RENDERER must match, so that a run that fell back to another
/// driver is noticed. VELMORA_REQUIRE_GL=1: a missing implementation is a failure, otherwise its tests are skipped.
struct GlImplementation {
    std::unique_ptr<EglContext> context; // null: missing
    std::string description;             // renderer and version, or why it is missing

    /// Makes the context. Mesa's llvmpipe then draws on the calling thread alone unless LP_NUM_THREADS says otherwise.
    static GlImplementation open();

    /// Exit code of a program whose implementation is missing: 1 if one is required, else kSkipped.
    static int exitCodeWhenMissing();

    static constexpr int kSkipped = 77; // CTest's SKIP_RETURN_CODE
};
