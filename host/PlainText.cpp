#include "host/PlainText.h"

#include <array>
#include <cstdint>

namespace {

constexpr auto kReplacement = "\xef\xbf\xbd"; // U+FFFD

std::uint8_t byteAt(std::string const& text, std::size_t index) {
    return index < text.size() ? static_cast<std::uint8_t>(text[index]) : std::uint8_t{0};
}

// Bytes of a character that begins with this one; 0 where none does.
std::size_t lengthOf(std::uint8_t first) {
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first <= 0xdf) return 2;
    if (first >= 0xe0 && first <= 0xef) return 3;
    return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

// Bytes of the well-formed character at a place (RFC 3629); 0 where there is none.
std::size_t characterAt(std::string const& text, std::size_t begin) {
    std::size_t const length = lengthOf(byteAt(text, begin));
    std::uint32_t code = byteAt(text, begin) & (length == 1 ? 0x7fU : 0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        std::uint8_t const next = byteAt(text, begin + i);
        if ((next & 0xc0) != 0x80) return 0;
        code = (code << 6) | (next & 0x3fU);
    }
    constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    bool const surrogate = code >= 0xd800 && code <= 0xdfff;
    return code >= kSmallest.at(length) && code <= 0x10ffff && !surrogate ? length : 0;
}

// Of one byte, or as Unicode's C1 of two: 0xc2 0x80 to 0xc2 0x9f.
bool isControl(std::string const& text, std::size_t begin) {
    std::uint8_t const first = byteAt(text, begin);
    return first < 0x20 || first == 0x7f || (first == 0xc2 && byteAt(text, begin + 1) < 0xa0);
}

} // namespace

std::string plainText(std::string const& text, std::size_t maxBytes) {
    std::string plain;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const length = characterAt(text, begin);
        bool const kept = length > 0 && !isControl(text, begin);
        std::string const next = kept ? text.substr(begin, length) : kReplacement;
        if (plain.size() + next.size() > maxBytes) break;
        plain += next;
        begin += length > 0 ? length : 1;
    }
    return plain;
}
