#pragma once

#include <array>
#include <cstdint>

struct Filter3x3MatrixParams;

// Gains and matrices are quantised on the CPU, so that results do not depend on a GPU's rounding.

/// Truncates toward zero; beyond the range of the type the nearest end, 0 for NaN.
std::int32_t toInteger(double value);

/// value >> bits, rounding down; counts wrap like the machine's, at 32 and at 64.
std::int32_t arithmeticShift(std::int32_t value, std::int32_t bits);
std::int64_t arithmeticShift(std::int64_t value, std::int32_t bits);

/// The coefficients times the strength: (e * f + 512) >> 10 with f the strength in 1/1024, in 32-bit arithmetic.
std::array<std::int32_t, 9> scaledCoefficients(Filter3x3MatrixParams const& params);
