// The effect of import and export on existing files, and their messages if a file cannot be written.
#include "host/HostError.h"
#include "host/store/TileStore.h"
#include "tests/apps/velmora/OutputFixture.h"
#include "tests/support/TestImages.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <deque>
#include <limits>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

class ProgramOutputTest : public OutputFixture {
protected:
    void SetUp() override {
        testimages::writePattern8(image_, "", 40, 30, 3);
        ASSERT_EQ(runVelmora({"import", image_, store_}).exitCode, 0);
    }

    // Of b.v, along both axes.
    void writeResolution(float pixelsPerMillimetre) const {
        testimages::writePattern8(path("b.v"), "", 40, 30, 1);
        std::string file = readFile(path("b.v"));
        std::memcpy(&file[32], &pixelsPerMillimetre, sizeof(float));
        std::memcpy(&file[36], &pixelsPerMillimetre, sizeof(float));
        writeFile(path("b.v"), file);
    }

    std::string image_ = path("a.png");
    std::string store_ = path("a.vlm");
    std::string tiff_ = path("a.tif");
};

} // namespace

TEST_F(ProgramOutputTest, AFileThatIsThereIsReplacedOnlyByForce) {
    writeFile(tiff_, "mine");
    expectRefused({"export", store_, tiff_}, kUnwritable, {"a.tif", "exists already", "--force"});
    EXPECT_EQ(runVelmora({"export", store_, tiff_, "--force"}).exitCode, 0);
    EXPECT_EQ(testimages::difference(testimages::readByVips(tiff_), testimages::readByVips(image_)), "");
    expectRefused({"import", image_, store_}, kUnwritable, {"a.vlm", "exists already", "--force"});
    EXPECT_EQ(runVelmora({"import", image_, store_, "--force"}).exitCode, 0);
}

TEST_F(ProgramOutputTest, TheInputIsNeverReplaced) {
    // A store may have almost any name: here that of a TIFF.
    fs::rename(store_, tiff_);
    fs::create_symlink("a.tif", path("link.tif"));
    fs::create_hard_link(tiff_, path("hard.tif"));
    for (std::string const name : {"a.tif", "link.tif", "hard.tif"}) {
        expectRefused({"export", tiff_, path(name)}, kUnwritable, {"it is the input itself"});
        expectRefused({"export", tiff_, path(name), "--force"}, kUnwritable, {"it is the input itself"});
        expectRefused({"export", path("link.tif"), path(name), "--force"}, kUnwritable, {"it is the input itself"});
    }
    fs::create_symlink("a.png", path("link"));
    fs::create_hard_link(image_, path("hard"));
    for (std::string const name : {"a.png", "link", "hard"})
        expectRefused({"import", image_, path(name), "--force"}, kUnwritable, {"it is the input itself"});
}

TEST_F(ProgramOutputTest, EndingsThatDoNotFitAreRefusedWithThoseThatDo) {
    for (std::string const name : {"b.png", "b.jpg", "b.vlm", "b", "tif"})
        expectRefused({"export", store_, path(name)}, kUsage, {name, ".tif or .tiff"});
    for (std::string const name : {"b.png", "b.TIF", "b.jpeg", "b.svs", "b.jp2"})
        expectRefused({"import", image_, path(name)}, kUsage, {name, ".vlm"});
    EXPECT_EQ(runVelmora({"export", store_, path("b.TIFF")}).exitCode, 0);
    for (std::string const name : {"b", "b.store", "b.VLM", "b.tif.vlm"}) {
        EXPECT_EQ(runVelmora({"import", image_, path(name)}).exitCode, 0) << name;
        EXPECT_EQ(runVelmora({"check", path(name)}).exitCode, 0) << name;
    }
}

