#include "host/image/PixelBands.h"

#include <array>
#include <cstring>

char const* pixelbands::toText(size_t bands) {
    constexpr std::array<char const*, 4> kNames{"grey", "grey and alpha", "RGB", "RGBA"};
    return kNames.at(bands - 1);
}

void pixelbands::widen(std::uint8_t const* from, size_t bands, std::uint8_t* to, size_t count) {
    size_t const wide = components(bands);
    if (bands == wide) {
        std::memcpy(to, from, count * wide);
        return;
    }
    for (size_t i = 0; i < count; ++i, from += bands, to += wide) {
        to[0] = to[1] = to[2] = from[0];
        if (bands == 2) to[3] = from[1];
    }
}

void pixelbands::narrow(std::uint8_t const* from, std::uint8_t* to, size_t bands, size_t count) {
    for (size_t i = 0; i < count; ++i, from += kTexelBytes, to += bands) {
        to[0] = from[0];
        if (bands == 2) to[1] = from[3];
        if (bands >= 3) {
            to[1] = from[1];
            to[2] = from[2];
        }
        if (bands == 4) to[3] = from[3];
    }
}
