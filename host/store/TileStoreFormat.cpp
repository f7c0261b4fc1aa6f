#include "host/store/TileStoreFormat.h"

#include <zlib.h>

#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>

namespace {

using storeformat::Meta;

// Upper limit of rows and columns in a key.
constexpr std::int64_t kPositions = std::int64_t{1} << 24;
constexpr std::int64_t kBands = 8;
constexpr std::int64_t kPlanes = 4;

std::string toText(double number) {
    std::array<char, 32> text{};
    auto const end = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end.ptr};
}

constexpr auto kChecksum = "crc";
constexpr auto kVersion = "version";
constexpr auto kItems = "metadata";
constexpr auto kItemsChecksum = "metadataCrc";

std::string indexEntry(size_t level) {
    return "index" + std::to_string(level);
}

// CRC-32 of all other entries in the order of their keys, each key and value followed by a zero byte.
std::string sumOf(Meta const& meta) {
    uLong crc = crc32(0, nullptr, 0);
    auto const add = [&crc](std::string const& text) {
        crc = crc32(crc, reinterpret_cast<Bytef const*>(text.c_str()), static_cast<uInt>(text.size() + 1));
    };
    for (auto const& [key, value] : meta) {
        if (key == kChecksum) continue;
        add(key);
        add(value);
    }
    return std::to_string(crc);
}

std::string const& textOf(Meta const& meta, std::string const& key) {
    auto const entry = meta.find(key);
    if (entry == meta.end()) throw std::invalid_argument("it does not say its " + key);
    return entry->second;
}

template <class Number>
Number numberOf(Meta const& meta, std::string const& key, Number smallest, Number largest) {
    std::string const& text = textOf(meta, key);
    Number number{};
    auto const end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size() || !(number >= smallest && number <= largest))
        throw std::invalid_argument("its " + key + " cannot be '" + text + "'");
    return number;
}

Meta described(StoreInfo const& info) {
    return {{"width", std::to_string(info.width)},
            {"height", std::to_string(info.height)},
            {"bands", std::to_string(info.bands)},
            {"bits", std::to_string(info.bits)},
            {"residualBits", std::to_string(info.residualBits)},
            {"levels", std::to_string(info.levels)},
            {"tileSize", std::to_string(info.tileSize)},
            {"micronsPerPixelX", toText(info.micronsPerPixelX)},
            {"micronsPerPixelY", toText(info.micronsPerPixelY)},
            {"sourceName", info.sourceName},
            {"interpretation", info.interpretation},
            {"selection", info.selection},
            {"rangeLow", toText(info.rangeLow)},
            {"rangeHigh", toText(info.rangeHigh)}};
}

StoreInfo infoOf(Meta const& meta) {
    StoreInfo info;
    info.width = numberOf<size_t>(meta, "width", 1, StoreInfo::kMaxSide);
    info.height = numberOf<size_t>(meta, "height", 1, StoreInfo::kMaxSide);
    info.bands = numberOf<size_t>(meta, "bands", 1, StoreInfo::kMaxBands);
    info.bits = numberOf<size_t>(meta, "bits", 8, 16);
    info.residualBits = numberOf<size_t>(meta, "residualBits", 0, 5);
    info.levels = numberOf<size_t>(meta, "levels", 1, StoreInfo::kMaxLevels);
    info.tileSize = numberOf<size_t>(meta, "tileSize", StoreInfo::kMinTileSize, StoreInfo::kMaxTileSize);
    info.micronsPerPixelX = numberOf<double>(meta, "micronsPerPixelX", 0, StoreInfo::kMaxMicronsPerPixel);
    info.micronsPerPixelY = numberOf<double>(meta, "micronsPerPixelY", 0, StoreInfo::kMaxMicronsPerPixel);
    info.sourceName = textOf(meta, "sourceName");
    info.interpretation = textOf(meta, "interpretation");
    // Older stores lack these entries.
    if (meta.count("selection") == 0) return info;
    constexpr double kFarthest = std::numeric_limits<double>::max();
    info.selection = textOf(meta, "selection");
    info.rangeLow = numberOf<double>(meta, "rangeLow", -kFarthest, kFarthest);
    info.rangeHigh = numberOf<double>(meta, "rangeHigh", -kFarthest, kFarthest);
    return info;
}

