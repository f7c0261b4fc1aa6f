#include "host/store/LevelTransform.h"

#include <utility>

LevelTransform::LevelTransform(size_t width, size_t height, RowSink lowRows, RowSink highRows)
    : height_(height),
      bandWidth_(wavelet53::bandSamples(width)),
      bandHeight_(wavelet53::bandSamples(height)),
      lowRows_(std::move(lowRows)),
      highRows_(std::move(highRows)),
      splitter_(width),
      previousHigh_(2 * bandWidth_),
      high_(2 * bandWidth_),
      low_(2 * bandWidth_) {
    for (auto& row : rows_)
        row.resize(2 * bandWidth_);
}

void LevelTransform::push(Sample const* row) {
    std::vector<Sample>& split = rows_[pushed_ % kRowsKept];
    if (!splitter_.split(row, split.data(), split.data() + bandWidth_)) throw CoefficientOverflow();
    ++pushed_;
    size_t const liftable = pushed_ == height_ ? bandHeight_ : (pushed_ - 1) / 2;
    while (lifted_ < liftable)
        lift(lifted_++);
}

size_t LevelTransform::bufferedSamples() const {
    return (kRowsKept + 3) * 2 * bandWidth_;
}

LevelTransform::Sample const* LevelTransform::rowAt(size_t i) const {
    return rows_[wavelet53::reflected(static_cast<std::ptrdiff_t>(i), height_) % kRowsKept].data();
}

void LevelTransform::lift(size_t n) {
    size_t const samples = 2 * bandWidth_;
    if (!wavelet53::predict(rowAt(2 * n + 1), rowAt(2 * n), rowAt(2 * n + 2), high_.data(), samples))
        throw CoefficientOverflow();
    if (n == 0) {
        // The mirrored plane is symmetric about its first row, so H[-1] is H[0].
        previousHigh_ = high_;
        highRows_(high_.data(), high_.data() + bandWidth_);
    }
    if (!wavelet53::update(rowAt(2 * n), previousHigh_.data(), high_.data(), low_.data(), samples))
        throw CoefficientOverflow();
    if (n + 1 < bandHeight_) highRows_(high_.data(), high_.data() + bandWidth_);
    lowRows_(low_.data(), low_.data() + bandWidth_);
    std::swap(previousHigh_, high_);
}
