#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "reference/Layouts.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterSource.h"
#include "tests/gles3renderbackend/BackendFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace filtertest {

/// How the texels of a target are meant; the logical widths follow from it.
enum class Layout {
    kRgb8,           ///< one pixel a texel, a target without alpha
    kRgba8,          ///< one pixel a texel
    kOneChannel16,   ///< two samples a texel
    kThreeChannel16, ///< one pixel in two texels
    kFourChannel16   ///< one pixel in two texels, all of their bytes
};

/// One run of a filter. Everything counts logical pixels but the offset, which counts texels of the destination.
struct FilterRun {
    std::vector<FilterSource> sources;
    size_t width = 0;
    size_t height = 0;
    size_t clipLeft = 0;
    size_t clipRight = 0;
    size_t clipTop = 0;
    size_t clipBottom = 0;
    std::array<size_t, 2> offset = {0, 0};
};

/// A backend with its instance, and the ways into and out of it: texels go in as tiles drawn through a blit, run
/// through one filter, and come back by getPixels.
class FilterRig {
public:
    /// An empty target.
    size_t target(Layout layout, int widthTexels, int heightTexels);
    /// A target that holds these texels.
    size_t uploaded(reference::Texels const& texels, Layout layout);
    size_t uploaded(reference::Plane const& samples);
    size_t uploaded(reference::Planes3 const& pixels);
    /// All texels; those of a target without alpha come back with alpha 255.
    reference::Texels read(size_t target);

    Filter instantiated(Filter const& description) const;

    void run(Filter const& filter, FilterRun const& run, size_t destination,
             SingleFilterParameters const& params = {}) const;

    /// Runs the filter over all of the sources into a destination of just the expected size.
    ::testing::AssertionResult gives(Filter const& description, std::vector<size_t> const& sources,
                                     reference::Texels const& expected, Layout layout,
                                     SingleFilterParameters const& params = {});
    /// Runs the filter into a destination full of noise, three texels or more larger than need be, and compares all of
    /// it: the expected texels at the offset, untouched noise around.
    ::testing::AssertionResult givesWithin(Filter const& description, FilterRun const& run,
                                           reference::Texels const& expected, Layout layout,
                                           SingleFilterParameters const& params = {});

    /// Logical width of as many texels.
    static size_t logicalWidth(Layout layout, int widthTexels);
    static int maxTextureSize();

    std::shared_ptr<RenderBackendInstance> const& instance() const { return instance_; }

private:
    struct Shape {
        Layout layout;
        int width;
        int height;
    };

    void drawTile(size_t target, reference::Texels const& texels, Layout layout);

    backendtest::Surface surface_{64, 64};
    Gles3RenderBackend backend_{RenderBackend::RGBA32, backendtest::kDefaultBudget};
    std::shared_ptr<RenderBackendInstance> instance_ = backend_.createInstance(surface_);
    std::map<Layout, Filter> blits_;
    std::map<size_t, Shape> shapes_;
};

class FilterGLTest : public ::testing::Test {
protected:
    FilterRig rig;
};

} // namespace filtertest
