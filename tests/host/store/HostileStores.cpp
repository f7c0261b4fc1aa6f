#include "tests/host/store/HostileStores.h"

#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"

#include <filesystem>

namespace {

using namespace hostilestores;

void makeSmall(std::string const& path) {
    ImportOptions options;
    options.tileSize = 16;
    testpictures::import(testpictures::picture(100, 70, 1, 8, testpictures::Content::Noise), path, options);
}

void describe(std::string const& path, std::string const& key, std::string const& value) {
    storefiles::change(path, "UPDATE meta SET value = '" + value + "' WHERE key = '" + key + "'");
    storefiles::sealDescription(path);
}

void makeEndlessDescription(std::string const& path) {
    makeWith(std::string(kTiles) + kIndex + "CREATE VIEW meta(key, value) AS " + kEndless + " SELECT n, n FROM r;",
             path);
}

void makeEndlessTiles(std::string const& path) {
    makeWith(std::string(kMeta) + "CREATE VIEW tiles(id, value, crc, data) AS " + kEndless +
                 " SELECT n, 0, 0, NULL FROM r;",
             path);
}

// The same after a plausible description.
void makeEndlessTilesOfAPicture(std::string const& path) {
    makeSmall(path);
    storefiles::change(path, std::string("DROP TABLE tiles; CREATE VIEW tiles(id, value, crc, data) AS ") + kEndless +
                                 " SELECT n, 0, 0, NULL FROM r");
}

void makeWiderThanItsFile(std::string const& path) {
    makeSmall(path);
    describe(path, "width", "134217728");
}

void makeLongText(std::string const& path) {
    makeSmall(path);
    describe(path, "interpretation", std::string(100'000'000, 'x')); // NOLINT(bugprone-string-constructor)
}

void makeManyEntries(std::string const& path) {
    makeSmall(path);
    storefiles::change(path, std::string("INSERT INTO meta ") + kEndless + " SELECT 'x' || n, n FROM r LIMIT 300000");
}

void makeManyTables(std::string const& path) {
    makeWith(std::string(kMeta) + kTiles + kIndex + "PRAGMA writable_schema = ON; INSERT INTO sqlite_master " +
                 kEndless +
                 " SELECT 'table', 't' || n, 't' || n, 2, 'CREATE TABLE t' || n || '(a)' FROM r LIMIT 300000",
             path);
}

} // namespace

char const* const hostilestores::kMeta = "CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;";
char const* const hostilestores::kTiles =
    "CREATE TABLE tiles(id INTEGER PRIMARY KEY, value INTEGER, crc INTEGER NOT NULL, data BLOB);";
char const* const hostilestores::kIndex =
    "CREATE INDEX tiles_with_data ON tiles(id) WHERE value IS NULL OR value <> 0;";
char const* const hostilestores::kEndless = "WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM r)";

std::vector<Hostile> const& hostilestores::all() {
    static std::vector<Hostile> const kAll{{"an endless description", makeEndlessDescription},
                                           {"endless tiles", makeEndlessTiles},
                                           {"endless tiles of a picture", makeEndlessTilesOfAPicture},
                                           {"wider than its file", makeWiderThanItsFile},
                                           {"a long text", makeLongText},
                                           {"many entries", makeManyEntries},
                                           {"many tables", makeManyTables}};
    return kAll;
}

void hostilestores::makeWith(std::string const& schema, std::string const& path) {
    std::filesystem::remove(path);
    storefiles::change(path, "PRAGMA page_size = 4096; PRAGMA application_id = 0x564c4d53; PRAGMA user_version = 4;" +
                                 schema);
}
