#include "host/store/TileStore.h"

#include "host/store/StoreErrors.h"
#include "host/store/StoreHead.h"
#include "host/store/StoreSchema.h"
#include "host/store/TileCodec.h"
#include "host/store/TileOrder.h"
#include "host/store/TileStoreFormat.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>

using sqlite::Statement;
using storeerrors::damaged;
using storeerrors::translated;

namespace {

// Reading our own schema takes some hundred steps.
constexpr size_t kSchemaSteps = 20'000;
// A row's header, its numbers and its lengths.
constexpr size_t kRowBytes = 64;

storeformat::Meta readMeta(sqlite::Database& database, std::string const& path) {
    storeformat::Meta meta;
    Statement query(database, "SELECT key, value FROM meta");
    while (query.step()) {
        bool const texts = query.type(0) == Statement::Type::Text && query.type(1) == Statement::Type::Text;
        std::string const key = query.text(0);
        std::string const value = query.text(1);
        bool const fits = texts && key.size() <= storeformat::kMaxKeyBytes &&
                          value.size() <= storeformat::kMaxTextBytes && meta.size() < storeformat::kMaxEntries;
        if (!fits || !meta.emplace(key, value).second) throw damaged(path, "its description is none of a store");
    }
    return meta;
}

template <class Action>
auto withErrorsOf(std::string const& path, Action const& action) {
    try {
        return action();
    } catch (sqlite::Failure const& failure) {
        throw translated(path, failure);
    }
}

} // namespace

struct TileStore::State {
    State(std::string const& file, std::int64_t fileVersion, sqlite::Interruption const& interruption)
        : path(file), version(fileVersion), database(file, sqlite::Database::Mode::ReadOnly, interruption) {}

    static std::unique_ptr<State> open(std::string const& path, sqlite::Interruption const& interruption);
    static std::unique_ptr<State> open(std::string const& path, storehead::Head const& head, std::int64_t version,
                                       sqlite::Interruption const& interruption);
    static void refuseNewer(std::string const& path, storehead::Head const& head,
                            sqlite::Interruption const& interruption);

    void requireSchema() {
        database.limitSteps(kSchemaSteps);
        auto const schema = storeschema::of(database);
        database.limitSteps(std::numeric_limits<size_t>::max());
        hasIndex = schema == storeschema::Schema::WithIndex || schema == storeschema::Schema::WithMetadata;
        if (!isOfVersion(schema)) throw damaged(path, "its tables are not those of a store");
    }

    bool isOfVersion(storeschema::Schema schema) const {
        switch (schema) {
        case storeschema::Schema::None:
            return false;
        case storeschema::Schema::WithoutIndex:
            return version < storeformat::kZigzagVersion;
        case storeschema::Schema::WithIndex:
            return version < storeformat::kMetadataVersion;
        case storeschema::Schema::WithMetadata:
            return version >= storeformat::kMetadataVersion;
        }
        return false;
    }

    void readDescription() {
        try {
            storeformat::Meta const meta = readMeta(database, path);
            info = storeformat::fromMeta(meta, version);
            indexChecksums = storeformat::indexChecksums(meta, info, version);
            metadataSeal = storeformat::metadataSeal(meta, version);
        } catch (std::invalid_argument const& error) {
            throw damaged(path, error.what());
        }
    }

    // Called before memory is allocated for what a description states.
    void requireRoom(size_t fileBytes) const {
        size_t const tiles = storegeometry::totalTiles(info);
        if (tiles > fileBytes / storeformat::kLeastRowBytes)
            throw damaged(path, "its description asks for " + std::to_string(tiles) + " tiles, for which " +
                                    std::to_string(fileBytes) + " bytes have no room");
    }

    void prepare() {
        codec = std::make_unique<TileCodec>(info, version);
        database.limitRows(rowBytes());
        // SQLite does not read a tile's data for its type alone.
        valueQuery =
            std::make_unique<Statement>(database, "SELECT value, crc, typeof(data) = 'blob' FROM tiles WHERE id = ?");
        tileQuery = std::make_unique<Statement>(database, "SELECT value, crc, data FROM tiles WHERE id = ?");
    }

