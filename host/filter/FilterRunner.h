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

/// One run of a filter. All counts pixels, but the offset along x, which counts texels of the destination.
struct FilterRun {
    std::vector<FilterSource> sources;
    Size input = {};
    Insets clip = {};
    std::array<size_t, 2> offset = {0, 0};
};

/// Parts of pictures in targets of the backend: into them, out of them, and filters between them. Sizes count pixels.
/// GL thread only. Throws VelmoraException; what an operation has taken of the instance is given back then too.
class FilterRunner {
public:
    explicit FilterRunner(std::shared_ptr<RenderBackendInstance> instance);
    /// Empties the instance's pool of targets. Targets that this one made are given back before.
    ~FilterRunner();

    FilterRunner(FilterRunner const&) = delete;
    FilterRunner& operator=(FilterRunner const&) = delete;

    std::shared_ptr<RenderBackendInstance> const& instance() const { return instance_; }

    /// Its pixels are undefined. May be larger than it was asked for: a target that was given back is used again.
    OwnedTarget target(SampleLayout layout, Size const& size,
                       RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const;
    /// A target of width * height pixels, rows tightly packed: as many bytes per pixel as samplelayout::bytesPerPixel
    /// says, those of samples little-endian.
    OwnedTarget upload(SampleLayout layout, Size const& size, std::vector<unsigned char> const& pixels);
    /// Draws a tile of `tile` pixels over `area` of a target; without pixels it is drawn as zeros. A tile smaller than
    /// the area is stretched.
    void draw(OwnedTarget const& target, SampleLayout layout, Size const& tile,
              std::vector<unsigned char> const& pixels, Region const& area);
    /// The same with a tile of the instance's cache, of the area's size.
    void drawStored(OwnedTarget const& target, SampleLayout layout, size_t tile, Region const& area);
    /// Copies a part of a target to (x, y) of another, in pixels; of one channel all numbers along x are even.
    void copy(SampleLayout layout, OwnedTarget const& from, Region const& part, OwnedTarget const& to, size_t x,
              size_t y);
    /// The bytes of a part's pixels, rows from the top; of one channel the part begins at an even column and has an
    /// even width.
    std::vector<unsigned char> read(OwnedTarget const& target, SampleLayout layout, Region const& part) const;
    /// The same, into a vector that becomes as large as that takes.
    void read(OwnedTarget const& target, SampleLayout layout, Region const& part,
              std::vector<unsigned char>& pixels) const;

    /// The filter with its program, made at the first use and kept.
    Filter const& prepared(Filter const& description);
    /// destination: the id of any target of the instance.
    void run(Filter const& filter, FilterRun const& run, size_t destination,
             SingleFilterParameters const& params = {}) const;
    /// Runs a prepared filter over inputs of `input` pixels into the upper left corner of the destination.
    void run(Filter const& filter, std::vector<FilterSource> const& sources, Size const& input,
             OwnedTarget const& destination, SingleFilterParameters const& params = {}) const;

    /// A part of a picture that is drawn larger or smaller: `pixels` pixels show `samples` of its samples.
    struct Scaling {
        size_t pixels = 1;
        size_t samples = 1;
        Region part;      ///< of the source, in samples; its corner lies on whole multiples of `samples`
        size_t skipX = 0; ///< pixels of the part that lie left of what is drawn
        size_t skipY = 0;
        Region area; ///< of the destination, in pixels
    };
    /// kRgba8; sampled as the source's filtering says.
    void drawScaled(OwnedTarget const& from, Scaling const& scaling, OwnedTarget const& to);

    /// The picture with its edge pixels repeated beyond its sides, so many times; kRgba8 and kThreeChannel16.
    OwnedTarget padEdges(OwnedTarget target, SampleLayout layout, Size const& size, Insets const& sides);

private:
    Filter const& copyOf(SampleLayout layout);
    Filter const& scaledCopy(size_t pixels, size_t samples);
    OwnedTarget padColumns(OwnedTarget const& target, SampleLayout layout, Size const& size, Insets const& sides);
    OwnedTarget padRows(OwnedTarget const& target, SampleLayout layout, Size const& size, Insets const& sides);

    std::shared_ptr<RenderBackendInstance> instance_;
    TileNumbers numbers_;                                           // one of them: its tiles are drawn once
    std::map<std::pair<std::string, size_t>, OwnedFilter> filters_; // by name and depth
    std::map<std::pair<size_t, size_t>, OwnedFilter> scaled_;       // by pixels and samples
};
