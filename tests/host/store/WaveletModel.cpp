#include "tests/host/store/WaveletModel.h"

namespace {

using waveletmodel::Kind;
using waveletmodel::Plane;

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
    std::int64_t const quotient = a / b;
    return a % b != 0 && a < 0 ? quotient - 1 : quotient;
}

std::int64_t mirrored(std::int64_t i, std::int64_t count) {
    if (count == 1) return 0;
    while (i < 0 || i >= count)
        i = i < 0 ? -i : 2 * (count - 1) - i;
    return i;
}

template <class Signal>
std::int64_t high(Signal const& x, std::int64_t n) {
    return x(2 * n + 1) - floorDiv(x(2 * n) + x(2 * n + 2), 2);
}

template <class Signal>
std::int64_t low(Signal const& x, std::int64_t n) {
    return x(2 * n) + floorDiv(high(x, n - 1) + high(x, n) + 2, 4);
}

template <class Signal>
std::int64_t coefficient(Signal const& x, Kind kind, std::int64_t i) {
    return kind == Kind::Low ? low(x, i) : high(x, i - 1);
}

} // namespace

std::int64_t waveletmodel::Plane::at(std::int64_t x, std::int64_t y) const {
    return samples.at(static_cast<size_t>(mirrored(y, height) * width + mirrored(x, width)));
}

Plane waveletmodel::band(Plane const& plane, Kind alongX, Kind alongY, std::int64_t columns, std::int64_t rows) {
    // Rows first: the lifting steps round, so the order matters.
    Plane split{columns, plane.height, {}};
    for (std::int64_t y = 0; y < plane.height; ++y)
        for (std::int64_t i = 0; i < columns; ++i)
            split.samples.push_back(coefficient([&](std::int64_t x) { return plane.at(x, y); }, alongX, i));
    Plane out{columns, rows, {}};
    for (std::int64_t j = 0; j < rows; ++j)
        for (std::int64_t x = 0; x < columns; ++x)
            out.samples.push_back(coefficient([&](std::int64_t y) { return split.at(x, y); }, alongY, j));
    return out;
}

std::int64_t waveletmodel::bandSamples(std::int64_t count) {
    std::int64_t samples = 2;
    while (2 * samples - 4 < count)
        samples += 2;
    return samples;
}

Plane waveletmodel::noise(std::int64_t width, std::int64_t height, int lowest, int highest, std::mt19937& random) {
    std::uniform_int_distribution<int> sample(lowest, highest);
    Plane plane{width, height, {}};
    for (std::int64_t i = 0; i < width * height; ++i)
        plane.samples.push_back(sample(random));
    return plane;
}

Plane waveletmodel::coarser(Plane const& plane) {
    return band(plane, Kind::Low, Kind::Low, bandSamples(plane.width), bandSamples(plane.height));
}
