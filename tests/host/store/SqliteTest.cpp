// Failures of the system and of SQLite become the right errors: a disk that does not answer is no damage.
#include "host/store/Sqlite.h"

#include "host/HostError.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreErrors.h"
#include "host/store/TileStore.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cerrno>
#include <limits>
#include <map>
#include <new>
#include <system_error>

using Kind = HostError::Kind;
using testpictures::Content;

namespace {

constexpr sqlite3_int64 kNever = std::numeric_limits<sqlite3_int64>::max();

// SQLite's own file access, except for the bytes from `failsFrom` on, which fail as on a broken disk.
struct BrokenDisk {
    BrokenDisk() : usual(sqlite3_vfs_find(nullptr)), vfs(*usual) {
        vfs.zName = "broken disk";
        vfs.xOpen = open;
        vfs.xGetLastError = lastError;
        sqlite3_vfs_register(&vfs, 1);
        current = this;
    }
    BrokenDisk(BrokenDisk const&) = delete;
    BrokenDisk& operator=(BrokenDisk const&) = delete;
    ~BrokenDisk() {
        sqlite3_vfs_unregister(&vfs);
        sqlite3_vfs_register(usual, 1);
        current = nullptr;
    }

    static int open(sqlite3_vfs*, char const* name, sqlite3_file* file, int flags, int* outFlags) {
        int const code = current->usual->xOpen(current->usual, name, file, flags, outFlags);
        if (code != SQLITE_OK) return code;
        current->read = file->pMethods->xRead;
        current->write = file->pMethods->xWrite;
        sqlite3_io_methods& methods = current->methods.emplace(file->pMethods, *file->pMethods).first->second;
        methods.xRead = readOrFail;
        methods.xWrite = writeOrFail;
        file->pMethods = &methods;
        return code;
    }

    static int readOrFail(sqlite3_file* file, void* to, int count, sqlite3_int64 offset) {
        if (offset + count <= current->failsFrom) return current->read(file, to, count, offset);
        errno = current->reason;
        return current->code;
    }

    static int writeOrFail(sqlite3_file* file, void const* from, int count, sqlite3_int64 offset) {
        if (!current->isFull) return current->write(file, from, count, offset);
        errno = ENOSPC;
        return SQLITE_FULL;
    }

    static int lastError(sqlite3_vfs*, int, char*) { return current->reason; }

    static BrokenDisk* current;
    sqlite3_vfs* usual;
    sqlite3_vfs vfs;
    std::map<sqlite3_io_methods const*, sqlite3_io_methods> methods; // of each kind of file
    int (*read)(sqlite3_file*, void*, int, sqlite3_int64) = nullptr;
    int (*write)(sqlite3_file*, void const*, int, sqlite3_int64) = nullptr;
    sqlite3_int64 failsFrom = kNever;
    bool isFull = false;
    int code = SQLITE_IOERR_READ; // of a read that fails
    int reason = EIO;             // the system's
};

BrokenDisk* BrokenDisk::current = nullptr;

class SqliteTest : public testing::Test {
protected:
    SqliteTest() {
        ImportOptions options;
        options.tileSize = 32;
        testpictures::import(testpictures::picture(300, 200, 3, 8, Content::Noise), path_, options);
    }

    template <class Action>
    static void expectReadError(Action const& action, int reason = EIO) {
        try {
            action();
            ADD_FAILURE() << "nothing is thrown";
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), Kind::MissingFile);
            EXPECT_NE(std::string(error.what()).find("cannot read"), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find(std::generic_category().message(reason)), std::string::npos)
                << error.what();
        }
    }

    // Of a disk whose reads fail with this code, for a reason of the system's: while the store is opened, from each of
    // these bytes on, and later.
    void expectNoDamage(int code, std::vector<sqlite3_int64> const& failsFrom, int reason = EIO) const {
        BrokenDisk disk;
        disk.code = code;
        disk.reason = reason;
        for (sqlite3_int64 const bytes : failsFrom) {
            disk.failsFrom = bytes;
            expectReadError([&] { TileStore const store(path_); }, reason);
        }
        disk.failsFrom = kNever;
        TileStore store(path_);
        disk.failsFrom = 20'000;
        expectReadError([&] { store.tile({1, Band::HH, 2, 4, 3}); }, reason);
        expectReadError([&] { checkStore(store, [](size_t, size_t) {}); }, reason);
        expectReadError([&] { store.cellsWithData(1); }, reason);
        expectReadError([&] { store.storedTiles(); }, reason);
        disk.failsFrom = kNever;
        EXPECT_EQ(checkStore(store, [](size_t, size_t) {}).damages, 0u) << "it has come back";
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
};

} // namespace

