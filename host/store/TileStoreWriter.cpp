#include "host/store/TileStoreWriter.h"

#include "host/store/TileStoreFormat.h"

namespace {

// One connection writes, through a log that goes into the file from time to time and for good in finish(): a store without
// its log can be read from folders that nobody may write to. Nothing is synchronised on the way, for a file under a
// temporary name is thrown away after a failure, never repaired; TemporaryOutput writes it to the disk before it gets its
// name. Pages of 4 KiB: of the last one of a tile, which has some 10 KiB, half is empty.
constexpr auto kSettings = R"(
    PRAGMA page_size = 4096;
    PRAGMA locking_mode = EXCLUSIVE;
    PRAGMA journal_mode = WAL;
    PRAGMA synchronous = OFF;
    BEGIN;
    CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
    CREATE TABLE tiles(id INTEGER PRIMARY KEY, value INTEGER, crc INTEGER NOT NULL, data BLOB);
)";

constexpr size_t kTilesACommit = 1024;

// Where a reader need not look, without a walk through all tiles.
constexpr auto kIndex = "CREATE INDEX tiles_with_data ON tiles(id) WHERE value IS NULL OR value <> 0";

} // namespace

template <class Action>
void TileStoreWriter::translated(Action const& action) const {
    try {
        action();
    } catch (sqlite::Failure const& failure) {
        throw output_.failure(failure.what());
    }
}

TileStoreWriter::TileStoreWriter(std::string const& path, StoreInfo const& info) : output_(path) {
    translated([&] { create(info); });
}

void TileStoreWriter::write(StoredTile const& tile) {
    translated([&] {
        insert_->bind(1, storeformat::keyOf(tile.address));
        insert_->bind(3, std::int64_t{tile.crc});
        if (tile.value) {
            insert_->bind(2, std::int64_t{*tile.value});
            insert_->bindNull(4);
        } else {
            insert_->bindNull(2);
            insert_->bind(4, tile.data);
        }
        insert_->step();
        insert_->reset();
        if (++tiles_ % kTilesACommit == 0) database_->execute("COMMIT; BEGIN");
    });
}

void TileStoreWriter::finish() {
    insert_.reset();
    translated([&] {
        database_->execute(kIndex);
        database_->execute("COMMIT");
        database_->execute("PRAGMA journal_mode = DELETE");
    });
    database_.reset();
    output_.finish();
}

void TileStoreWriter::create(StoreInfo const& info) {
    database_.emplace(output_.temporaryName(), sqlite::Database::Mode::ReadWrite);
    database_->execute(kSettings);
    database_->execute("PRAGMA application_id = " + std::to_string(storeformat::kApplicationId));
    database_->execute("PRAGMA user_version = " + std::to_string(storeformat::kSchemaVersion));
    sqlite::Statement meta(*database_, "INSERT INTO meta VALUES(?, ?)");
    for (auto const& [key, value] : storeformat::toMeta(info)) {
        meta.bind(1, key);
        meta.bind(2, value);
        meta.step();
        meta.reset();
    }
    insert_.emplace(*database_, "INSERT INTO tiles VALUES(?, ?, ?, ?)");
}
