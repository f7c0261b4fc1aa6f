#include "host/store/Wavelet53.h"

// `>> n` is floor division by 2^n: right shifts of negative ints are arithmetic on all our compilers (and by C++20).

namespace wavelet53 {

namespace {

constexpr int kHalfRange = 32768;

// Bits above the lowest sixteen are set if the value does not fit in a sample.
unsigned aboveSample(int value) {
    return static_cast<unsigned>(value + kHalfRange);
}

bool fits(unsigned above) {
    return above < 2 * kHalfRange;
}

} // namespace

size_t bandSamples(size_t count) {
    size_t const needed = (count + 5) / 2;
    return needed + needed % 2;
}

size_t reflected(std::ptrdiff_t i, size_t count) {
    if (count < 2) return 0;
    auto const last = static_cast<std::ptrdiff_t>(count) - 1;
    std::ptrdiff_t const period = 2 * last;
    std::ptrdiff_t const phase = (i % period + period) % period;
    return static_cast<size_t>(phase <= last ? phase : period - phase);
}

bool predict(Sample const* odd, Sample const* even, Sample const* nextEven, Sample* high, size_t count) {
    unsigned above = 0;
    for (size_t i = 0; i < count; ++i) {
        int const value = odd[i] - ((even[i] + nextEven[i]) >> 1);
        above |= aboveSample(value);
        high[i] = static_cast<Sample>(value);
    }
    return fits(above);
}

bool update(Sample const* even, Sample const* previousHigh, Sample const* high, Sample* low, size_t count) {
    unsigned above = 0;
    for (size_t i = 0; i < count; ++i) {
        int const value = even[i] + ((previousHigh[i] + high[i] + 2) >> 2);
        above |= aboveSample(value);
        low[i] = static_cast<Sample>(value);
    }
    return fits(above);
}

void undoUpdate(Sample const* low, Sample const* previousHigh, Sample const* high, Sample* even, size_t count) {
    for (size_t i = 0; i < count; ++i)
        even[i] = static_cast<Sample>(low[i] - ((previousHigh[i] + high[i] + 2) >> 2));
}

void undoPredict(Sample const* high, Sample const* even, Sample const* nextEven, Sample* odd, size_t count) {
    for (size_t i = 0; i < count; ++i)
        odd[i] = static_cast<Sample>(high[i] + ((even[i] + nextEven[i]) >> 1));
}

RowSplitter::RowSplitter(size_t count)
    : count_(count), bands_(bandSamples(count)), even_(bands_ + 2), odd_(bands_ + 1), high_(bands_ + 1) {}

bool RowSplitter::split(Sample const* row, Sample* low, Sample* high) {
    size_t const pairs = count_ / 2;
    for (size_t n = 0; n < pairs; ++n) {
        even_[n + 1] = row[2 * n];
        odd_[n + 1] = row[2 * n + 1];
    }
    auto const at = [&](std::ptrdiff_t i) { return row[reflected(i, count_)]; };
    even_[0] = at(-2);
    odd_[0] = at(-1);
    for (size_t n = pairs; n <= bands_; ++n)
        even_[n + 1] = at(static_cast<std::ptrdiff_t>(2 * n));
    for (size_t n = pairs; n < bands_; ++n)
        odd_[n + 1] = at(static_cast<std::ptrdiff_t>(2 * n + 1));

    bool const highFits = predict(odd_.data(), even_.data(), even_.data() + 1, high_.data(), bands_ + 1);
    bool const lowFits = update(even_.data() + 1, high_.data(), high_.data() + 1, low, bands_);
    for (size_t n = 0; n < bands_; ++n)
        high[n] = high_[n];
    return highFits && lowFits;
}

RowJoiner::RowJoiner(size_t count) : count_(count), bands_(bandSamples(count)), even_(bands_ - 1), odd_(bands_ - 2) {}

void RowJoiner::join(Sample const* low, Sample const* high, Sample* row) {
    undoUpdate(low, high, high + 1, even_.data(), bands_ - 1);
    undoPredict(high + 1, even_.data(), even_.data() + 1, odd_.data(), bands_ - 2);
    size_t const pairs = count_ / 2;
    for (size_t n = 0; n < pairs; ++n) {
        row[2 * n] = even_[n];
        row[2 * n + 1] = odd_[n];
    }
    if (count_ % 2 == 1) row[count_ - 1] = even_[pairs];
}

} // namespace wavelet53
