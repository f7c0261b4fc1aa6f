#pragma once

#include "host/Geometry.h"
#include "host/filter/OwnedFilter.h"
#include "host/filter/OwnedTarget.h"
#include "host/filter/SampleLayout.h"
#include "host/filter/TileNumbers.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/RenderBackendInstance.h"

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// One run of a filter. Everything counts pixels, except the offset along x, which counts texels of the destination.
struct FilterRun {
    std::vector<FilterSource> sources;
    Size input = {};
    Insets clip = {};
    std::array<size_t, 2> offset = {0, 0};
};

/// Uploads parts of pictures into targets of the backend, runs filters between targets, and reads them back. Sizes
/// count pixels. GL thread only. Throws VelmoraException; a failed operation returns what it has taken from the
/// instance.
class FilterRunner {
public:
    explicit FilterRunner(std::shared_ptr<RenderBackendInstance> instance);
    /// Empties the instance's pool of targets. All targets of this object must be gone by then.
    ~FilterRunner();

    FilterRunner(FilterRunner const&) = delete;
    FilterRunner& operator=(FilterRunner const&) = delete;

    std::shared_ptr<RenderBackendInstance> const& instance() const { return instance_; }

    /// A target with undefined pixels. It may be larger than requested: returned targets are recycled.
    OwnedTarget target(SampleLayout layout, Size const& size,
                       RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const;
    /// A target of width * height pixels, rows tightly packed: samplelayout::bytesPerPixel bytes per pixel, 16-bit
    /// samples little-endian.
    OwnedTarget upload(SampleLayout layout, Size const& size, std::vector<unsigned char> const& pixels);
    /// Draws a tile of `tile` pixels over `area` of a target; without pixels it is drawn as zeros. A tile smaller than
    /// the area is stretched.
    void draw(OwnedTarget const& target, SampleLayout layout, Size const& tile,
              std::vector<unsigned char> const& pixels, Region const& area);
    /// As draw(), with a tile of the instance's cache, of the area's size.
    void drawStored(OwnedTarget const& target, SampleLayout layout, size_t tile, Region const& area);
    /// Copies a part of a target to (x, y) of another, in pixels; with one channel all numbers along x must be even.
    void copy(SampleLayout layout, OwnedTarget const& from, Region const& part, OwnedTarget const& to, size_t x,
              size_t y);
    /// The bytes of a part's pixels, rows from the top; with one channel the part begins at an even column and has an
    /// even width.
    std::vector<unsigned char> read(OwnedTarget const& target, SampleLayout layout, Region const& part) const;
    /// The same, into a vector that is resized to fit.
    void read(OwnedTarget const& target, SampleLayout layout, Region const& part,
              std::vector<unsigned char>& pixels) const;

    /// The filter with its program, created at the first use and cached.
    Filter const& prepared(Filter const& description);
    /// destination: the id of any target of the instance.
    void run(Filter const& filter, FilterRun const& run, size_t destination,
             SingleFilterParameters const& params = {}) const;
    /// Runs a prepared filter over inputs of `input` pixels into the upper left corner of the destination.
    void run(Filter const& filter, std::vector<FilterSource> const& sources, Size const& input,
             OwnedTarget const& destination, SingleFilterParameters const& params = {}) const;

    /// A part of a picture that is drawn at another scale: `pixels` pixels show `samples` of its samples.
    struct Scaling {
        size_t pixels = 1;
        size_t samples = 1;
        Region part;      ///< in samples of the source; its corner lies on whole multiples of `samples`
        size_t skipX = 0; ///< pixels of the part to the left of the destination's area
        size_t skipY = 0;
        Region area; ///< in pixels of the destination
    };
    /// Layout kRgba8; sampled with the filtering of the source.
    void drawScaled(OwnedTarget const& from, Scaling const& scaling, OwnedTarget const& to);

    /// The picture with its edge pixels repeated beyond its sides, `sides` times; kRgba8 and kThreeChannel16.
    OwnedTarget padEdges(OwnedTarget target, SampleLayout layout, Size const& size, Insets const& sides);

private:
    Filter const& copyOf(SampleLayout layout);
    Filter const& scaledCopy(size_t pixels, size_t samples);
    OwnedTarget padColumns(OwnedTarget const& target, SampleLayout layout, Size const& size, Insets const& sides);
    OwnedTarget padRows(OwnedTarget const& target, SampleLayout layout, Size const& size, Insets const& sides);

    std::shared_ptr<RenderBackendInstance> instance_;
    TileNumbers numbers_;                                           // one is used: its tiles are scratch tiles
    std::map<std::pair<std::string, size_t>, OwnedFilter> filters_; // by name and depth
    std::map<SampleLayout, Filter const*> copies_;                  // in filters_
    std::map<std::pair<size_t, size_t>, OwnedFilter> scaled_;       // by pixels and samples
};
