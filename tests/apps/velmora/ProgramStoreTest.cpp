#include "host/image/ImageReader.h"
#include "host/store/Sqlite.h"
#include "host/store/TileStore.h"
#include "tests/apps/velmora/Process.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

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

    // Imports the image; then the image and the store are the only files.
    void import() {
        auto const result = runVelmora({"import", image_, store_, "--tile", "64"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        before_ = folder_.names();
        ASSERT_EQ(before_, (Names{"a.png", "a.vlm"}));
    }

    // Expects one line on stderr with these words, and no file made.
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

    // Every command that reads a store fails in the same way.
    void expectReadersFail(int exitCode, std::vector<std::string> const& words) const {
        expectFailure(runVelmora({"info", store_}), exitCode, words);
        expectFailure(runVelmora({"check", store_}), exitCode, words);
        expectFailure(runVelmora({"export", store_, path("out.tif")}), exitCode, words);
    }

    TemporaryFolder folder_;
    std::string image_ = path("a.png");
    std::string store_ = path("a.vlm");
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
        auto const exported = runVelmora({"export", store_, path("out.tif"), "--force"});
        ASSERT_EQ(exported.exitCode, 0) << exported.err;
        EXPECT_EQ(exported.err, "");
        EXPECT_EQ(pixelsOf(path("out.tif")), pixelsOf(image));
        EXPECT_EQ(ImageReader(path("out.tif"), ImageReader::Samples::kAsStored).sampleBytes(),
                  ImageReader(image, ImageReader::Samples::kAsStored).sampleBytes());
    }
    EXPECT_EQ(folder_.names(), (Names{"a.png", "a.vlm", "b.tif", "out.tif"}));
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
    expectFailure(damaged, 10, {"damaged in 1 place;"});
    EXPECT_NE(damaged.out.find("tile 0,0 of HH, plane 2, level 2"), std::string::npos) << damaged.out;
    expectFailure(runVelmora({"export", store_, path("out.tif")}), 10, {"tile 0,0 of HH, plane 2, level 2"});
}

TEST_F(ProgramStoreTest, WrongUsageIsExitCode2) {
    expectFailure(runVelmora({"import"}), 2, {"an image and a store have to be named"});
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
    expectFailure(runVelmora({"import", image_, path("none/a.vlm")}), 6, {"none/a.vlm", "No such"});
    expectFailure(runVelmora({"import", image_, folder_.path()}), 6, {"regular file"});
    for (std::string const command : {"check", "info"})
        expectFailure(runVelmora({command, path("none.vlm")}), 3, {"none.vlm", "no such file"});
    expectFailure(runVelmora({"check", image_}), 9, {"no tile store", "velmora import"});
    // A file that is called a store is to be one.
    std::filesystem::copy_file(image_, store_);
    for (std::string const command : {"check", "info"}) {
        auto const result = runVelmora({command, store_});
        EXPECT_EQ(result.exitCode, 9);
        EXPECT_NE(result.err.find("no tile store; make one with velmora import"), std::string::npos) << result.err;
    }
    std::filesystem::remove(store_);
    expectFailure(runVelmora({"export", image_, path("out.tif")}), 9, {"no tile store"});
    import();
    expectFailure(runVelmora({"export", store_, path("none/out.tif")}), 6, {"none/out.tif"});
    expectFailure(runVelmora({"import", store_, path("b.vlm")}), 4, {"a tile store already", "velmora export"});
    change("UPDATE meta SET value = '0' WHERE key = 'width'");
    expectFailure(runVelmora({"import", store_, path("b.vlm")}), 10, {"damaged"});
    change("PRAGMA application_id = 0");
    expectFailure(runVelmora({"import", store_, path("b.vlm")}), 9, {"no tile store"});
}

TEST_F(ProgramStoreTest, ANewerStoreIsExitCode11) {
    import();
    change("UPDATE meta SET value = '7' WHERE key = 'version'; PRAGMA user_version = 7");
    storefiles::sealDescription(store_);
    expectReadersFail(11, {"a.vlm", "version 7", "newer velmora"});
}

TEST_F(ProgramStoreTest, ALockedStoreIsExitCode12) {
    import();
    sqlite::Database writer(store_, sqlite::Database::Mode::ReadWrite);
    writer.execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
    expectReadersFail(12, {"a.vlm", "locked", "try again"});
    writer.execute("ROLLBACK; PRAGMA locking_mode = NORMAL; PRAGMA user_version");
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, 0);
}

TEST_F(ProgramStoreTest, AStoreCutOffIsExitCode10) {
    import();
    for (unsigned const share : {99u, 60u, 20u}) {
        truncateFile(store_, share);
        expectReadersFail(10, {"a.vlm", "damaged", "import the picture again"});
    }
}

TEST_F(ProgramStoreTest, AStoreThatIsOverwrittenIsExitCode9Or10) {
    import();
    std::string const whole = readFile(store_);
    // After the header: the pages of the description and of the tiles.
    writeFile(store_, whole.substr(0, 100) + std::string(whole.size() - 100, '\x55'));
    expectReadersFail(10, {"a.vlm", "damaged"});
    writeFile(store_, std::string(whole.size(), '\x55'));
    expectReadersFail(9, {"a.vlm", "no tile store"});
    writeFile(store_, "");
    expectReadersFail(9, {"a.vlm", "no tile store"});
}

