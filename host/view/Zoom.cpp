#include "host/view/Zoom.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

Zoom Zoom::nearest(double pixels, size_t levels) {
    if (std::lround(pixels * kSteps) >= static_cast<long>(kSteps) || pixels > 1.0)
        return {0, static_cast<size_t>(std::clamp(std::round(pixels), 1.0, static_cast<double>(kLargest))), 1};
    double const smallest = std::ldexp(1.0, -static_cast<int>(levels) - 1);
    double const wanted = std::max(pixels, smallest);
    size_t level = std::min(levels, static_cast<size_t>(-std::ilogb(wanted)) - 1);
    auto samples = static_cast<size_t>(std::lround(kSteps / std::ldexp(wanted, static_cast<int>(level))));
    if (samples >= 2 * kSteps && level < levels) {
        ++level;
        samples = kSteps;
    }
    samples = std::clamp(samples, kSteps, 2 * kSteps - 1);
    return samples == kSteps ? Zoom(level, 1, 1) : Zoom(level, kSteps, samples);
}

double Zoom::value() const {
    return std::ldexp(static_cast<double>(pixels_) / static_cast<double>(samples_), -static_cast<int>(level_));
}

std::string Zoom::noteFor(double asked) const {
    auto const text = [](double number) {
        std::array<char, 32> digits{};
        std::snprintf(digits.data(), digits.size(), "%.6g", number);
        return std::string(digits.data());
    };
    return text(value()) == text(asked) ? "" : "zoom " + text(value()) + ", the nearest step to " + text(asked);
}
