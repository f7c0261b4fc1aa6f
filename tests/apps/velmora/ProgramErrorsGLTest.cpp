#include "host/store/Sqlite.h"
#include "tests/apps/velmora/Process.h"
#include "tests/support/LongRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

void change(std::string const& store, std::string const& statement) {
    sqlite::Database(store, sqlite::Database::Mode::ReadWrite).execute(statement);
}

// Every failure: the exit code, one line on stderr with the given words, nothing on stdout, no file made.
class ProgramErrorsGLTest : public testing::Test {
protected:
    void SetUp() override {
        image_ = folder_.path("a.png");
        testimages::writePattern8(image_, "", 30, 20, 3);
        before_ = folder_.names();
    }

    void expectFailure(Process::Result const& result, int exitCode, std::vector<std::string> const& words) const {
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("velmora: ", 0), 0u) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.err.back(), '\n');
        for (auto const& word : words)
            EXPECT_NE(result.err.find(word), std::string::npos) << word << " in " << result.err;
        EXPECT_EQ(folder_.names(), before_);
    }

    std::string view() const { return folder_.path("view.png"); }

    TemporaryFolder folder_;
    std::string image_;
    std::vector<std::string> before_;
};

} // namespace

TEST_F(ProgramErrorsGLTest, WrongUsageIsExitCode2) {
    expectFailure(runVelmora({}), 2, {"no command", "velmora --help"});
    expectFailure(runVelmora({"paint"}), 2, {"paint"});
    expectFailure(runVelmora({"render", image_}), 2, {"--output"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--colour"}), 2, {"--colour"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "-r", "1,2,3"}), 2, {"1,2,3", "X,Y,W,H"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "-r", "1,2,0,3"}), 2, {"1,2,0,3", "at least 1"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--tile", "15"}), 2, {"--tile", "16"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--tile", "2049"}), 2, {"--tile", "2048"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--tile", "-1"}), 2, {"--tile"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--sharpen", "much"}), 2, {"--sharpen", "much", "gain"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--matrix", "1,2"}), 2, {"--matrix", "nine numbers"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "--clahe"}), 2, {"--clahe"});
}

TEST_F(ProgramErrorsGLTest, MoreFiltersThanAPartHasRoomForIsExitCode2) {
    std::vector<std::string> words = {"render", image_, "-o", view()};
    for (int i = 0; i < 7; ++i)
        words.insert(words.end(), {"--clahe", "2"});
    expectFailure(runVelmora(words), 2, {"7 enhancements", "fewer --clahe"});
}

TEST_F(ProgramErrorsGLTest, ZoomThatCannotBeIsExitCode2) {
    for (char const* const zoom : {"0", "-1", "33", "nan", "half"})
        expectFailure(runVelmora({"render", image_, "-o", view(), "--zoom", zoom}), 2, {"--zoom", zoom});
    std::string const store = folder_.path("a.vlm");
    ASSERT_EQ(runVelmora({"import", image_, store, "--levels", "2"}).exitCode, 0);
    before_ = folder_.names();
    expectFailure(runVelmora({"render", store, "-o", view(), "--zoom", "0.126"}), 2, {"2 levels", "0.126984"});
}

TEST_F(ProgramErrorsGLTest, AMissingFileIsExitCode3) {
    expectFailure(runVelmora({"render", "none.tif", "-o", view()}), 3,
                  {"'none.tif'", "no such file", "check the path"});
}

TEST_F(ProgramErrorsGLTest, AnUnreadableImageIsExitCode4) {
    std::string const text = folder_.path("text.dat");
    writeFile(text, std::string(3000, '\x07'));
    before_ = folder_.names();
    expectFailure(runVelmora({"render", text, "-o", view()}), 4, {text});
    expectFailure(runVelmora({"render", folder_.path(), "-o", view()}), 4, {folder_.path(), "folder"});
}

TEST_F(ProgramErrorsGLTest, ADamagedImageIsExitCode4AndLeavesNoPicture) {
    for (std::string const name : {"cut.jpg", "cut.png", "cut.tif", "cut.jp2"}) {
        testimages::writePattern8(folder_.path(name), "", 700, 500, 3);
        truncateFile(folder_.path(name), 70);
        before_ = folder_.names();
        expectFailure(runVelmora({"render", folder_.path(name), "-o", view()}), 4, {name, "undamaged"});
    }
}

TEST_F(ProgramErrorsGLTest, ARegionOutsideIsExitCode5) {
    expectFailure(runVelmora({"render", image_, "-o", view(), "-r", "0,0,31,1"}), 5, {"0,0,31,1", image_, "30 x 20"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "-r", "29,20,1,1"}), 5, {"29,20,1,1"});
    expectFailure(runVelmora({"render", image_, "-o", view(), "-r", "18446744073709551615,0,2,1"}), 5, {"30 x 20"});
    expectFailure(runVelmora({"render", "-o", view(), "-r", "16384,0,1,1"}), 5, {"built-in picture", "16384 x 16384"});
}

