#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

/// How a sample is shown, straight from the definitions.
namespace displaymodel {

struct Range {
    double low;
    double high;
};

/// As numpy.percentile reckons it.
inline double percentile(std::vector<double> samples, double percent) {
    std::sort(samples.begin(), samples.end());
    double const place = percent / 100 * static_cast<double>(samples.size() - 1);
    auto const below = static_cast<size_t>(std::floor(place));
    double const share = place - std::floor(place);
    if (share == 0) return samples[below];
    return samples[below] + share * (samples[below + 1] - samples[below]);
}

/// That a picture of these samples opens with.
inline Range automatic(std::vector<double> const& samples) {
    return {percentile(samples, 0.5), percentile(samples, 99.5)};
}

inline int byteOf(double sample, Range const& range) {
    double const share = (sample - range.low) / (range.high - range.low);
    if (share <= 0) return 0;
    if (share >= 1) return 255;
    return static_cast<int>(std::floor(255 * share + 0.5));
}

} // namespace displaymodel