TEST_F(ProgramOutputTest, WhatIsNoRegularFileIsNamed) {
    fs::create_directory(path("folder"));
    fs::create_directory(path("folder.tif"));
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", path("null.tif"));
    for (std::string const force : {"--jobs=1", "--force"}) {
        expectRefused({"import", image_, path("folder"), force}, kUnwritable, {"it is a folder"});
        expectRefused({"import", image_, path("none/"), force}, kUnwritable, {"the name of a folder"});
        expectRefused({"import", image_, path("fifo"), force}, kUnwritable, {"it is a FIFO"});
        expectRefused({"import", image_, "/dev/null", force}, kUnwritable, {"it is a device"});
        expectRefused({"import", image_, "/dev/stdout", force}, kUnwritable, {"it is a stream"});
    }
    expectRefused({"export", store_, path("folder.tif")}, kUnwritable, {"it is a folder"});
    expectRefused({"export", store_, path("null.tif"), "--force"}, kUnwritable, {"it is a device"});
    expectRefused({"export", store_, "/dev/stdout"}, kUnwritable, {"it is a stream"});
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    expectRefused({"import", image_, ""}, kUsage, {"empty"});
    expectRefused({"export", store_, ""}, kUsage, {"empty"});
}

TEST_F(ProgramOutputTest, AFolderThatMayNotBeWrittenToIsNamed) {
    if (!makePermissionsCount()) GTEST_SKIP() << "root, and its right to write everywhere stays with its children";
    fs::permissions(folder_.path(), fs::perms::owner_read | fs::perms::owner_exec);
    for (std::string const command : {"import", "export"}) {
        std::string const output = path(command == "import" ? "b.vlm" : "b.tif");
        expectRefused({command, command == "import" ? image_ : store_, output}, kUnwritable,
                      {output, "Permission denied", "choose a folder that may be written to"});
    }
    fs::permissions(folder_.path(), fs::perms::owner_all);
}

TEST_F(ProgramOutputTest, OutputsAreAsPrivateAsTheirInput) {
    for (auto const& [source, output] :
         std::vector<std::pair<mode_t, mode_t>>{{0600, 0600}, {0640, 0640}, {0644, 0644}}) {
        ASSERT_EQ(chmod(image_.c_str(), source), 0);
        mode_t const mask = umask(0022);
        EXPECT_EQ(runVelmora({"import", image_, store_, "--force"}).exitCode, 0);
        EXPECT_EQ(runVelmora({"export", store_, tiff_, "--force"}).exitCode, 0);
        umask(mask);
        EXPECT_EQ(modeOf(store_), output);
        EXPECT_EQ(modeOf(tiff_), output);
    }
}

TEST_F(ProgramOutputTest, AStoreOfAnyNameCanBeOpened) {
    testimages::writePattern8(path("new\nline.png"), "", 30, 20, 3);
    testimages::writePattern8(path("latin\xe4.png"), "", 30, 20, 3);
    std::vector<std::pair<std::string, std::string>> const names{{"b c.vlm", image_},
                                                                 {":memory:", image_},
                                                                 {"file:b.vlm?mode=memory", image_},
                                                                 {"b\nc.vlm", path("new\nline.png")},
                                                                 {"b\xff.vlm", path("latin\xe4.png")},
                                                                 {"%41.vlm#x", image_},
                                                                 {std::string(255, 'n'), image_}};
    // Relative names: SQLite could take these for something else.
    fs::path const before = fs::current_path();
    fs::current_path(folder_.path());
    for (auto const& [name, image] : names) {
        EXPECT_EQ(runVelmora({"import", image, name}).exitCode, 0) << name;
        EXPECT_TRUE(fs::exists(path(name))) << name;
        auto const info = runVelmora({"info", name});
        EXPECT_EQ(info.exitCode, 0) << name << info.err;
        EXPECT_EQ(std::count(info.out.begin(), info.out.end(), '\n'), 13) << info.out;
        EXPECT_EQ(runVelmora({"check", name}).exitCode, 0) << name;
    }
    fs::current_path(before);
}

TEST_F(ProgramOutputTest, APathThatIsTooLongForSqliteIsRefused) {
    std::string folder = folder_.path();
    while (folder.size() < 470)
        folder += "/" + std::string(std::min<size_t>(100, 475 - folder.size()), 'd');
    fs::create_directories(folder);
    // Its temporary name is 18 bytes longer.
    std::string const fits = folder + "/" + std::string(486 - folder.size() - 1, 'a');
    EXPECT_EQ(fits.size(), 486u);
    EXPECT_EQ(runVelmora({"import", image_, fits}).exitCode, 0);
    EXPECT_EQ(runVelmora({"check", fits}).exitCode, 0);
    expectRefused({"import", image_, fits + "a"}, kUnwritable, {"487 bytes", "486 fit"});
    // The same by a shorter path.
    fs::create_directory_symlink(folder, path("short"));
    expectRefused({"import", image_, path("short/") + fs::path(fits).filename().string() + "a"}, kUnwritable,
                  {"487 bytes"});
}

