#include "host/TerminalText.h"

#include <cstddef>
#include <cstdint>

namespace {

struct Character {
    std::size_t bytes = 1;
    char32_t code = 0;
    bool valid = false;
};

std::uint8_t byteAt(std::string const& text, std::size_t place) {
    return static_cast<std::uint8_t>(text[place]);
}

// Bytes that a first byte asks for; 0 where none starts with it.
std::size_t lengthOf(std::uint8_t first) {
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first <= 0xdf) return 2;
    if (first >= 0xe0 && first <= 0xef) return 3;
    if (first >= 0xf0 && first <= 0xf4) return 4;
    return 0;
}

// RFC 3629: no longer form than needed, no half of a pair of UTF-16, nothing beyond 0x10ffff.
Character characterAt(std::string const& text, std::size_t place) {
    std::uint8_t const first = byteAt(text, place);
    std::size_t const bytes = lengthOf(first);
    if (bytes == 0 || bytes > text.size() - place) return {};
    char32_t code = bytes == 1 ? first : first & (0x7fU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        std::uint8_t const next = byteAt(text, place + i);
        if ((next & 0xc0) != 0x80) return {};
        code = code << 6 | (next & 0x3fU);
    }
    bool const tooLong = (bytes == 3 && code < 0x800) || (bytes == 4 && code < 0x10000);
    bool const half = code >= 0xd800 && code <= 0xdfff;
    return {bytes, code, !tooLong && !half && code <= 0x10ffff};
}

bool isShown(char32_t code) {
    bool const control = code < 0x20 || (code >= 0x7f && code <= 0x9f);
    bool const ends = code == 0x2028 || code == 0x2029; // of a line, of a paragraph
    bool const turns = code == 0x061c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
                       (code >= 0x2066 && code <= 0x2069);
    return !control && !ends && !turns;
}

} // namespace

std::string terminalText(std::string const& text) {
    constexpr auto kDigits = "0123456789abcdef";
    std::string shown;
    for (std::size_t place = 0; place < text.size();) {
        Character const character = characterAt(text, place);
        std::size_t const bytes = character.valid ? character.bytes : 1;
        if (character.valid && isShown(character.code)) {
            shown.append(text, place, bytes);
        } else {
            for (std::size_t i = place; i < place + bytes; ++i)
                shown += {'\\', 'x', kDigits[byteAt(text, i) >> 4], kDigits[byteAt(text, i) & 0xf]};
        }
        place += bytes;
    }
    return shown;
}
