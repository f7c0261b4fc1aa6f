#include "apps/velmora/shared/RecentFiles.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class RecentFilesTest : public testing::Test {
protected:
    std::string picture(std::string const& name) const {
        writeFile(folder_.path(name), "x");
        return folder_.path(name);
    }
    std::string list() const { return folder_.path("state/velmora/recent"); }

    TemporaryFolder folder_;
    RecentFiles recent_{folder_.path("state"), ""};
};

using Files = std::vector<std::string>;

} // namespace

TEST_F(RecentFilesTest, TheLastIsFirstAndNoneIsThereTwice) {
    EXPECT_EQ(recent_.list(), Files());
    std::string const a = picture("a.tif");
    std::string const b = picture("b c.tif");
    EXPECT_TRUE(recent_.add(a));
    EXPECT_TRUE(recent_.add(b));
    EXPECT_EQ(recent_.list(), (Files{b, a}));
    EXPECT_TRUE(recent_.add(a));
    EXPECT_EQ(recent_.list(), (Files{a, b}));
    EXPECT_EQ(fs::status(folder_.path("state/velmora")).permissions(), fs::perms::owner_all);
}

TEST_F(RecentFilesTest, SomeAreKept) {
    for (size_t i = 0; i < RecentFiles::kMost + 5; ++i)
        recent_.add(picture(std::to_string(i)));
    Files const all = recent_.list();
    ASSERT_EQ(all.size(), RecentFiles::kMost);
    EXPECT_EQ(all.front(), folder_.path(std::to_string(RecentFiles::kMost + 4)));
    EXPECT_EQ(all.back(), folder_.path("5"));
}

// A disk that is not there today may be there tomorrow.
TEST_F(RecentFilesTest, WhatIsGoneIsLeftOutAndKept) {
    std::string const a = picture("a.tif");
    recent_.add(a);
    fs::remove(a);
    EXPECT_EQ(recent_.list(), Files());
    recent_.add(picture("b.tif"));
    picture("a.tif");
    EXPECT_EQ(recent_.list(), (Files{folder_.path("b.tif"), a}));
}

TEST_F(RecentFilesTest, RelativePathsBecomeAbsolute) {
    picture("a.tif");
    fs::path const before = fs::current_path();
    fs::current_path(folder_.path());
    recent_.add("none/../a.tif");
    fs::current_path(before);
    EXPECT_EQ(recent_.list(), Files{folder_.path("a.tif")});
}

TEST_F(RecentFilesTest, AFileThatIsNoListHasNone) {
    fs::create_directories(folder_.path("state/velmora"));
    writeFile(list(), "\n\nrelative.tif\n" + picture("a.tif") + "\n\x01\xff\n");
    EXPECT_EQ(recent_.list(), Files{folder_.path("a.tif")});
    writeFile(list(), picture("a.tif") + "\n" + std::string(100'000, 'x'));
    EXPECT_EQ(recent_.list(), Files());
    fs::remove(list());
    fs::create_directory(list());
    EXPECT_EQ(recent_.list(), Files());
    EXPECT_FALSE(recent_.add(picture("a.tif")));
}

TEST_F(RecentFilesTest, NamesThatAreNoLineAreNotKept) {
    EXPECT_FALSE(recent_.add(picture("a\nb.tif")));
    EXPECT_EQ(recent_.list(), Files());
}

TEST(RecentFilesPlaceTest, TheListLiesWithTheUsersStates) {
    TemporaryFolder const folder;
    writeFile(folder.path("a.tif"), "x");
    EXPECT_TRUE(RecentFiles("relative", folder.path()).add(folder.path("a.tif")));
    EXPECT_TRUE(fs::is_regular_file(folder.path(".local/state/velmora/recent")));
    RecentFiles const nowhere("", "");
    EXPECT_FALSE(nowhere.add(folder.path("a.tif")));
    EXPECT_EQ(nowhere.list(), Files());
}
