// velmora cache: the stores that were made of images, and their end.
#include "tests/apps/velmora/Process.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

class ProgramCacheTest : public testing::Test {
protected:
    void store(std::string const& name, size_t bytes, std::chrono::hours age) const {
        fs::create_directories(cache_);
        writeFile(cache_ / name, std::string(bytes, 's'));
        fs::last_write_time(cache_ / name, fs::file_time_type::clock::now() - age);
    }

    Process::Result run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "cache");
        return runVelmora(arguments, {{"XDG_CACHE_HOME", folder_.path()}, {"TZ", "UTC"}});
    }

    TemporaryFolder const folder_;
    fs::path const cache_ = fs::path(folder_.path()) / "velmora";
};

} // namespace

TEST_F(ProgramCacheTest, StoresAreListedTheLatestFirst) {
    store("slide-0123456789abcdef.vlm", 1'234'567, 48h);
    store("scan-fedcba9876543210.vlm", 4000, 2h);
    store("notes.txt", 10, 1h);
    auto const result = run({});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind(cache_.string() + ": 2 stores, 1.2 MB\n   4.0 kB  used 2", 0), 0u) << result.out;
    size_t const scan = result.out.find("  scan-fedcba9876543210.vlm\n");
    size_t const slide = result.out.find("  slide-0123456789abcdef.vlm\n");
    EXPECT_LT(scan, slide) << result.out;
    EXPECT_NE(slide, std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("notes"), std::string::npos);
}

TEST_F(ProgramCacheTest, NothingIsMadeWhereThereIsNoCache) {
    auto const result = run({});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, cache_.string() + ": 0 stores, 0 bytes\n");
    EXPECT_EQ(run({"--clear"}).out, cache_.string() + ": removed 0 stores, 0 bytes\n");
    EXPECT_FALSE(fs::exists(cache_));
}

TEST_F(ProgramCacheTest, ClearingTakesStoresAlone) {
    store("slide-0123456789abcdef.vlm", 2'000'000, 48h);
    store("notes.txt", 10, 1h);
    auto const result = run({"--clear"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, cache_.string() + ": removed 1 store, 2.0 MB\n");
    EXPECT_FALSE(fs::exists(cache_ / "slide-0123456789abcdef.vlm"));
    EXPECT_TRUE(fs::exists(cache_ / "notes.txt"));
}

TEST_F(ProgramCacheTest, WithoutAFolderForCachesTheLineSaysWhatToSet) {
    auto const result = runVelmora({"cache"}, {{"XDG_CACHE_HOME", ""}, {"HOME", ""}});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_NE(result.err.find("neither XDG_CACHE_HOME nor HOME names one"), std::string::npos) << result.err;
}

TEST_F(ProgramCacheTest, ASizeTakesUnitsAndNothingElse) {
    for (std::string const size : {"10GB", "500MB", "4096", "2GiB"}) {
        auto const result = runVelmora({"render", "/nowhere.tif", "-o", folder_.path("a.png"), "--cache-size", size});
        EXPECT_EQ(result.exitCode, 3) << size << result.err;
    }
    for (std::string const size : {"much", "-1", "10 parsecs", ""}) {
        auto const result = runVelmora({"render", "/nowhere.tif", "-o", folder_.path("a.png"), "--cache-size", size});
        EXPECT_EQ(result.exitCode, 2) << size << result.err;
    }
}
