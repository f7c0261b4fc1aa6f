#include "host/ImageReader.h"
#include "host/store/Sqlite.h"
#include "host/store/TileStore.h"
#include "tests/host/Process.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <random>
#include <thread>

namespace {

using Names = std::vector<std::string>;

class ProgramStoreTest : public testing::Test {
protected:
    void SetUp() override {
        testimages::writePattern8(image_, "", 230, 170, 3);
        before_ = folder_.names();
    }

    std::string path(std::string const& name) const { return folder_.path(name); }

    // Imports the image; the store and the image are then all there is.
    void import() {
        auto const result = runVelmora({"import", image_, store_, "--tile", "64"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        before_ = folder_.names();
        ASSERT_EQ(before_, (Names{"a.png", "a.store"}));
    }

    // One line on stderr that holds the words, and no file made.
    void expectFailure(Process::Result const& result, int exitCode, std::vector<std::string> const& words) const {
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.err.rfind("velmora: ", 0), 0u) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        for (auto const& word : words)
            EXPECT_NE(result.err.find(word), std::string::npos) << word << " in " << result.err;
        EXPECT_EQ(folder_.names(), before_);
    }

    void change(std::string const& statement) const {
        sqlite::Database(store_, sqlite::Database::Mode::ReadWrite).execute(statement);
    }

    TemporaryFolder folder_;
    std::string image_ = path("a.png");
    std::string store_ = path("a.store");
    Names before_;
};

std::vector<std::uint8_t> pixelsOf(std::string const& path) {
    ImageReader reader(path, ImageReader::Samples::kAsStored);
    std::vector<std::uint8_t> pixels;
    reader.read({0, 0, reader.width(), reader.height()}, pixels);
    return pixels;
}

} // namespace

TEST_F(ProgramStoreTest, AnImageComesBackSampleForSample) {
    testimages::writePattern16(path("b.tif"), "[tile,tile-width=64,tile-height=64]", 301, 207, 4);
    for (std::string const& image : {image_, path("b.tif")}) {
        auto const imported = runVelmora({"import", image, store_, "--force", "--jobs", "2"});
        ASSERT_EQ(imported.exitCode, 0) << imported.err;
        EXPECT_EQ(imported.err, "") << "no progress where stderr is no terminal";
        EXPECT_EQ(imported.out.rfind(store_ + ": ", 0), 0u) << imported.out;
        auto const exported = runVelmora({"export", store_, path("out.tif")});
        ASSERT_EQ(exported.exitCode, 0) << exported.err;
        EXPECT_EQ(exported.err, "");
        EXPECT_EQ(pixelsOf(path("out.tif")), pixelsOf(image));
        EXPECT_EQ(ImageReader(path("out.tif"), ImageReader::Samples::kAsStored).sampleBytes(),
                  ImageReader(image, ImageReader::Samples::kAsStored).sampleBytes());
    }
    EXPECT_EQ(folder_.names(), (Names{"a.png", "a.store", "b.tif", "out.tif"}));
}

TEST_F(ProgramStoreTest, TheResolutionIsKept) {
    testimages::writePattern8(path("b.tif"), "[resunit=cm,xres=4000,yres=2000]", 40, 30, 1);
    ASSERT_EQ(runVelmora({"import", path("b.tif"), store_}).exitCode, 0);
    auto const info = runVelmora({"info", store_});
    EXPECT_NE(info.out.find("0.25 x 0.5 microns"), std::string::npos) << info.out;
    ASSERT_EQ(runVelmora({"export", store_, path("out.tif")}).exitCode, 0);
    EXPECT_EQ(ImageReader(path("out.tif")).pixelsPerMillimetreX(), 4000);
    EXPECT_EQ(ImageReader(path("out.tif")).pixelsPerMillimetreY(), 2000);
}

TEST_F(ProgramStoreTest, InfoSaysWhatAStoreHolds) {
    import();
    auto const result = runVelmora({"info", store_});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (std::string const line :
         {"width                   230\n", "height                  170\n", "bands                   3, RGB\n",
          "levels                  2\n", "tile size               64\n", "pixel size              unknown\n",
          "made of                 a.png\n"})
        EXPECT_NE(result.out.find(line), std::string::npos) << line << result.out;
}

TEST_F(ProgramStoreTest, OptionsDecideTilesAndLevels) {
    ASSERT_EQ(runVelmora({"import", image_, store_, "--tile", "32", "--levels", "6"}).exitCode, 0);
    TileStore const store(store_);
    EXPECT_EQ(store.info().tileSize, 32u);
    EXPECT_EQ(store.info().levels, 6u);
}

TEST_F(ProgramStoreTest, CheckReadsEveryTile) {
    import();
    auto const whole = runVelmora({"check", store_});
    EXPECT_EQ(whole.exitCode, 0) << whole.err;
    size_t const tiles = storegeometry::totalTiles(TileStore(store_).info());
    EXPECT_EQ(whole.out, store_ + ": " + std::to_string(tiles) + " tiles, all as they were written\n");
    change("UPDATE tiles SET crc = crc + 1 WHERE id = (SELECT max(id) FROM tiles)");
    auto const damaged = runVelmora({"check", store_});
    expectFailure(damaged, 10, {"damaged in 1 places"});
    EXPECT_NE(damaged.out.find("tile 0,0 of HH, plane 2, level 2"), std::string::npos) << damaged.out;
    expectFailure(runVelmora({"export", store_, path("out.tif")}), 10, {"tile 0,0 of HH, plane 2, level 2"});
}

TEST_F(ProgramStoreTest, WrongUsageIsExitCode2) {
    expectFailure(runVelmora({"import"}), 2, {"NAMES"});
    expectFailure(runVelmora({"import", image_}), 2, {"an image and a store", "--built-in"});
    expectFailure(runVelmora({"import", image_, store_, "more"}), 2, {"an image and a store"});
    expectFailure(runVelmora({"import", "", store_}), 2, {"empty"});
    expectFailure(runVelmora({"import", "--built-in", image_, store_}), 2, {"--built-in takes one name"});
    expectFailure(runVelmora({"import", image_, store_, "--tile", "17"}), 2, {"--tile", "even"});
    expectFailure(runVelmora({"import", image_, store_, "--tile", "8"}), 2, {"--tile", "16"});
    expectFailure(runVelmora({"import", image_, store_, "--tile", "x"}), 2, {"--tile"});
    expectFailure(runVelmora({"import", image_, store_, "--levels", "13"}), 2, {"--levels", "12"});
    expectFailure(runVelmora({"import", image_, store_, "--levels", "some"}), 2, {"--levels"});
    expectFailure(runVelmora({"import", image_, store_, "--jobs", "0"}), 2, {"--jobs"});
    expectFailure(runVelmora({"export", store_}), 2, {"OUTPUT"});
    expectFailure(runVelmora({"check"}), 2, {"STORE"});
}

TEST_F(ProgramStoreTest, EveryFailureHasItsExitCode) {
    expectFailure(runVelmora({"import", path("none.tif"), store_}), 3, {"none.tif", "no such file"});
    expectFailure(runVelmora({"import", folder_.path(), store_}), 4, {"folder"});
    expectFailure(runVelmora({"import", image_, path("none/a.store")}), 6, {"none/a.store", "No such"});
    expectFailure(runVelmora({"import", image_, folder_.path()}), 6, {"regular file"});
    for (std::string const command : {"check", "info"}) {
        expectFailure(runVelmora({command, path("none.store")}), 3, {"none.store", "no such file"});
        expectFailure(runVelmora({command, image_}), 9, {"no tile store", "velmora import"});
    }
    expectFailure(runVelmora({"export", image_, path("out.tif")}), 9, {"no tile store"});
    import();
    expectFailure(runVelmora({"export", store_, path("none/out.tif")}), 6, {"none/out.tif"});
    change("PRAGMA user_version = 7");
    expectFailure(runVelmora({"info", store_}), 11, {"version 7"});
    change("PRAGMA user_version = 1");
    sqlite::Database writer(store_, sqlite::Database::Mode::ReadWrite);
    writer.execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
    expectFailure(runVelmora({"info", store_}), 12, {"locked"});
}

TEST_F(ProgramStoreTest, AnExistingFileIsReplacedOnlyByForce) {
    writeFile(store_, "mine");
    before_ = folder_.names();
    expectFailure(runVelmora({"import", image_, store_}), 6, {"exists already", "--force"});
    EXPECT_EQ(readFile(store_), "mine");
    EXPECT_EQ(runVelmora({"import", image_, store_, "--force"}).exitCode, 0);
    EXPECT_EQ(TileStore(store_).info().width, 230u);
    EXPECT_EQ(folder_.names(), before_);
}

TEST_F(ProgramStoreTest, NeitherImportNorExportReplacesWhatItReads) {
    std::string const before = readFile(image_);
    expectFailure(runVelmora({"import", image_, image_, "--force"}), 6, {"it is the image itself"});
    EXPECT_EQ(readFile(image_), before);
    import();
    std::filesystem::create_symlink("a.store", path("link"));
    before_ = folder_.names();
    expectFailure(runVelmora({"export", store_, path("link")}), 6, {"it is the tile store itself"});
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, 0);
}

