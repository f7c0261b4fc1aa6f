#include "reference/ToneTables.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace reference {

namespace {

std::uint8_t roundedByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::round(value), 0.0, 255.0));
}

} // namespace

GammaToe gammaToe(double gamma) {
    if (!(gamma > 1.0)) return {};
    double const a = 0.055;
    double const slope = a / (std::pow(gamma * a / ((gamma - 1) * 1.055), gamma) * (gamma - 1));
    return {a, slope, a / ((gamma - 1) * slope)};
}

ByteTable gammaTable(unsigned bitDepth, double gamma, std::uint64_t blackPoint, std::uint64_t whitePoint) {
    std::uint64_t const size = std::uint64_t{1} << bitDepth;
    std::uint64_t const white = std::min(size - 1, whitePoint);
    std::uint64_t const black = std::min(white, blackPoint);
    auto const range = static_cast<double>(white - black);
    GammaToe const toe = gammaToe(gamma);

    // Deliberate: the toe ends at this index itself, not at the black point plus the index. A gamma just above 1 puts
    // it beyond the white point, where the loop ends; as a double it may exceed every integer.
    double const toeEnd = std::round(toe.threshold * range);

    ByteTable table(size, 255);
    for (std::uint64_t i = 0; i < white; ++i) {
        if (i < black) {
            table[i] = 0;
            continue;
        }
        double const position = static_cast<double>(i - black) / range;
        if (static_cast<double>(i) < toeEnd) {
            table[i] = roundedByte(position * toe.slope * 255);
        } else {
            table[i] = roundedByte((std::pow(position, 1 / gamma) * (1 + toe.a) - toe.a) * 255);
        }
    }
    return table;
}

std::vector<std::uint16_t> linearisationTable() {
    std::vector<std::uint16_t> table;
    for (int code = 0; code < 256; ++code) {
        // Deliberate: full scale is 3500 of 4095, and the power branch starts at code 10, not at 0.04045 * 255 = 10.3.
        double const linear = code < 10 ? code / 255.0 / 12.92 : std::pow((code / 255.0 + 0.055) / 1.055, 2.4);
        table.push_back(static_cast<std::uint16_t>(std::clamp(linear * 3500 + 0.5, 0.0, 3500.0)));
    }
    return table;
}

ByteTable blackWhiteGamma8Table(double gamma, std::uint64_t blackPoint, std::uint64_t whitePoint) {
    ByteTable const gamma12 = gammaTable(12, gamma, blackPoint, whitePoint);
    ByteTable table;
    for (std::uint16_t const linear : linearisationTable())
        table.push_back(gamma12.at(linear));
    return table;
}

ByteTable srgbTable(unsigned bitDepth) {
    if (bitDepth > 16) throw std::invalid_argument("the sRGB table has at most 16 bits");
    if (bitDepth != 8) return gammaTable(bitDepth, 2.4, 0, (std::uint64_t{1} << bitDepth) - 1);

    ByteTable table;
    for (int code = 0; code < 256; ++code) {
        double const x = code / 255.0;
        double const encoded = x < 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
        // Deliberate: at code 255 the floor turns 254.99999999999997 into 254.
        table.push_back(static_cast<std::uint8_t>(std::floor(encoded * 255)));
    }
    return table;
}

} // namespace reference