TEST_F(ProgramErrorsGLTest, AnUnwritableOutputIsExitCode6) {
    for (std::string const name : {"none/view.png", "none/view.tif"})
        expectFailure(runVelmora({"render", image_, "-o", folder_.path(name)}), 6, {name, "No such"});
    expectFailure(runVelmora({"render", image_, "-o", folder_.path()}), 6, {folder_.path(), "regular file"});
}

TEST_F(ProgramErrorsGLTest, AFullDiskIsExitCode6AndLeavesNoPicture) {
    size_t const maxFileBytes = 20000;
    for (std::string const name : {"view.png", "view.tif"})
        expectFailure(runVelmora({"render", "-o", folder_.path(name), "-r", "3000,6000,400,400"}, {}, maxFileBytes), 6,
                      {name, "File too large"});
}

TEST_F(ProgramErrorsGLTest, AStoreThatCannotBeReadIsExitCode10To12) {
    std::string const store = folder_.path("a.vlm");
    testimages::writePattern8(image_, "", 300, 200, 3);
    ASSERT_EQ(runVelmora({"import", image_, store, "--tile", "32"}).exitCode, 0);
    before_ = folder_.names();
    std::string const whole = readFile(store);
    std::vector<std::string> const render = {"render", store, "-o", view()};

    change(store, "UPDATE tiles SET crc = crc + 1 WHERE id = (SELECT max(id) FROM tiles WHERE data IS NOT NULL)");
    expectFailure(runVelmora(render), 10, {"tile 0,0 of HH, plane 2", "does not match its checksum"});
    change(store, "DELETE FROM tiles WHERE id = (SELECT max(id) FROM tiles)");
    expectFailure(runVelmora(render), 10, {"the index of level 4 is not as it was written"});
    writeFile(store, whole);
    change(store, "UPDATE meta SET value = '9' WHERE key = 'version'; PRAGMA user_version = 9");
    expectFailure(runVelmora(render), 11, {"version 9"});
    writeFile(store, whole);
    sqlite::Database writer(store, sqlite::Database::Mode::ReadWrite);
    writer.execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
    expectFailure(runVelmora(render), 12, {"locked"});
    writer.execute("ROLLBACK");
}

TEST_F(ProgramErrorsGLTest, AStoreCutOffIsExitCode10) {
    std::string const store = folder_.path("a.vlm");
    ASSERT_EQ(runVelmora({"import", image_, store}).exitCode, 0);
    before_ = folder_.names();
    truncateFile(store, 70);
    expectFailure(runVelmora({"render", store, "-o", view()}), 10, {"a.vlm", "damaged"});
}

// The child loses the GL implementation, and finds no other.
TEST_F(ProgramErrorsGLTest, AMissingGlDriverIsExitCode7) {
    Process::Environment const noDriver{{"LD_LIBRARY_PATH", ""},
                                        {"__EGL_VENDOR_LIBRARY_FILENAMES", "/nowhere/driver.json"}};
    expectFailure(runVelmora({"info"}, noDriver), 7, {"no OpenGL ES 3 context", "install"});
    expectFailure(runVelmora({"render", image_, "-o", view()}, noDriver), 7, {"no OpenGL ES 3 context"});
}

TEST_F(ProgramErrorsGLTest, AFailureOfTheBackendIsExitCode8) {
    Process::Environment const broken{{"LD_PRELOAD", VELMORA_BROKEN_GL}};
    expectFailure(runVelmora({"render", image_, "-o", view()}, broken), 8, {"Failed to setup render to texture"});
}

// Wherever memory runs out, the program ends with one line and leaves no picture. Allocations of the backend are among
// the failing ones.
TEST_F(ProgramErrorsGLTest, ADrawingShortOfMemoryEndsWithALine) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    std::string const store = folder_.path("a.vlm");
    ASSERT_EQ(runVelmora({"import", image_, store}).exitCode, 0);
    for (std::string const& picture : {image_, store}) {
        before_ = folder_.names();
        size_t failed = 0;
        for (long n = 1;; n += n + 3) {
            Process::Environment const noMemory{{"LD_PRELOAD", VELMORA_NO_MEMORY},
                                                {"VELMORA_FAILING_NEW", std::to_string(n)}};
            auto const result = runVelmora({"render", picture, "-o", view(), "--sharpen", "1"}, noMemory);
            if (result.exitCode == 0) break;
            ++failed;
            EXPECT_TRUE(result.exitCode == 1 || result.exitCode == 8) << result.exitCode << result.err;
            expectFailure(result, result.exitCode, {});
            ASSERT_FALSE(HasFailure()) << n;
        }
        EXPECT_GT(failed, 5u);
        std::filesystem::remove(view());
    }
}
