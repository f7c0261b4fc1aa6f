#pragma once

#include "host/store/Wavelet53.h"

#include <array>
#include <functional>
#include <stdexcept>
#include <vector>

/// A wavelet coefficient does not fit in the 16 bits of a band.
class CoefficientOverflow : public std::runtime_error {
public:
    CoefficientOverflow() : std::runtime_error("a wavelet coefficient does not fit in 16 bits") {}
};

/// One level of the forward transform of a plane, row by row: rows first, then columns.
///
/// Rows of the plane go in from the top; a row of the bands comes out as soon as the rows below it that it needs are
/// there. The object holds nine rows, whatever the plane's height: mirroring at the bottom may need these. They are
/// already split along x, because a mirrored row is split like the row that it mirrors.
class LevelTransform {
public:
    using Sample = wavelet53::Sample;
    /// A row of two bands: the band that is low along x, and the band that is high along x.
    using RowSink = std::function<void(Sample const* low, Sample const* high)>;

    /// `lowRows` receives rows of LL and HL, from L[0]; `highRows` those of LH and HH, from H[-1]; of each
    /// bandSamples(height) rows of bandSamples(width) samples.
    LevelTransform(size_t width, size_t height, RowSink lowRows, RowSink highRows);

    /// The next row from the top; after the last one all rows of the bands have come out. Throws CoefficientOverflow.
    void push(Sample const* row);

    /// Capacity of the buffers, in samples.
    size_t bufferedSamples() const;

private:
    // The last row requested is 2 * bandSamples(height), at most 8 rows beyond the plane's last row.
    static constexpr size_t kRowsKept = 9;

    Sample const* rowAt(size_t i) const;
    void lift(size_t n);

    size_t height_;
    size_t bandWidth_;
    size_t bandHeight_;
    RowSink lowRows_;
    RowSink highRows_;
    wavelet53::RowSplitter splitter_;
    std::array<std::vector<Sample>, kRowsKept>
        rows_; // row i, low and high samples one after the other, at i % kRowsKept
    std::vector<Sample> previousHigh_;
    std::vector<Sample> high_;
    std::vector<Sample> low_;
    size_t pushed_ = 0;
    size_t lifted_ = 0;
};
