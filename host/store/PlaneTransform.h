#pragma once

#include "host/store/LevelTransform.h"
#include "host/store/TileRowWriter.h"

#include <deque>

/// All levels of the wavelet transform of one plane, cut into tiles: rows of the plane go in, finished tiles come out.
/// Its memory depends on the plane's width, the tile size and the number of levels, not on the plane's height.
class PlaneTransform {
public:
    using Sample = wavelet53::Sample;

    PlaneTransform(StoreInfo const& info, size_t plane, RawTileSink const& sink);
    PlaneTransform(PlaneTransform const&) = delete;
    PlaneTransform& operator=(PlaneTransform const&) = delete;

    /// The next row from the top; after the last one every tile has come out. Throws CoefficientOverflow, after which
    /// the object must not be used.
    void push(Sample const* row);

    /// Capacity of the buffers, in samples.
    size_t bufferedSamples() const;

private:
    void addLevel(StoreInfo const& info, size_t level, size_t plane, RawTileSink const& sink);

    // A deque, so that nothing moves: levels refer to the level below.
    std::deque<LevelTransform> levels_;
    std::deque<TileRowWriter> cutters_;
};
