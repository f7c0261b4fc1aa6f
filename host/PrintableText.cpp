#include "host/PrintableText.h"

#include <array>
#include <cstdint>

namespace {

constexpr auto kReplacement = "\xEF\xBF\xBD";

struct Character {
    std::uint32_t code;
    std::size_t bytes; // 0: not UTF-8
};

std::size_t bytesOf(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

Character characterAt(std::string const& text, std::size_t at) {
    auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    std::size_t const bytes = bytesOf(byte(0));
    if (bytes == 0 || at + bytes > text.size()) return {0, 0};
    if (bytes == 1) return {byte(0), 1};
    std::uint32_t code = byte(0) & (0xFFU >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return {0, 0};
        code = code << 6U | (byte(i) & 0x3FU);
    }
    // Written with more bytes than it takes, half of a pair, or beyond the last.
    constexpr std::array<std::uint32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    bool const wrong = code < kLeast.at(bytes) || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF;
    return {code, wrong ? 0 : bytes};
}

bool isHarmless(std::uint32_t code) {
    bool const control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    bool const turns = code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
                       (code >= 0x2066 && code <= 0x2069);
    return !control && !turns;
}

} // namespace

std::string printableText(std::string const& text, std::size_t most) {
    std::string shown;
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); ++count) {
        if (count == most) return shown + "...";
        Character const character = characterAt(text, at);
        if (character.bytes == 0 || !isHarmless(character.code))
            shown += kReplacement;
        else
            shown += text.substr(at, character.bytes);
        at += character.bytes == 0 ? 1 : character.bytes;
    }
    return shown;
}
