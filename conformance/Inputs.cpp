#include "conformance/Inputs.h"

#include <algorithm>
#include <random>

namespace conformance {

using reference::Plane;
using reference::Planes3;
using reference::Texels;

Texels randomTexels(int width, int height, std::uint32_t randomStart) {
    std::mt19937 random(randomStart);
    Texels texels(width, height);
    for (auto& byte : texels.bytes)
        byte = static_cast<std::uint8_t>(random() & 0xFFU);
    return texels;
}

Plane randomPlane(int width, int height, std::uint32_t randomStart, std::int32_t first, std::int32_t last) {
    std::mt19937 random(randomStart);
    Plane plane(width, height);
    auto const range = static_cast<std::uint32_t>(last - first + 1);
    for (auto& sample : plane.samples)
        sample = first + static_cast<std::int32_t>(random() % range);
    return plane;
}

Planes3 randomPlanes(int width, int height, std::uint32_t randomStart, std::int32_t first, std::int32_t last) {
    return {randomPlane(width, height, randomStart, first, last),
            randomPlane(width, height, randomStart + 1, first, last),
            randomPlane(width, height, randomStart + 2, first, last)};
}

Plane boundaryPlane(int width, int height, std::uint32_t randomStart) {
    std::mt19937 random(randomStart);
    Plane plane(width, height);
    for (auto& sample : plane.samples)
        sample = kBoundaries[random() % kBoundaries.size()];
    return plane;
}

Plane everySample() {
    Plane plane(256, 256);
    std::int32_t value = -32768;
    for (auto& sample : plane.samples)
        sample = value++;
    return plane;
}

Planes3 everySampleOfChannel(size_t channel, std::uint32_t randomStart) {
    Planes3 planes = randomPlanes(256, 256, randomStart);
    planes[channel] = everySample();
    return planes;
}

Planes3 everySampleThrice() {
    constexpr std::ptrdiff_t kShift = 12345;
    Planes3 planes = {everySample(), everySample(), everySample()};
    std::reverse(planes[1].samples.begin(), planes[1].samples.end());
    std::rotate(planes[2].samples.begin(), planes[2].samples.begin() + kShift, planes[2].samples.end());
    return planes;
}

Planes3 boundaryTriples() {
    auto const n = static_cast<int>(kBoundaries.size());
    Plane const empty(n * n, n);
    Planes3 planes{empty, empty, empty};
    for (int y = 0; y < n; ++y) {
        for (int x = 0; x < n * n; ++x) {
            planes[0].at(x, y) = kBoundaries[static_cast<size_t>(y)];
            planes[1].at(x, y) = kBoundaries[static_cast<size_t>(x / n)];
            planes[2].at(x, y) = kBoundaries[static_cast<size_t>(x % n)];
        }
    }
    return planes;
}

Texels colours(std::uint32_t index) {
    Texels texels = randomTexels(256, 256, index);
    std::uint32_t colour = index << 16;
    for (size_t i = 0; i < texels.bytes.size(); i += 4, ++colour) {
        texels.bytes[i] = static_cast<std::uint8_t>(colour >> 16);
        texels.bytes[i + 1] = static_cast<std::uint8_t>(colour >> 8);
        texels.bytes[i + 2] = static_cast<std::uint8_t>(colour);
    }
    return texels;
}

Texels randomColours(std::uint32_t randomStart) {
    return randomTexels(256, 256, randomStart);
}

Texels greySlope(int widthPixels, int height, std::uint32_t randomStart) {
    std::mt19937 random(randomStart);
    std::vector<std::int16_t> samples(static_cast<size_t>(widthPixels) * static_cast<size_t>(height) * 4);
    for (size_t i = 0; i < samples.size(); ++i) {
        auto const x = static_cast<int>(i / 4 % static_cast<size_t>(widthPixels));
        auto const grey = static_cast<int>(random() % 200) + 300 * x / widthPixels - 100;
        samples[i] = static_cast<std::int16_t>(i % 4 == 0 ? grey : static_cast<int>(random() % 65536U) - 32768);
    }
    return reference::packFourChannel16(samples, widthPixels, height);
}

Plane cropped(Plane const& plane, int x, int y, int width, int height) {
    Plane out(width, height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column)
            out.at(column, row) = plane.at(x + column, y + row);
    }
    return out;
}

} // namespace conformance
