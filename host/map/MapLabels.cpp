#include "host/map/MapLabels.h"

#include <array>

namespace {

// Seven rows per character, the leftmost pixel in bit 4.
using Glyph = std::array<std::uint8_t, 7>;

constexpr std::array<Glyph, 10> kDigits{{{0x0e, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0e},
                                         {0x04, 0x0c, 0x04, 0x04, 0x04, 0x04, 0x0e},
                                         {0x0e, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1f},
                                         {0x1f, 0x02, 0x04, 0x06, 0x01, 0x11, 0x0e},
                                         {0x02, 0x06, 0x0a, 0x12, 0x1f, 0x02, 0x02},
                                         {0x1f, 0x10, 0x1e, 0x01, 0x01, 0x11, 0x0e},
                                         {0x06, 0x08, 0x10, 0x1e, 0x11, 0x11, 0x0e},
                                         {0x1f, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
                                         {0x0e, 0x11, 0x11, 0x0e, 0x11, 0x11, 0x0e},
                                         {0x0e, 0x11, 0x11, 0x0f, 0x01, 0x02, 0x0c}}};
constexpr Glyph kComma{0x00, 0x00, 0x00, 0x00, 0x0c, 0x04, 0x08};
constexpr Glyph kBlank{};

Glyph const& glyph(char character) {
    if (character >= '0' && character <= '9') return kDigits[static_cast<size_t>(character - '0')];
    return character == ',' ? kComma : kBlank;
}

} // namespace

bool maplabels::covers(std::string const& text, std::int64_t x, std::int64_t y, std::int64_t scale) {
    if (x < 0 || y < 0 || x >= width(text, scale) || y >= kHeight * scale) return false;
    auto const column = static_cast<unsigned>(x / scale % kAdvance);
    if (column >= 5) return false;
    auto const character = static_cast<size_t>(x / scale / kAdvance);
    unsigned const bits = glyph(text[character])[static_cast<size_t>(y / scale)];
    return (bits >> (4u - column) & 1u) != 0;
}

std::int64_t maplabels::width(std::string const& text, std::int64_t scale) {
    return static_cast<std::int64_t>(text.size()) * kAdvance * scale;
}
