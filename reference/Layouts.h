#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// The byte layouts of samples in 8-bit RGBA textures. Rows lie in memory order: row y is row y.
//
//   8 bit               one pixel per texel                   R       G       B       A
//   one channel, 16     two samples per texel, 2k and 2k+1    low     high    low     high
//   three channels, 16  one pixel in two texels     even      c0 low  c0 high c1 low  255
//                                                   odd       c1 high c2 low  c2 high 255
//   four channels, 16   one pixel in two texels     even      c0 low  c0 high c1 low  c1 high
//                                                   odd       c2 low  c2 high c3 low  c3 high
namespace reference {

/// One channel of whole samples, row-major. Sizes and positions are int: taps may lie left of 0 and above 0.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<std::int32_t> samples;

    Plane() = default;
    Plane(int widthPixels, int heightPixels);
    Plane(int widthPixels, int heightPixels, std::vector<std::int32_t> content);

    std::int32_t& at(int x, int y);
    std::int32_t at(int x, int y) const;
    /// The sample at the nearest position inside the plane.
    std::int32_t clampedAt(int x, int y) const;
};

bool operator==(Plane const& a, Plane const& b);

using Planes3 = std::array<Plane, 3>;
using Texel = std::array<std::uint8_t, 4>;

/// A texture of 8-bit RGBA texels, row-major.
struct Texels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;

    Texels() = default;
    Texels(int widthTexels, int heightTexels);
    Texels(int widthTexels, int heightTexels, std::vector<std::uint8_t> content);

    Texel at(int x, int y) const;
    /// The texel at the nearest position inside the texture: GL_CLAMP_TO_EDGE.
    Texel clampedAt(int x, int y) const;
    void set(int x, int y, Texel const& texel);
};

bool operator==(Texels const& a, Texels const& b);

/// A 16-bit value in the shaders' form: value = 256 * high + low.
struct Pair {
    int low = 0;
    int high = 0;
};

/// Carry normalisation of a pair of fractions lowNumerator / denominator and highNumerator / denominator: keeps
/// floor(256 * high + low), leaves low in 0..255 and high whole, possibly negative.
Pair carryNormalised(int lowNumerator, int highNumerator, int denominator);

/// The two bytes that a shader writes for a whole value. 256 is added to a negative high part, then the target clamps
/// it to a byte: -65536..65535 become the value modulo 2^16, beyond that the high byte stays at 0 or 255.
std::array<std::uint8_t, 2> encodePair(std::int64_t value);

std::int32_t decodeSigned(std::uint8_t low, std::uint8_t high);
std::int32_t decodeUnsigned(std::uint8_t low, std::uint8_t high);

/// With an odd width the last sample of each row is 0.
Texels packOneChannel16(Plane const& plane);
/// Twice as wide as the texture.
Plane unpackOneChannel16(Texels const& texels);

/// Alpha is 255.
Texels packThreeChannel16(Planes3 const& channels);
/// One pixel per two texels; a single last column is left out.
Planes3 unpackThreeChannel16(Texels const& texels);
Planes3 unpackThreeChannel16Unsigned(Texels const& texels);

/// Four signed samples per pixel, row-major.
Texels packFourChannel16(std::vector<std::int16_t> const& samples, int widthPixels, int heightPixels);
std::vector<std::int16_t> unpackFourChannel16(Texels const& texels);

} // namespace reference