    size_t rowBytes() const { return std::max(codec->maxDataBytes() + kRowBytes, sqlite::Database::kFirstRowBytes); }

    // Kinds and names. SQLite does not read an item's bytes for their type alone.
    void readMetadata() {
        std::vector<MetadataItem> items;
        std::vector<std::uint32_t> checksums;
        storeformat::MetadataSeal seal;
        Statement query(database, "SELECT id, kind, name, crc FROM metadata ORDER BY id");
        while (query.step()) {
            storeformat::MetadataRow row{query.text(1), query.text(2), 0};
            bool const fits = query.integer(0) == static_cast<std::int64_t>(items.size()) + 1 &&
                              items.size() < metadataSeal.items &&
                              std::max(row.kind.size(), row.name.size()) <= storeformat::kMaxItemNameBytes;
            std::int64_t const crc = query.integer(3);
            if (!fits || crc < 0 || crc > std::numeric_limits<std::uint32_t>::max()) throw wrongMetadata();
            row.crc = static_cast<std::uint32_t>(crc);
            seal.add(row);
            checksums.push_back(row.crc);
            items.push_back({std::move(row.kind), std::move(row.name), {}});
        }
        if (seal != metadataSeal) throw wrongMetadata();
        metadata = std::move(items);
        metadataChecksums = std::move(checksums);
    }

    std::vector<std::uint8_t> metadataBytes(size_t index) {
        // An item may be larger than any tile.
        struct Limit {
            State& state;
            explicit Limit(State& limited) : state(limited) {
                state.database.limitRows(std::max(
                    state.rowBytes(), storeformat::kMaxItemBytes + 2 * storeformat::kMaxItemNameBytes + kRowBytes));
            }
            ~Limit() { state.database.limitRows(state.rowBytes()); }
        } const limit{*this};
        Statement query(database, "SELECT data FROM metadata WHERE id = ?");
        query.bind(1, static_cast<std::int64_t>(index) + 1);
        if (!query.step()) throw wrongMetadata();
        auto bytes = query.blob(0);
        if (storeformat::checksumOf(bytes) != metadataChecksums.at(index))
            throw damaged(path, "its metadata '" + metadata->at(index).kind + "' does not match its checksum");
        return bytes;
    }

    HostError wrongMetadata() const { return damaged(path, "its metadata is not as it was written"); }

    // The result of `read` on the tile's row. The statement is reset in any case: until then it holds the row.
    template <class Read>
    auto lookUp(Statement& query, TileAddress const& address, Read const& read) {
        if (!storegeometry::contains(info, address)) throw std::invalid_argument("the store has no " + toText(address));
        struct Reset {
            Statement& statement;
            ~Reset() { statement.reset(); }
        } const reset{query};
        return withErrorsOf(path, [&] {
            query.bind(1, storeformat::keyOf(address));
            if (!query.step()) throw damaged(path, toText(address) + " is missing");
            return read(query);
        });
    }

    template <class Number>
    Number numberOf(Statement const& query, int column, TileAddress const& address) const {
        std::int64_t const number = query.integer(column);
        bool const fits = query.type(column) == Statement::Type::Integer &&
                          number >= std::numeric_limits<Number>::min() && number <= std::numeric_limits<Number>::max();
        if (!fits) throw damaged(path, toText(address) + " has a number that no tile has");
        return static_cast<Number>(number);
    }

    // Value and checksum, columns 0 and 1 of a row.
    StoredTile numbersOf(Statement const& query, TileAddress const& address, bool hasData) const {
        if (hasData != query.isNull(0)) throw damaged(path, toText(address) + " has both a value and data, or neither");
        StoredTile tile{address, std::nullopt, numberOf<std::uint32_t>(query, 1, address), {}};
        if (!hasData) tile.value = numberOf<std::int16_t>(query, 0, address);
        return tile;
    }

