#include "host/image/CodecFacts.h"

#include "host/image/TiffTags.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
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

constexpr std::uint64_t kMostBlockBytes = std::uint64_t{1} << 26;

std::vector<std::uint8_t> bytesOf(InputFile& file, std::uint64_t start, std::uint64_t end) {
    std::vector<std::uint8_t> bytes(std::min(end - std::min(start, end), kMostBlockBytes + 1));
    if (!bytes.empty()) file.readAll(start, bytes.data(), bytes.size());
    return bytes;
}

// Both formats begin with a box that names them.
bool hasBoxes(InputFile& file) {
    std::uint64_t const kind = number(file, 4, 4);
    return number(file, 0, 4) == 12 && (kind == name("jP  ") || kind == name("JXL "));
}

bool isOfPixels(std::uint64_t kind) {
    constexpr std::array<std::uint64_t, 10> kKinds{name("jP  "), name("JXL "), name("ftyp"), name("jp2h"),
                                                   name("jp2c"), name("jxlc"), name("jxlp"), name("jxli"),
                                                   name("jxll"), name("jbrd")};
    return std::find(kKinds.begin(), kKinds.end(), kind) != kKinds.end();
}

std::string lettersOf(std::uint64_t kind) {
    std::string letters;
    for (size_t i = 0; i < 4; ++i)
        letters += static_cast<char>(kind >> (24 - 8 * i));
    return letters;
}

std::string hexOf(InputFile& file, std::uint64_t start, size_t bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (size_t i = 0; i < bytes; ++i) {
        std::uint64_t const byte = number(file, start + i, 1);
        hex += {kDigits[byte / 16], kDigits[byte % 16]};
    }
    return hex;
}

MetadataItem itemOf(InputFile& file, Box const& box) {
    constexpr size_t kUuidBytes = 16;
    constexpr auto kXmpUuid = "be7acfcb97a942e89c71999491e3afac";
    // EXIF has the offset of its TIFF header first, counted from behind it.
    if (box.kind == name("Exif"))
        return {picturemetadata::kExif, {}, bytesOf(file, box.start + 4 + number(file, box.start, 4), box.end)};
    bool const isJxl = number(file, 4, 4) == name("JXL ");
    if (isJxl && box.kind == name("xml ")) return {picturemetadata::kXmp, {}, bytesOf(file, box.start, box.end)};
    if (box.kind != name("uuid") || box.end - box.start < kUuidBytes)
        return {picturemetadata::kBox, lettersOf(box.kind), bytesOf(file, box.start, box.end)};
    std::string const uuid = hexOf(file, box.start, kUuidBytes);
    auto content = bytesOf(file, box.start + kUuidBytes, box.end);
    if (uuid == kXmpUuid) return {picturemetadata::kXmp, {}, std::move(content)};
    return {picturemetadata::kBox, "uuid/" + uuid, std::move(content)};
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
    constexpr std::uint16_t kOrientation = 274;
    TiffStructure const structure(TiffBytes::of(exif));
    for (TiffStructure::Entry const& entry : structure.entries(structure.firstDirectory())) {
        if (entry.tag != kOrientation) continue;
        std::uint64_t const orientation = structure.number(entry.offset, 2);
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

std::vector<MetadataItem> codecfacts::boxesBeside(InputFile& file) {
    std::vector<MetadataItem> items;
    if (!hasBoxes(file)) return items;
    for (Box const& box : boxesIn(file, 0, file.size()))
        if (!isOfPixels(box.kind)) items.push_back(itemOf(file, box));
    return items;
}

std::vector<std::string> codecfacts::commentsOfJpeg(InputFile& file) {
    constexpr std::uint64_t kComment = 0xfe;
    constexpr std::uint64_t kScan = 0xda;
    std::vector<std::string> comments;
    // Segments follow one another up to the first scan: 0xff, a marker, and a length that counts itself.
    for (std::uint64_t at = 2; at + 4 <= file.size() && number(file, at, 1) == 0xff;) {
        std::uint64_t const marker = number(file, at + 1, 1);
        if (marker == 0xff) { // padding
            ++at;
            continue;
        }
        std::uint64_t const length = number(file, at + 2, 2);
        if (marker == kScan || length < 2 || at + 2 + length > file.size()) break;
        if (marker == kComment) {
            auto const bytes = bytesOf(file, at + 4, at + 2 + length);
            comments.emplace_back(bytes.begin(), bytes.end());
        }
        at += 2 + length;
    }
    return comments;
}
