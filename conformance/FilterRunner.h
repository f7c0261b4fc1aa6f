#pragma once

#include "reference/Layouts.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/RenderBackendInstance.h"

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace conformance {

/// How the texels of a target are meant; the logical widths follow from it.
enum class Layout {
    kRgb8,           ///< one pixel per texel, a target without alpha
    kRgba8,          ///< one pixel per texel
    kOneChannel16,   ///< two samples per texel
    kThreeChannel16, ///< one pixel in two texels
    kFourChannel16   ///< one pixel in two texels, all of their bytes
};

std::size_t logicalWidth(Layout layout, int widthTexels);
/// The other way: the texels of a row of pixels, which ends with a whole texel.
int texelsOf(Layout layout, int widthPixels);

/// What a target of the layout shows of texels: without alpha, opaque pixels.
reference::Texels shown(reference::Texels texels, Layout layout);

/// One run of a filter. Everything counts logical pixels but the offset, which counts texels of the destination.
struct FilterRun {
    std::vector<FilterSource> sources;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t clipLeft = 0;
    std::size_t clipRight = 0;
    std::size_t clipTop = 0;
    std::size_t clipBottom = 0;
    std::array<std::size_t, 2> offset = {0, 0};
};

/// What a destination holds after a run, and what it should hold.
struct Comparison {
    reference::Texels actual;
    reference::Texels expected;
};

/// The ways into and out of an instance, through its public interface: texels go in as tiles drawn through a blit, run
/// through one filter, and come back by getPixels. GL thread only; throws what the instance throws.
class FilterRunner {
public:
    explicit FilterRunner(std::shared_ptr<RenderBackendInstance> instance);
    /// Gives back the targets and the blits' programs.
    ~FilterRunner();

    FilterRunner(FilterRunner const&) = delete;
    FilterRunner& operator=(FilterRunner const&) = delete;

    /// An empty target.
    std::size_t target(Layout layout, int widthTexels, int heightTexels);
    /// A target that holds these texels.
    std::size_t uploaded(reference::Texels const& texels, Layout layout);
    std::size_t uploaded(reference::Plane const& samples);
    std::size_t uploaded(reference::Planes3 const& pixels);
    /// All texels; those of a target without alpha come back with alpha 255.
    reference::Texels read(std::size_t target) const;

    Filter instantiated(Filter const& description) const;

    void run(Filter const& filter, FilterRun const& run, std::size_t destination,
             SingleFilterParameters const& params = {}) const;

    /// The run that covers all of the sources.
    FilterRun wholeRun(std::vector<std::size_t> const& sources) const;

    /// Runs an instantiated filter into a destination of just the expected size.
    Comparison compare(Filter const& filter, FilterRun const& run, reference::Texels const& expected, Layout layout,
                       SingleFilterParameters const& params = {});
    /// Runs it into a destination full of noise, three texels or more larger than need be: expected are the given
    /// texels at the offset, untouched noise around.
    Comparison compareWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                             Layout layout, SingleFilterParameters const& params = {});

    /// Gives back every target made so far; the next ones are new, and just as large as they are asked for.
    void eraseTargets();

    std::shared_ptr<RenderBackendInstance> const& instance() const { return instance_; }

private:
    struct Shape {
        Layout layout;
        int width;
        int height;
    };

    void drawTile(std::size_t target, reference::Texels const& texels, Layout layout);

    std::shared_ptr<RenderBackendInstance> instance_;
    std::map<Layout, Filter> blits_;
    std::map<std::size_t, Shape> shapes_;
};

} // namespace conformance