    // The value of a row whose column 2 says whether it has data.
    std::optional<std::int16_t> valueOf(Statement const& query, TileAddress const& address) const {
        StoredTile const tile = numbersOf(query, address, query.integer(2) != 0);
        if (tile.value && !codec->isAsWritten(address, *tile.value, tile.crc)) throw noMatch(address);
        return tile.value;
    }

    std::vector<std::int16_t> samplesOf(Statement const& query, TileAddress const& address) const {
        StoredTile tile = numbersOf(query, address, query.type(2) == Statement::Type::Blob);
        tile.data = query.blob(2);
        auto samples = codec->decode(tile);
        if (!samples) throw noMatch(address);
        return std::move(*samples);
    }

    HostError noMatch(TileAddress const& address) const {
        return damaged(path, toText(address) + " does not match its checksum");
    }

    // A statement whose parameters are the first key of a level and that of the next.
    Statement overLevel(std::string const& text, size_t level) {
        Statement query(database, text);
        query.bind(1, storeformat::keyOf({level, Band::LL, 0, 0, 0}));
        query.bind(2, storeformat::keyOf({level + 1, Band::LL, 0, 0, 0}));
        return query;
    }

    // The index's places; from version 3 on a checksum proves them.
    std::vector<TileAddress> placesInIndex(size_t level) {
        std::vector<TileAddress> places;
        std::uint32_t crc = 0;
        std::int64_t last = -1;
        Statement query = overLevel("SELECT id FROM tiles INDEXED BY tiles_with_data"
                                    " WHERE (value IS NULL OR value <> 0) AND id >= ? AND id < ? ORDER BY id",
                                    level);
        while (query.step()) {
            std::int64_t const key = query.integer(0);
            TileAddress const address = storeformat::addressOf(key);
            // A hostile file may chain its pages in a cycle; ascending keys guarantee an end.
            if (key <= last || !storegeometry::contains(info, address)) throw wrongIndex(level);
            last = key;
            crc = storeformat::withKey(crc, key);
            if (places.empty() || !tileorder::samePlace(places.back(), address)) places.push_back(address);
        }
        if (!indexChecksums.empty() && crc != indexChecksums.at(level)) throw wrongIndex(level);
        return places;
    }

    HostError wrongIndex(size_t level) const {
        return damaged(path, "the index of level " + std::to_string(level) + " is not as it was written");
    }

    // The places found by looking at every row.
    std::vector<TileAddress> placesInRows(size_t level) {
        std::vector<TileAddress> places;
        Statement query = overLevel(
            "SELECT value, crc, typeof(data) = 'blob', id FROM tiles WHERE id >= ? AND id < ? ORDER BY id", level);
        tileorder::forEachPlace(info, level, [&](TileAddress const& place) {
            bool hasData = false;
            tileorder::forEachTileAt(info, place, [&](TileAddress const& address) {
                if (!query.step() || query.integer(3) != storeformat::keyOf(address))
                    throw damaged(path, toText(address) + " is missing");
                if (valueOf(query, address) != std::int16_t{0}) hasData = true;
            });
            if (hasData) places.push_back(place);
        });
        return places;
    }

    // Ascending keys guarantee an end, whatever the file's pages say.
    size_t rows() {
        Statement query(database, "SELECT id FROM tiles ORDER BY id");
        size_t count = 0;
        for (std::int64_t last = std::numeric_limits<std::int64_t>::min(); query.step(); ++count) {
            std::int64_t const key = query.integer(0);
            if (count > 0 && key <= last) throw damaged(path, "its tiles are out of order");
            last = key;
        }
        return count;
    }

    std::string path;
    std::int64_t version;
    bool hasIndex = false;
    StoreInfo info;
    storeformat::IndexChecksums indexChecksums; // empty: the file has none
    storeformat::MetadataSeal metadataSeal;
    std::optional<std::vector<MetadataItem>> metadata; // empty: not read yet
    std::vector<std::uint32_t> metadataChecksums;
    sqlite::Database database;
    std::unique_ptr<TileCodec> codec;
    std::unique_ptr<Statement> valueQuery;
    std::unique_ptr<Statement> tileQuery;
};

