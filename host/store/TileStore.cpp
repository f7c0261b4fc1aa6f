#include "host/store/TileStore.h"

#include "host/HostError.h"
#include "host/store/Sqlite.h"
#include "host/store/TileCodec.h"
#include "host/store/TileStoreFormat.h"

#include <sqlite3.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>

using Kind = HostError::Kind;

namespace {

HostError damaged(std::string const& path, std::string const& what) {
    return HostError(Kind::DamagedStore, "the tile store '" + path + "' is damaged: " + what +
                                             "; import the picture again, or restore the file from a copy");
}

HostError noStore(std::string const& path) {
    return HostError(Kind::NoStore, "'" + path + "' is no tile store; make one with velmora import");
}

HostError translated(std::string const& path, sqlite::Failure const& failure) {
    switch (failure.code()) {
    case SQLITE_NOTADB:
        return noStore(path);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return HostError(Kind::LockedStore,
                         "the tile store '" + path + "' is locked: another program writes to it; try again later");
    case SQLITE_CANTOPEN:
        return HostError(Kind::MissingFile,
                         "cannot open '" + path + "': " + failure.what() + "; check the file and its permissions");
    default:
        return damaged(path, failure.what());
    }
}

void requireFile(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        std::string const reason = errno == ENOENT ? "no such file" : std::generic_category().message(errno);
        throw HostError(Kind::MissingFile, "cannot open '" + path + "': " + reason + "; check the path");
    }
    if (!S_ISREG(status.st_mode)) throw noStore(path);
}

storeformat::Meta readMeta(sqlite::Database& database) {
    storeformat::Meta meta;
    sqlite::Statement query(database, "SELECT key, value FROM meta");
    while (query.step())
        meta[query.text(0)] = query.text(1);
    return meta;
}

} // namespace

struct TileStore::State {
    explicit State(std::string const& file) : path(file), database(file, sqlite::Database::Mode::ReadOnly) {}

    void readHeader() {
        if (database.number("PRAGMA application_id") != storeformat::kApplicationId) throw noStore(path);
        std::int64_t const version = database.number("PRAGMA user_version");
        if (version > storeformat::kSchemaVersion)
            throw HostError(Kind::NewerStore, "the tile store '" + path + "' has version " + std::to_string(version) +
                                                  ", this program knows up to " +
                                                  std::to_string(storeformat::kSchemaVersion) +
                                                  "; use a newer velmora");
        requireWhole();
        try {
            info = storeformat::fromMeta(readMeta(database));
        } catch (std::invalid_argument const& error) {
            throw damaged(path, error.what());
        }
        codec = std::make_unique<TileCodec>(info, version);
        valueQuery = std::make_unique<sqlite::Statement>(database, "SELECT value FROM tiles WHERE id = ?");
        tileQuery = std::make_unique<sqlite::Statement>(database, "SELECT value, crc, data FROM tiles WHERE id = ?");
    }

    // SQLite itself notices a missing page, but not the missing end of one.
    void requireWhole() {
        auto const bytes = database.number("PRAGMA page_count") * database.number("PRAGMA page_size");
        std::error_code missing;
        auto const size = static_cast<std::int64_t>(std::filesystem::file_size(path, missing));
        if (size < bytes)
            throw damaged(path, "it has " + std::to_string(size) + " bytes instead of " + std::to_string(bytes));
    }

    // What `read` makes of the tile's row. The statement is reset in any case: until then it holds a lock.
    template <class Read>
    auto lookUp(sqlite::Statement& query, TileAddress const& address, Read const& read) {
        if (!storegeometry::contains(info, address)) throw std::invalid_argument("the store has no " + toText(address));
        struct Reset {
            sqlite::Statement& statement;
            ~Reset() { statement.reset(); }
        } const reset{query};
        try {
            query.bind(1, storeformat::keyOf(address));
            if (!query.step()) throw damaged(path, toText(address) + " is missing");
            return read(query);
        } catch (sqlite::Failure const& failure) {
            throw translated(path, failure);
        }
    }

    std::optional<std::int16_t> valueOf(sqlite::Statement const& query, TileAddress const& address) const {
        if (query.isNull(0)) return std::nullopt;
        std::int64_t const value = query.integer(0);
        if (value < std::numeric_limits<std::int16_t>::min() || value > std::numeric_limits<std::int16_t>::max())
            throw damaged(path, toText(address) + " has a value beyond 16 bits");
        return static_cast<std::int16_t>(value);
    }

    std::string path;
    StoreInfo info;
    sqlite::Database database;
    std::unique_ptr<TileCodec> codec;
    std::unique_ptr<sqlite::Statement> valueQuery;
    std::unique_ptr<sqlite::Statement> tileQuery;
};

bool TileStore::isStore(std::string const& path) {
    std::string const magic("SQLite format 3\0", 16);
    std::string start(magic.size(), ' ');
    return std::ifstream(path, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size())) &&
           start == magic;
}

TileStore::TileStore(std::string const& path) {
    requireFile(path);
    try {
        state_ = std::make_unique<State>(path);
        state_->readHeader();
    } catch (sqlite::Failure const& failure) {
        throw translated(path, failure);
    }
}

TileStore::~TileStore() = default;

StoreInfo const& TileStore::info() const {
    return state_->info;
}

std::string const& TileStore::path() const {
    return state_->path;
}

std::optional<std::int16_t> TileStore::uniformValue(TileAddress const& address) {
    return state_->lookUp(*state_->valueQuery, address,
                          [&](sqlite::Statement const& query) { return state_->valueOf(query, address); });
}

std::vector<std::int16_t> TileStore::tile(TileAddress const& address) {
    auto const stored = state_->lookUp(*state_->tileQuery, address, [&](sqlite::Statement const& query) {
        return StoredTile{address, state_->valueOf(query, address), static_cast<std::uint32_t>(query.integer(1)),
                          query.blob(2)};
    });
    auto samples = state_->codec->decode(stored);
    if (!samples) throw damaged(state_->path, toText(address) + " does not match its checksum");
    return std::move(*samples);
}

std::vector<TileAddress> TileStore::cellsWithData(size_t level) {
    std::vector<TileAddress> cells;
    try {
        // Without the index the tiles themselves would be walked through, all of the file's pages.
        bool const indexed =
            state_->database.number("SELECT count(*) FROM sqlite_master WHERE name = 'tiles_with_data'") != 0;
        sqlite::Statement query(state_->database, std::string("SELECT id FROM tiles") +
                                                      (indexed ? " INDEXED BY tiles_with_data" : "") +
                                                      " WHERE (value IS NULL OR value <> 0) AND id >= ? AND id < ?"
                                                      " ORDER BY id");
        query.bind(1, storeformat::keyOf({level, Band::LL, 0, 0, 0}));
        query.bind(2, storeformat::keyOf({level + 1, Band::LL, 0, 0, 0}));
        while (query.step()) {
            TileAddress const address = storeformat::addressOf(query.integer(0));
            bool const known =
                !cells.empty() && cells.back().column == address.column && cells.back().row == address.row;
            if (!known) cells.push_back(address);
        }
    } catch (sqlite::Failure const& failure) {
        throw translated(state_->path, failure);
    }
    return cells;
}

size_t TileStore::storedTiles() {
    try {
        return static_cast<size_t>(state_->database.number("SELECT count(*) FROM tiles"));
    } catch (sqlite::Failure const& failure) {
        throw translated(state_->path, failure);
    }
}
