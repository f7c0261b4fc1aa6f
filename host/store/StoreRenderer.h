#pragma once

#include "host/Enhancement.h"
#include "host/RegionRenderer.h"
#include "host/store/TileStore.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Draws a region of a stored picture, at one of its levels, through the GPU's wavelet, colour transform and a chain of
/// enhancements, and hands out 8-bit pixels. What comes out does not depend on the region. GL thread only.
class StoreRenderer {
public:
    /// Throws HostError where the steps read too much around a pixel for any part.
    StoreRenderer(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> steps);

    /// Bands of what comes out: those of the picture, but colour where a matrix may make colour of grey.
    static std::size_t bandsOf(StoreInfo const& info, std::vector<enhancement::Step> const& steps);

    /// The part of a level that shows a region of the picture: every sample whose square of 2^level pixels meets it.
    static Region atLevel(Region const& region, std::size_t level);

    /// region: in samples of `level`, which is at most the store's coarsest. Throws what store, sink and progress throw,
    /// and VelmoraException.
    void render(TileStore& store, std::size_t level, Region const& region, RegionRenderer::RowSink const& sink,
                RegionRenderer::Progress const& progress);

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    std::vector<enhancement::Step> steps_;
    std::size_t side_;
};