void requirePossible(StoreInfo const& info) {
    if (info.bits != 8 && info.bits != 16) throw std::invalid_argument("its bits are neither 8 nor 16");
    bool const fits = info.bits == 8 ? info.residualBits == 0 : info.residualBits == 3 || info.residualBits == 5;
    if (!fits)
        throw std::invalid_argument("its residualBits cannot be " + std::to_string(info.residualBits) + " of " +
                                    std::to_string(info.bits));
    if (info.tileSize % 2 != 0) throw std::invalid_argument("its tileSize is odd");
}

void requireChecksum(Meta const& meta, std::int64_t version) {
    bool const early = version < storeformat::kZigzagVersion && meta.count(kChecksum) == 0;
    if (!early && textOf(meta, kChecksum) != sumOf(meta))
        throw std::invalid_argument("its description does not match its checksum");
}

// No checksum covers the version in the file's header.
void requireVersion(Meta const& meta, std::int64_t version) {
    if (version < storeformat::kSealedVersion && meta.count(kVersion) == 0) return;
    if (textOf(meta, kVersion) != std::to_string(version))
        throw std::invalid_argument("its head says version " + std::to_string(version) + ", its description " +
                                    textOf(meta, kVersion));
}

} // namespace

std::int64_t storeformat::keyOf(TileAddress const& address) {
    auto const number = [](size_t value) { return static_cast<std::int64_t>(value); };
    std::int64_t const position = (number(address.level) * kPositions + number(address.row)) * kPositions;
    return ((position + number(address.column)) * kBands + static_cast<std::int64_t>(address.band)) * kPlanes +
           number(address.plane);
}

TileAddress storeformat::addressOf(std::int64_t key) {
    auto const next = [&key](std::int64_t count) {
        std::int64_t const value = key % count;
        key /= count;
        return static_cast<size_t>(value);
    };
    TileAddress address;
    address.plane = next(kPlanes);
    address.band = static_cast<Band>(next(kBands));
    address.column = next(kPositions);
    address.row = next(kPositions);
    address.level = static_cast<size_t>(key);
    return address;
}

std::uint32_t storeformat::withKey(std::uint32_t crc, std::int64_t key) {
    std::array<Bytef, 8> bytes{};
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<Bytef>(static_cast<std::uint64_t>(key) >> (8 * i));
    return static_cast<std::uint32_t>(crc32(crc, bytes.data(), static_cast<uInt>(bytes.size())));
}

void storeformat::MetadataSeal::add(MetadataRow const& row) {
    uLong sum = crc;
    for (std::string const& text : {row.kind, row.name})
        sum = crc32(sum, reinterpret_cast<Bytef const*>(text.c_str()), static_cast<uInt>(text.size() + 1));
    std::array<Bytef, 4> bytes{};
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes.at(i) = static_cast<Bytef>(row.crc >> (8 * i));
    crc = static_cast<std::uint32_t>(crc32(sum, bytes.data(), static_cast<uInt>(bytes.size())));
    ++items;
}

std::uint32_t storeformat::checksumOf(std::vector<std::uint8_t> const& bytes) {
    return static_cast<std::uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

Meta storeformat::toMeta(StoreInfo const& info, IndexChecksums const& index, MetadataSeal const& metadata) {
    Meta meta = described(info);
    meta[kVersion] = std::to_string(kSchemaVersion);
    for (size_t level = 0; level <= info.levels; ++level)
        meta[indexEntry(level)] = std::to_string(index.at(level));
    meta[kItems] = std::to_string(metadata.items);
    meta[kItemsChecksum] = std::to_string(metadata.crc);
    for (auto const& [key, value] : meta)
        if (value.size() > kMaxTextBytes) throw std::invalid_argument("a store has no room for this " + key);
    meta[kChecksum] = sumOf(meta);
    return meta;
}

StoreInfo storeformat::fromMeta(Meta const& meta, std::int64_t version) {
    StoreInfo info = infoOf(meta);
    requirePossible(info);
    requireVersion(meta, version);
    requireChecksum(meta, version);
    return info;
}

storeformat::IndexChecksums storeformat::indexChecksums(Meta const& meta, StoreInfo const& info, std::int64_t version) {
    IndexChecksums checksums;
    if (version < kSealedVersion) return checksums;
    for (size_t level = 0; level <= info.levels; ++level)
        checksums.push_back(numberOf<std::uint32_t>(meta, indexEntry(level), 0, 0xffffffff));
    return checksums;
}

storeformat::MetadataSeal storeformat::metadataSeal(Meta const& meta, std::int64_t version) {
    if (version < kMetadataVersion) return {};
    return {numberOf<size_t>(meta, kItems, 0, kMaxItems), numberOf<std::uint32_t>(meta, kItemsChecksum, 0, 0xffffffff)};
}
