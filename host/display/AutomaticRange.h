#pragma once

#include "host/image/SampleRange.h"

#include <optional>
#include <vector>

/// The range that a picture opens with: from the 0.5th to the 99.5th percentile of its samples.
namespace automaticrange {

/// Percentile p of n samples lies at p / 100 * (n - 1) of the sorted ones, between two of them in proportion. Samples
/// that are not finite do not count. If both ends are equal, the low end is theirs and the high one above it; nothing
/// if no sample counts.
std::optional<SampleRange> of(std::vector<double> samples);

} // namespace automaticrange
