#include "reference/Backdrop.h"

namespace reference {

Texels overBackdrop(Texels const& picture, std::array<std::uint8_t, 3> const& colour) {
    Texels out(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            Texel const in = picture.at(x, y);
            Texel result = {0, 0, 0, 255};
            for (size_t channel = 0; channel < colour.size(); ++channel) {
                int const sum = in[channel] * in[3] + colour[channel] * (255 - in[3]);
                result[channel] = static_cast<std::uint8_t>((2 * sum + 255) / 510);
            }
            out.set(x, y, result);
        }
    }
    return out;
}

} // namespace reference
