#pragma once

#include "host/Geometry.h"

#include <cstddef>

/// Along one axis: the samples of a level of a file that one sample of a halved level shows.
///
/// Sample i of level j shows the pixels i * 2^j to (i + 1) * 2^j - 1 of the picture; the last sample may show fewer. A
/// sample of the file's level shows s pixels: s is the whole number that the level was reduced by, if its side is that
/// of a picture so reduced, rounded up or down; else the ratio of both sides. Sample i is made of all samples of the
/// file's level that share pixels with it:
///
///     floor(i * 2^j / s) to ceil((i + 1) * 2^j / s) - 1
///
/// A level whose side differs from level j's by at most half a percent is not averaged: the sample in the middle is
/// taken. So every sample of the file's level counts, but for those of such a level.
class LevelScale {
public:
    /// `full`: pixels of the picture; `file`: samples of the file's level; `level`: j, below 32. Sides are below 2^31.
    LevelScale(size_t full, size_t file, size_t level);

    /// Samples of level j: ceil(full / 2^j).
    size_t samples() const { return samples_; }
    /// Whether a sample is one of the file's.
    bool isEqual() const { return isEqual_; }
    /// Whether the file's samples are at least as fine as level j's, or equal.
    bool isFineEnough() const { return isEqual_ || file_ >= samples_; }
    /// The file's samples that sample i is made of: at least one, all of them in the file's level.
    Interval of(size_t i) const;
    /// Those that a range of samples is made of.
    Interval of(Interval const& samples) const;

    /// Samples of a level.
    static size_t halved(size_t full, size_t level);

private:
    size_t file_;
    size_t level_;
    size_t samples_;
    // s = numerator_ / denominator_ pixels per sample of the file.
    size_t numerator_;
    size_t denominator_;
    bool isEqual_;
};
