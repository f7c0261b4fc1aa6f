#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>
#include <map>
#include <string>

/// What writer and reader of the file have to agree on. docs/STORE.md describes it.
namespace storeformat {

/// "VLMS", at byte 68 of the file.
constexpr std::int64_t kApplicationId = 0x564c4d53;
/// A reader opens files of this version and of older ones.
constexpr std::int64_t kSchemaVersion = 2;
/// From this version on the signs of samples lie in their lowest bits.
constexpr std::int64_t kFoldedSignsVersion = 2;

/// The key of a tile: sorted by level, row, column, band, plane, so that what is read together lies together.
std::int64_t keyOf(TileAddress const& address);

/// The tile of a key.
TileAddress addressOf(std::int64_t key);

using Meta = std::map<std::string, std::string>;

Meta toMeta(StoreInfo const& info);
/// Throws std::invalid_argument with what is missing or out of range.
StoreInfo fromMeta(Meta const& meta);

} // namespace storeformat
