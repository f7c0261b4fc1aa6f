#pragma once

#include "host/Region.h"
#include "host/filter/OwnedFilter.h"
#include "host/filter/OwnedTarget.h"
#include "host/filter/TileNumbers.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Parts of pictures in targets of the backend: into them, out of them, and filters between them. Sizes count pixels.
/// GL thread only. Throws VelmoraException; what an operation has taken of the instance is given back then too.
class PictureTargets {
public:
    enum class Layout {
        kRgba8, ///< one pixel per texel
        kPlane, ///< one 16-bit channel, two pixels per texel; widths are even
        kDeep   ///< three 16-bit channels, one pixel in two texels
    };

    struct Size {
        std::size_t width;
        std::size_t height;
    };

    explicit PictureTargets(std::shared_ptr<RenderBackendInstance> instance);
    ~PictureTargets();

    PictureTargets(PictureTargets const&) = delete;
    PictureTargets& operator=(PictureTargets const&) = delete;

    /// What it holds is unspecified.
    OwnedTarget target(Layout layout, Size const& size,
                       RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const;
    /// Width * height pixels of `layout`, rows tightly packed: RGBA bytes, or little-endian samples of a plane.
    OwnedTarget uploaded(Layout layout, Size const& size, std::vector<unsigned char> const& pixels);
    /// Draws a tile of `tile` pixels over `area` of a target; without pixels it is drawn as zeros. A tile smaller than
    /// the area is stretched.
    void draw(OwnedTarget const& target, Layout layout, Size const& tile, std::vector<unsigned char> const& pixels,
              Region const& area);
    /// The same with a tile of the instance's cache, of the area's size.
    void drawStored(OwnedTarget const& target, Layout layout, std::size_t tile, Region const& area);
    /// Copies a part of a target to (x, y) of another, in pixels; of planes all numbers along x are even.
    void copy(Layout layout, OwnedTarget const& from, Region const& part, OwnedTarget const& to, std::size_t x,
              std::size_t y);
    /// The bytes of a part's texels, rows from the top; of planes the part begins at an even column and has an even
    /// width.
    std::vector<unsigned char> read(OwnedTarget const& target, Layout layout, Region const& part) const;

    /// The filter with its program, made at the first use and kept.
    Filter const& prepared(Filter const& description);
    /// Runs a prepared filter over inputs of `input` pixels into the upper left corner of the destination.
    void run(Filter const& filter, std::vector<FilterSource> const& sources, Size const& input,
             OwnedTarget const& destination, SingleFilterParameters const& params = {}) const;

    /// A part of a picture that is drawn larger or smaller: `pixels` pixels show `samples` of its samples.
    struct Scaling {
        std::size_t pixels = 1;
        std::size_t samples = 1;
        Region part;           ///< of the source, in samples; its corner lies on whole multiples of `samples`
        std::size_t skipX = 0; ///< pixels of the part that lie left of what is drawn
        std::size_t skipY = 0;
        Region area; ///< of the destination, in pixels
    };
    /// kRgba8; sampled as the source's filtering says.
    void drawScaled(OwnedTarget const& from, Scaling const& scaling, OwnedTarget const& to);

    /// Pixels to add at each side.
    struct Sides {
        std::size_t left = 0;
        std::size_t right = 0;
        std::size_t top = 0;
        std::size_t bottom = 0;
    };
    /// The picture with its edge pixels repeated beyond its sides; kRgba8 and kDeep.
    OwnedTarget extended(OwnedTarget target, Layout layout, Size const& size, Sides const& sides);

private:
    Filter const& copyOf(Layout layout);
    Filter const& scaledCopy(std::size_t pixels, std::size_t samples);
    OwnedTarget widened(OwnedTarget const& target, Layout layout, Size const& size, Sides const& sides);
    OwnedTarget heightened(OwnedTarget const& target, Layout layout, Size const& size, Sides const& sides);

    std::shared_ptr<RenderBackendInstance> instance_;
    TileNumbers numbers_;                                                // one of them: its tiles are drawn once
    std::map<std::pair<std::string, std::size_t>, OwnedFilter> filters_; // by name and depth
    std::map<std::pair<std::size_t, std::size_t>, OwnedFilter> scaled_;  // by pixels and samples
};
