#pragma once

#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace filtertest {

/// A stretch of band samples along one axis: low ones from `start` on, high ones from `start - 1` on. The
/// reconstruction yields the samples 2 * start to 2 * start + 2 * count - 5 of the image.
struct Stretch {
    int start;
    int count;

    int outputs() const { return 2 * count - 4; }
};

/// Just enough bands for the samples from 2 * start up to `end`; an even number, for two samples share a texel.
Stretch stretchFor(int start, int end);

/// The high bands of one level, cut to stretches along x and y. First letter: along x.
struct HighBands {
    reference::Plane hl;
    reference::Plane lh;
    reference::Plane hh;
};

/// The inverse 5/3 wavelet on the GPU, level by level.
class LeGall53Steps {
public:
    explicit LeGall53Steps(FilterRig& rig);

    /// One level: columns first, each for the low and for the high half of the rows, then rows. The result is a target
    /// of x.outputs() columns and y.outputs() rows; the targets in between are erased, that of `ll` is not.
    size_t level(FilterSource const& ll, HighBands const& bands, Stretch const& x, Stretch const& y);

private:
    size_t vertical(FilterSource const& low, FilterSource const& high, Stretch const& x, Stretch const& y);
    size_t horizontal(size_t low, size_t high, Stretch const& x, int rows);

    FilterRig& rig_;
    Filter vertical_;
    Filter horizontal_;
};

} // namespace filtertest
