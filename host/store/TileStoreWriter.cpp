#include "host/store/TileStoreWriter.h"

#include "host/store/StoreSchema.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace {

// No journal and no synchronisation on the way: a file under a temporary name is deleted after a failure, never
// repaired, and TemporaryOutput writes it to the disk before it gets its name. So a killed import can leave no other
// file beside it, and each page is written once. Pages have 4 KiB: a tile has some 10 KiB, and its last page is half
// empty on average.
constexpr auto kSettings = R"(
    PRAGMA page_size = 4096;
    PRAGMA locking_mode = EXCLUSIVE;
    PRAGMA journal_mode = OFF;
    PRAGMA synchronous = OFF;
    BEGIN;
)";

static_assert(storeformat::kPageBytes == 4096);

storeformat::IndexChecksums checksumsOf(sqlite::Database& database, size_t levels) {
    storeformat::IndexChecksums checksums(levels + 1);
    sqlite::Statement query(database, "SELECT id FROM tiles INDEXED BY tiles_with_data"
                                      " WHERE value IS NULL OR value <> 0 ORDER BY id");
    while (query.step()) {
        std::int64_t const key = query.integer(0);
        std::uint32_t& checksum = checksums.at(storeformat::addressOf(key).level);
        checksum = storeformat::withKey(checksum, key);
    }
    return checksums;
}

// SQLite limits the length of a path with all its folders, and the temporary name is the longer one.
void requireShortPath(TemporaryOutput const& output, OutputFile const& file) {
    std::error_code failed;
    size_t const bytes = std::filesystem::weakly_canonical(file.target(), failed).native().size();
    size_t const written = std::filesystem::weakly_canonical(output.temporaryName(), failed).native().size();
    size_t const most = sqlite::kMaxPathBytes - (std::max(written, bytes) - bytes);
    if (bytes > most)
        throw output.failure("its path is too long for SQLite: it has " + std::to_string(bytes) +
                             " bytes with all its folders, and " + std::to_string(most) + " fit");
}

} // namespace

template <class Action>
void TileStoreWriter::translated(Action const& action) const {
    try {
        action();
    } catch (sqlite::Failure const& failure) {
        throw output_.failure(failure.what());
    }
}

TileStoreWriter::TileStoreWriter(OutputFile const& file, StoreInfo const& info,
                                 std::vector<MetadataItem> const& metadata)
    : output_(file), info_(info) {
    requireReadable(file);
    translated([&] {
        create();
        write(metadata);
    });
}

void TileStoreWriter::requireReadable(OutputFile const& file) const {
    requireShortPath(output_, file);
    storeformat::IndexChecksums const none(info_.levels + 1);
    try {
        storeformat::Meta const written = storeformat::toMeta(info_, none);
        if (storeformat::toMeta(storeformat::fromMeta(written, storeformat::kSchemaVersion), none) == written) return;
    } catch (std::invalid_argument const& error) {
        throw output_.failure(std::string("no reader would open it: ") + error.what());
    }
    throw output_.failure("a reader would take its description for another one");
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
    });
}

void TileStoreWriter::finish() {
    insert_.reset();
    translated([&] {
        database_->execute(storeschema::kDataIndex);
        describe();
        database_->execute("COMMIT");
    });
    database_.reset();
    output_.finish();
}

void TileStoreWriter::create() {
    database_.emplace(output_.temporaryName(), sqlite::Database::Mode::ReadWrite);
    database_->execute(kSettings);
    database_->execute("PRAGMA application_id = " + std::to_string(storeformat::kApplicationId));
    database_->execute("PRAGMA user_version = " + std::to_string(storeformat::kSchemaVersion));
    database_->execute(storeschema::kMetaTable);
    database_->execute(storeschema::kTilesTable);
    database_->execute(storeschema::kMetadataTable);
    insert_.emplace(*database_, "INSERT INTO tiles VALUES(?, ?, ?, ?)");
}

// Before the tiles: what a reader asks for first lies together.
void TileStoreWriter::write(std::vector<MetadataItem> const& metadata) {
    sqlite::Statement insert(*database_, "INSERT INTO metadata VALUES(?, ?, ?, ?, ?)");
    for (MetadataItem const& item : metadata) {
        storeformat::MetadataRow const row{item.kind, item.name, storeformat::checksumOf(item.bytes)};
        metadata_.add(row);
        insert.bind(1, static_cast<std::int64_t>(metadata_.items));
        insert.bind(2, row.kind);
        insert.bind(3, row.name);
        insert.bind(4, std::int64_t{row.crc});
        insert.bind(5, item.bytes);
        insert.step();
        insert.reset();
    }
}

// Written last: the description has checksums of the index.
void TileStoreWriter::describe() {
    sqlite::Statement meta(*database_, "INSERT INTO meta VALUES(?, ?)");
    for (auto const& [key, value] : storeformat::toMeta(info_, checksumsOf(*database_, info_.levels), metadata_)) {
        meta.bind(1, key);
        meta.bind(2, value);
        meta.step();
        meta.reset();
    }
}
