#pragma once

#include "host/pyramid/LevelMeans.h"
#include "host/pyramid/LevelScale.h"
#include "host/pyramid/PyramidReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// The levels that a view shows, each of half of the samples of the one before: level j has ceil(width / 2^j) x
/// ceil(height / 2^j) samples of the file's type. Level 0 is the picture itself. Other levels come from the coarsest
/// level of the file that is fine enough (LevelScale): its samples if both are equally large, else their means
/// (LevelMeans). A region's samples are those of the whole level.
///
/// One thread at a time.
class PyramidTiles {
public:
    static constexpr size_t kMostLevels = 31; ///< sides are below 2^31

    explicit PyramidTiles(std::unique_ptr<PyramidReader> reader);

    PyramidFacts const& facts() const { return reader_->facts(); }
    PyramidReader& reader() { return *reader_; }
    /// As PyramidReader::take().
    void take(std::vector<size_t> const& bands, StackPosition const& position);
    /// Samples of a level, at most kMostLevels.
    Size size(size_t level) const;
    /// The level of the file that it comes from.
    size_t fileLevel(size_t level) const;
    /// Whether the file has a level of this size, whose samples are taken as they are.
    bool isOfFile(size_t level) const;
    /// As PyramidReader::read(), of a view's level. Of the file's samples it holds 8 MB at once, or one row of what a
    /// sample is made of.
    void read(size_t level, Region const& region, std::uint8_t* samples);

private:
    struct Scales;

    Scales scalesOf(size_t level, size_t fileLevel) const;
    size_t columnsAtOnce(Scales const& scales, Interval const& columns) const;
    void take(Scales const& scales, Region const& region, std::uint8_t* samples);
    void average(Scales const& scales, Region const& region, size_t rowPixels, std::uint8_t* samples);
    std::uint8_t const* fileRow(Scales const& scales, Interval const& columns, size_t y, size_t end);

    std::unique_ptr<PyramidReader> reader_;
    std::unique_ptr<LevelMeans> means_;
    std::vector<std::uint8_t> rows_; // of the file
    Region held_;                    // that they are
};
