#pragma once

#include "host/image/SampleSource.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Samples that become 16 bits: `low` becomes 0, `high` 65535, and what lies between them in proportion, rounded,
/// halves up. What lies beyond is clipped; what is no number becomes 0.
struct SampleRange {
    /// Neither end may be farther from 0: their distance, times 65535, is a number then.
    static constexpr double kFarthest = 1e300;

    double low = 0;
    double high = 0;

    std::uint16_t scaled(double sample) const;
};

namespace samplerange {

/// The samples of some bands of pixels, as 64-bit floats, which hold all but integers of more than 53 bits.
/// `bands`: places of the bands in a pixel, in the order in which they are wanted.
void toNumbers(std::uint8_t const* samples, SampleFormat const& layout, std::vector<size_t> const& bands, size_t pixels,
               std::vector<double>& numbers);

/// The smallest and the largest finite sample of some bands of a picture; nothing where none is finite. Reads the
/// whole. `check` is called between its parts and may throw.
std::optional<SampleRange> extremes(SampleSource& source, std::vector<size_t> const& bands,
                                    InputFile::Check const& check);

/// From the smallest to the largest sample; where they are the same, one whose low end they are.
SampleRange automatic(SampleRange const& extremes);

} // namespace samplerange
