#include "host/image/TiffTags.h"

#include "host/image/InputFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace {

// A directory has some dozens; hostile ones may have 65535 that all share their values.
constexpr size_t kMostTags = 1024;
constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 26; // of the values of a tag, and of all together
constexpr std::uint64_t kMostEntries = 65535;

// By type, from 0: bytes, text, 16, 32 bits, fractions, the same with sign, floats, offsets of directories; then, from
// 16 on, 64 bits without and with sign, and such offsets.
constexpr std::array<size_t, 19> kTypeBytes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
constexpr std::uint16_t kDirectory = 13;
constexpr std::uint16_t kBigDirectory = 18;

// Fractions are two numbers.
size_t numberBytes(std::uint16_t type) {
    bool const isFraction = type == 5 || type == 10;
    return isFraction ? 4 : tifftags::bytesOf(type);
}

bool leadsToDirectory(std::vector<std::uint16_t> const& path) {
    if (path.size() == 1) return path[0] == tifftags::kExif || path[0] == tifftags::kGps;
    return path.size() == 2 && path[0] == tifftags::kExif && path[1] == tifftags::kInteroperability;
}

constexpr std::array<std::uint16_t, 47> kOfTheFile{254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266, 273,
                                                   277, 278, 279, 284, 288, 289, 292, 293, 317, 320, 321, 322,
                                                   323, 324, 325, 326, 327, 328, 330, 332, 333, 334, 336, 337,
                                                   338, 339, 347, 512, 513, 514, 529, 530, 531, 532, 559};

bool isDirectory(std::uint16_t type) {
    return type == kDirectory || type == kBigDirectory;
}

} // namespace

TiffBytes TiffBytes::of(InputFile& file) {
    return {file.size(),
            [&file](std::uint64_t offset, void* bytes, size_t count) { file.readAll(offset, bytes, count); }};
}

TiffBytes TiffBytes::of(std::vector<std::uint8_t> const& exif) {
    constexpr std::array<std::uint8_t, 6> kMarker{'E', 'x', 'i', 'f', 0, 0};
    bool const marked = exif.size() >= kMarker.size() && std::equal(kMarker.begin(), kMarker.end(), exif.begin());
    std::uint64_t const start = marked ? kMarker.size() : 0;
    return {exif.size() - start, [&exif, start](std::uint64_t offset, void* bytes, size_t count) {
                std::copy_n(exif.begin() + static_cast<std::ptrdiff_t>(start + offset), count,
                            static_cast<std::uint8_t*>(bytes));
            }};
}

std::uint64_t TiffTag::count() const {
    size_t const each = tifftags::bytesOf(type);
    return each == 0 ? 0 : values.size() / each;
}

size_t tifftags::bytesOf(std::uint16_t type) {
    return type < kTypeBytes.size() ? kTypeBytes.at(type) : 0;
}

bool tifftags::isBig(std::uint16_t type) {
    return type >= 16;
}

bool tifftags::isOfFile(std::vector<std::uint16_t> const& path) {
    bool const isOfPicture = path.size() == 1;
    return leadsToDirectory(path) || (isOfPicture && std::binary_search(kOfTheFile.begin(), kOfTheFile.end(), path[0]));
}

std::string tifftags::nameOf(std::vector<std::uint16_t> const& path) {
    std::string name;
    for (std::uint16_t const number : path)
        name += (name.empty() ? "" : "/") + std::to_string(number);
    return name;
}

std::vector<std::uint16_t> tifftags::pathOf(std::string const& name) {
    std::vector<std::uint16_t> path;
    char const* const end = name.data() + name.size();
    for (char const* at = name.data(); path.empty() || (at != end && *at == '/');) {
        std::uint16_t number = 0;
        at = std::from_chars(path.empty() ? at : at + 1, end, number).ptr;
        path.push_back(number);
    }
    if (nameOf(path) != name) throw std::invalid_argument("'" + name + "' names no tag");
    return path;
}

TiffStructure::TiffStructure(TiffBytes bytes) : bytes_(std::move(bytes)) {
    bigEndian_ = number(0, 1) == 'M';
    big_ = number(2, 2) == 43;
    first_ = big_ ? number(8, 8) : number(4, 4);
}

