#include "gles3renderbackend/filters/FixedPoint.h"

#include "renderbackend/FilterParameters.h"

#include <cmath>
#include <limits>

std::int32_t toInteger(double value) {
    if (std::isnan(value)) return 0;
    if (value <= std::numeric_limits<std::int32_t>::min()) return std::numeric_limits<std::int32_t>::min();
    if (value >= std::numeric_limits<std::int32_t>::max()) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

std::int32_t arithmeticShift(std::int32_t value, std::int32_t bits) {
    return value >> (static_cast<std::uint32_t>(bits) % 32);
}

std::int64_t arithmeticShift(std::int64_t value, std::int32_t bits) {
    return value >> (static_cast<std::uint32_t>(bits) % 64);
}

std::array<std::int32_t, 9> scaledCoefficients(Filter3x3MatrixParams const& params) {
    auto const strength = static_cast<std::uint32_t>(toInteger(std::round(params.scale * 1024.0)));
    std::array<std::int32_t, 9> scaled{};
    for (size_t i = 0; i < scaled.size(); ++i) {
        // Unsigned, so that overflow wraps instead of being undefined.
        std::uint32_t const product = static_cast<std::uint32_t>(params.matrix[i]) * strength + 512U;
        scaled[i] = static_cast<std::int32_t>(product) >> 10;
    }
    return scaled;
}
