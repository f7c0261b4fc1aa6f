// What import and export do to files that are there, and what a user is told where a file cannot be written.
#include "host/HostError.h"
#include "host/store/TileStore.h"
#include "tests/host/OutputFixture.h"
#include "tests/host/TestImages.h"

#include <algorithm>
#include <csignal>
#include <deque>
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
    // A store may have any name: here that of a TIFF.
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