std::uint64_t TiffStructure::number(std::uint64_t offset, size_t bytes) const {
    if (offset > bytes_.size || bytes > bytes_.size - offset) return 0;
    std::array<std::uint8_t, 8> raw{};
    bytes_.read(offset, raw.data(), bytes);
    std::uint64_t value = 0;
    for (size_t i = 0; i < bytes; ++i)
        value |= std::uint64_t{raw.at(i)} << (8 * (bigEndian_ ? bytes - 1 - i : i));
    return value;
}

std::vector<TiffStructure::Entry> TiffStructure::entries(std::uint64_t directory) const {
    size_t const wordBytes = big_ ? 8 : 4; // of counts and offsets
    size_t const headBytes = big_ ? 8 : 2;
    size_t const entryBytes = 4 + 2 * wordBytes;
    std::vector<Entry> entries;
    if (directory == 0 || directory >= bytes_.size) return entries;
    std::uint64_t const room = (bytes_.size - directory) / entryBytes;
    std::uint64_t const held = std::min({number(directory, headBytes), kMostEntries, room});
    for (std::uint64_t i = 0; i < held; ++i) {
        std::uint64_t const at = directory + headBytes + i * entryBytes;
        Entry entry;
        entry.tag = static_cast<std::uint16_t>(number(at, 2));
        entry.type = static_cast<std::uint16_t>(number(at + 2, 2));
        entry.count = number(at + 4, wordBytes);
        entry.offset = at + 4 + wordBytes;
        size_t const each = std::max<size_t>(tifftags::bytesOf(entry.type), 1);
        if (entry.count > wordBytes / each) entry.offset = number(entry.offset, wordBytes);
        entries.push_back(entry);
    }
    return entries;
}

std::uint64_t TiffStructure::next(std::uint64_t directory) const {
    size_t const wordBytes = big_ ? 8 : 4;
    size_t const headBytes = big_ ? 8 : 2;
    return number(directory + headBytes + number(directory, headBytes) * (4 + 2 * wordBytes), wordBytes);
}

struct TiffStructure::Reading {
    Tags found;
    std::set<std::vector<std::uint16_t>> paths;
    std::uint64_t bytes = 0;
};

TiffStructure::Tags TiffStructure::tags(std::uint64_t directory) const {
    Reading reading;
    read(directory, {}, reading);
    return std::move(reading.found);
}

void TiffStructure::read(std::uint64_t directory, std::vector<std::uint16_t> const& path, Reading& reading) const {
    for (Entry const& entry : entries(directory)) {
        TiffTag tag;
        tag.path = path;
        tag.path.push_back(entry.tag);
        tag.type = entry.type;
        if (!reading.paths.insert(tag.path).second) continue;
        if (leadsToDirectory(tag.path)) {
            read(number(entry.offset, big_ && tifftags::bytesOf(entry.type) == 8 ? 8 : 4), tag.path, reading);
            continue;
        }
        bool const kept = !isDirectory(entry.type) && reading.found.tags.size() < kMostTags &&
                          copy(entry, tag.values) && tag.values.size() <= kMostBytes - reading.bytes;
        if (!kept) {
            reading.found.leftOut.insert(entry.tag);
            continue;
        }
        reading.bytes += tag.values.size();
        reading.found.tags.push_back(std::move(tag));
    }
}

// Whether the values lie in the file, and are not too large.
bool TiffStructure::copy(Entry const& entry, std::vector<std::uint8_t>& values) const {
    size_t const each = tifftags::bytesOf(entry.type);
    if (each == 0 || entry.count > kMostBytes / each) return false;
    std::uint64_t const bytes = entry.count * each;
    if (entry.offset > bytes_.size || bytes > bytes_.size - entry.offset) return false;
    values.resize(bytes);
    bytes_.read(entry.offset, values.data(), values.size());
    if (!bigEndian_) return true;
    auto const width = static_cast<std::ptrdiff_t>(numberBytes(entry.type));
    for (auto number = values.begin(); number != values.end(); number += width)
        std::reverse(number, number + width);
    return true;
}
