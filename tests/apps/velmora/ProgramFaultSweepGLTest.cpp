// Each call on files of the commands that draw fails in each way. It does not depend on the GL implementation.
#include "tests/apps/velmora/FaultSweep.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/LongRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Arguments = std::vector<std::string>;

constexpr size_t kWidth = 120;
constexpr size_t kHeight = 90;

class ProgramFaultSweepGLTest : public testing::Test {
protected:
    void SetUp() override {
        if (runsOffLlvmpipe()) GTEST_SKIP() << "it runs on llvmpipe";
        testimages::writePattern8(image_, "", kWidth, kHeight, 3);
        testimages::writePattern16(deep_, "", kWidth, kHeight, 3);
    }

    std::string path(std::string const& name) const { return folder_.path(name); }

    // Drivers keep their programs elsewhere: their calls do not fail.
    Process::Environment environment() const {
        return {{"SDL_VIDEODRIVER", "offscreen"},
                {"XDG_CACHE_HOME", path("cache")},
                {"MESA_SHADER_CACHE_DIR", programs_.path()}};
    }

    // Before each run `output` is an old file.
    faultsweep::Command command(std::string const& name, Arguments const& arguments, std::string const& output) const {
        faultsweep::Command made;
        made.name = name;
        made.arguments = arguments;
        made.environment = environment();
        made.folder = folder_.path();
        made.cache = path("cache/velmora");
        made.prepare = [=] { writeFile(output, "old"); };
        return made;
    }

    // Of an output that is to show the whole picture.
    static std::string flawOf(std::string const& output) {
        return testimages::difference(testimages::readByVips(output), testimages::pattern8(kWidth, kHeight, 3));
    }
    static std::string deepFlawOf(std::string const& output) {
        return testimages::difference(testimages::readByVips(output),
                                      testimages::pattern16UpperBytes(kWidth, kHeight, 3));
    }

    void emptyCache() const { fs::remove_all(path("cache")); }

    TemporaryFolder folder_;
    TemporaryFolder programs_;
    std::string image_ = path("image.ppm");
    std::string deep_ = path("deep.ppm");
};

} // namespace

TEST_F(ProgramFaultSweepGLTest, RendersOfImages) {
    for (std::string const name : {"b.png", "b.tif"}) {
        auto swept = command("render " + name, {"render", image_, "-o", path(name), "--force"}, path(name));
        swept.flaw = [=] { return flawOf(path(name)); };
        EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::OneWay).told, 0U);
    }
}

TEST_F(ProgramFaultSweepGLTest, RendersOfStores) {
    ASSERT_EQ(runVelmora({"import", image_, path("a.vlm")}).exitCode, 0);
    auto swept = command("render of a store", {"render", path("a.vlm"), "-o", path("b.png"), "--force"}, path("b.png"));
    swept.flaw = [=] { return flawOf(path("b.png")); };
    EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::OneWay).told, 0U);
}

// Slices that are turned, in the colours of a profile, tile by tile.
TEST_F(ProgramFaultSweepGLTest, RendersOfStacks) {
    std::vector<testtiff::Directory> pages;
    for (unsigned page = 0; page < 2; ++page) {
        std::vector<std::uint8_t> samples(size_t{60} * 40 * 3);
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<std::uint8_t>(i * 7 + i / 100 + page * 90);
        pages.push_back(testtiff::directory(60, 40, 3, samples));
        pages.back().tile = 32;
        pages.back().orientation = 6;
        pages.back().iccProfile = testprofiles::exchanged("Turned round");
    }
    testtiff::write(path("stack.tif"), pages);
    Arguments const arguments{"render", path("stack.tif"), "-o", path("b.png"), "--force", "--z", "1"};
    auto swept = command("render of a stack", arguments, path("b.png"));
    ASSERT_EQ(runVelmora(arguments, environment()).exitCode, 0);
    auto const expected = testimages::readByVips(path("b.png"));
    swept.flaw = [=] { return testimages::difference(testimages::readByVips(path("b.png")), expected); };
    EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::OneWay).told, 0U);
}

// A filter takes pictures of 16 bits from a store that is made in the user's cache, or is there already.
TEST_F(ProgramFaultSweepGLTest, RendersByWayOfTheCache) {
    for (bool const isThere : {false, true}) {
        Arguments const arguments{"render", deep_, "-o", path("b.png"), "--force", "--zoom", "0.5", "--truncate", "0"};
        ASSERT_EQ(runVelmora(arguments, environment()).exitCode, 0);
        auto const expected = testimages::readByVips(path("b.png"));
        auto swept = command(isThere ? "render from the cache" : "render through the cache", arguments, path("b.png"));
        swept.prepare = [=] {
            if (!isThere) emptyCache();
            writeFile(path("b.png"), "old");
        };
        swept.flaw = [=] { return testimages::difference(testimages::readByVips(path("b.png")), expected); };
        EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::OneWay).told, 0U);
    }
}

TEST_F(ProgramFaultSweepGLTest, ViewsByWayOfTheCache) {
    std::string const shown = path("shown.png");
    auto swept = command("view",
                         {"view", deep_, "--bare", "--size", "120x90", "--at", "60,45,1", "--screenshot", shown,
                          "--force", "--jobs", "1", "--truncate", "0"},
                         shown);
    swept.prepare = [=] {
        emptyCache();
        writeFile(shown, "old");
    };
    swept.flaw = [=] { return deepFlawOf(shown); };
    EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::OneWay).told, 0U);
}

TEST_F(ProgramFaultSweepGLTest, ViewsSamplesThroughARange) {
    std::string const shown = path("shown.png");
    Arguments const arguments{"view",    deep_,          "--bare", "--size",  "120x90", "--at",
                              "60,45,1", "--screenshot", shown,    "--force", "--jobs", "1"};
    auto swept = command("view through a range", arguments, shown);
    ASSERT_EQ(runVelmora(arguments, swept.environment).exitCode, 0);
    auto const expected = testimages::readByVips(shown);
    swept.flaw = [=] { return testimages::difference(testimages::readByVips(shown), expected); };
    EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::OneWay).told, 0U);
}

TEST_F(ProgramFaultSweepGLTest, ViewsAFileByItsLevels) {
    std::string const image = path("levels.tif");
    testimages::writePattern8(image, "[tile,pyramid,tile_width=64,tile_height=64]", kWidth, kHeight, 3);
    std::string const shown = path("shown.png");
    auto const swept = command("view of a file",
                               {"view", image, "--bare", "--size", "120x90", "--at", "60,45,1", "--screenshot", shown,
                                "--force", "--jobs", "1"},
                               shown);
    auto checked = swept;
    checked.flaw = [=] { return flawOf(shown); };
    EXPECT_GT(faultsweep::sweep(checked, faultsweep::Sample::OneWay).told, 0U);
}
