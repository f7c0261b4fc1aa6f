#pragma once

#include "host/store/Sqlite.h"

/// The tables of a store and the index of the places with data, as text. A file may come from an untrusted source, and
/// SQLite runs what its schema says. So a reader accepts exactly these objects, letter for letter.
namespace storeschema {

extern char const* const kMetaTable;
extern char const* const kTilesTable;
/// The index of the tiles with data, which saves a reader a scan of all tiles. Created once all tiles are written.
extern char const* const kDataIndex;
extern char const* const kMetadataTable;

enum class Schema { None, WithoutIndex, WithIndex, WithMetadata };

/// None if a file does not have exactly these objects. Throws sqlite::Failure.
Schema of(sqlite::Database& database);

} // namespace storeschema
