// No checksum covers SQLite's header of a store's file: its fields are compared with fixed values.
#include "host/store/StoreHead.h"

#include "host/HostError.h"
#include "host/store/StoreExporter.h"
#include "tests/host/store/DocumentedReader.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <sys/stat.h>

using Kind = HostError::Kind;
using testpictures::Content;

namespace {

constexpr size_t kHeadBytes = 100;
constexpr size_t kVersionAt = 60;
constexpr size_t kApplicationIdAt = 68;

// The parameter is the file's version. No tile of the picture has only one value: with the wrong version all of them
// would decode, checksums and all, into other samples.
class StoreHeadTest : public testing::TestWithParam<std::int64_t> {
protected:
    StoreHeadTest() {
        ImportOptions options;
        options.tileSize = 32;
        testpictures::import(testpictures::picture(100, 70, 3, 8, Content::Noise), path_, options);
        if (GetParam() < 4) storefiles::rewriteAs(GetParam(), path_);
        whole_ = readFile(path_);
        ids_ = DocumentedReader(path_).ids();
        samples_ = samples();
    }

    // Every tile's.
    std::vector<std::vector<std::int16_t>> samples() const {
        TileStore store(path_);
        std::vector<std::vector<std::int16_t>> all;
        for (std::int64_t const id : ids_) {
            TileAddress const address{static_cast<size_t>(id >> 53), static_cast<Band>(id >> 2 & 7),
                                      static_cast<size_t>(id & 3), static_cast<size_t>(id >> 5 & 0xffffff),
                                      static_cast<size_t>(id >> 29 & 0xffffff)};
            EXPECT_EQ(store.uniformValue(address), std::nullopt);
            all.push_back(store.tile(address));
        }
        return all;
    }

    // The kind of error of opening it; nothing if it opens.
    std::optional<Kind> failure() const {
        try {
            TileStore const store(path_);
        } catch (HostError const& error) {
            return error.kind();
        }
        return std::nullopt;
    }

    void expectDamaged() const {
        EXPECT_TRUE(TileStore::isStore(path_)) << "it would be read as an image";
        EXPECT_EQ(failure(), Kind::DamagedStore);
    }

    void setVersion(std::int64_t version) const {
        std::string file = whole_;
        for (size_t i = 0; i < 4; ++i)
            file[kVersionAt + i] = static_cast<char>(version >> (24 - 8 * i));
        writeFile(path_, file);
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    std::string whole_;
    std::vector<std::int64_t> ids_;
    std::vector<std::vector<std::int16_t>> samples_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Versions, StoreHeadTest, testing::Values(1, 2, 3, 4),
                         [](auto const& test) { return "Version" + std::to_string(test.param); });

TEST_P(StoreHeadTest, EveryBitOfTheVersionAndOfTheMarksIsDamage) {
    for (auto const& [offset, bytes] : {std::pair<size_t, size_t>{0, 16}, {kVersionAt, 4}, {kApplicationIdAt, 4}}) {
        for (size_t bit = 8 * offset; bit < 8 * (offset + bytes); ++bit) {
            SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(bit / 8));
            writeFile(path_, storefiles::withBit(whole_, bit));
            expectDamaged();
        }
    }
}

TEST_P(StoreHeadTest, AnotherVersionIsDamageWhicheverItIs) {
    for (std::int64_t const version : {-2147483648LL, -1LL, 0LL, 1LL, 2LL, 3LL, 4LL, 5LL, 2147483647LL}) {
        if (version == GetParam()) continue;
        SCOPED_TRACE(version);
        setVersion(version);
        expectDamaged();
    }
}

TEST_P(StoreHeadTest, AnyBitOfItIsDamageOrHarmless) {
    size_t noticed = 0;
    for (size_t bit = 0; bit < 8 * kHeadBytes; ++bit) {
        SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(bit / 8));
        writeFile(path_, storefiles::withBit(whole_, bit));
        try {
            ASSERT_EQ(samples(), samples_);
        } catch (HostError const& error) {
            ASSERT_EQ(error.kind(), Kind::DamagedStore) << error.what();
            ++noticed;
        }
    }
    EXPECT_GT(noticed, 8 * 40u);
}

