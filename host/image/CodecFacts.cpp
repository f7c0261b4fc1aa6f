#include "host/image/CodecFacts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

constexpr size_t kPngSignature = 8;
constexpr size_t kBoxHeader = 8;
constexpr size_t kLongBoxHeader = 16;

// Reads a big-endian number; bytes beyond the end of the file are 0.
std::uint64_t number(InputFile& file, std::uint64_t offset, size_t bytes) {
    std::array<std::uint8_t, 8> raw{};
    file.readAt(offset, raw.data(), bytes);
    file.rethrow();
    std::uint64_t value = 0;
    for (size_t i = 0; i < bytes; ++i)
        value = value << 8 | raw[i];
    return value;
}

// The four letters that name a chunk or a box, as a number.
constexpr std::uint64_t name(char const (&letters)[5]) {
    std::uint64_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<std::uint8_t>(letters[i]);
    return value;
}

struct Box {
    std::uint64_t kind;
    std::uint64_t start; // offset of its content
    std::uint64_t end;
};

// The boxes between two offsets of the file, in order.
std::vector<Box> boxesIn(InputFile& file, std::uint64_t start, std::uint64_t end) {
    constexpr size_t kMostBoxes = 1000;
    std::vector<Box> boxes;
    while (start + kBoxHeader <= end && boxes.size() < kMostBoxes) {
        std::uint64_t length = number(file, start, 4);
        std::uint64_t const kind = number(file, start + 4, 4);
        size_t const header = length == 1 ? kLongBoxHeader : kBoxHeader;
        if (length == 1) length = number(file, start + kBoxHeader, 8);
        if (length == 0) length = end - start; // 0: up to the end
        if (length < header || length > end - start) break;
        boxes.push_back({kind, start + header, start + length});
        start += length;
    }
    return boxes;
}

// Reads which channels are colours and which alpha.
void readChannels(InputFile& file, Box const& box, codecfacts::Jpeg2000& facts) {
    std::uint64_t const count = number(file, box.start, 2);
    std::uint64_t highest = 0;
    std::uint64_t kindOfHighest = 0;
    for (std::uint64_t i = 0; i < count && box.start + 8 + 6 * i <= box.end; ++i) {
        std::uint64_t const entry = box.start + 2 + 6 * i;
        std::uint64_t const channel = number(file, entry, 2);
        if (channel < highest) continue;
        highest = channel;
        kindOfHighest = number(file, entry + 2, 2);
    }
    facts.lastIsAlpha = kindOfHighest == 1 || kindOfHighest == 2;
    facts.lastIsMultiplied = kindOfHighest == 2;
}

// Reads two fractions with an exponent each: pixels per metre, the vertical one first.
void readResolution(InputFile& file, Box const& box, codecfacts::Jpeg2000& facts) {
    auto const perMillimetre = [&](std::uint64_t fraction, std::uint64_t exponent) {
        auto const below = static_cast<double>(number(file, box.start + fraction + 2, 2));
        auto const ten = static_cast<std::int8_t>(number(file, box.start + exponent, 1));
        return below == 0
                   ? 0
                   : static_cast<double>(number(file, box.start + fraction, 2)) / below * std::pow(10.0, ten) / 1000;
    };
    facts.pixelsPerMillimetreY = perMillimetre(0, 8);
    facts.pixelsPerMillimetreX = perMillimetre(4, 9);
}

void readHeaderBox(InputFile& file, Box const& header, codecfacts::Jpeg2000& facts) {
    for (Box const& box : boxesIn(file, header.start, header.end)) {
        if (box.kind == name("pclr")) facts.hasPalette = true;
        if (box.kind == name("cdef")) readChannels(file, box, facts);
        if (box.kind != name("res ")) continue;
        for (Box const& resolution : boxesIn(file, box.start, box.end))
            if (resolution.kind == name("resc")) readResolution(file, resolution, facts);
    }
}

// Reads the codestream's first segment: sizes, then one byte per component.
void readCodestream(InputFile& file, std::uint64_t start, codecfacts::Jpeg2000& facts) {
    if (number(file, start, 4) != 0xff4fff51) return;
    facts.bits = static_cast<size_t>(number(file, start + 42, 1) & 0x7f) + 1;
}

} // namespace

size_t codecfacts::framesOfPng(InputFile& file) {
    std::uint64_t chunk = kPngSignature;
    while (chunk < file.size()) {
        std::uint64_t const kind = number(file, chunk + 4, 4);
        std::uint64_t const length = number(file, chunk, 4);
        if (kind == name("acTL") && length >= 8) return std::max<size_t>(number(file, chunk + 8, 4), 1);
        if (kind == name("IDAT") || kind == name("IEND")) return 1;
        chunk += 12 + length;
    }
    return 1;
}

// An EXIF block is a small TIFF file: tag 274 of its first directory is one short number.
int codecfacts::exifOrientation(std::vector<std::uint8_t> const& exif) {
    constexpr size_t kEntry = 12;
    constexpr std::uint64_t kOrientation = 274;
    std::array<std::uint8_t, 6> const prefix{'E', 'x', 'i', 'f', 0, 0};
    bool const named = exif.size() > prefix.size() && std::equal(prefix.begin(), prefix.end(), exif.begin());
    size_t const start = named ? prefix.size() : 0;
    bool const bigEndian = exif.size() > start && exif[start] == 'M';
    auto const at = [&](std::uint64_t offset, size_t bytes) {
        std::uint64_t value = 0;
        for (size_t i = 0; i < bytes; ++i) {
            std::uint64_t const place = start + offset + (bigEndian ? i : bytes - 1 - i);
            value = value << 8 | (place < exif.size() ? exif[place] : 0u);
        }
        return value;
    };
    std::uint64_t const directory = at(4, 4);
    for (std::uint64_t i = 0; i < at(directory, 2); ++i) {
        std::uint64_t const entry = directory + 2 + kEntry * i;
        if (at(entry, 2) != kOrientation) continue;
        std::uint64_t const orientation = at(entry + 8, 2);
        return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1;
    }
    return 1;
}

codecfacts::Jpeg2000 codecfacts::jpeg2000(InputFile& file) {
    Jpeg2000 facts;
    readCodestream(file, 0, facts);
    if (facts.bits != 0) return facts;
    for (Box const& box : boxesIn(file, 0, file.size())) {
        if (box.kind == name("jp2h")) readHeaderBox(file, box, facts);
        if (box.kind == name("jp2c") && facts.bits == 0) readCodestream(file, box.start, facts);
    }
    return facts;
}
