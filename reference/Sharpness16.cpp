#include "reference/Sharpness16.h"

#include "reference/Integers.h"

#include <algorithm>
#include <array>

namespace reference {

namespace {

constexpr std::array<int, 5> kWeights{1, 13, 36, 13, 1};

int weightAt(int offset) {
    int const tap = offset + 2;
    return kWeights.at(static_cast<size_t>(tap));
}

// Pixel x as a shader fetches it: each of its two texels is clamped to the edge separately.
std::array<std::int32_t, 3> fetchedPixel(Texels const& texels, int x, int y) {
    Texel const even = texels.clampedAt(2 * x, y);
    Texel const odd = texels.clampedAt(2 * x + 1, y);
    return {decodeSigned(even[0], even[1]), decodeSigned(even[2], odd[0]), decodeSigned(odd[1], odd[2])};
}

} // namespace

std::int32_t clampTo10Bits(std::int32_t value) {
    return std::clamp(value, 0, 1023);
}

std::int32_t sharpness16Gain(double gain, int shiftBits) {
    std::int64_t const whole = static_cast<std::int32_t>(gain);
    return static_cast<std::int32_t>(floorDiv(32 * whole, std::int64_t{1} << shiftBits));
}

std::int64_t sharpened16(std::int32_t source, std::int64_t blur, std::int32_t aGain) {
    std::int64_t const difference = 4096 * std::int64_t{source} - blur;
    return source + floorDiv(aGain * difference + 65536, 131072);
}

Texels sharpnessH16(Texels const& source) {
    Plane const empty(source.width / 2, source.height);
    Planes3 out{empty, empty, empty};
    for (int y = 0; y < empty.height; ++y) {
        for (int x = 0; x < empty.width; ++x) {
            for (int dx = -2; dx <= 2; ++dx) {
                auto const pixel = fetchedPixel(source, x + dx, y);
                for (size_t c = 0; c < 3; ++c)
                    out[c].at(x, y) += weightAt(dx) * clampTo10Bits(pixel[c]);
            }
        }
    }
    return packThreeChannel16(out);
}

Texels sharpnessV16(Texels const& source, Texels const& blurred, double gain, int shiftBits) {
    std::int32_t const aGain = sharpness16Gain(gain, shiftBits);
    Planes3 const sources = unpackThreeChannel16(source);
    Planes3 const blurs = unpackThreeChannel16Unsigned(blurred);
    Planes3 out = sources;
    for (size_t c = 0; c < 3; ++c) {
        for (int y = 0; y < out[c].height; ++y) {
            for (int x = 0; x < out[c].width; ++x) {
                std::int64_t blur = 0;
                for (int dy = -2; dy <= 2; ++dy)
                    blur += weightAt(dy) * blurs[c].clampedAt(x, y + dy);
                std::int32_t const pixel = clampTo10Bits(sources[c].at(x, y));
                out[c].at(x, y) = static_cast<std::int32_t>(sharpened16(pixel, blur, aGain));
            }
        }
    }
    return packThreeChannel16(out);
}

Plane sharpness16(Plane const& source, double gain, int shiftBits) {
    std::int32_t const aGain = sharpness16Gain(gain, shiftBits);
    Plane out(source.width, source.height);
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            std::int64_t blur = 0;
            for (int dy = -2; dy <= 2; ++dy) {
                for (int dx = -2; dx <= 2; ++dx) {
                    blur += weightAt(dx) * weightAt(dy) * clampTo10Bits(source.clampedAt(x + dx, y + dy));
                }
            }
            std::int32_t const pixel = clampTo10Bits(source.at(x, y));
            out.at(x, y) = static_cast<std::int32_t>(sharpened16(pixel, blur, aGain));
        }
    }
    return out;
}

} // namespace reference
