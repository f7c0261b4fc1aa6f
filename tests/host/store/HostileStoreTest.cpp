// Forged files that look like stores: each is damage, found at once, and no other file is touched.
#include "host/HostError.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/TileOrder.h"
#include "host/store/TileStore.h"
#include "tests/host/store/DocumentedReader.h"
#include "tests/host/store/HostileStores.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <ctime>
#include <filesystem>
#include <optional>

using Kind = HostError::Kind;
using testpictures::Content;

namespace {

using Names = std::vector<std::string>;

using hostilestores::kEndless;
using hostilestores::kIndex;
using hostilestores::kMeta;
using hostilestores::kTiles;

class HostileStoreTest : public testing::Test {
protected:
    HostileStoreTest() {
        options_.tileSize = 16;
        testpictures::import(testpictures::picture(100, 70, 1, 16, Content::Noise), path_, options_);
    }

    // Processor seconds since the last call: other processes may use the processor too.
    double seconds() {
        std::clock_t const now = std::clock();
        double const passed = static_cast<double>(now - last_) / CLOCKS_PER_SEC;
        last_ = now;
        return passed;
    }

    // The error of opening it; empty if it opens.
    std::string opening() {
        seconds();
        std::string text;
        try {
            TileStore const store(path_);
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), Kind::DamagedStore) << error.what();
            text = error.what();
        }
        EXPECT_LT(seconds(), 2.0);
        return text;
    }

    void expectRefused(std::string const& word) {
        std::string const text = opening();
        EXPECT_NE(text.find(word), std::string::npos) << word << " in '" << text << "'";
        EXPECT_EQ(folder_.names(), Names{"a.vlm"});
    }

    void make(std::string const& schema) const { hostilestores::makeWith(schema, path_); }

    // Entries of the description, under its checksum.
    void describe(std::string const& key, std::string const& value) const {
        storefiles::change(path_, "INSERT OR REPLACE INTO meta VALUES('" + key + "', '" + value + "')");
        storefiles::sealDescription(path_);
    }

    bool tileIsDamaged(TileAddress const& address) const {
        TileStore store(path_);
        bool value = false;
        try {
            store.uniformValue(address);
        } catch (HostError const& error) {
            value = error.kind() == Kind::DamagedStore;
        }
        try {
            store.tile(address);
        } catch (HostError const& error) {
            return error.kind() == Kind::DamagedStore;
        }
        EXPECT_FALSE(value);
        return false;
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    ImportOptions options_;
    std::clock_t last_ = 0;
};

std::string idText(TileAddress const& address) {
    auto const number = [](size_t value) { return static_cast<std::int64_t>(value); };
    return std::to_string(DocumentedReader::idOf(number(address.level), static_cast<std::int64_t>(address.band),
                                                 number(address.plane), number(address.column), number(address.row)));
}

} // namespace

TEST_F(HostileStoreTest, EndlessViewsInsteadOfTablesAreNotRun) {
    make(std::string(kTiles) + kIndex + "CREATE VIEW meta(key, value) AS " + kEndless + " SELECT n, n FROM r;");
    expectRefused("tables are not those of a store");
    make(std::string(kMeta) + "CREATE VIEW tiles(id, value, crc, data) AS " + kEndless +
         " SELECT n, 0, 0, NULL FROM r;");
    expectRefused("tables are not those of a store");
}

TEST_F(HostileStoreTest, AnyOtherObjectIsRefused) {
    std::string const whole = readFile(path_);
    for (std::string const object :
         {"CREATE TABLE more(a)", "CREATE VIEW more AS SELECT 1",
          "CREATE TRIGGER more AFTER INSERT ON tiles BEGIN DELETE FROM tiles; END", "CREATE INDEX more ON tiles(crc)",
          "ANALYZE", "DROP INDEX tiles_with_data", "DROP TABLE meta", "ALTER TABLE tiles ADD COLUMN more",
          "DROP INDEX tiles_with_data; CREATE INDEX tiles_with_data ON tiles(id)",
          "DROP INDEX tiles_with_data; CREATE INDEX tiles_with_data ON tiles(crc) WHERE value IS NULL OR value <> 0",
          // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
          "CREATE TABLE old AS SELECT * FROM meta; DROP TABLE meta;"
          "CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT AS (key || 'x')) WITHOUT ROWID; DROP TABLE old"}) {
        SCOPED_TRACE(object);
        writeFile(path_, whole);
        storefiles::change(path_, object);
        expectRefused("tables are not those of a store");
    }
}

TEST_F(HostileStoreTest, ASchemaWithoutEndIsNotReadToItsEnd) {
    make(std::string(kMeta) + kTiles + kIndex + "PRAGMA writable_schema = ON; INSERT INTO sqlite_master " + kEndless +
         " SELECT 'table', 't' || n, 't' || n, 2, 'CREATE TABLE t' || n || '(a)' FROM r LIMIT 100000");
    sqlite3_memory_highwater(1);
    expectRefused("too many steps");
    // SQLite keeps half a kilobyte per table.
    EXPECT_LT(sqlite3_memory_highwater(0), 8'000'000);
    make(std::string("CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL /*") + std::string(3'000'000, 'x') +
         "*/) WITHOUT ROWID;" + kTiles + kIndex);
    expectRefused("damaged");
}

