#pragma once

#include <string_view>

/// Messages of decoders.
namespace complaint {

/// Whether the message of a JPEG decoder is about bytes between two segments, which hold nothing, or about a redundant
/// header.
inline bool isHarmless(std::string_view message) {
    return message.find("extraneous bytes") != std::string_view::npos ||
           message.find("Invalid SOS parameters") != std::string_view::npos;
}

} // namespace complaint
