#include "reference/Layouts.h"

#include "reference/Integers.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace reference {

namespace {

size_t count(int width, int height, int each = 1) {
    return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(each);
}

size_t indexOf(int x, int y, int width, int height) {
    if (x < 0 || y < 0 || x >= width || y >= height) throw std::out_of_range("position outside the reference image");
    return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
}

template <class Decode>
Planes3 unpackThree(Texels const& texels, Decode decode) {
    Plane const empty(texels.width / 2, texels.height);
    Planes3 channels{empty, empty, empty};
    for (int y = 0; y < empty.height; ++y) {
        for (int x = 0; x < empty.width; ++x) {
            Texel const even = texels.at(2 * x, y);
            Texel const odd = texels.at(2 * x + 1, y);
            channels[0].at(x, y) = decode(even[0], even[1]);
            channels[1].at(x, y) = decode(even[2], odd[0]);
            channels[2].at(x, y) = decode(odd[1], odd[2]);
        }
    }
    return channels;
}

} // namespace

Plane::Plane(int widthPixels, int heightPixels)
    : width(widthPixels), height(heightPixels), samples(count(widthPixels, heightPixels)) {}

Plane::Plane(int widthPixels, int heightPixels, std::vector<std::int32_t> content)
    : width(widthPixels), height(heightPixels), samples(std::move(content)) {
    if (samples.size() != count(width, height)) throw std::invalid_argument("samples do not fill the plane");
}

std::int32_t& Plane::at(int x, int y) {
    return samples[indexOf(x, y, width, height)];
}

std::int32_t Plane::at(int x, int y) const {
    return samples[indexOf(x, y, width, height)];
}

std::int32_t Plane::clampedAt(int x, int y) const {
    return at(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1));
}

bool operator==(Plane const& a, Plane const& b) {
    return a.width == b.width && a.height == b.height && a.samples == b.samples;
}

Texels::Texels(int widthTexels, int heightTexels)
    : width(widthTexels), height(heightTexels), bytes(count(widthTexels, heightTexels, 4)) {}

Texels::Texels(int widthTexels, int heightTexels, std::vector<std::uint8_t> content)
    : width(widthTexels), height(heightTexels), bytes(std::move(content)) {
    if (bytes.size() != count(width, height, 4)) throw std::invalid_argument("bytes do not fill the texture");
}

Texel Texels::at(int x, int y) const {
    size_t const first = 4 * indexOf(x, y, width, height);
    return {bytes[first], bytes[first + 1], bytes[first + 2], bytes[first + 3]};
}

Texel Texels::clampedAt(int x, int y) const {
    return at(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1));
}

void Texels::set(int x, int y, Texel const& texel) {
    size_t const first = 4 * indexOf(x, y, width, height);
    for (size_t i = 0; i < 4; ++i)
        bytes[first + i] = texel[i];
}

bool operator==(Texels const& a, Texels const& b) {
    return a.width == b.width && a.height == b.height && a.bytes == b.bytes;
}

Pair carryNormalised(int lowNumerator, int highNumerator, int denominator) {
    std::int64_t const value = floorDiv(std::int64_t{256} * highNumerator + lowNumerator, denominator);
    std::int64_t const high = floorDiv(value, 256);
    return {static_cast<int>(value - 256 * high), static_cast<int>(high)};
}

std::array<std::uint8_t, 2> encodePair(std::int64_t value) {
    std::int64_t const high = floorDiv(value, 256);
    std::int64_t const low = value - 256 * high;
    return {clampToByte(low), clampToByte(high < 0 ? high + 256 : high)};
}

std::int32_t decodeSigned(std::uint8_t low, std::uint8_t high) {
    return 256 * (high > 127 ? high - 256 : high) + low;
}

std::int32_t decodeUnsigned(std::uint8_t low, std::uint8_t high) {
    return 256 * high + low;
}

Texels packOneChannel16(Plane const& plane) {
    Texels texels((plane.width + 1) / 2, plane.height);
    for (int y = 0; y < texels.height; ++y) {
        for (int k = 0; k < texels.width; ++k) {
            auto const first = encodePair(plane.at(2 * k, y));
            auto const second = encodePair(2 * k + 1 < plane.width ? plane.at(2 * k + 1, y) : 0);
            texels.set(k, y, {first[0], first[1], second[0], second[1]});
        }
    }
    return texels;
}

Plane unpackOneChannel16(Texels const& texels) {
    Plane plane(2 * texels.width, texels.height);
    for (int y = 0; y < texels.height; ++y) {
        for (int k = 0; k < texels.width; ++k) {
            Texel const texel = texels.at(k, y);
            plane.at(2 * k, y) = decodeSigned(texel[0], texel[1]);
            plane.at(2 * k + 1, y) = decodeSigned(texel[2], texel[3]);
        }
    }
    return plane;
}

Texels packThreeChannel16(Planes3 const& channels) {
    Texels texels(2 * channels[0].width, channels[0].height);
    for (int y = 0; y < texels.height; ++y) {
        for (int x = 0; x < channels[0].width; ++x) {
            auto const c0 = encodePair(channels[0].at(x, y));
            auto const c1 = encodePair(channels[1].at(x, y));
            auto const c2 = encodePair(channels[2].at(x, y));
            texels.set(2 * x, y, {c0[0], c0[1], c1[0], 255});
            texels.set(2 * x + 1, y, {c1[1], c2[0], c2[1], 255});
        }
    }
    return texels;
}

Planes3 unpackThreeChannel16(Texels const& texels) {
    return unpackThree(texels, decodeSigned);
}

Planes3 unpackThreeChannel16Unsigned(Texels const& texels) {
    return unpackThree(texels, decodeUnsigned);
}

Texels packFourChannel16(std::vector<std::int16_t> const& samples, int widthPixels, int heightPixels) {
    if (samples.size() != count(widthPixels, heightPixels, 4)) throw std::invalid_argument("four samples per pixel");
    Texels texels(2 * widthPixels, heightPixels);
    for (size_t i = 0; i < samples.size(); ++i) {
        auto const pair = encodePair(samples[i]);
        texels.bytes[2 * i] = pair[0];
        texels.bytes[2 * i + 1] = pair[1];
    }
    return texels;
}

std::vector<std::int16_t> unpackFourChannel16(Texels const& texels) {
    std::vector<std::int16_t> samples(texels.bytes.size() / 2);
    for (size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::int16_t>(decodeSigned(texels.bytes[2 * i], texels.bytes[2 * i + 1]));
    }
    return samples;
}

} // namespace reference
