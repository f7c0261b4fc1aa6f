#include "reference/Sharpness8.h"

#include "reference/Integers.h"

#include <cstdlib>

namespace reference {

namespace {

int weight(int dx, int dy) {
    int const distance = std::abs(dx) + std::abs(dy);
    if (distance == 0) return 44;
    if (distance == 1) return 15;
    if (distance > 2) return 0;
    bool const diagonal = dx != 0 && dy != 0;
    return diagonal ? 5 : 1;
}

} // namespace

std::int32_t sharpness8GainIn32nds(double gain, int shiftBits) {
    auto const steps = static_cast<std::int32_t>(gain * 32.0);
    return static_cast<std::int32_t>(floorDiv(steps, std::int64_t{1} << shiftBits));
}

Texels sharpness8(Texels const& image, double gain, int shiftBits) {
    std::int64_t const gain32 = sharpness8GainIn32nds(gain, shiftBits);
    Texels out(image.width, image.height);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            Texel texel{};
            for (size_t channel = 0; channel < 4; ++channel) {
                std::int64_t sum = 0;
                for (int dy = -2; dy <= 2; ++dy) {
                    for (int dx = -2; dx <= 2; ++dx) {
                        sum += weight(dx, dy) * image.clampedAt(x + dx, y + dy)[channel];
                    }
                }
                std::int64_t const centre = image.at(x, y)[channel];
                // gain32/32 * difference/128 + centre + 1/2, all over 4096
                std::int64_t const numerator = gain32 * (128 * centre - sum) + 4096 * centre + 2048;
                texel[channel] = clampToByte(floorDiv(numerator, 4096));
            }
            out.set(x, y, texel);
        }
    }
    return out;
}

} // namespace reference
