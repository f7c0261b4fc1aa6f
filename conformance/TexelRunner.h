#pragma once

#include "host/filter/FilterRunner.h"
#include "reference/Layouts.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace conformance {

using Layout = SampleLayout;

/// Sizes of the models, which are int.
size_t logicalWidth(Layout layout, int widthTexels);
int texelsOf(Layout layout, int widthPixels);

/// What a target of the layout shows of texels: without alpha, opaque pixels.
reference::Texels shown(reference::Texels texels, Layout layout);

/// What a destination holds after a run, and what it should hold.
struct Comparison {
    reference::Texels actual;
    reference::Texels expected;
};

/// Runs filters over the models' pictures: targets by their ids, as filters name their sources. GL thread only; throws
/// what the instance throws.
class TexelRunner {
public:
    explicit TexelRunner(std::shared_ptr<RenderBackendInstance> instance);

    /// An empty target.
    size_t target(Layout layout, int widthTexels, int heightTexels);
    /// A target that holds these texels.
    size_t uploaded(reference::Texels const& texels, Layout layout);
    size_t uploaded(reference::Plane const& samples);
    size_t uploaded(reference::Planes3 const& pixels);
    /// All texels; those of a target without alpha come back with alpha 255.
    reference::Texels read(size_t target) const;

    Filter instantiated(Filter const& description) const;

    void run(Filter const& filter, FilterRun const& run, size_t destination,
             SingleFilterParameters const& params = {}) const;

    /// The run that covers all of the sources.
    FilterRun wholeRun(std::vector<size_t> const& sources) const;

    /// Runs an instantiated filter into a destination of just the expected size.
    Comparison compare(Filter const& filter, FilterRun const& run, reference::Texels const& expected, Layout layout,
                       SingleFilterParameters const& params = {});
    /// Runs it into a destination full of noise, three texels or more larger than need be: expected are the given
    /// texels at the offset, untouched noise around.
    Comparison compareWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                             Layout layout, SingleFilterParameters const& params = {});

    /// Gives back one target.
    void erase(size_t target) { pictures_.erase(target); }
    /// Gives back every target made so far; the next ones are new, and just as large as they are asked for.
    void eraseTargets();

    std::shared_ptr<RenderBackendInstance> const& instance() const { return runner_.instance(); }

private:
    struct Picture {
        OwnedTarget target;
        Layout layout;
        int width;
        int height;
    };

    FilterRunner runner_;
    std::map<size_t, Picture> pictures_; // by the target's id
};

} // namespace conformance
