#include "gles3renderbackend/filters/ToneTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace {

constexpr double kToeOffset = 0.055; // sRGB's

// The end of a gamma curve's straight toe, and its slope; none for gammas up to 1.
struct Toe {
    double offset = 0;
    double slope = 0;
    double threshold = 0; // fraction of the range

    explicit Toe(double gamma) {
        if (!(gamma > 1.0)) return;
        offset = kToeOffset;
        slope = offset / (std::pow(gamma * offset / ((gamma - 1.0) * (1.0 + offset)), gamma) * (gamma - 1.0));
        threshold = offset / ((gamma - 1.0) * slope);
    }
};

std::uint8_t toByte(double value) {
    if (!(value > 0.0)) return 0; // NaN included: gammas are not checked
    return static_cast<std::uint8_t>(std::min(std::round(value * 255.0), 255.0));
}

// Deliberate: full scale is 3500, not 4095, and the power branch starts at code 10.
std::uint16_t linearised(size_t code) {
    constexpr double kFullScale = 3500.0;
    double const x = static_cast<double>(code) / 255.0;
    double const linear = code < 10 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
    return static_cast<std::uint16_t>(std::clamp(linear * kFullScale + 0.5, 0.0, kFullScale));
}

} // namespace

std::vector<std::uint8_t> toneTable::gamma(size_t bitDepth, double gamma, std::uint64_t black, std::uint64_t white) {
    if (bitDepth > kMaxBitDepth) throw std::length_error("tone table: bit depth above 16");
    size_t const size = size_t{1} << bitDepth;
    size_t const whiteCode = std::min<std::uint64_t>(size - 1, white);
    size_t const blackCode = std::min<std::uint64_t>(whiteCode, black);
    auto const range = static_cast<double>(whiteCode - blackCode);
    Toe const toe(gamma);

    std::vector<std::uint8_t> table(size, 0);
    // Deliberate: the toe ends at this index, not at black plus the index, so a black point shortens it. Near gamma 1
    // the index passes the white point, where the curve ends in any case.
    double const toeIndex = std::round(toe.threshold * range);
    size_t const toeEnd = toeIndex < static_cast<double>(whiteCode) ? static_cast<size_t>(toeIndex) : whiteCode;
    auto const position = [&](size_t code) { return static_cast<double>(code - blackCode) / range; };
    for (size_t code = blackCode; code < toeEnd; ++code)
        table[code] = toByte(position(code) * toe.slope);
    for (size_t code = std::max(toeEnd, blackCode); code < whiteCode; ++code)
        table[code] = toByte(std::pow(position(code), 1.0 / gamma) * (1.0 + toe.offset) - toe.offset);
    std::fill(table.begin() + static_cast<std::ptrdiff_t>(whiteCode), table.end(), std::uint8_t{255});
    return table;
}

std::vector<std::uint8_t> toneTable::blackWhiteGamma8(double gamma, std::uint64_t black, std::uint64_t white) {
    std::vector<std::uint8_t> const gamma12 = toneTable::gamma(12, gamma, black, white);
    std::vector<std::uint8_t> table(256);
    for (size_t code = 0; code < table.size(); ++code)
        table[code] = gamma12[linearised(code)];
    return table;
}

std::vector<std::uint8_t> toneTable::srgbFromLinear8() {
    std::vector<std::uint8_t> table(256);
    for (size_t code = 0; code < table.size(); ++code) {
        double const x = static_cast<double>(code) / 255.0;
        double const encoded = x < 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1.0 / 2.4) - 0.055;
        // Deliberate: rounded down. At code 255 the formula gives a hair less than 255, and 254 is required.
        table[code] = static_cast<std::uint8_t>(std::floor(encoded * 255.0));
    }
    return table;
}