std::unique_ptr<TileStore::State> TileStore::State::open(std::string const& path,
                                                         sqlite::Interruption const& interruption) {
    storehead::Head const head = storehead::read(path);
    std::int64_t const version = head.version();
    if (version < 1) throw damaged(path, "its version cannot be " + std::to_string(version));
    if (version > storeformat::kSchemaVersion) refuseNewer(path, head, interruption);
    return open(path, head, version, interruption);
}

std::unique_ptr<TileStore::State> TileStore::State::open(std::string const& path, storehead::Head const& head,
                                                         std::int64_t version,
                                                         sqlite::Interruption const& interruption) {
    storehead::requireLayout(head, path, version);
    return withErrorsOf(path, [&] {
        auto state = std::make_unique<State>(path, version, interruption);
        state->requireSchema();
        state->readDescription();
        state->requireRoom(head.fileBytes);
        state->prepare();
        return state;
    });
}

// A file that reads as a store of a known version is not a newer store: its header is damaged.
void TileStore::State::refuseNewer(std::string const& path, storehead::Head const& head,
                                   sqlite::Interruption const& interruption) {
    for (std::int64_t version = storeformat::kSchemaVersion; version > 0; --version) {
        try {
            open(path, head, version, interruption);
        } catch (HostError const& error) {
            if (error.kind() == HostError::Kind::DamagedStore) continue;
            throw;
        }
        throw damaged(path, "its head says version " + std::to_string(head.version()) + ", but it is one of version " +
                                std::to_string(version));
    }
    throw storeerrors::newer(path, head.version());
}

bool TileStore::isStore(std::string const& path) {
    return storehead::isMarked(path);
}

TileStore::TileStore(std::string const& path, std::function<void()> const& interruption)
    : state_(State::open(path, interruption)) {}

TileStore::~TileStore() = default;

StoreInfo const& TileStore::info() const {
    return state_->info;
}

std::string const& TileStore::path() const {
    return state_->path;
}

std::optional<std::int16_t> TileStore::uniformValue(TileAddress const& address) {
    return state_->lookUp(*state_->valueQuery, address,
                          [&](Statement const& query) { return state_->valueOf(query, address); });
}

std::vector<std::int16_t> TileStore::tile(TileAddress const& address) {
    return state_->lookUp(*state_->tileQuery, address,
                          [&](Statement const& query) { return state_->samplesOf(query, address); });
}

std::vector<TileAddress> TileStore::cellsWithData(size_t level) {
    return withErrorsOf(state_->path, [&] {
        return state_->indexChecksums.empty() ? state_->placesInRows(level) : state_->placesInIndex(level);
    });
}

std::optional<std::vector<TileAddress>> TileStore::cellsInIndex(size_t level) {
    if (!state_->hasIndex) return std::nullopt;
    return withErrorsOf(state_->path, [&] { return state_->placesInIndex(level); });
}

std::vector<MetadataItem> const& TileStore::metadata() {
    if (!state_->metadata) {
        if (state_->version < storeformat::kMetadataVersion)
            state_->metadata.emplace();
        else
            withErrorsOf(state_->path, [&] { state_->readMetadata(); });
    }
    return *state_->metadata;
}

std::vector<std::uint8_t> TileStore::metadataBytes(size_t index) {
    if (index >= metadata().size()) throw std::invalid_argument("the store has no metadata " + std::to_string(index));
    return withErrorsOf(state_->path, [&] { return state_->metadataBytes(index); });
}

std::vector<MetadataItem> TileStore::allMetadata() {
    std::vector<MetadataItem> items = metadata();
    for (size_t i = 0; i < items.size(); ++i)
        items[i].bytes = metadataBytes(i);
    return items;
}

size_t TileStore::storedTiles() {
    return withErrorsOf(state_->path, [&] { return state_->rows(); });
}
