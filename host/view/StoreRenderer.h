#pragma once

#include "host/Enhancement.h"
#include "host/RegionRenderer.h"
#include "host/view/PictureView.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// Draws a region of a stored picture at a zoom, in parts, each as a PictureView that is complete, and hands out 8-bit
/// pixels. What comes out does not depend on the region: a window that shows the same has the same pixels. GL thread only.
class StoreRenderer {
public:
    /// Opens the store. Throws HostError where the steps read too much around a pixel, and what TileStore throws.
    StoreRenderer(std::shared_ptr<RenderBackendInstance> const& instance, std::string const& storePath,
                  std::vector<enhancement::Step> const& steps);

    StoreInfo const& info() const { return view_.info(); }
    /// Of what comes out: those of the picture, but colour where a matrix may make colour of grey.
    std::size_t bands() const { return bands_; }

    /// The pixels at a zoom that show a region of the picture, a part of one counted as whole.
    static Region regionAt(StoreInfo const& info, Zoom const& zoom, Region const& region);

    /// region: in pixels of the picture at this zoom. Throws what store, sink and progress throw, and VelmoraException.
    void render(Zoom const& zoom, bool smooth, Region const& region, RegionRenderer::RowSink const& sink,
                RegionRenderer::Progress const& progress);

private:
    void draw(View const& view, std::uint8_t* out, std::size_t rowPixels);

    PictureView view_;
    std::size_t bands_;
};
