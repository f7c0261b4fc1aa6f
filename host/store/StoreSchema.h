#pragma once

#include "host/store/Sqlite.h"

/// The tables of a store and the index of the places with data, as text. A file may come from anywhere: what its schema
/// says is run by SQLite, so that a reader accepts these objects and no others, letter for letter.
namespace storeschema {

extern char const* const kMetaTable;
extern char const* const kTilesTable;
/// Where a reader need not look, without a walk through all tiles. Made when all tiles are there.
extern char const* const kDataIndex;

enum class Schema { None, WithoutIndex, WithIndex };

/// None where a file does not have exactly these objects. Throws sqlite::Failure.
Schema of(sqlite::Database& database);

} // namespace storeschema
