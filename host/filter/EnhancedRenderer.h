#pragma once

#include "host/Geometry.h"
#include "host/Progress.h"
#include "host/RowSink.h"
#include "host/filter/Enhancement.h"

#include <cstddef>
#include <memory>
#include <vector>

class PixelSource;
class RenderBackendInstance;

/// Draws a region of a picture through a chain of enhancements and delivers 8-bit pixels. They equal the region's part
/// of the enhanced whole picture, whatever the region.
///
/// The region is processed in strips of parts from the top; rows that two strips share are read once. Alpha passes
/// unchanged. GL thread only.
class EnhancedRenderer {
public:
    /// Throws HostError if the apron of the steps leaves no room for a part.
    EnhancedRenderer(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> steps);

    /// Bands of the output: those of the picture, but RGB if a matrix may turn grey into colour.
    static size_t bandsOf(size_t pictureBands, std::vector<enhancement::Step> const& steps);

    /// Throws what source, sink and progress throw, and VelmoraException.
    void render(PixelSource& source, Region const& region, RowSink const& sink, Progress const& progress);

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    std::vector<enhancement::Step> steps_;
    size_t side_;
};
