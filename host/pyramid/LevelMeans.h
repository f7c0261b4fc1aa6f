#pragma once

#include "host/Geometry.h"
#include "host/image/SampleSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// Means of rectangles of samples, for one row of pixels at a time.
///
/// Integers are summed in 64 bits, and their means are rounded, halves up; floats are summed in double, row by row.
/// Samples that are nodata, and floats that are no numbers, do not count; a mean of none is nodata, or else no number.
/// If alpha weighs them, the mean of colours is that of colour * alpha divided by that of alpha; where alpha is 0
/// everywhere, it is the plain mean. With 32 bits and floats these products are doubles. A mean has up to 2^31 samples.
class LevelMeans {
public:
    /// `weighed`: by alpha, which the layout must have.
    static std::unique_ptr<LevelMeans> of(SampleFormat const& layout, bool weighed, std::optional<double> nodata);

    LevelMeans() = default;
    LevelMeans(LevelMeans const&) = delete;
    LevelMeans& operator=(LevelMeans const&) = delete;
    virtual ~LevelMeans() = default;

    /// Begins a row of so many pixels.
    virtual void start(size_t pixels) = 0;
    /// Adds a row of the file's samples: columns[i], counted from the row's start, to pixel i.
    virtual void add(std::uint8_t const* row, std::vector<Interval> const& columns) = 0;
    /// Writes the row's means.
    virtual void finish(std::uint8_t* samples) = 0;
};
