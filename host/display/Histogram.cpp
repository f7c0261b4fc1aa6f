#include "host/display/Histogram.h"

#include "host/display/Tone.h"

#include <algorithm>
#include <cmath>
#include <iterator>

Histogram Histogram::of(std::vector<double> const& samples) {
    std::vector<double> counted;
    std::copy_if(samples.begin(), samples.end(), std::back_inserter(counted),
                 [](double sample) { return std::abs(sample) <= Tone::kFarthest; });
    Histogram histogram;
    if (counted.empty()) return histogram;
    auto const [least, most] = std::minmax_element(counted.begin(), counted.end());
    histogram.low = *least;
    histogram.high = *most;
    double const width = (histogram.high - histogram.low) / static_cast<double>(kBins);
    for (double const sample : counted) {
        double const bin = width > 0 ? std::floor((sample - histogram.low) / width) : 0;
        ++histogram.counts[std::min(static_cast<size_t>(bin), kBins - 1)]; // the largest one belongs to the last
    }
    return histogram;
}
