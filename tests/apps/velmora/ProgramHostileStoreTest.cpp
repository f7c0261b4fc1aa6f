// Hostile files, given to the commands that need no GL.
#include "tests/apps/velmora/Restricted.h"
#include "tests/host/store/HostileStores.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using testpictures::Content;

// Libraries are half of the idle program's address space.
constexpr rlim_t kAddressBytes = 1'000'000'000;
// On an idle machine it takes a tenth of this.
constexpr std::chrono::seconds kTime(20);

class ProgramHostileStoreTest : public testing::Test {
protected:
    Process::Result run(std::vector<std::string> const& arguments) const {
        return runRestricted(arguments, {}, kAddressBytes, kTime);
    }

    void expectDamage(std::vector<std::string> const& arguments) const {
        auto const result = run(arguments);
        EXPECT_EQ(result.exitCode, 10) << result.err;
        EXPECT_NE(result.err.find("is damaged"), std::string::npos) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vlm"});
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    std::string out_ = folder_.path("out.tif");
};

} // namespace

TEST_F(ProgramHostileStoreTest, EachIsDamageAtOnceAndTakesNoMemory) {
    for (auto const& hostile : hostilestores::all()) {
        SCOPED_TRACE(hostile.name);
        std::filesystem::remove(path_);
        hostile.make(path_);
        expectDamage({"info", path_});
        expectDamage({"check", path_});
        expectDamage({"export", path_, out_});
    }
}

// The text would clear the screen, name the window, and reverse the direction of writing.
TEST_F(ProgramHostileStoreTest, WhatItsTextsSayToATerminalIsShownAndNotObeyed) {
    testpictures::import(testpictures::picture(40, 30, 1, 8, Content::Noise), path_, {});
    storefiles::change(path_, "UPDATE meta SET value = CAST(x'1b5b324a1b5d303b6d696e6507e280aeff2e746966' AS TEXT)"
                              " WHERE key = 'sourceName'");
    storefiles::sealDescription(path_);
    auto const info = run({"info", path_});
    EXPECT_EQ(info.exitCode, 0) << info.err;
    EXPECT_NE(info.out.find("made of                 \\x1b[2J\\x1b]0;mine\\x07\\xe2\\x80\\xae\\xff.tif\n"),
              std::string::npos)
        << info.out;
    storefiles::change(path_, "UPDATE meta SET value = char(27) || '[31mgrey' WHERE key = 'interpretation'");
    storefiles::sealDescription(path_);
    EXPECT_NE(run({"info", path_}).out.find("bands                   1, \\x1b[31mgrey\n"), std::string::npos);
    EXPECT_NE(run({"export", path_, out_}).out.find(", \\x1b[31mgrey, "), std::string::npos);
    std::filesystem::remove(out_);
    storefiles::change(path_, "UPDATE meta SET value = char(27) || '[31m' WHERE key = 'width'");
    auto const damaged = run({"info", path_});
    EXPECT_EQ(damaged.exitCode, 10);
    EXPECT_NE(damaged.err.find("its width cannot be '\\x1b[31m'"), std::string::npos) << damaged.err;
}

TEST_F(ProgramHostileStoreTest, ANameOfAFileIsShownToo) {
    std::string const name = folder_.path("a\x1b[2J\n.vlm");
    testpictures::import(testpictures::picture(40, 30, 1, 8, Content::Noise), name);
    auto const checked = run({"check", name});
    EXPECT_EQ(checked.exitCode, 0);
    EXPECT_NE(checked.out.find("a\\x1b[2J\\x0a.vlm: "), std::string::npos) << checked.out;
    storefiles::change(name, "UPDATE tiles SET crc = crc + 1");
    auto const damaged = run({"check", name});
    EXPECT_EQ(damaged.exitCode, 10);
    for (std::string const& text : {damaged.out, damaged.err}) {
        EXPECT_EQ(text.find('\x1b'), std::string::npos) << text;
        EXPECT_NE(text.find("a\\x1b[2J"), std::string::npos) << text;
    }
}

TEST_F(ProgramHostileStoreTest, AFileThatTheDiskDoesNotGiveIsExitCode3) {
    auto const result = run({"info", "/proc/self/mem"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("cannot read '/proc/self/mem': Input/output error"), std::string::npos) << result.err;
}

// A flat picture, so wide that no machine would have memory for it if it were not flat.
TEST_F(ProgramHostileStoreTest, AnExportThatTakesMoreMemoryThanThereIsIsExitCode1) {
    ImportOptions options;
    options.tileSize = 2048;
    testpictures::import(testpictures::picture(40, 30, 1, 8, Content::Flat), path_, options);
    storefiles::change(path_, "UPDATE meta SET value = '8000000' WHERE key = 'width';"
                              "UPDATE meta SET value = '2048' WHERE key = 'height';"
                              "WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM r LIMIT 8000)"
                              " INSERT INTO tiles SELECT (1 << 60) + n, 0, 0, NULL FROM r");
    storefiles::sealDescription(path_);
    auto const result = run({"export", path_, out_});
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_NE(result.err.find("of memory for rows of 8000000 pixels"), std::string::npos) << result.err;
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vlm"});
}
