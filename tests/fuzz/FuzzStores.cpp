#include "tests/fuzz/FuzzStores.h"

#include "host/HostError.h"
#include "host/image/SmallPicture.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/StoreLevels.h"
#include "host/store/StoreMemory.h"
#include "host/store/TileStoreFormat.h"
#include "host/view/CoarsestSamples.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/host/store/DocumentedReader.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"

#include <sqlite3.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>

namespace {

using fuzz::require;
using Bytes = std::vector<std::uint8_t>;

constexpr size_t kMaxTilesRead = 200;
constexpr std::uint64_t kMaxTilesChecked = 40'000; // a file of 2 MB may claim more: each that is missing is a failure
constexpr std::uint64_t kMaxSamplesRead = 1 << 21; // of tiles, and of pictures that are exported
constexpr int kMaxSteps = 200'000;                 // of SQLite's machine in one statement
constexpr int kMaxRowBytes = 4 << 20;
constexpr size_t kMaxSealedBytes = 1 << 16;

// An item of each kind that an export looks into.
std::vector<MetadataItem> metadata() {
    return {{picturemetadata::kTag, "34735", {3, 0, 1, 0, 2, 0}},
            {picturemetadata::kTag, "34665/33434", {5, 0, 1, 0, 0, 0, 125, 0, 0, 0}},
            {picturemetadata::kProfile, "", {1, 2, 3}},
            {picturemetadata::kImage, "label", smallpicture::toPng({{2, 1}, 3, {1, 2, 3, 4, 5, 6}})},
            {picturemetadata::kProperties, "", {'{', '}'}}};
}

std::string made(size_t which) {
    std::string const path = fuzzstores::folder().path("valid.vlm");
    ImportOptions options;
    options.tileSize = 16;
    options.jobs = 1;
    options.replace = true;
    options.sourceName = "picture.tif";
    bool const deep = which % 2 == 1;
    auto picture = deep ? testpictures::picture(21, 18, 2, 16, testpictures::Content::Ramp)
                        : testpictures::picture(25, 13, 3, 8, testpictures::Content::Noise);
    picture.metadata = metadata();
    testpictures::import(picture, path, options);
    if (which >= 2) storefiles::rewriteAs(static_cast<std::int64_t>(which / 2), path);
    return readFile(path);
}

bool isDocumented(HostError::Kind kind) {
    switch (kind) {
    case HostError::Kind::MissingFile:
    case HostError::Kind::NoStore:
    case HostError::Kind::DamagedStore:
    case HostError::Kind::NewerStore:
    case HostError::Kind::LockedStore:
        return true;
    default:
        return false;
    }
}

// Whether the action came to its end.
bool comesThrough(std::function<void()> const& action) {
    try {
        action();
        return true;
    } catch (HostError const& error) {
        require(isDocumented(error.kind()), error.what());
        require(std::string(error.what()).find('\n') == std::string::npos, "a failure is one line");
        return false;
    }
}

void readTile(TileStore& store, TileAddress const& address) {
    std::optional<std::int16_t> value;
    std::vector<std::int16_t> samples;
    if (!comesThrough([&] { value = store.uniformValue(address); })) return;
    if (!comesThrough([&] { samples = store.tile(address); })) return;
    size_t const side = store.info().tileSize;
    require(samples.size() == side * side, "a tile has all its samples");
    if (!value) return;
    Size const filled = storegeometry::filledPart(store.info(), address);
    for (size_t i = 0; i < samples.size(); ++i)
        require(samples[i] == (i % side < filled.width && i / side < filled.height ? *value : 0),
                "a tile of one value has that value");
}

void readTiles(TileStore& store) {
    StoreInfo const& info = store.info();
    size_t const most = std::min<size_t>(kMaxTilesRead, kMaxSamplesRead / (info.tileSize * info.tileSize));
    size_t read = 0;
    for (size_t level = 0; level <= info.levels; ++level) {
        comesThrough([&] { store.cellsWithData(level); });
        comesThrough([&] { store.cellsInIndex(level); });
        Size const tiles = storegeometry::tileCount(info, level);
        for (size_t cell = 0; cell < tiles.width * tiles.height && read < most; ++cell)
            for (size_t part = 0; part < 5 * info.bands && read < most; ++part) {
                TileAddress const address{level, static_cast<Band>(part / info.bands), part % info.bands,
                                          cell % tiles.width, cell / tiles.width};
                if (!storegeometry::contains(info, address)) continue;
                readTile(store, address);
                ++read;
            }
    }
}

void exportPicture(TileStore& store, bool whole) {
    StoreInfo const& info = store.info();
    if (info.width * info.height > kMaxSamplesRead || storememory::exportBytes(info) > 16 * kMaxSamplesRead) return;
    OutputFile file(fuzzstores::folder().path("exported.tif"));
    file.replace = true;
    file.sources = {store.path()};
    bool const exported = comesThrough([&] { exportStore(store, file, [](size_t, size_t) {}); });
    require(exported || !whole, "a store without damage can be exported");
}

// What the range of a window is made of.
void readCoarsest(TileStore& store) {
    StoreInfo const& info = store.info();
    std::vector<std::uint8_t> const samples = coarsestsamples::of(store);
    require(samples.size() % (info.bands * info.bits / 8) == 0, "pixels are whole");
    require(samples.size() <= (size_t{1} << 22) * info.bands * info.bits / 8, "a level of any size is read in part");
}

// The corners of each level, as a view of another program would read them.
void readLevels(TileStore& store, bool whole) {
    StoreInfo const& info = store.info();
    if (info.tileSize * info.tileSize * info.levels > kMaxSamplesRead / 8) return;
    StoreLevels levels(store, std::make_shared<SampleCache>(kMaxSamplesRead));
    for (size_t level = 0; level <= info.levels; ++level) {
        Size const size = levels.size(level);
        Size const part{std::min<size_t>(size.width, 20), std::min<size_t>(size.height, 30)};
        Bytes pixels(part.width * part.height * info.bands * info.bits / 8);
        for (Region const& region :
             {wholeOf(part), Region{size.width - part.width, size.height - part.height, part.width, part.height}}) {
            bool const read = comesThrough([&] { levels.read(level, region, pixels.data()); });
            require(read || !whole, "each level of a store without damage can be read");
        }
    }
}

} // namespace