TEST_F(ProgramStoreTest, AFullDiskIsExitCode6AndLeavesNothing) {
    size_t const maxFileBytes = 60000;
    expectFailure(runVelmora({"import", image_, store_}, {}, maxFileBytes), 6, {"a.store", "File too large"});
    // In the middle of the import, too, where more has been written than SQLite keeps in memory.
    std::mt19937 random(1);
    std::string noise = "P6\n1500 1000\n255\n";
    for (size_t i = 0; i < 1500 * 1000 * 3; ++i)
        noise += static_cast<char>(random());
    writeFile(path("noise.ppm"), noise);
    before_ = folder_.names();
    expectFailure(runVelmora({"import", path("noise.ppm"), store_}, {}, 4'000'000), 6, {"a.store", "File too large"});
    std::filesystem::remove(path("noise.ppm"));
    import();
    expectFailure(runVelmora({"export", store_, path("out.tif")}, {}, 2000), 6, {"out.tif", "File too large"});
}

TEST_F(ProgramStoreTest, ADamagedImageLeavesNothing) {
    for (std::string const name : {"cut.png", "cut.tif"}) {
        testimages::writePattern8(path(name), "", 700, 500, 3);
        truncateFile(path(name), 70);
        before_ = folder_.names();
        expectFailure(runVelmora({"import", path(name), store_}), 4, {name, "undamaged"});
    }
}

// The built-in picture takes seconds: once the temporary file is there, the import is under way.
TEST_F(ProgramStoreTest, AnInterruptedImportLeavesNothing) {
    for (int const signal : {SIGINT, SIGTERM}) {
        Process process({"import", "--built-in", store_});
        while (process.running() && folder_.names() == before_)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        process.signal(signal);
        expectFailure(process.wait(), 130, {"interrupted"});
    }
}
