#pragma once

#include "host/store/StoreInfo.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// The file format that writer and reader share. docs/STORE.md describes it.
namespace storeformat {

/// "VLMS", at byte 68 of the file.
constexpr std::int64_t kApplicationId = 0x564c4d53;
/// The version that is written. A reader opens files of this version and of older ones.
constexpr std::int64_t kSchemaVersion = 4;
/// From this version on samples are zigzag-coded, pages have kPageBytes, and a file has an index of the places with
/// data and a checksum of its description.
constexpr std::int64_t kZigzagVersion = 2;
/// From this version on a tile's checksum covers its key too, and the description has the version and checksums of the
/// index.
constexpr std::int64_t kSealedVersion = 3;
/// From this version on a file has a table of metadata.
constexpr std::int64_t kMetadataVersion = 4;

constexpr size_t kPageBytes = 4096;
constexpr size_t kFirstPageBytes = 16384; // in version 1
constexpr size_t pageBytes(std::int64_t version) {
    return version < kZigzagVersion ? kFirstPageBytes : kPageBytes;
}

/// Least size of a row of the table of tiles in bytes: its place in a page, its lengths, its key.
constexpr size_t kLeastRowBytes = 8;

/// The key of a tile. Keys sort by level, row, column, band, plane, so that tiles that are read together lie together.
std::int64_t keyOf(TileAddress const& address);

/// The tile of a key.
TileAddress addressOf(std::int64_t key);

/// The description's entries. These limits hold for its texts and for the number of entries.
using Meta = std::map<std::string, std::string>;
constexpr size_t kMaxKeyBytes = 64;
constexpr size_t kMaxTextBytes = 4096;
constexpr size_t kMaxEntries = 64;

/// The keys of the tiles in the index of the places with data, level by level: CRC-32 of each level's keys in ascending
/// order, 8 bytes each, little-endian.
using IndexChecksums = std::vector<std::uint32_t>; // by level, from 0

std::uint32_t withKey(std::uint32_t crc, std::int64_t key);

/// The metadata: limits of the number of items, of a kind's and a name's bytes, and of an item's.
constexpr size_t kMaxItems = 4096;
constexpr size_t kMaxItemNameBytes = 256;
constexpr size_t kMaxItemBytes = size_t{1} << 26;

/// An item without its bytes.
struct MetadataRow {
    std::string kind;
    std::string name;
    std::uint32_t crc = 0; ///< of its bytes
};

/// How many items there are, and the CRC-32 of all rows in the order of their keys: kind and name, each followed by a
/// zero byte, and the checksum, 4 bytes, little-endian.
struct MetadataSeal {
    size_t items = 0;
    std::uint32_t crc = 0;

    void add(MetadataRow const& row);
    bool operator==(MetadataSeal const& other) const { return items == other.items && crc == other.crc; }
    bool operator!=(MetadataSeal const& other) const { return !(*this == other); }
};

std::uint32_t checksumOf(std::vector<std::uint8_t> const& bytes);

/// The description that is written, in this version.
Meta toMeta(StoreInfo const& info, IndexChecksums const& index, MetadataSeal const& metadata = {});
/// Throws std::invalid_argument that says what is missing, out of range, or wrong for a file of this version.
StoreInfo fromMeta(Meta const& meta, std::int64_t version);
/// Checksums in a description that fromMeta() accepts. Empty before kSealedVersion.
IndexChecksums indexChecksums(Meta const& meta, StoreInfo const& info, std::int64_t version);
/// The seal in a description that fromMeta() accepts. Of no items before kMetadataVersion.
MetadataSeal metadataSeal(Meta const& meta, std::int64_t version);

} // namespace storeformat