TemporaryFolder const& fuzzstores::folder() {
    static TemporaryFolder const kFolder;
    return kFolder;
}

std::string const& fuzzstores::valid(size_t which) {
    static std::map<size_t, std::string> stores;
    auto const found = stores.find(which);
    return found != stores.end() ? found->second : stores.emplace(which, made(which)).first->second;
}

void fuzzstores::use(std::string const& path) {
    comesThrough([&] {
        TileStore store(path);
        StoreCheckResult result;
        bool const checked = storegeometry::totalTiles(store.info()) <= kMaxTilesChecked &&
                             comesThrough([&] { result = checkStore(store, [](size_t, size_t) {}); });
        comesThrough([&] { store.storedTiles(); });
        comesThrough([&] { store.allMetadata(); });
        readTiles(store);
        comesThrough([&] { readCoarsest(store); });
        readLevels(store, checked && result.damages == 0);
        exportPicture(store, checked && result.damages == 0);
    });
}

fuzzstores::Surgery::Surgery(std::string const& path) {
    sqlite3* database = nullptr;
    int const code = sqlite3_open(path.c_str(), &database);
    database_.reset(database, sqlite3_close);
    if (code != SQLITE_OK) throw std::runtime_error("the file does not open: " + path);
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kMaxRowBytes);
    run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
}

void fuzzstores::Surgery::run(std::string const& statements) {
    // Asked once: that ends the statement.
    sqlite3_progress_handler(
        database_.get(), kMaxSteps, [](void*) { return 1; }, nullptr);
    sqlite3_exec(database_.get(), statements.c_str(), nullptr, nullptr, nullptr);
}

void fuzzstores::Surgery::run(std::string const& statement, Bytes const& blob) {
    sqlite3_progress_handler(
        database_.get(), kMaxSteps, [](void*) { return 1; }, nullptr);
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database_.get(), statement.c_str(), -1, &prepared, nullptr) != SQLITE_OK) return;
    sqlite3_bind_blob64(prepared, 1, blob.data(), blob.size(), SQLITE_STATIC);
    sqlite3_step(prepared);
    sqlite3_finalize(prepared);
}

