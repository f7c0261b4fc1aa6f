#pragma once

#include "host/store/Wavelet53.h"

#include <functional>
#include <vector>

/// One level of the inverse transform of a plane, row by row from the top: columns first, then rows. It requests rows
/// of the bands as it needs them and holds two rows of each.
class LevelInverse {
public:
    using Sample = wavelet53::Sample;
    /// Writes the next row of two bands: the band that is low along x, and the band that is high along x.
    using RowSource = std::function<void(Sample* low, Sample* high)>;

    /// width: of the plane that is rebuilt. `lowRows` gives rows of LL and HL from L[0], `highRows` of LH and HH from
    /// H[-1], bandSamples(width) samples each.
    LevelInverse(size_t width, RowSource lowRows, RowSource highRows);

    /// The next row of the plane: width samples. Call it at most once per row of the plane.
    void next(Sample* row);

private:
    void start();
    void advance();
    void read(RowSource const& source, std::vector<Sample>& row) const;

    size_t bandWidth_;
    RowSource lowRows_;
    RowSource highRows_;
    wavelet53::RowJoiner joiner_;
    // Low and high samples along x, one after the other. For the row pair n in work:
    std::vector<Sample> high_;     // H[n]
    std::vector<Sample> nextHigh_; // H[n+1]
    std::vector<Sample> low_;      // L[n+1]
    std::vector<Sample> even_;     // x[2n]
    std::vector<Sample> nextEven_; // x[2n+2]
    std::vector<Sample> odd_;      // x[2n+1]
    size_t given_ = 0;
};