// Each field of the table in docs/STORE.md, set to what another database may have there.
TEST_P(StoreHeadTest, EachFieldThatChangesWhatTheRestMeansIsNamed) {
    struct Field {
        size_t offset;
        char value;
        char const* word;
    };
    for (Field const& field : {Field{16, 8, "pages have 2048 bytes"},
                               {18, 2, "write version"},
                               {19, 2, "read version"},
                               {20, 8, "reserved bytes"},
                               {21, 65, "largest payload"},
                               {22, 33, "smallest payload"},
                               {23, 33, "leaf payload"},
                               {47, 1, "schema format"},
                               {50, 100, "size of the cache"},
                               {55, 1, "vacuum mode"},
                               {59, 2, "text encoding"},
                               {30, 1, "bytes instead of"}}) {
        std::string file = whole_;
        file[field.offset] = field.value;
        writeFile(path_, file);
        try {
            TileStore const store(path_);
            ADD_FAILURE() << field.word << " is not noticed";
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), Kind::DamagedStore) << error.what();
            EXPECT_NE(std::string(error.what()).find(field.word), std::string::npos) << error.what();
        }
    }
}

TEST_P(StoreHeadTest, MoreThanADamagedByteOfTheMarksIsNoStore) {
    std::string file = whole_;
    file[kApplicationIdAt] = 'W';
    file[kApplicationIdAt + 3] = 'T';
    writeFile(path_, file);
    EXPECT_EQ(failure(), Kind::NoStore);
    EXPECT_TRUE(TileStore::isStore(path_)) << "a database of another program is no image either";
    file[0] = 'T';
    writeFile(path_, file);
    EXPECT_EQ(failure(), Kind::NoStore);
    EXPECT_FALSE(TileStore::isStore(path_));
}

TEST_P(StoreHeadTest, AFileThatIsLongerIsRead) {
    writeFile(path_, whole_ + "a line that a mail gateway has added\n");
    EXPECT_EQ(failure(), std::nullopt);
}

// A store that reads as one of a known version is no newer one.
TEST(NewerStoreTest, AStoreOfALaterVersionIsNamed) {
    TemporaryFolder const folder;
    std::string const path = folder.path("a.vlm");
    testpictures::import(testpictures::picture(40, 30, 1, 8, Content::Noise), path);
    storefiles::change(path, "UPDATE meta SET value = '5' WHERE key = 'version'; PRAGMA user_version = 5");
    storefiles::sealDescription(path);
    try {
        TileStore const store(path);
        FAIL() << "it opens";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), Kind::NewerStore);
        EXPECT_NE(std::string(error.what()).find("has version 5, this program knows up to 4"), std::string::npos)
            << error.what();
    }
}

// Opening it would block until it has a writer.
TEST(OtherFilesTest, APipeIsNoStoreAndNobodyWaitsForIt) {
    TemporaryFolder const folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(TileStore::isStore(folder.path("pipe")));
    EXPECT_THROW(TileStore{folder.path("pipe")}, HostError);
}

// An earlier call may have left any number in errno.
TEST(OtherFilesTest, AFileThatEndsAmidTheHeadIsReadOnce) {
    TemporaryFolder const folder;
    writeFile(folder.path("short"), "SQLite");
    for (int const earlier : {0, EINTR, EIO}) {
        errno = earlier;
        EXPECT_FALSE(TileStore::isStore(folder.path("short"))) << earlier;
    }
}

TEST(OtherFilesTest, ALinkToAStoreIsOne) {
    TemporaryFolder const folder;
    testpictures::import(testpictures::picture(40, 30, 1, 8, Content::Noise), folder.path("a.vlm"));
    std::filesystem::create_symlink("a.vlm", folder.path("link"));
    std::filesystem::create_symlink("round", folder.path("round"));
    EXPECT_TRUE(TileStore::isStore(folder.path("link")));
    EXPECT_EQ(TileStore(folder.path("link")).info().width, 40u);
    EXPECT_FALSE(TileStore::isStore(folder.path("round")));
    EXPECT_THROW(TileStore{folder.path("round")}, HostError);
}

// Names with a meaning in SQLite's URI form.
TEST(OtherFilesTest, AStoreMayHaveAnyName) {
    TemporaryFolder const folder;
    for (std::string const name : {"a?immutable=0", "a#b", "a%41", "%", "a b&mode=memory", "\xff\xfe", "file:a"}) {
        testpictures::import(testpictures::picture(40, 30, 1, 8, Content::Noise), folder.path(name));
        EXPECT_EQ(TileStore(folder.path(name)).info().width, 40u) << name;
        EXPECT_EQ(TileStore("/" + folder.path(name)).info().width, 40u) << "//" << name;
    }
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(TileStore("a?immutable=0").info().width, 40u);
    EXPECT_EQ(TileStore("file:a").info().width, 40u);
    std::filesystem::current_path(before);
}
