#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The reversible 5/3 wavelet of Le Gall and Tabatabai (1988) in its integer lifting form:
//
//   H[n] = x[2n+1] - floor((x[2n] + x[2n+2]) / 2)        L[n] = x[2n] + floor((H[n-1] + H[n] + 2) / 4)
//
// with the signal mirrored about its first and its last sample. A signal of n samples has ceil(n/2) low and
// floor(n/2) high samples. Samples are int32; the filters store them as int16.
namespace reference {

using Signal = std::vector<std::int32_t>;

struct Bands {
    Signal low;
    Signal high;
};

/// Position i, any integer, of a signal of `length` samples mirrored about 0 and length - 1.
std::ptrdiff_t reflected(std::ptrdiff_t i, std::ptrdiff_t length);

Bands forward53(Signal const& signal);
Signal inverse53(Bands const& bands);

/// Sample i of a band of a signal of `length` samples, continued beyond its ends by whole-sample symmetric extension of
/// the signal. The high band of a single sample is empty and reads as 0.
std::int32_t extendedLow(Signal const& low, std::ptrdiff_t length, std::ptrdiff_t i);
std::int32_t extendedHigh(Signal const& high, std::ptrdiff_t length, std::ptrdiff_t i);

/// The part of the bands that the inverse filter reads for the outputs from x[2a] on: M samples each, low from L[a],
/// high from H[a-1].
Bands filterWindow(Bands const& bands, std::ptrdiff_t length, std::ptrdiff_t a, size_t m);

/// The inverse filter's formulas, in which the high window H' starts one sample earlier than the low one:
///   x[2n] = L[n] - floor((H'[n] + H'[n+1] + 2) / 4),   x[2n+1] = H'[n+1] + floor((x[2n] + x[2n+2]) / 2)
/// M samples of each band give the 2M - 4 samples that need no other ones. Values are not cut to 16 bits.
Signal inverseFilter53(Bands const& window);

} // namespace reference