TEST_F(HostileStoreTest, ADescriptionForWhichTheFileHasNoRoomIsRefused) {
    describe("width", "134217728");
    expectRefused("asks for");
    describe("height", "134217728");
    expectRefused("asks for");
    // Also with tiles of the largest size.
    describe("tileSize", "2048");
    expectRefused("asks for");
}

TEST_F(HostileStoreTest, ImpossibleDescriptionsAreNamed) {
    std::string const whole = readFile(path_);
    struct Row {
        char const* key;
        char const* value;
        char const* word;
    };
    for (Row const& row : {Row{"width", "0", "width cannot be '0'"},
                           {"width", "134217729", "width cannot be"},
                           {"height", "0", "height cannot be '0'"},
                           {"height", "134217729", "height cannot be"},
                           {"width", "", "width cannot be ''"},
                           {"width", "100 ", "width cannot be '100 '"},
                           {"width", "+100", "width cannot be '+100'"},
                           {"width", "-1", "width cannot be '-1'"},
                           {"bands", "0", "bands cannot be '0'"},
                           {"bands", "5", "bands cannot be '5'"},
                           {"bits", "7", "bits cannot be '7'"},
                           {"bits", "12", "neither 8 nor 16"},
                           {"bits", "17", "bits cannot be '17'"},
                           {"bits", "8", "residualBits cannot be 3 of 8"},
                           {"residualBits", "0", "residualBits cannot be 0 of 16"},
                           {"residualBits", "1", "residualBits cannot be 1 of 16"},
                           {"residualBits", "4", "residualBits cannot be 4 of 16"},
                           {"residualBits", "6", "residualBits cannot be '6'"},
                           {"levels", "0", "levels cannot be '0'"},
                           {"levels", "13", "levels cannot be '13'"},
                           {"tileSize", "14", "tileSize cannot be '14'"},
                           {"tileSize", "17", "tileSize is odd"},
                           {"tileSize", "2050", "tileSize cannot be '2050'"},
                           {"micronsPerPixelX", "-1", "micronsPerPixelX cannot be '-1'"},
                           {"micronsPerPixelX", "nan", "micronsPerPixelX cannot be 'nan'"},
                           {"micronsPerPixelY", "inf", "micronsPerPixelY cannot be 'inf'"},
                           {"micronsPerPixelY", "2e12", "micronsPerPixelY cannot be '2e12'"},
                           {"version", "2", "head says version 4, its description 2"},
                           {"version", "04", "head says version 4, its description 04"},
                           {"index1", "4294967296", "index1 cannot be '4294967296'"},
                           {"index0", "", "index0 cannot be ''"}}) {
        writeFile(path_, whole);
        describe(row.key, row.value);
        expectRefused(row.word);
    }
    for (std::string const key :
         {"width", "height", "bands", "bits", "residualBits", "levels", "tileSize", "micronsPerPixelX",
          "micronsPerPixelY", "sourceName", "interpretation", "version", "index0", "index1", "index3"}) {
        writeFile(path_, whole);
        storefiles::change(path_, "DELETE FROM meta WHERE key = '" + key + "'");
        storefiles::sealDescription(path_);
        expectRefused("does not say its " + key);
    }
    writeFile(path_, whole);
    for (std::int64_t const version : {3, 2}) {
        if (version == 2) {
            writeFile(path_, whole);
            storefiles::rewriteAs(2, path_);
            EXPECT_EQ(opening(), "");
        }
        storefiles::change(path_, "DELETE FROM meta WHERE key = 'crc'");
        expectRefused("does not say its crc");
    }
}

TEST_F(HostileStoreTest, EntriesThatAreNotKnownAreUnderTheChecksumToo) {
    describe("more", "text");
    EXPECT_EQ(opening(), "");
    storefiles::change(path_, "UPDATE meta SET value = 'other' WHERE key = 'more'");
    expectRefused("does not match its checksum");
}

TEST_F(HostileStoreTest, TextsAreBounded) {
    std::string const whole = readFile(path_);
    describe("sourceName", std::string(4096, 'x'));
    EXPECT_EQ(opening(), "");
    describe("sourceName", std::string(4097, 'x'));
    expectRefused("description is none of a store");
    describe("sourceName", std::string(50'000'000, 'x')); // NOLINT(bugprone-string-constructor)
    expectRefused("too big");
    writeFile(path_, whole);
    describe(std::string(64, 'k'), "");
    EXPECT_EQ(opening(), "");
    describe(std::string(65, 'k'), "");
    expectRefused("description is none of a store");
    writeFile(path_, whole);
    storefiles::change(path_, "UPDATE meta SET value = CAST(value AS BLOB) WHERE key = 'width'");
    expectRefused("description is none of a store");
    writeFile(path_, whole);
    storefiles::change(path_, std::string("INSERT INTO meta ") + kEndless + " SELECT n, n FROM r LIMIT 100000");
    expectRefused("description is none of a store");
}

