#pragma once

#include "host/store/StoreInfo.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What writer and reader of the file have to agree on. docs/STORE.md describes it.
namespace storeformat {

/// "VLMS", at byte 68 of the file.
constexpr std::int64_t kApplicationId = 0x564c4d53;
/// What is written. A reader opens files of this version and of older ones.
constexpr std::int64_t kSchemaVersion = 3;
/// From this version on the signs of samples lie in their lowest bits, pages have kPageBytes, and a file has an index
/// of the places with data and a checksum of its description.
constexpr std::int64_t kZigzagVersion = 2;
/// From this version on a tile's checksum is also of its key, and the description has the version and checksums of the
/// index.
constexpr std::int64_t kSealedVersion = 3;

constexpr size_t kPageBytes = 4096;
constexpr size_t kFirstPageBytes = 16384; // in version 1
constexpr size_t pageBytes(std::int64_t version) {
    return version < kZigzagVersion ? kFirstPageBytes : kPageBytes;
}

/// Bytes that a row of the table of tiles takes at the least: its place in a page, its lengths, its key.
constexpr size_t kLeastRowBytes = 8;

/// The key of a tile: sorted by level, row, column, band, plane, so that what is read together lies together.
std::int64_t keyOf(TileAddress const& address);

/// The tile of a key.
TileAddress addressOf(std::int64_t key);

/// The description's entries. Texts are not longer than these; there are no more entries than kMaxEntries.
using Meta = std::map<std::string, std::string>;
constexpr size_t kMaxKeyBytes = 64;
constexpr size_t kMaxTextBytes = 4096;
constexpr size_t kMaxEntries = 64;

/// The keys of tiles in the index of the places with data, level by level: CRC-32 of each in ascending order, 8 bytes,
/// the lowest first.
using IndexChecksums = std::vector<std::uint32_t>; // by level, from 0

std::uint32_t withKey(std::uint32_t crc, std::int64_t key);

/// What is written, in this version.
Meta toMeta(StoreInfo const& info, IndexChecksums const& index);
/// Throws std::invalid_argument with what is missing, out of range, or not that of a file of a version.
StoreInfo fromMeta(Meta const& meta, std::int64_t version);
/// Of a description that fromMeta() accepts. Empty before kSealedVersion.
IndexChecksums indexChecksums(Meta const& meta, StoreInfo const& info, std::int64_t version);

} // namespace storeformat
