#include "host/display/AutomaticRange.h"

#include "host/display/Tone.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr double kLowPercent = 0.5;
constexpr double kHighPercent = 99.5;

double percentile(std::vector<double>& samples, double percent) {
    double const place = percent / 100 * static_cast<double>(samples.size() - 1);
    auto const below = samples.begin() + static_cast<std::ptrdiff_t>(place);
    std::nth_element(samples.begin(), below, samples.end());
    double const share = place - std::floor(place);
    if (share == 0) return *below;
    double const above = *std::min_element(below + 1, samples.end());
    return *below + share * (above - *below);
}

} // namespace

std::optional<SampleRange> automaticrange::of(std::vector<double> samples) {
    samples.erase(std::remove_if(samples.begin(), samples.end(),
                                 [](double sample) { return !(std::abs(sample) <= Tone::kFarthest); }),
                  samples.end());
    if (samples.empty()) return std::nullopt;
    return samplerange::automatic({percentile(samples, kLowPercent), percentile(samples, kHighPercent)});
}