namespace {

using Row = std::vector<std::optional<std::string>>;

// All rows, as texts, until there are too many steps.
std::vector<Row> rowsOf(sqlite3* database, std::string const& statement) {
    std::vector<Row> rows;
    sqlite3_stmt* prepared = nullptr;
    sqlite3_progress_handler(
        database, kMaxSteps, [](void*) { return 1; }, nullptr);
    if (sqlite3_prepare_v2(database, statement.c_str(), -1, &prepared, nullptr) != SQLITE_OK) return rows;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
        Row row;
        for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
            auto const* const text = static_cast<char const*>(sqlite3_column_blob(prepared, column));
            auto const size = static_cast<size_t>(sqlite3_column_bytes(prepared, column));
            bool const null = sqlite3_column_type(prepared, column) == SQLITE_NULL;
            row.push_back(null ? std::nullopt : std::optional(text == nullptr ? "" : std::string(text, size)));
        }
        rows.push_back(row);
    }
    sqlite3_finalize(prepared);
    return rows;
}

// What a tile's checksum is of, besides its key.
Bytes contentOf(Row const& row) {
    if (row.at(1)) {
        auto const value = static_cast<std::uint16_t>(std::strtoll(row[1]->c_str(), nullptr, 10));
        return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
    }
    if (!row.at(2)) return {};
    Bytes bytes(kMaxSealedBytes);
    size_t const size = ZSTD_decompress(bytes.data(), bytes.size(), row[2]->data(), row[2]->size());
    bytes.resize(ZSTD_isError(size) != 0 ? 0 : size);
    return bytes;
}

} // namespace

std::int64_t fuzzstores::Surgery::version() {
    auto const rows = rowsOf(database_.get(), "PRAGMA user_version");
    return rows.empty() || !rows[0].at(0) ? 0 : std::strtoll(rows[0][0]->c_str(), nullptr, 10);
}

void fuzzstores::Surgery::sealTiles() {
    bool const keyed = version() >= storeformat::kSealedVersion;
    for (Row const& row : rowsOf(database_.get(), "SELECT id, value, data FROM tiles LIMIT 400")) {
        if (!row.at(0)) continue;
        std::int64_t const id = std::strtoll(row[0]->c_str(), nullptr, 10);
        Bytes const bytes = contentOf(row);
        uLong const start = keyed ? storeformat::withKey(0, id) : 0;
        uLong const crc = crc32(start, bytes.data(), static_cast<uInt>(bytes.size()));
        run("UPDATE tiles SET crc = " + std::to_string(crc) + " WHERE id = " + std::to_string(id));
    }
}

void fuzzstores::Surgery::sealIndex() {
    std::map<size_t, std::uint32_t> checksums;
    for (Row const& row : rowsOf(database_.get(), "SELECT id FROM tiles INDEXED BY tiles_with_data"
                                                  " WHERE value IS NULL OR value <> 0 ORDER BY id LIMIT 400")) {
        if (!row.at(0)) continue;
        std::int64_t const id = std::strtoll(row[0]->c_str(), nullptr, 10);
        if (id < 0) continue;
        std::uint32_t& crc = checksums[storeformat::addressOf(id).level];
        crc = storeformat::withKey(crc, id);
    }
    for (auto const& [level, crc] : checksums)
        run("UPDATE meta SET value = '" + std::to_string(crc) + "' WHERE key = 'index" + std::to_string(level) + "'");
}

void fuzzstores::Surgery::sealMetadata() {
    storeformat::MetadataSeal seal;
    for (Row const& row : rowsOf(database_.get(), "SELECT id, kind, name, data FROM metadata ORDER BY id LIMIT 400")) {
        if (!row.at(0) || !row.at(1) || !row.at(2) || !row.at(3)) continue;
        std::uint32_t const crc = storeformat::checksumOf({row[3]->begin(), row[3]->end()});
        seal.add({*row[1], *row[2], crc});
        run("UPDATE metadata SET crc = " + std::to_string(crc) + " WHERE id = " + *row[0]);
    }
    run("UPDATE meta SET value = '" + std::to_string(seal.items) + "' WHERE key = 'metadata'");
    run("UPDATE meta SET value = '" + std::to_string(seal.crc) + "' WHERE key = 'metadataCrc'");
}

void fuzzstores::Surgery::sealDescription() {
    std::map<std::string, std::string> description;
    for (Row const& row : rowsOf(database_.get(), "SELECT key, value FROM meta LIMIT 400"))
        if (row.at(0) && row.at(1)) description[*row[0]] = *row[1];
    run("UPDATE meta SET value = '" + std::to_string(DocumentedReader::checksumOf(description)) +
        "' WHERE key = 'crc'");
}

void fuzzstores::Surgery::seal() {
    sealTiles();
    sealIndex();
    sealMetadata();
    sealDescription();
}
