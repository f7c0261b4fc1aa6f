#include "host/display/Tone.h"

#include "host/display/Rounded.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

constexpr double kLogStrength = 1000;
constexpr double kAsinhStrength = 10;
constexpr double kFull = 255;

double curved(double share, Tone::Curve curve) {
    switch (curve) {
    case Tone::Curve::Linear:
        return share;
    case Tone::Curve::Log:
        return std::log1p(kLogStrength * share) / std::log1p(kLogStrength);
    case Tone::Curve::Asinh:
        return std::asinh(kAsinhStrength * share) / std::asinh(kAsinhStrength);
    }
    return share;
}

} // namespace

double Tone::share(double sample) const {
    if (std::isnan(sample)) return sample;
    // The distance to an infinite sample is infinite, and clipped like any other.
    double const straight = std::clamp((sample - low) / (high - low), 0.0, 1.0);
    double const share = curved(straight, curve);
    return gamma == 1 ? share : std::pow(share, 1 / gamma);
}

std::uint8_t Tone::byteOf(double sample) const {
    double const value = share(sample);
    return std::isnan(value) ? std::uint8_t{0} : roundedByte(kFull * value);
}

bool Tone::operator==(Tone const& other) const {
    return low == other.low && high == other.high && curve == other.curve && gamma == other.gamma;
}

Tone::Curve tone::parseCurve(std::string const& text) {
    for (auto const curve : {Tone::Curve::Linear, Tone::Curve::Log, Tone::Curve::Asinh})
        if (text == toText(curve)) return curve;
    throw std::invalid_argument("there is no curve \"" + text + "\"; there are linear, log and asinh");
}

char const* tone::toText(Tone::Curve curve) {
    switch (curve) {
    case Tone::Curve::Linear:
        return "linear";
    case Tone::Curve::Log:
        return "log";
    case Tone::Curve::Asinh:
        return "asinh";
    }
    return "";
}
