#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/Geometry.h"
#include "host/filter/SampleLayout.h"
#include "renderbackend/Filter.h"
#include "renderbackend/RenderContext.h"
#include "tests/gles3renderbackend/faults/WatchedInstance.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace faults {

using Bytes = std::vector<unsigned char>;
using Sizes = std::vector<size_t>;

/// The host's surface, as large as the pbuffer of the test programs.
struct Surface final : RenderContext {
    static constexpr size_t kTexels = 16;

    size_t width() const override { return kTexels; }
    size_t height() const override { return kTexels; }
};

/// Where scenarios are played: a backend and its instance, with pictures that no scenario changes.
class Stage {
public:
    Stage() { anew(); }

    /// Another instance in place of the one there is.
    void anew();
    /// None at all.
    void clear();

    WatchedInstance& instance() const { return *instance_; }
    std::shared_ptr<RenderBackendInstance> shared() const { return instance_; }
    RenderContext const& surface() const { return surface_; }

    /// A target full of noise. Made when it is first asked for, which must be while nothing fails.
    size_t source(SampleLayout layout);
    /// As small as it may be. FilterCLAHE, which alone reads four channels, does nothing to less than a region.
    static Size sourceSize(SampleLayout layout) {
        return layout == SampleLayout::kFourChannel16 ? Size{48, 44} : Size{16, 12};
    }
    /// What the host's surface shows: one colour, until a scenario draws there.
    Bytes surfacePixels() const;
    /// The pixels of all sources that were asked for.
    Bytes sourcePixels() const;

    /// Under which scenarios store envelopes, always the same ones.
    static Bytes envelopes() { return {1, 2}; }
    /// The rectangles stored there.
    size_t storedEnvelopes() const;

    /// A filter that stays instantiated from scenario to scenario, made as sources are.
    Filter const& filter(std::string const& name);

    /// A tile id that was never used.
    size_t newTile() { return nextTile_++; }

    /// A number for what filters are to know by a key: the same until the next fault.
    unsigned char key() const { return key_; }
    void nextKey() { ++key_; }

private:
    Surface surface_;
    Gles3RenderBackend backend_{RenderBackend::RGBA32, 1000 * 1000};
    std::shared_ptr<WatchedInstance> instance_;
    std::map<SampleLayout, size_t> sources_;
    std::map<std::string, Filter> filters_;
    size_t nextTile_ = 1;
    unsigned char key_ = 0;
};

} // namespace faults