TEST_F(SqliteTest, ADiskThatDoesNotAnswerIsNoDamage) {
    expectNoDamage(SQLITE_IOERR_READ, {0, 100, 4096, 8000});
}

// SQLite's own file access answers so for these reasons, and statements then say that the file is malformed.
TEST_F(SqliteTest, ADiskThatSqliteTakesForADamagedFileIsNoDamage) {
    for (int const reason : {EIO, ENXIO, ERANGE}) {
        SCOPED_TRACE(reason);
        expectNoDamage(SQLITE_IOERR_CORRUPTFS, {8000}, reason);
    }
}

// The system's file of this process's memory: nothing is mapped at its beginning.
TEST_F(SqliteTest, ADiskThatDoesNotAnswerAtOnceIsNoDamageEither) {
    expectReadError([&] { TileStore const store("/proc/self/mem"); });
    expectReadError([] { TileStore::isStore("/proc/self/mem"); });
}

TEST_F(SqliteTest, AFullDiskIsToldByItsReason) {
    BrokenDisk disk;
    sqlite::Database database(path_, sqlite::Database::Mode::ReadWrite);
    disk.isFull = true;
    try {
        database.execute("UPDATE meta SET value = 'other' WHERE key = 'sourceName'");
        FAIL() << "it was written";
    } catch (sqlite::Failure const& failure) {
        EXPECT_EQ(failure.code(), SQLITE_FULL);
        EXPECT_EQ(std::string(failure.what()), std::generic_category().message(ENOSPC));
    }
}

TEST_F(SqliteTest, TooLittleMemoryIsNoDamage) {
    sqlite3_int64 const before = sqlite3_hard_heap_limit64(-1);
    sqlite3_hard_heap_limit64(sqlite3_memory_used() + 20'000);
    EXPECT_THROW(TileStore{path_}, std::bad_alloc);
    sqlite3_hard_heap_limit64(before);
    TileStore store(path_);
    sqlite3_hard_heap_limit64(sqlite3_memory_used() + 100);
    EXPECT_THROW(checkStore(store, [](size_t, size_t) {}), std::bad_alloc);
    sqlite3_hard_heap_limit64(before);
    EXPECT_EQ(checkStore(store, [](size_t, size_t) {}).damages, 0u);
}

// Found by the fuzz target store-edits: SQLite says then that it has no memory.
TEST_F(SqliteTest, ARowOfMoreBytesThanThereCanBeIsDamage) {
    TileStore store(VELMORA_TEST_STORES "/sizeBeyondSqlite.vlm");
    EXPECT_GT(checkStore(store, [](size_t, size_t) {}).damages, 0u);
    for (size_t level = 0; level <= store.info().levels; ++level) {
        try {
            store.cellsWithData(level);
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), Kind::DamagedStore) << error.what();
        }
    }
    sqlite::Database database(VELMORA_TEST_STORES "/sizeBeyondSqlite.vlm", sqlite::Database::Mode::ReadOnly);
    sqlite::Statement query(database, "SELECT value FROM tiles ORDER BY id");
    try {
        while (query.step())
            ;
        ADD_FAILURE() << "the row is read";
    } catch (sqlite::Failure const& failure) {
        EXPECT_STREQ(failure.what(), "a row says more bytes than there can be");
    }
}

