#pragma once

#include "reference/Layouts.h"

#include <cstdint>
#include <vector>

namespace reference {

/// What a channel's codes show: 65536 RGBA entries. An alpha channel limits the alpha of what is mixed.
struct ChannelEntries {
    std::vector<std::uint8_t> rgba;
    bool isAlpha = false;
};

/// Two channels added to a mixture. Codes: red + 256 * green is the first channel's, blue + 256 * alpha the second's.
/// Colours are added up to 255; alpha is the largest, but at most that of each alpha channel.
Texels channelMix(Texels const& codes, Texels const& mixture, ChannelEntries const& first,
                  ChannelEntries const& second);

} // namespace reference
