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

/// Draws a region of a picture through a chain of enhancements and hands out 8-bit pixels. What comes out does not
/// depend on the region: it is that part of the whole picture enhanced.
///
/// The region is worked through in strips of parts from the top; rows that two strips share are read once. Alpha is not
/// enhanced: it comes out as it went in. GL thread only.
class EnhancedRenderer {
public:
    /// Throws HostError where the steps read too much around a pixel for any part.
    EnhancedRenderer(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> steps);

    /// Bands of what comes out: those of the picture, but colour where a matrix may make colour of grey.
    static size_t bandsOf(size_t pictureBands, std::vector<enhancement::Step> const& steps);

    /// Throws what source, sink and progress throw, and VelmoraException.
    void render(PixelSource& source, Region const& region, RowSink const& sink, Progress const& progress);

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    std::vector<enhancement::Step> steps_;
    size_t side_;
};
