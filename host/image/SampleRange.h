#pragma once

#include "host/image/SampleSource.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Maps samples to 16 bits: `low` to 0, `high` to 65535, samples between them in proportion, rounded, halves up.
/// Samples beyond are clipped; NaN becomes 0.
struct SampleRange {
    /// Limit of both ends' magnitude: their distance, times 65535, stays finite.
    static constexpr double kFarthest = 1e300;

    double low = 0;
    double high = 0;

    std::uint16_t scaled(double sample) const;
};

namespace samplerange {

/// Samples of some bands of pixels as 64-bit floats, which are exact but for integers of more than 53 bits. `bands`:
/// indices of the bands in a pixel, in the order of the result.
void toNumbers(std::uint8_t const* samples, SampleFormat const& layout, std::vector<size_t> const& bands, size_t pixels,
               std::vector<double>& numbers);

/// The smallest and the largest finite sample of some bands of a picture; nothing if none is finite. Reads the whole
/// picture. `check` is called between its parts and may throw.
std::optional<SampleRange> extremes(SampleSource& source, std::vector<size_t> const& bands,
                                    InputFile::Check const& check);

/// From the smallest to the largest sample; if they are equal, a range whose low end they are.
SampleRange automatic(SampleRange const& extremes);

} // namespace samplerange