TEST_F(SqliteTest, EachFailureIsTold) {
    struct Row {
        int code;
        Kind kind;
        char const* words;
    };
    for (Row const& row : {Row{SQLITE_BUSY, Kind::LockedStore, "is locked"},
                           {SQLITE_LOCKED, Kind::LockedStore, "is locked"},
                           {SQLITE_IOERR, Kind::MissingFile, "cannot read 'a': because"},
                           {SQLITE_PERM, Kind::MissingFile, "cannot read 'a': because"},
                           {SQLITE_AUTH, Kind::MissingFile, "cannot read 'a': because"},
                           {SQLITE_CANTOPEN, Kind::MissingFile, "cannot read 'a': because"},
                           {SQLITE_CORRUPT, Kind::DamagedStore, "is damaged: because"},
                           {SQLITE_NOTADB, Kind::DamagedStore, "is damaged: because"},
                           {SQLITE_TOOBIG, Kind::DamagedStore, "is damaged: because"},
                           {SQLITE_ERROR, Kind::DamagedStore, "is damaged: because"}}) {
        HostError const error = storeerrors::translated("a", sqlite::Failure("because", row.code));
        EXPECT_EQ(error.kind(), row.kind) << row.code;
        EXPECT_NE(std::string(error.what()).find(row.words), std::string::npos) << error.what();
    }
}

TEST_F(SqliteTest, AFileForReadingIsNotWrittenTo) {
    sqlite::Database database(path_, sqlite::Database::Mode::ReadOnly);
    for (std::string const statement :
         {"DELETE FROM tiles", "DROP INDEX tiles_with_data", "PRAGMA user_version = 7", "VACUUM",
          "PRAGMA journal_mode = WAL; DELETE FROM tiles", "ATTACH ':memory:' AS more", "CREATE TEMP TABLE more(a)"})
        EXPECT_THROW(database.execute(statement), sqlite::Failure) << statement;
    EXPECT_EQ(database.number("PRAGMA mmap_size"), 0);
    EXPECT_EQ(database.number("PRAGMA query_only"), 1);
    EXPECT_EQ(database.number("PRAGMA cell_size_check"), 1);
    EXPECT_EQ(database.number("PRAGMA trusted_schema"), 0);
}

TEST_F(SqliteTest, RowsAndStatementsThatAreTooLongFail) {
    sqlite::Database database(path_, sqlite::Database::Mode::ReadOnly);
    size_t const first = sqlite::Database::kFirstRowBytes;
    EXPECT_EQ(database.number("SELECT length(zeroblob(" + std::to_string(first) + "))"), 16384);
    EXPECT_THROW(database.number("SELECT length(zeroblob(" + std::to_string(first + 1) + "))"), sqlite::Failure);
    database.limitRows(100'000);
    EXPECT_EQ(database.number("SELECT length(zeroblob(100000))"), 100'000);
    EXPECT_THROW(database.number("SELECT length(zeroblob(100001))"), sqlite::Failure);
    EXPECT_THROW(database.number("SELECT 1 --" + std::string(2000, 'x')), sqlite::Failure);
}

TEST_F(SqliteTest, AStatementThatIsNoneFailsAtOnce) {
    sqlite::Database database(path_, sqlite::Database::Mode::ReadOnly);
    EXPECT_THROW(sqlite::Statement(database, "SELECT FROM WHERE"), sqlite::Failure);
    EXPECT_THROW(sqlite::Statement(database, "SELECT * FROM nothing"), sqlite::Failure);
}

TEST_F(SqliteTest, AStatementOfTooManyStepsFails) {
    sqlite::Database database(path_, sqlite::Database::Mode::ReadOnly);
    auto const countTo = [&](int last) {
        return database.number("WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM r LIMIT " +
                               std::to_string(last) + ") SELECT count(*) FROM r");
    };
    database.limitSteps(100'000);
    EXPECT_EQ(countTo(1000), 1000);
    EXPECT_THROW(countTo(100'000), sqlite::Failure);
    EXPECT_EQ(countTo(1000), 1000) << "each statement has steps of its own";
    sqlite::Statement rows(database, "WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM r LIMIT 100000)"
                                     " SELECT n FROM r");
    for (size_t n = 1; n <= 100'000; ++n)
        ASSERT_TRUE(rows.step()) << "so has each row";
    database.limitSteps(std::numeric_limits<size_t>::max());
    EXPECT_EQ(countTo(100'000), 100'000);
}
