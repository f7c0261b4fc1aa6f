#include "reference/ColourMatrix.h"

#include "reference/Integers.h"

#include <cmath>

namespace reference {

namespace {

std::int64_t sumOfProducts(Matrix3 const& scaled, std::array<std::int32_t, 3> const& pixel, size_t output) {
    std::int64_t sum = 0;
    for (size_t input = 0; input < 3; ++input)
        sum += std::int64_t{scaled[3 * input + output]} * pixel[input];
    return sum;
}

} // namespace

Matrix3 scaledMatrix(Matrix3 const& matrix, double strength) {
    auto const factor = static_cast<std::int32_t>(std::round(strength * 1024.0));
    Matrix3 scaled{};
    for (size_t i = 0; i < 9; ++i) {
        std::uint32_t const wrapped =
            static_cast<std::uint32_t>(matrix[i]) * static_cast<std::uint32_t>(factor) + std::uint32_t{512};
        scaled[i] = static_cast<std::int32_t>(floorDiv(static_cast<std::int32_t>(wrapped), 1024));
    }
    return scaled;
}

Texels matrix8(Texels const& image, Matrix3 const& matrix, double strength) {
    Matrix3 const scaled = scaledMatrix(matrix, strength);
    Texels out(image.width, image.height);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            Texel const in = image.at(x, y);
            Texel result{0, 0, 0, 255};
            for (size_t c = 0; c < 3; ++c) {
                result[c] = clampToByte(floorDiv(sumOfProducts(scaled, {in[0], in[1], in[2]}, c) + 512, 1024));
            }
            out.set(x, y, result);
        }
    }
    return out;
}

std::array<std::int64_t, 3> matrixTimes(Matrix3 const& scaled, std::array<std::int32_t, 3> const& pixel) {
    std::array<std::int64_t, 3> out{};
    for (size_t c = 0; c < 3; ++c)
        out[c] = roundDivAwayFromZero(sumOfProducts(scaled, pixel, c), 1024);
    return out;
}

Texels matrix16(Texels const& image, Matrix3 const& matrix, double strength) {
    Matrix3 const scaled = scaledMatrix(matrix, strength);
    Planes3 planes = unpackThreeChannel16(image);
    for (size_t i = 0; i < planes[0].samples.size(); ++i) {
        auto const out = matrixTimes(scaled, {planes[0].samples[i], planes[1].samples[i], planes[2].samples[i]});
        for (size_t c = 0; c < 3; ++c)
            planes[c].samples[i] = static_cast<std::int32_t>(out[c]);
    }
    return packThreeChannel16(planes);
}

} // namespace reference
