#pragma once

#include "host/Progress.h"
#include "host/RowSink.h"
#include "host/filter/Enhancement.h"
#include "host/view/PictureView.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Draws a region of a picture at a zoom, in parts, each as a PictureView that is complete, and hands out pixels
/// of 8 bits, or, of a picture of 16 without enhancements, its samples. What comes out does not depend on the region: a
/// window that shows the same has the same pixels. GL thread only.
class PictureRenderer {
public:
    /// interruption: as PictureView's. bits: 8, or 16 where the picture has them and there are no steps. Throws
    /// HostError where the steps read too much around a pixel, and what TileStore throws.
    PictureRenderer(std::shared_ptr<RenderBackendInstance> const& instance, PictureSource const& source,
                    std::vector<enhancement::Step> const& steps, std::function<void()> const& interruption = {},
                    size_t bits = 8);

    PictureInfo const& info() const { return view_.info(); }
    /// Of what comes out: those of the picture, but colour where a matrix may make colour of grey.
    size_t bands() const { return bands_; }

    /// The pixels at a zoom that show a region of the picture, a part of one counted as whole.
    static Region regionAt(PictureInfo const& info, Zoom const& zoom, Region const& region);

    /// region: in pixels of the picture at this zoom. smooth: of 8 bits only. Throws what store, sink and progress
    /// throw, and VelmoraException.
    void render(Zoom const& zoom, bool smooth, Region const& region, RowSink const& sink, Progress const& progress);

private:
    void draw(View const& view, std::uint8_t* out, size_t rowPixels);
    void put8(View const& view, std::uint8_t* out, size_t rowPixels);
    void put16(View const& view, std::uint8_t* out, size_t rowPixels);

    PictureView view_;
    size_t bands_;
    size_t sampleBytes_;
};
