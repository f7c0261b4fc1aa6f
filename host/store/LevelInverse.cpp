#include "host/store/LevelInverse.h"

#include <utility>

LevelInverse::LevelInverse(size_t width, RowSource lowRows, RowSource highRows)
    : bandWidth_(wavelet53::bandSamples(width)),
      lowRows_(std::move(lowRows)),
      highRows_(std::move(highRows)),
      joiner_(width),
      high_(2 * bandWidth_),
      nextHigh_(2 * bandWidth_),
      low_(2 * bandWidth_),
      even_(2 * bandWidth_),
      nextEven_(2 * bandWidth_),
      odd_(2 * bandWidth_) {}

void LevelInverse::next(Sample* row) {
    if (given_ == 0) start();
    bool const isOdd = given_ % 2 == 1;
    if (isOdd) advance();
    std::vector<Sample> const& split = isOdd ? odd_ : even_;
    joiner_.join(split.data(), split.data() + bandWidth_, row);
    if (isOdd) std::swap(even_, nextEven_);
    ++given_;
}

void LevelInverse::start() {
    read(highRows_, high_); // H[-1]
    read(highRows_, nextHigh_);
    read(lowRows_, low_);
    wavelet53::undoUpdate(low_.data(), high_.data(), nextHigh_.data(), even_.data(), even_.size());
}

void LevelInverse::advance() {
    std::swap(high_, nextHigh_);
    read(highRows_, nextHigh_);
    read(lowRows_, low_);
    wavelet53::undoUpdate(low_.data(), high_.data(), nextHigh_.data(), nextEven_.data(), nextEven_.size());
    wavelet53::undoPredict(high_.data(), even_.data(), nextEven_.data(), odd_.data(), odd_.size());
}

void LevelInverse::read(RowSource const& source, std::vector<Sample>& row) const {
    source(row.data(), row.data() + bandWidth_);
}
