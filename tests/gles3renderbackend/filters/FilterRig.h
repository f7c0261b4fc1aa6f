#pragma once

#include "conformance/TexelRunner.h"
#include "conformance/Trial.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "tests/gles3renderbackend/BackendFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace filtertest {

using conformance::Layout;

/// A surface and a backend on it; first, so that they outlive what runs on their instance.
class RigBackend {
protected:
    backendtest::Surface surface_{16, 16}; // the pbuffer of the test program
    Gles3RenderBackend backend_{RenderBackend::RGBA32, backendtest::kDefaultBudget};
};

/// A filter runner with a backend of its own, which tells tests whether pixels are equal.
class FilterRig : private RigBackend, public conformance::TexelRunner {
public:
    FilterRig();

    /// Runs the filter over all of the sources into a destination of just the expected size.
    ::testing::AssertionResult gives(Filter const& description, std::vector<size_t> const& sources,
                                     reference::Texels const& expected, Layout layout,
                                     SingleFilterParameters const& params = {});
    /// Runs the filter into a destination full of noise, three texels or more larger than need be, and compares all of
    /// it: the expected texels at the offset, untouched noise around.
    ::testing::AssertionResult givesWithin(Filter const& description, FilterRun const& within,
                                           reference::Texels const& expected, Layout layout,
                                           SingleFilterParameters const& params = {});

    /// Makes the copies that pictures go in through; shaders that are edited later are the filter's alone.
    void makeCopies();

    static size_t logicalWidth(Layout layout, int widthTexels) {
        return conformance::logicalWidth(layout, widthTexels);
    }
    static int maxTextureSize();
    /// A trial of this depth, with strips as long as this implementation draws them.
    static conformance::Scope scope(conformance::Depth depth);
};

class FilterGLTest : public ::testing::Test {
protected:
    FilterRig rig;
};

} // namespace filtertest
