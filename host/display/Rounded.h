#pragma once

#include <algorithm>
#include <cstdint>

/// The nearest whole number from 0 to 255, halves up. The number is from 0 to 255 but for rounding errors.
inline std::uint8_t roundedByte(double number) {
    auto const whole = static_cast<std::uint8_t>(std::clamp(number, 0.0, 255.0));
    // Adding 0.5 before cutting would round once more.
    return static_cast<std::uint8_t>(number - whole >= 0.5 ? whole + 1 : whole);
}
