// The effect of render on existing files, where it keeps stores, and what a failure leaves.
#include "tests/apps/velmora/Faults.h"
#include "tests/apps/velmora/OutputFixture.h"
#include "tests/support/LongRun.h"
#include "tests/support/TestImages.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Arguments = std::vector<std::string>;

constexpr int kKilled = 0; // instead of a value of errno

class ProgramOutputGLTest : public OutputFixture {
protected:
    void SetUp() override {
        testimages::writePattern8(image_, "", 60, 50, 3);
        testimages::writePattern16(deep_, "", 60, 50, 3);
    }

    // For an image of 16 bits at another zoom, which needs a store.
    // Filters of 16 bits look at a store.
    Arguments zoomed(std::string const& output) const {
        return {"render", deep_, "-o", path(output), "--zoom", "0.5", "--truncate", "0"};
    }

    bool isWhole(std::string const& file) const {
        return testimages::difference(testimages::readByVips(file), testimages::readByVips(image_)).empty();
    }

    // With a reason one call fails, or the disk is full from one on; without one the program is killed there.
    void sweep(std::string const& output, int reason) const {
        Arguments const arguments{"render", image_, "-o", output, "--force"};
        Fault fault;
        fault.folder = fs::path(output).parent_path();
        fault.reason = reason;
        size_t const calls = countCalls(arguments, fault);
        ASSERT_GE(calls, 4u);
        for (fault.first = 1; fault.first <= calls && !HasFailure(); ++fault.first) {
            SCOPED_TRACE("call " + std::to_string(fault.first));
            writeFile(output, "old");
            fault.last = reason == ENOSPC ? Fault::kUntilTheEnd : fault.first;
            expectOldOrNew(runFaulty(arguments, fault), output, reason);
            // The next run removes the leftovers of a killed one.
            int const next = reason == kKilled ? runVelmora(arguments).exitCode : 0;
            EXPECT_EQ(next, 0);
            EXPECT_EQ(std::distance(fs::directory_iterator(fault.folder), fs::directory_iterator()), 1);
        }
    }

    void expectOldOrNew(Process::Result const& result, std::string const& output, int reason) const {
        bool const isOld = readFile(output) == "old";
        EXPECT_TRUE(isOld || isWhole(output));
        if (reason == kKilled) {
            EXPECT_EQ(result.exitCode, -1);
            return;
        }
        EXPECT_EQ(result.exitCode, isOld ? kUnwritable : 0) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), isOld ? 1 : 0) << result.err;
        bool const named = result.err.find(std::generic_category().message(reason)) != std::string::npos;
        EXPECT_EQ(named, isOld) << result.err;
    }

    std::string image_ = path("a.tif");
    std::string deep_ = path("deep.tif");
};

} // namespace

TEST_F(ProgramOutputGLTest, AFileThatIsThereIsReplacedOnlyByForce) {
    for (std::string const name : {"b.png", "b.tif"}) {
        writeFile(path(name), "mine");
        expectRefused({"render", image_, "-o", path(name)}, kUnwritable, {name, "exists already", "--force"});
        // At once: before the store for the zoom is made.
        expectRefused({"render", deep_, "-o", path(name), "--zoom", "0.5"}, kUnwritable, {name, "exists already"},
                      {{"XDG_CACHE_HOME", path("cache")}});
        EXPECT_EQ(runVelmora({"render", image_, "-o", path(name), "--force"}).exitCode, 0);
        EXPECT_TRUE(isWhole(path(name)));
    }
}

TEST_F(ProgramOutputGLTest, TheInputIsNeverReplaced) {
    fs::create_symlink("a.tif", path("link.tif"));
    fs::create_hard_link(image_, path("hard.png"));
    for (std::string const name : {"a.tif", "link.tif", "hard.png"}) {
        expectRefused({"render", image_, "-o", path(name), "-r", "0,0,5,5"}, kUnwritable, {"it is the input itself"});
        expectRefused({"render", image_, "-o", path(name), "-r", "0,0,5,5", "--force"}, kUnwritable,
                      {"it is the input itself"});
        expectRefused({"render", image_, "-o", path(name), "--zoom", "0.5", "--force"}, kUnwritable,
                      {"it is the input itself"}, {{"XDG_CACHE_HOME", path("cache")}});
    }
    ASSERT_EQ(runVelmora({"import", image_, path("store")}).exitCode, 0);
    fs::rename(path("store"), path("store.png"));
    expectRefused({"render", path("store.png"), "-o", path("store.png"), "--force"}, kUnwritable,
                  {"it is the input itself"});
}