TEST_F(HostileStoreTest, RowsThatNoTileHasAreDamage) {
    TileAddress const address{1, Band::HH, 0, 1, 1};
    std::string const whole = readFile(path_);
    ASSERT_FALSE(tileIsDamaged(address));
    for (std::string const change :
         {"value = 0", "value = 0, data = NULL", "data = NULL", "value = 1.5, data = NULL", "value = 'x', data = NULL",
          "value = 32768, data = NULL", "value = -32769, data = NULL", "crc = -1", "crc = crc + 4294967296",
          "crc = 'x'", "crc = crc + 0.5", "crc = x'00'", "data = ''", "data = x''", "data = CAST(data AS TEXT)",
          "data = zeroblob(200000000)", "data = data || x'00'", "data = substr(data, 2)"}) {
        writeFile(path_, whole);
        storefiles::change(path_, "UPDATE tiles SET " + change + " WHERE id = " + idText(address));
        seconds();
        EXPECT_TRUE(tileIsDamaged(address)) << change;
        EXPECT_LT(seconds(), 1.0) << change;
    }
}

// Its pages form a cycle: the keys do not grow.
TEST_F(HostileStoreTest, PagesThatFollowEachOtherForEverComeToAnEnd) {
    constexpr size_t kPageBytes = 4096;
    std::string file = readFile(path_);
    size_t changed = 0;
    // Interior pages of tables: from byte 12 on the places of cells, which begin with the number of a page.
    for (size_t page = kPageBytes; page < file.size(); page += kPageBytes) {
        if (file[page] != 5) continue;
        auto const byteAt = [&](size_t place) { return size_t{static_cast<unsigned char>(file[page + place])}; };
        size_t const cells = 256 * byteAt(3) + byteAt(4);
        std::string const first = file.substr(page + 256 * byteAt(12) + byteAt(13), 4);
        for (size_t cell = 0; cell < cells; ++cell)
            file.replace(page + 256 * byteAt(12 + 2 * cell) + byteAt(13 + 2 * cell), 4, first);
        ++changed;
    }
    ASSERT_EQ(changed, 1u);
    writeFile(path_, file);
    seconds();
    TileStore store(path_);
    EXPECT_GT(checkStore(store, [](size_t, size_t) {}).damages, 0u);
    EXPECT_THROW(store.storedTiles(), HostError);
    EXPECT_LT(seconds(), 2.0);
}

// SQLite would roll it back into the file, or read the log's pages instead of the file's.
TEST_F(HostileStoreTest, AJournalOrALogBesideItIsNotRead) {
    std::string const whole = readFile(path_);
    for (std::string const mode : {"DELETE", "WAL"}) {
        SCOPED_TRACE(mode);
        std::string const suffix = mode == "WAL" ? "-wal" : "-journal";
        std::string const other = folder_.path("other");
        writeFile(other, whole);
        storefiles::change(other, "UPDATE meta SET value = '17' WHERE key = 'width'");
        std::string const beside = storefiles::unfinishedChange(
            other, "PRAGMA journal_mode = " + mode, "UPDATE meta SET value = '18' WHERE key = 'width'", suffix);
        ASSERT_GT(beside.size(), 4096u);
        for (std::string const& name : folder_.names())
            if (name != "a.vlm") std::filesystem::remove(folder_.path(name));
        writeFile(path_ + suffix, beside);
        {
            TileStore store(path_);
            EXPECT_EQ(store.info().width, 100u);
            EXPECT_EQ(checkStore(store, [](size_t, size_t) {}).damages, 0u);
        }
        EXPECT_EQ(readFile(path_), whole);
        EXPECT_EQ(readFile(path_ + suffix), beside);
        EXPECT_EQ(folder_.names(), (Names{"a.vlm", "a.vlm" + suffix}));
        std::filesystem::remove(path_ + suffix);
    }
}

TEST_F(HostileStoreTest, AFileThatAsksForALogIsRefusedAndNoneIsMade) {
    storefiles::change(path_, "PRAGMA journal_mode = WAL");
    expectRefused("write version");
    std::filesystem::permissions(folder_.path(),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    expectRefused("write version");
    std::filesystem::permissions(folder_.path(), std::filesystem::perms::owner_all);
}

namespace {

struct Stop {};

} // namespace

// SQLite calls back about every ten thousand steps: this store has a few thousand rows of several steps each.
TEST_F(HostileStoreTest, ALongOperationIsInterrupted) {
    options_.replace = true;
    testpictures::import(testpictures::picture(1200, 900, 1, 8, Content::Noise), path_, options_);
    bool stop = false;
    TileStore store(path_, [&] {
        if (stop) throw Stop();
    });
    size_t const places = store.cellsWithData(1).size();
    stop = true;
    EXPECT_THROW(store.cellsWithData(1), Stop);
    EXPECT_THROW(store.storedTiles(), Stop);
    stop = false;
    EXPECT_EQ(store.cellsWithData(1).size(), places);
}
