#include "host/store/TileStore.h"

#include "host/HostError.h"
#include "host/store/Sqlite.h"
#include "host/store/StoreCheck.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using Kind = HostError::Kind;
using testpictures::Content;

namespace {

using Names = std::vector<std::string>;

template <class Action>
HostError failure(Action const& action) {
    try {
        action();
    } catch (HostError const& error) {
        return error;
    }
    throw std::logic_error("nothing was thrown");
}

class TileStoreTest : public testing::Test {
protected:
    TileStoreTest() {
        options_.tileSize = 32;
        options_.sourceName = "noise.tif";
        info_ = testpictures::import(testpictures::picture(100, 70, 3, 8, Content::Noise), path_, options_);
    }

    void change(std::string const& statement) const {
        sqlite::Database(path_, sqlite::Database::Mode::ReadWrite).execute(statement);
    }

    void expectFailure(Kind kind, std::vector<std::string> const& words) const {
        HostError const error = failure([&] { TileStore store(path_); });
        EXPECT_EQ(error.kind(), kind) << error.what();
        for (auto const& word : words)
            EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << word << " in " << error.what();
    }

    StoreCheckResult checked() const {
        TileStore store(path_);
        return checkStore(store, [](size_t, size_t) {});
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    ImportOptions options_;
    StoreInfo info_;
};

} // namespace

TEST_F(TileStoreTest, KnowsWhatItHolds) {
    TileStore const store(path_);
    StoreInfo const& info = store.info();
    EXPECT_EQ(info.width, 100u);
    EXPECT_EQ(info.height, 70u);
    EXPECT_EQ(info.bands, 3u);
    EXPECT_EQ(info.bits, 8u);
    EXPECT_EQ(info.residualBits, 0u);
    EXPECT_EQ(info.tileSize, 32u);
    EXPECT_EQ(info.levels, 2u) << "100, 52, 28 samples";
    EXPECT_EQ(info.micronsPerPixelX, 0);
    EXPECT_EQ(info.sourceName, "noise.tif");
    EXPECT_EQ(info.interpretation, "RGB");
}

TEST_F(TileStoreTest, TilesThatNoStoreHasAreRefused) {
    TileStore store(path_);
    for (TileAddress const& address :
         {TileAddress{1, Band::LL, 0, 0, 0}, TileAddress{0, Band::HL, 0, 0, 0}, TileAddress{4, Band::HL, 0, 0, 0},
          TileAddress{1, Band::HL, 3, 0, 0}, TileAddress{1, Band::HL, 0, 2, 0}, TileAddress{1, Band::HL, 0, 0, 2},
          TileAddress{0, Band::Residual, 0, 0, 0}}) {
        EXPECT_THROW(store.tile(address), std::invalid_argument) << toText(address);
        EXPECT_THROW(store.uniformValue(address), std::invalid_argument) << toText(address);
    }
    EXPECT_EQ(store.tile({1, Band::HL, 0, 1, 1}).size(), 32u * 32u);
}

TEST_F(TileStoreTest, SeveralHaveTheSameFileOpen) {
    TileStore first(path_);
    TileStore second(path_);
    TileAddress const address{2, Band::HH, 1, 0, 0};
    EXPECT_EQ(first.tile(address), second.tile(address));
}

TEST_F(TileStoreTest, AReadOnlyFileInAReadOnlyFolderOpens) {
    chmod(path_.c_str(), 0444);
    chmod(folder_.path().c_str(), 0555);
    EXPECT_EQ(checked().damages, 0u);
    chmod(folder_.path().c_str(), 0755);
    EXPECT_EQ(folder_.names(), Names{"a.vlm"});
}

TEST_F(TileStoreTest, AMissingFileIsNamed) {
    path_ = folder_.path("none");
    expectFailure(Kind::MissingFile, {"none", "no such file"});
}

TEST_F(TileStoreTest, OtherFilesAreNoStore) {
    path_ = folder_.path();
    expectFailure(Kind::NoStore, {"is no tile store"});
    path_ = folder_.path("b");
    for (std::string const& content : {std::string(), std::string("text"), std::string(100'000, '\x07')}) {
        writeFile(path_, content);
        expectFailure(Kind::NoStore, {"is no tile store", "velmora import"});
    }
    writeFile(path_, "");
    change("CREATE TABLE other(a)");
    expectFailure(Kind::NoStore, {"is no tile store"});
}

TEST_F(TileStoreTest, ATruncatedFileIsDamaged) {
    for (unsigned const share : {99u, 50u}) {
        truncateFile(path_, share);
        expectFailure(Kind::DamagedStore, {"damaged", "import the picture again"});
    }
}

TEST_F(TileStoreTest, ALockedFileIsNamed) {
    sqlite::Database writer(path_, sqlite::Database::Mode::ReadWrite);
    writer.execute("BEGIN EXCLUSIVE");
    expectFailure(Kind::LockedStore, {"locked", "try again"});
    writer.execute("ROLLBACK");
    EXPECT_EQ(checked().damages, 0u);
}

TEST_F(TileStoreTest, AWholeStoreChecksWithoutDamage) {
    StoreCheckResult const result = checked();
    EXPECT_EQ(result.tiles, storegeometry::totalTiles(info_));
    EXPECT_EQ(result.damages, 0u);
    EXPECT_TRUE(result.descriptions.empty());
}

// The highest key of level 1 is that of its last tile: HH, plane 2, column 1, row 1.
TEST_F(TileStoreTest, AFlippedByteIsFoundAndItsTileNamed) {
    TileAddress const address{1, Band::HH, 2, 1, 1};
    std::string const bytes = [&] {
        sqlite::Database database(path_, sqlite::Database::Mode::ReadOnly);
        sqlite::Statement query(database, "SELECT data FROM tiles WHERE id < (2 << 53) ORDER BY id DESC LIMIT 1");
        query.step();
        auto const blob = query.blob(0);
        return std::string(blob.begin(), blob.end());
    }();
    std::string file = readFile(path_);
    std::string const part = bytes.substr(bytes.size() / 2, 24);
    size_t const position = file.find(part);
    ASSERT_NE(position, std::string::npos);
    file[position + 5] = static_cast<char>(file[position + 5] ^ 0x10);
    writeFile(path_, file);

    TileStore store(path_);
    HostError const error = failure([&] { store.tile(address); });
    EXPECT_EQ(error.kind(), Kind::DamagedStore);
    EXPECT_NE(std::string(error.what()).find("tile 1,1 of HH, plane 2, level 1"), std::string::npos) << error.what();
    StoreCheckResult const result = checked();
    EXPECT_EQ(result.damages, 1u);
    EXPECT_EQ(result.tiles, storegeometry::totalTiles(info_));
    EXPECT_EQ(result.descriptions, std::vector<std::string>{error.what()});
}

TEST_F(TileStoreTest, MissingAndSurplusTilesAndWrongValuesAreFound) {
    change("DELETE FROM tiles WHERE id = (SELECT max(id) FROM tiles)");
    StoreCheckResult const missing = checked();
    EXPECT_EQ(missing.damages, 1u);
    EXPECT_NE(missing.descriptions.at(0).find("tile 0,0 of HH, plane 2, level 2 is missing"), std::string::npos);
    change("INSERT INTO tiles VALUES(1, 0, 0, NULL), (2, 0, 0, NULL)");
    EXPECT_EQ(checked().damages, 2u);
    change("UPDATE tiles SET value = 1, data = NULL WHERE id = (SELECT max(id) FROM tiles)");
    EXPECT_EQ(checked().damages, 3u);
    change("UPDATE tiles SET value = 70000 WHERE id = (SELECT max(id) FROM tiles)");
    EXPECT_EQ(checked().damages, 3u);
}

TEST_F(TileStoreTest, OfManyDamagesTheFirstAreDescribed) {
    change("UPDATE tiles SET crc = crc + 1");
    StoreCheckResult const result = checked();
    EXPECT_EQ(result.damages, result.tiles);
    EXPECT_EQ(result.descriptions.size(), StoreCheckResult::kMaxDescribed);
}

TEST_F(TileStoreTest, AnImportLeavesAnExistingFileAloneUnlessToldOtherwise) {
    std::string const before = readFile(path_);
    auto const picture = testpictures::picture(10, 10, 1, 8, Content::Ramp);
    HostError const error = failure([&] { testpictures::import(picture, path_, options_); });
    EXPECT_EQ(error.kind(), Kind::UnwritableOutput);
    EXPECT_NE(std::string(error.what()).find("--force"), std::string::npos);
    EXPECT_EQ(readFile(path_), before);
    options_.replace = true;
    testpictures::import(picture, path_, options_);
    EXPECT_EQ(TileStore(path_).info().width, 10u);
    EXPECT_EQ(folder_.names(), Names{"a.vlm"});
}

TEST_F(TileStoreTest, AnImportThatIsStoppedLeavesNothing) {
    auto const picture = testpictures::picture(300, 300, 3, 8, Content::Noise);
    struct Stop {};
    for (size_t const stopAt : {0u, 128u, 300u})
        EXPECT_THROW(importStore([&] { return testpictures::source(picture); }, folder_.path("b"), options_,
                                 [=](size_t done, size_t) {
                                     if (done >= stopAt) throw Stop();
                                 }),
                     Stop);
    EXPECT_EQ(folder_.names(), Names{"a.vlm"});
}

TEST_F(TileStoreTest, AFolderThatIsNotThereIsAnUnwritableOutput) {
    auto const picture = testpictures::picture(10, 10, 1, 8, Content::Ramp);
    HostError const error = failure([&] { testpictures::import(picture, folder_.path("none/a"), options_); });
    EXPECT_EQ(error.kind(), Kind::UnwritableOutput);
}
