#include "host/store/StoreSchema.h"

#include <set>
#include <string>
#include <tuple>

char const* const storeschema::kMetaTable =
    "CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID";
char const* const storeschema::kTilesTable =
    "CREATE TABLE tiles(id INTEGER PRIMARY KEY, value INTEGER, crc INTEGER NOT NULL, data BLOB)";
char const* const storeschema::kDataIndex =
    "CREATE INDEX tiles_with_data ON tiles(id) WHERE value IS NULL OR value <> 0";
char const* const storeschema::kMetadataTable =
    "CREATE TABLE metadata(id INTEGER PRIMARY KEY, kind TEXT NOT NULL, name TEXT NOT NULL, crc INTEGER NOT NULL,"
    " data BLOB NOT NULL)";

namespace {

// Type, name, table, statement.
using Object = std::tuple<std::string, std::string, std::string, std::string>;
using Objects = std::set<Object>;

Objects tables() {
    return {{"table", "meta", "meta", storeschema::kMetaTable}, {"table", "tiles", "tiles", storeschema::kTilesTable}};
}

Objects tablesAndIndex() {
    Objects objects = tables();
    objects.emplace("index", "tiles_with_data", "tiles", storeschema::kDataIndex);
    return objects;
}

Objects all() {
    Objects objects = tablesAndIndex();
    objects.emplace("table", "metadata", "metadata", storeschema::kMetadataTable);
    return objects;
}

} // namespace

storeschema::Schema storeschema::of(sqlite::Database& database) {
    Objects const ours = all();
    Objects found;
    sqlite::Statement query(database, "SELECT type, name, tbl_name, sql FROM sqlite_master");
    while (query.step()) {
        Object const object{query.text(0), query.text(1), query.text(2), query.text(3)};
        if (ours.count(object) == 0 || !found.insert(object).second) return Schema::None;
    }
    if (found == ours) return Schema::WithMetadata;
    if (found == tablesAndIndex()) return Schema::WithIndex;
    return found == tables() ? Schema::WithoutIndex : Schema::None;
}