// A file of libvips' own has pixels per millimetre along x and y as floats at bytes 32 and 36, of any value. Coarse
// ones count as print densities, which do not state the size of a pixel.
TEST_F(ProgramOutputTest, AResolutionThatCannotBeIsLeftOutWithAWord) {
    writeResolution(std::numeric_limits<float>::infinity());
    auto const imported = runVelmora({"import", path("b.v"), path("b.vlm")});
    EXPECT_EQ(imported.exitCode, 0) << imported.err;
    EXPECT_EQ(imported.err.rfind("velmora: the resolution of 'b.v'", 0), 0u) << imported.err;
    EXPECT_EQ(std::count(imported.err.begin(), imported.err.end(), '\n'), 1) << imported.err;
    auto const info = runVelmora({"info", path("b.vlm")});
    EXPECT_NE(info.out.find("pixel size              unknown\n"), std::string::npos) << info.out << info.err;
    EXPECT_EQ(runVelmora({"export", path("b.vlm"), tiff_}).exitCode, 0);
}

TEST_F(ProgramOutputTest, AResolutionThatATiffCannotHoldIsLeftOutWithAWord) {
    writeResolution(1e10f);
    EXPECT_EQ(runVelmora({"import", path("b.v"), path("b.vlm")}).err, "");
    auto const exported = runVelmora({"export", path("b.vlm"), tiff_});
    EXPECT_EQ(exported.exitCode, 0);
    EXPECT_EQ(exported.err,
              "velmora: the size of a pixel of '" + path("b.vlm") + "' does not fit in a TIFF; it is left out\n");
}

TEST_F(ProgramOutputTest, WhatAKilledImportLeavesIsRemovedByTheNextOfTheSameName) {
    Names const before = folder_.names();
    Process process({"import", "--built-in", path("b.vlm")});
    while (process.running() && folder_.names() == before)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    EXPECT_EQ(folder_.names().size(), before.size() + 1) << "one file, and no other beside it";
    EXPECT_EQ(runVelmora({"import", image_, path("b.vlm")}).exitCode, 0);
    EXPECT_EQ(folder_.names().size(), before.size() + 2) << "one that lives is left alone";
    fs::remove(path("b.vlm"));
    process.signal(SIGKILL);
    EXPECT_EQ(process.wait().exitCode, -1);
    EXPECT_EQ(folder_.names().size(), before.size() + 1);
    EXPECT_EQ(runVelmora({"import", image_, path("c.vlm")}).exitCode, 0);
    EXPECT_EQ(folder_.names().size(), before.size() + 2) << "of another name";
    EXPECT_EQ(runVelmora({"import", image_, path("b.vlm")}).exitCode, 0);
    EXPECT_EQ(folder_.names(), (Names{"a.png", "a.vlm", "b.vlm", "c.vlm"}));
}

TEST_F(ProgramOutputTest, ManyAtOnceLeaveAWholeStoreAndNothingElse) {
    std::deque<Process> processes;
    for (int i = 0; i < 6; ++i)
        processes.emplace_back(std::vector<std::string>{"import", image_, store_, "--force", "--jobs", "1"});
    for (Process& process : processes) {
        auto const result = process.wait();
        EXPECT_EQ(result.exitCode, 0) << result.err;
    }
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, 0);
    EXPECT_EQ(folder_.names(), (Names{"a.png", "a.vlm"}));
}

TEST(ProgramOutputHelpTest, EveryCommandThatWritesFilesNamesForce) {
    for (std::string const command : {"import", "export", "render", "view"}) {
        auto const help = runVelmora({command, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_NE(help.out.find("--force"), std::string::npos) << help.out;
    }
}
