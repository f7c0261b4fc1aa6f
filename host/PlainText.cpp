#include "host/PlainText.h"

#include <glib.h>

#include <array>
#include <cstdio>
#include <string_view>

namespace {

constexpr auto kReplacement = "\xef\xbf\xbd"; // U+FFFD

struct Character {
    std::string_view bytes; // one byte if it is no UTF-8
    bool shown;
};

bool isShown(gunichar code) {
    bool const control = code < 0x20 || (code >= 0x7f && code <= 0x9f);
    bool const ends = code == 0x2028 || code == 0x2029; // line separator, paragraph separator
    bool const turns = code == 0x061c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
                       (code >= 0x2066 && code <= 0x2069);
    return !control && !ends && !turns;
}

Character characterAt(std::string const& text, size_t place) {
    std::string_view const rest = std::string_view(text).substr(place);
    gunichar const code = g_utf8_get_char_validated(rest.data(), static_cast<gssize>(rest.size()));
    bool const valid = code <= 0x10ffff; // else one of its error codes, also for a 0
    return {rest.substr(0, valid ? static_cast<size_t>(g_unichar_to_utf8(code, nullptr)) : 1), valid && isShown(code)};
}

std::string escaped(std::string_view bytes) {
    constexpr auto kDigits = "0123456789abcdef";
    std::string text;
    for (char const byte : bytes) {
        auto const number = static_cast<unsigned char>(byte);
        text += {'\\', 'x', kDigits[number >> 4], kDigits[number & 0xf]};
    }
    return text;
}

} // namespace

std::string terminalText(std::string const& text) {
    std::string shown;
    for (size_t place = 0; place < text.size();) {
        Character const character = characterAt(text, place);
        shown += character.shown ? std::string(character.bytes) : escaped(character.bytes);
        place += character.bytes.size();
    }
    return shown;
}

std::string printableText(std::string const& text, size_t most) {
    std::string shown;
    size_t count = 0;
    for (size_t place = 0; place < text.size(); ++count) {
        if (count == most) return shown + "...";
        Character const character = characterAt(text, place);
        shown += character.shown ? character.bytes : kReplacement;
        place += character.bytes.size();
    }
    return shown;
}

std::string plainText(std::string const& text, size_t maxBytes) {
    std::string plain;
    for (size_t place = 0; place < text.size();) {
        Character const character = characterAt(text, place);
        std::string_view const next = character.shown ? character.bytes : kReplacement;
        if (plain.size() + next.size() > maxBytes) break;
        plain += next;
        place += character.bytes.size();
    }
    return plain;
}

std::string counted(size_t number, std::string const& noun) {
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string bytesText(std::uint64_t bytes) {
    constexpr std::array<char const*, 7> kUnits{"bytes", "kB", "MB", "GB", "TB", "PB", "EB"};
    auto number = static_cast<double>(bytes);
    size_t unit = 0;
    // 999.5 would be written as 1000.
    for (; number >= 999.5; number /= 1000)
        ++unit;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.*f %s", unit > 0 && number < 9.95 ? 1 : 0, number, kUnits.at(unit));
    return text.data();
}
