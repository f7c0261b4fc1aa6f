#include "apps/velmora/view/ScaleBar.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace {

// The largest 1, 2 or 5 times a power of ten that is not above a length.
double roundLength(double length) {
    double const power = std::pow(10.0, std::floor(std::log10(length)));
    for (double const factor : {10.0, 5.0, 2.0})
        if (factor * power <= length) return factor * power;
    return power;
}

std::string numberWith(double number, int digits, char const* unit) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*g %s", digits, number, unit);
    return text.data();
}

constexpr int kAllDigits = 15;

} // namespace

std::string lengthText(double microns, int digits) {
    if (microns >= 1e6) return numberWith(microns / 1e6, digits, "m");
    if (microns >= 1e3) return numberWith(microns / 1e3, digits, "mm");
    if (microns >= 1) return numberWith(microns, digits, "\xC2\xB5m");
    return numberWith(microns * 1e3, digits, "nm");
}

std::string pixelsText(double pixels, int digits) {
    return numberWith(pixels, digits, "px");
}

ScaleBar scaleBar(double maxPixels, double zoom, double micronsPerPixel) {
    bool const known = micronsPerPixel > 0;
    double const unit = known ? micronsPerPixel : 1;
    double const longest = maxPixels / zoom * unit;
    if (!(longest > 0) || !std::isfinite(longest)) return {};
    double const length = roundLength(longest);
    if (!known && length < 1) return {};
    return {length / unit * zoom, known ? lengthText(length, kAllDigits) : pixelsText(length, kAllDigits)};
}
