#include "reference/ChannelMix.h"

#include <algorithm>
#include <cstddef>

namespace reference {

namespace {

Texel entryOf(ChannelEntries const& entries, std::uint8_t low, std::uint8_t high) {
    auto const first = (static_cast<size_t>(high) * 256 + low) * 4;
    return {entries.rgba.at(first), entries.rgba.at(first + 1), entries.rgba.at(first + 2), entries.rgba.at(first + 3)};
}

std::uint8_t added(int a, int b, int c) {
    return static_cast<std::uint8_t>(std::min(a + b + c, 255));
}

} // namespace

Texels channelMix(Texels const& codes, Texels const& mixture, ChannelEntries const& first,
                  ChannelEntries const& second) {
    Texels out(codes.width, codes.height);
    for (int y = 0; y < codes.height; ++y) {
        for (int x = 0; x < codes.width; ++x) {
            Texel const code = codes.at(x, y);
            Texel const before = mixture.at(x, y);
            Texel const one = entryOf(first, code[0], code[1]);
            Texel const two = entryOf(second, code[2], code[3]);
            std::uint8_t alpha = before[3];
            if (!first.isAlpha) alpha = std::max(alpha, one[3]);
            if (!second.isAlpha) alpha = std::max(alpha, two[3]);
            if (first.isAlpha) alpha = std::min(alpha, one[3]);
            if (second.isAlpha) alpha = std::min(alpha, two[3]);
            out.set(x, y,
                    {added(before[0], one[0], two[0]), added(before[1], one[1], two[1]),
                     added(before[2], one[2], two[2]), alpha});
        }
    }
    return out;
}

} // namespace reference
