#include "reference/Integers.h"

namespace reference {

std::int64_t floorDiv(std::int64_t numerator, std::int64_t denominator) {
    std::int64_t const quotient = numerator / denominator;
    bool const cutUpwards = numerator % denominator < 0;
    return cutUpwards ? quotient - 1 : quotient;
}

std::int64_t roundDivAwayFromZero(std::int64_t numerator, std::int64_t denominator) {
    if (numerator < 0) return -roundDivAwayFromZero(-numerator, denominator);
    return (2 * numerator + denominator) / (2 * denominator);
}

std::uint8_t clampToByte(std::int64_t value) {
    if (value < 0) return 0;
    if (value > 255) return 255;
    return static_cast<std::uint8_t>(value);
}

} // namespace reference