TEST_F(ProgramOutputGLTest, EndingsThatDoNotFitAreRefusedWithThoseThatDo) {
    for (std::string const name : {"b.jpg", "b.vlm", "b", "b.bmp"})
        expectRefused({"render", image_, "-o", path(name)}, kUsage, {name, ".png, .tif or .tiff"});
}

TEST_F(ProgramOutputGLTest, WhatIsNoRegularFileIsNamed) {
    fs::create_directory(path("folder.png"));
    ASSERT_EQ(mkfifo(path("fifo.png").c_str(), 0600), 0);
    expectRefused({"render", image_, "-o", path("folder.png"), "--force"}, kUnwritable, {"it is a folder"});
    expectRefused({"render", image_, "-o", path("fifo.png"), "--force"}, kUnwritable, {"it is a FIFO"});
    expectRefused({"render", image_, "-o", "/dev/null", "--force"}, kUnwritable, {"it is a device"});
    expectRefused({"render", image_, "-o", "/dev/stdout"}, kUnwritable, {"it is a stream"});
    expectRefused({"render", image_, "-o", ""}, kUsage, {"empty"});
}

TEST_F(ProgramOutputGLTest, OutputsAreAsPrivateAsTheirInput) {
    ASSERT_EQ(chmod(image_.c_str(), 0600), 0);
    ASSERT_EQ(chmod(deep_.c_str(), 0600), 0);
    for (std::string const name : {"b.png", "b.tif"}) {
        EXPECT_EQ(runVelmora({"render", image_, "-o", path(name)}).exitCode, 0);
        EXPECT_EQ(modeOf(path(name)), 0600u);
    }
    EXPECT_EQ(runVelmora(zoomed("c.png"), {{"XDG_CACHE_HOME", path("cache")}}).exitCode, 0);
    EXPECT_EQ(modeOf(path("c.png")), 0600u);
    EXPECT_EQ(modeOf(path("cache/velmora")), 0700u);
    for (auto const& store : fs::directory_iterator(path("cache/velmora")))
        EXPECT_EQ(modeOf(store.path()), 0600u);
}

TEST_F(ProgramOutputGLTest, WithoutAFolderOfTheUsersNoStoreIsKept) {
    fs::path const everybodys = fs::temp_directory_path() / "velmora";
    bool const before = fs::exists(everybodys);
    expectRefused(zoomed("b.png"), kUnwritable, {"deep.tif", "XDG_CACHE_HOME", "HOME", "velmora import"},
                  {{"XDG_CACHE_HOME", ""}, {"HOME", ""}});
    EXPECT_EQ(fs::exists(everybodys), before);
    EXPECT_EQ(runVelmora(zoomed("b.png"), {{"XDG_CACHE_HOME", ""}, {"HOME", path("home")}}).exitCode, 0);
    EXPECT_TRUE(fs::exists(path("home/.cache/velmora")));
}

TEST_F(ProgramOutputGLTest, AFolderThatOthersCouldHaveFilledKeepsNoStore) {
    Process::Environment const cache{{"XDG_CACHE_HOME", path("cache")}};
    fs::create_directories(path("cache/velmora"));
    fs::permissions(path("cache/velmora"), fs::perms::all);
    expectRefused(zoomed("b.png"), kUnwritable, {"cache/velmora", "others may write to it"}, cache);
    fs::rename(path("cache/velmora"), path("elsewhere"));
    fs::create_symlink(path("elsewhere"), path("cache/velmora"));
    fs::permissions(path("elsewhere"), fs::perms::owner_all);
    expectRefused(zoomed("b.png"), kUnwritable, {"cache/velmora", "link"}, cache);
}

TEST_F(ProgramOutputGLTest, WhatKilledImportsLeaveInTheUsersCacheIsRemoved) {
    fs::create_directories(path("cache/velmora"));
    writeFile(path("cache/velmora/.old-0123456789abcdef.vlm.velmora-01234567"), "of a picture that has changed since");
    EXPECT_EQ(runVelmora(zoomed("b.png"), {{"XDG_CACHE_HOME", path("cache")}}).exitCode, 0);
    fs::directory_iterator const left(path("cache/velmora"));
    EXPECT_EQ(std::distance(left, fs::directory_iterator()), 1);
}

// Every call that concerns the output. It does not depend on the GL implementation: a hundred runs on one suffice.
TEST_F(ProgramOutputGLTest, WhateverFailsThereIsTheOldFileOrTheNewOne) {
    if (runsOffLlvmpipe()) GTEST_SKIP() << "it runs on llvmpipe";
    fs::create_directory(path("out"));
    for (std::string const name : {"b.png", "b.tif"})
        for (int const reason : {EIO, ENOSPC, kKilled}) {
            SCOPED_TRACE(name + ", errno " + std::to_string(reason));
            sweep(path("out/" + name), reason);
            fs::remove(path("out/" + name));
        }
}
