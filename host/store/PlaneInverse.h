#pragma once

#include "host/store/LevelInverse.h"
#include "host/store/TileRowReader.h"

#include <deque>

/// The rows of one plane of a store, rebuilt from all levels of its wavelet, from the top.
class PlaneInverse {
public:
    using Sample = wavelet53::Sample;

    PlaneInverse(TileStore& store, size_t plane);
    PlaneInverse(PlaneInverse const&) = delete;
    PlaneInverse& operator=(PlaneInverse const&) = delete;

    /// The next row: as many samples as the picture has in a row. Throws what TileStore::tile throws.
    void next(Sample* row) { levels_.back().next(row); }

private:
    void addLevel(TileStore& store, size_t level, size_t plane);

    // Deques: levels refer to the one above and to their readers, which do not move.
    std::deque<LevelInverse> levels_;
    std::deque<TileRowReader> readers_;
};
