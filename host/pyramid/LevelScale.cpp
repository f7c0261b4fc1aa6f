#include "host/pyramid/LevelScale.h"

#include <algorithm>

namespace {

constexpr size_t kEqualPart = 200; // of a side, by which an equal level may differ

// Whether a side reduced by the factor is that of the level, rounded up or down.
bool isReducedBy(size_t factor, size_t full, size_t file) {
    return full / factor == file || (full - 1) / factor + 1 == file;
}

// The whole number that a level was reduced by; 0 if there is none. Small levels fit several: a power of two is likely.
// Where any fits, the one nearest to the ratio does.
size_t factorOf(size_t full, size_t file) {
    for (size_t factor = 1; factor <= full; factor *= 2)
        if (isReducedBy(factor, full, file)) return factor;
    size_t const nearest = (full + file / 2) / file;
    return isReducedBy(nearest, full, file) ? nearest : 0;
}

} // namespace

size_t LevelScale::halved(size_t full, size_t level) {
    return full == 0 ? 0 : ((full - 1) >> level) + 1;
}

LevelScale::LevelScale(size_t full, size_t file, size_t level)
    : file_(file),
      level_(level),
      samples_(halved(full, level)),
      numerator_(full),
      denominator_(file),
      isEqual_(std::max(file, samples_) - std::min(file, samples_) <= samples_ / kEqualPart) {
    size_t const factor = factorOf(full, file);
    if (factor == 0) return;
    numerator_ = factor;
    denominator_ = 1;
}

Interval LevelScale::of(size_t i) const {
    size_t const last = file_ - 1;
    if (isEqual_) {
        // The middle of the pixels, twice; in samples of the file.
        size_t const middle = (2 * i + 1) << level_;
        return {std::min(middle * denominator_ / (2 * numerator_), last), 1};
    }
    size_t const start = std::min((i << level_) * denominator_ / numerator_, last);
    size_t const end = (((i + 1) << level_) * denominator_ + numerator_ - 1) / numerator_;
    return {start, std::clamp(end, start + 1, last + 1) - start};
}

Interval LevelScale::of(Interval const& samples) const {
    Interval const first = of(samples.start);
    Interval const last = of(samples.start + samples.length - 1);
    return {first.start, last.start + last.length - first.start};
}
