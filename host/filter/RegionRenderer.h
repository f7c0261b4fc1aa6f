#pragma once

#include "host/Geometry.h"
#include "host/Progress.h"
#include "host/RowSink.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class Filter;
class PixelSource;
class RenderBackendInstance;

/// Draws a region of a picture through the backend, tile by tile, and delivers the drawn pixels.
///
/// The region is processed in strips from the top, each strip in blocks from the left:
///
///     picture  +-----+-----+-----+-----+     tile grid, counted from the picture's corner
///              |   +-+-----+-----+--+  |
///              |   | strip 0  |     |  |     a strip ends on a grid line where it can
///              +---+-+-----+--+--+--+--+
///              |   | strip 1  |     |  |     blocks of at most 2048 pixels: what every OpenGL ES 3 can draw into
///              +---+-+-----+--+--+--+--+
///
/// A strip is read once, cut into tiles, drawn block by block and read back. GL thread only.
class RegionRenderer {
public:
    static constexpr size_t kMinTileSize = 16;
    static constexpr size_t kMaxTileSize = 2048;
    static constexpr size_t kMaxBlockPixels = 2048;
    /// Limit of the rows that are read at a time, apron included.
    static constexpr size_t kMaxStripBytes = 64 * 1024 * 1024;

    /// Uses one tile and one target of the instance at a time, and returns them. tileSize: pixels per side,
    /// kMinTileSize to kMaxTileSize.
    RegionRenderer(std::shared_ptr<RenderBackendInstance> instance, size_t tileSize);

    /// Progress counts rows. `sink` receives, byte for byte, the region of the source, of 8 or 16 bits; with 16 bits
    /// tiles are as large as blocks. Throws what source, sink and progress throw and VelmoraException; the instance's
    /// tiles and targets are returned in each case.
    void render(PixelSource& source, Region const& region, RowSink const& sink, Progress const& progress);

    /// Rows of the strip that starts at row y: as many whole rows of tiles as fit in kMaxStripBytes and in the
    /// preferred height; if not even one fits, as many rows as fit.
    static size_t stripRows(size_t y, size_t width, size_t tileHeight);

private:
    template <class Blocks>
    void renderStrips(PixelSource& source, Region const& region, size_t tileHeight, Blocks& blocks, RowSink const& sink,
                      Progress const& progress);

    std::shared_ptr<RenderBackendInstance> instance_;
    size_t tileSize_;
};
