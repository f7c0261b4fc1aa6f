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

    /// The next row: the picture's width in samples. Throws what TileStore::tile throws.
    void next(Sample* row) { levels_.back().next(row); }

private:
    void addLevel(TileStore& store, size_t level, size_t plane);

    // Deques, so that nothing moves: levels refer to the level above and to their readers.
    std::deque<LevelInverse> levels_;
    std::deque<TileRowReader> readers_;
};
