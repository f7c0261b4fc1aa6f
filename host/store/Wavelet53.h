#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The reversible 5/3 wavelet of Le Gall and Tabatabai (1988) in its integer lifting form:
///
///     H[n] = x[2n+1] - floor((x[2n] + x[2n+2]) / 2)        L[n] = x[2n] + floor((H[n-1] + H[n] + 2) / 4)
///
/// Whole-sample symmetric extension continues a signal beyond its ends, and the formulas hold for every n, without a
/// special case at an end. For a signal of N samples the bands keep bandSamples(N) samples each, low ones from L[0],
/// high ones from H[-1]:
///
///     x     0   1   2   3   4   5   6             N = 7
///     L     0       1       2       3       4       5      bandSamples(7) = 6
///     H -1      0       1       2       3       4          as many, one earlier
///
/// An inverse that does not extend the bands needs these: M samples of each band give 2M - 4 samples.
///
/// The four lifting steps work on arrays of samples, which are one row's even and odd samples or whole rows.
namespace wavelet53 {

using Sample = std::int16_t;

/// Samples of each band that rebuild `count` samples: an even number, (count + 4) / 2 or a little more.
size_t bandSamples(size_t count);

/// Index of the sample at position i of a signal of `count` samples under symmetric extension.
size_t reflected(std::ptrdiff_t i, size_t count);

/// high = odd - floor((even + nextEven) / 2). False if a result does not fit in 16 bits; its upper bits are then cut
/// off.
bool predict(Sample const* odd, Sample const* even, Sample const* nextEven, Sample* high, size_t count);
/// low = even + floor((previousHigh + high + 2) / 4). False as for predict().
bool update(Sample const* even, Sample const* previousHigh, Sample const* high, Sample* low, size_t count);
/// even = low - floor((previousHigh + high + 2) / 4)
void undoUpdate(Sample const* low, Sample const* previousHigh, Sample const* high, Sample* even, size_t count);
/// odd = high + floor((even + nextEven) / 2)
void undoPredict(Sample const* high, Sample const* even, Sample const* nextEven, Sample* odd, size_t count);

/// Splits rows of one length into their bands.
class RowSplitter {
public:
    explicit RowSplitter(size_t count);

    /// Writes bandSamples(count) samples to each of low and high. False if one does not fit in 16 bits.
    bool split(Sample const* row, Sample* low, Sample* high);

private:
    size_t count_;
    size_t bands_;
    std::vector<Sample> even_; // x[-2], x[0], ..., x[2 * bands_]
    std::vector<Sample> odd_;  // x[-1], x[1], ..., x[2 * bands_ - 1]
    std::vector<Sample> high_; // H[-1], ..., H[bands_ - 1]
};

/// Rebuilds rows of one length from their bands.
class RowJoiner {
public:
    explicit RowJoiner(size_t count);

    /// Writes `count` samples to row from bandSamples(count) of each band.
    void join(Sample const* low, Sample const* high, Sample* row);

private:
    size_t count_;
    size_t bands_;
    std::vector<Sample> even_; // x[0], x[2], ..., x[2 * bands_ - 4]
    std::vector<Sample> odd_;  // x[1], x[3], ..., x[2 * bands_ - 5]
};

} // namespace wavelet53