TEST_F(ProgramStoreTest, AFolderOrFileThatMustNotBeWrittenToIsRead) {
    if (!makePermissionsCount()) GTEST_SKIP() << "root, and its right to write everywhere stays with its children";
    import();
    TemporaryFolder const elsewhere;
    std::filesystem::permissions(store_, std::filesystem::perms::owner_read);
    std::filesystem::permissions(folder_.path(),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    EXPECT_EQ(runVelmora({"info", store_}).exitCode, 0);
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, 0);
    EXPECT_EQ(runVelmora({"export", store_, elsewhere.path("out.tif")}).exitCode, 0);
    EXPECT_EQ(pixelsOf(elsewhere.path("out.tif")), pixelsOf(image_));
    expectFailure(runVelmora({"import", image_, store_, "--force"}), 6, {"a.vlm", "Permission denied"});
    expectFailure(runVelmora({"import", image_, path("b.vlm")}), 6, {"b.vlm", "Permission denied"});
    expectFailure(runVelmora({"export", store_, path("out.tif")}), 6, {"out.tif", "Permission denied"});
    std::filesystem::permissions(folder_.path(), std::filesystem::perms::owner_all);
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, 0);
}

TEST_F(ProgramStoreTest, FilesThatMustNotBeReadAreExitCode3) {
    if (!makePermissionsCount()) GTEST_SKIP() << "root, and its right to read everything stays with its children";
    import();
    std::filesystem::permissions(store_, std::filesystem::perms::none);
    for (std::string const command : {"info", "check"})
        expectFailure(runVelmora({command, store_}), 3, {"a.vlm", "Permission denied"});
    expectFailure(runVelmora({"export", store_, path("out.tif")}), 3, {"a.vlm", "Permission denied"});
    std::filesystem::permissions(image_, std::filesystem::perms::none);
    expectFailure(runVelmora({"import", image_, path("b.vlm")}), 3, {"a.png", "Permission denied"});
}

// Its own output is a file here.
TEST_F(ProgramStoreTest, AFullDiskBehindTheStandardOutputIsExitCode6) {
    import();
    size_t const maxFileBytes = 200;
    expectFailure(runVelmora({"info", store_}, {}, maxFileBytes), 6, {"standard output", "File too large"});
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
    expectFailure(runVelmora({"import", image_, image_, "--force"}), 6, {"it is the input itself"});
    EXPECT_EQ(readFile(image_), before);
    import();
    std::filesystem::create_symlink("a.vlm", path("link.tif"));
    before_ = folder_.names();
    expectFailure(runVelmora({"export", store_, path("link.tif"), "--force"}), 6, {"it is the input itself"});
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, 0);
}

TEST_F(ProgramStoreTest, AFullDiskIsExitCode6AndLeavesNothing) {
    size_t const maxFileBytes = 60000;
    expectFailure(runVelmora({"import", image_, store_}, {}, maxFileBytes), 6, {"a.vlm", "File too large"});
    // Also in the middle of the import, when more has been written than SQLite's cache holds.
    std::mt19937 random(1);
    std::string noise = "P6\n1500 1000\n255\n";
    for (size_t i = 0; i < 1500 * 1000 * 3; ++i)
        noise += static_cast<char>(random());
    writeFile(path("noise.ppm"), noise);
    before_ = folder_.names();
    expectFailure(runVelmora({"import", path("noise.ppm"), store_}, {}, 4'000'000), 6, {"a.vlm", "File too large"});
    std::filesystem::remove(path("noise.ppm"));
    import();
    std::string const before = readFile(store_);
    expectFailure(runVelmora({"export", store_, path("out.tif")}, {}, 2000), 6, {"out.tif", "File too large"});
    expectFailure(runVelmora({"import", image_, store_, "--force"}, {}, 2000), 6, {"a.vlm", "File too large"});
    EXPECT_EQ(readFile(store_), before);
}

TEST_F(ProgramStoreTest, ADamagedImageLeavesNothing) {
    for (std::string const name : {"cut.png", "cut.tif"}) {
        testimages::writePattern8(path(name), "", 700, 500, 3);
        truncateFile(path(name), 70);
        before_ = folder_.names();
        expectFailure(runVelmora({"import", path(name), store_}), 4, {name, "undamaged"});
    }
}

// The built-in picture takes seconds: once the temporary file exists, the import is in progress.
TEST_F(ProgramStoreTest, AnInterruptedImportLeavesNothing) {
    for (int const signal : {SIGINT, SIGTERM}) {
        Process process({"import", "--built-in", store_});
        while (process.running() && folder_.names() == before_)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        process.signal(signal);
        expectFailure(process.wait(), 130, {"interrupted"});
    }
}

// Wherever memory runs out, the program ends with one line and leaves no incomplete file.
TEST_F(ProgramStoreTest, AnImportShortOfMemoryEndsWithALine) {
    size_t failed = 0;
    for (long n = 1;; n += n / 4 + 1) {
        auto const result = runVelmora({"import", image_, store_, "--tile", "64"},
                                       {{"LD_PRELOAD", VELMORA_NO_MEMORY}, {"VELMORA_FAILING_NEW", std::to_string(n)}});
        if (result.exitCode == 0) {
            EXPECT_EQ(folder_.names(), (Names{"a.png", "a.vlm"}));
            break;
        }
        ++failed;
        expectFailure(result, 1, {"out of memory"});
        ASSERT_FALSE(HasFailure()) << n;
    }
    EXPECT_GT(failed, 10u);
}
