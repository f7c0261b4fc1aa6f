#include "tests/host/store/StoreFiles.h"

#include "tests/host/store/DocumentedReader.h"

#include <sqlite3.h>
#include <zlib.h>
#include <zstd.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Database = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

Database opened(std::string const& path) {
    sqlite3* database = nullptr;
    int const code = sqlite3_open(path.c_str(), &database);
    Database owner(database, sqlite3_close);
    if (code != SQLITE_OK) throw std::runtime_error("the file does not open: " + path);
    return owner;
}

void execute(sqlite3* database, std::string const& statements) {
    if (sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database) + std::string(" in ") + statements);
}

Bytes compressed(Bytes const& bytes) {
    Bytes data(ZSTD_compressBound(bytes.size()));
    data.resize(ZSTD_compress(data.data(), data.size(), bytes.data(), bytes.size(), 3));
    return data;
}

std::map<std::string, std::string> descriptionOf(sqlite3* database) {
    std::map<std::string, std::string> description;
    auto const keep = [](void* to, int, char** values, char**) {
        (*static_cast<std::map<std::string, std::string>*>(to))[values[0]] = values[1];
        return 0;
    };
    sqlite3_exec(database, "SELECT key, value FROM meta", keep, &description, nullptr);
    return description;
}

void seal(sqlite3* database) {
    std::uint32_t const crc = DocumentedReader::checksumOf(descriptionOf(database));
    execute(database, "UPDATE meta SET value = '" + std::to_string(crc) + "' WHERE key = 'crc'");
}

void rewriteTile(sqlite3* database, std::int64_t id, Bytes const& bytes) {
    sqlite3_stmt* update = nullptr;
    // Tiles of one value stay so.
    sqlite3_prepare_v2(database, "UPDATE tiles SET crc = ?1, data = iif(value IS NULL, ?2, NULL) WHERE id = ?3", -1,
                       &update, nullptr);
    Bytes const data = compressed(bytes);
    sqlite3_bind_int64(update, 1, static_cast<std::int64_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size()))));
    sqlite3_bind_blob64(update, 2, data.data(), data.size(), SQLITE_STATIC);
    sqlite3_bind_int64(update, 3, id);
    int const code = sqlite3_step(update);
    sqlite3_finalize(update);
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database));
}

} // namespace

void storefiles::change(std::string const& path, std::string const& statements) {
    execute(opened(path).get(), statements);
}

void storefiles::rewriteAs(std::int64_t version, std::string const& path) {
    std::map<std::int64_t, Bytes> tiles;
    {
        DocumentedReader const reader(path);
        for (std::int64_t const id : reader.ids())
            tiles[id] = DocumentedReader::codesOf(reader.tile(id), version);
    }
    Database const database = opened(path);
    execute(database.get(), "BEGIN");
    for (auto const& [id, bytes] : version < 3 ? tiles : decltype(tiles){})
        rewriteTile(database.get(), id, bytes);
    execute(database.get(), version < 3 ? "DELETE FROM meta WHERE key = 'version' OR key GLOB 'index*'"
                                        : "UPDATE meta SET value = '3' WHERE key = 'version'");
    execute(database.get(), "DELETE FROM meta WHERE key GLOB 'metadata*'; DROP TABLE metadata");
    seal(database.get());
    execute(database.get(), "COMMIT; PRAGMA user_version = " + std::to_string(version));
    if (version == 1) execute(database.get(), "PRAGMA page_size = 16384; VACUUM");
}

void storefiles::renameMetadata(std::string const& path,
                                std::vector<std::pair<std::string, std::string>> const& names) {
    Database const database = opened(path);
    for (auto const& [from, to] : names)
        execute(database.get(), "UPDATE metadata SET name = '" + to + "' WHERE name = '" + from + "'");
    Bytes summed;
    auto const add = [](void* sum, int, char** values, char**) {
        auto& bytes = *static_cast<Bytes*>(sum);
        for (std::string const& text : {std::string(values[0]), std::string(values[1])}) {
            bytes.insert(bytes.end(), text.begin(), text.end());
            bytes.push_back(0);
        }
        for (unsigned long crc = std::stoul(values[2]), i = 0; i < 4; ++i, crc /= 256)
            bytes.push_back(static_cast<std::uint8_t>(crc % 256));
        return 0;
    };
    sqlite3_exec(database.get(), "SELECT kind, name, crc FROM metadata ORDER BY id", add, &summed, nullptr);
    auto const crc = crc32(0, summed.data(), static_cast<uInt>(summed.size()));
    execute(database.get(), "UPDATE meta SET value = '" + std::to_string(crc) + "' WHERE key = 'metadataCrc'");
    seal(database.get());
}

void storefiles::sealDescription(std::string const& path) {
    seal(opened(path).get());
}

std::string storefiles::unfinishedChange(std::string const& path, std::string const& mode,
                                         std::string const& statements, std::string const& suffix) {
    Database const database = opened(path);
    execute(database.get(), mode + "; PRAGMA wal_autocheckpoint = 0; PRAGMA cache_size = 1; PRAGMA cache_spill = 1");
    // A log has the committed changes, a journal belongs to uncommitted ones.
    execute(database.get(),
            "BEGIN; " + statements + "; UPDATE tiles SET crc = crc + 1;" + (suffix == "-wal" ? "COMMIT" : ""));
    std::ifstream file(path + suffix, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string storefiles::withBit(std::string file, size_t bit) {
    file[bit / 8] = static_cast<char>(file[bit / 8] ^ 1 << bit % 8);
    return file;
}
