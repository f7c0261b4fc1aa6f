#pragma once

#include "host/filter/FilterRunner.h"
#include "reference/Layouts.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace conformance {

using Layout = SampleLayout;

/// A logical width in pixels from a width in texels, which is int in the models.
size_t logicalWidth(Layout layout, int widthTexels);
int texelsOf(Layout layout, int widthPixels);

/// The texels as a target of the layout shows them: opaque if it has no alpha.
reference::Texels shown(reference::Texels texels, Layout layout);

/// The contents of a destination after a run, and the expected ones.
struct Comparison {
    reference::Texels actual;
    reference::Texels expected;
};

/// Runs filters over the models' pictures: targets by their ids, as filters name their sources. GL thread only; throws
/// the instance's exceptions.
class TexelRunner {
public:
    explicit TexelRunner(std::shared_ptr<RenderBackendInstance> instance);

    /// An empty target.
    size_t target(Layout layout, int widthTexels, int heightTexels);
    /// A target with these texels.
    size_t uploaded(reference::Texels const& texels, Layout layout);
    size_t uploaded(reference::Plane const& samples);
    size_t uploaded(reference::Planes3 const& pixels);
    /// All texels; a target without alpha gives alpha 255.
    reference::Texels read(size_t target) const;

    Filter instantiated(Filter const& description) const;

    void run(Filter const& filter, FilterRun const& run, size_t destination,
             SingleFilterParameters const& params = {}) const;

    /// The run that covers all of the sources.
    FilterRun wholeRun(std::vector<size_t> const& sources) const;

    /// Runs an instantiated filter into a destination of exactly the expected size.
    Comparison compare(Filter const& filter, FilterRun const& run, reference::Texels const& expected, Layout layout,
                       SingleFilterParameters const& params = {});
    /// Runs it into a destination full of noise, at least three texels larger than needed: expected are the given
    /// texels at the offset, surrounded by untouched noise.
    Comparison compareWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                             Layout layout, SingleFilterParameters const& params = {});

    /// Erases one target.
    void erase(size_t target) { pictures_.erase(target); }
    /// Erases every target made so far; the next ones are new, of exactly the requested size.
    void eraseTargets();

    std::shared_ptr<RenderBackendInstance> const& instance() const { return runner_.instance(); }

private:
    struct Picture {
        OwnedTarget target;
        Layout layout;
        int width; // in texels
        int height;

        /// In pixels.
        Size size() const { return {logicalWidth(layout, width), static_cast<size_t>(height)}; }
    };

    FilterRunner runner_;
    std::map<size_t, Picture> pictures_; // by the target's id
};

} // namespace conformance
