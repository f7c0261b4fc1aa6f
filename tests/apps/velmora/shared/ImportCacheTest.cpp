#include "apps/velmora/shared/ImportCache.h"

#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

void expectRefused(fs::path const& cache, std::string const& reason) {
    try {
        importcache::makePrivate(cache);
        ADD_FAILURE() << cache;
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnwritableOutput);
        EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find("XDG_CACHE_HOME"), std::string::npos) << error.what();
    }
}

} // namespace

TEST(ImportCacheTest, TheFolderIsThatOfTheUsersCaches) {
    EXPECT_EQ(importcache::folder("/c", "/h"), "/c/velmora");
    EXPECT_EQ(importcache::folder("", "/h"), "/h/.cache/velmora");
    EXPECT_EQ(importcache::folder("relative", "/h"), "/h/.cache/velmora");
    EXPECT_EQ(importcache::folder("", ""), "") << "and none that everybody may write to";
    EXPECT_EQ(importcache::folder("", "relative"), "");
}

TEST(ImportCacheTest, ANewFolderIsItsOwnersAlone) {
    TemporaryFolder const folder;
    fs::path const cache = folder.path("home/.cache/velmora");
    importcache::makePrivate(cache);
    importcache::makePrivate(cache);
    EXPECT_EQ(fs::status(cache).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder.path("home")).permissions(), fs::perms::owner_all);
}

// As earlier programs made it. Its names tell which pictures its owner has opened.
TEST(ImportCacheTest, AFolderThatOthersMayReadBecomesItsOwnersAlone) {
    TemporaryFolder const folder;
    fs::path const cache = folder.path("velmora");
    fs::create_directory(cache);
    fs::permissions(cache, fs::perms(0755));
    importcache::makePrivate(cache);
    EXPECT_EQ(fs::status(cache).permissions(), fs::perms::owner_all);
}

TEST(ImportCacheTest, AFolderThatOthersCouldHaveFilledIsRefused) {
    TemporaryFolder const folder;
    fs::path const cache = folder.path("velmora");
    fs::create_directory(cache);
    for (int const mode : {0777, 0770, 0702, 01777}) {
        fs::permissions(cache, fs::perms(mode));
        expectRefused(cache, "others may write to it");
    }
    fs::permissions(cache, fs::perms(0700));
    fs::create_symlink(cache, folder.path("link"));
    expectRefused(folder.path("link"), "link");
    writeFile(folder.path("file"), "");
    expectRefused(folder.path("file"), "no folder");
    expectRefused(folder.path("file/velmora"), "Not a directory");
    if (geteuid() != 0) return;
    constexpr uid_t kSomebody = 12345;
    ASSERT_EQ(chown(cache.c_str(), kSomebody, kSomebody), 0);
    expectRefused(cache, "another user");
}

TEST(ImportCacheTest, TheSameFileHasTheSameName) {
    TemporaryFolder const folder;
    writeFile(folder.path("a.tif"), "picture");
    fs::create_symlink("a.tif", folder.path("link.tif"));
    std::string const name = importcache::storeName(fs::path(folder.path("a.tif")));
    EXPECT_EQ(importcache::storeName(fs::path(folder.path("a.tif"))), name);
    EXPECT_EQ(importcache::storeName(fs::path(folder.path() + "/./a.tif")), name);
    EXPECT_EQ(importcache::storeName(fs::path(folder.path("link.tif"))), name);
    EXPECT_EQ(name.rfind("a-", 0), 0u) << name;
    EXPECT_EQ(name.substr(name.size() - 4), ".vlm");
    EXPECT_EQ(name.size(), std::string("a-0123456789abcdef.vlm").size());
}

TEST(ImportCacheTest, AChangedFileHasAnother) {
    TemporaryFolder const folder;
    fs::path const path = folder.path("a.tif");
    writeFile(path, "picture");
    std::string const before = importcache::storeName(path);
    fs::last_write_time(path, fs::last_write_time(path) + 1s);
    std::string const later = importcache::storeName(path);
    EXPECT_NE(later, before);
    auto const time = fs::last_write_time(path);
    writeFile(path, "longer picture");
    fs::last_write_time(path, time);
    EXPECT_NE(importcache::storeName(path), later);
    fs::create_directory(folder.path("b"));
    fs::path const elsewhere = folder.path("b/a.tif");
    fs::copy_file(path, elsewhere);
    fs::last_write_time(elsewhere, time);
    EXPECT_NE(importcache::storeName(elsewhere), importcache::storeName(path));
}

TEST(ImportCacheTest, ALongNameFitsInAFileSystem) {
    TemporaryFolder const folder;
    std::string const path = folder.path(std::string(250, 'n') + ".tif");
    writeFile(path, "picture");
    std::string const name = importcache::storeName(fs::path(path));
    EXPECT_LE(name.size(), 255u);
    EXPECT_NO_THROW(writeFile(folder.path(name), "store"));
}

TEST(ImportCacheTest, AMissingFileIsAnError) {
    try {
        importcache::storeName(fs::path("/nowhere/a.tif"));
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::MissingFile);
        EXPECT_NE(std::string(error.what()).find("/nowhere/a.tif"), std::string::npos);
    }
}

// Published values of the hash: for the empty text, "a" and "foobar".
TEST(ImportCacheTest, TheHashIsFnv1a) {
    EXPECT_EQ(importcache::storeName("x", ""), "x-cbf29ce484222325.vlm");
    EXPECT_EQ(importcache::storeName("x", "a"), "x-af63dc4c8601ec8c.vlm");
    EXPECT_EQ(importcache::storeName("x", "foobar"), "x-85944171f73967e8.vlm");
}

namespace {

// A cache with stores of 100 bytes each, the first used longest ago.
class CacheLimitTest : public testing::Test {
protected:
    fs::path store(std::string const& stem, std::chrono::hours age) const {
        fs::path const path = folder_.path(importcache::storeName(stem, stem));
        writeFile(path, std::string(100, 's'));
        fs::last_write_time(path, fs::file_time_type::clock::now() - age);
        return path;
    }

    std::vector<fs::path> trimmedTo(std::uint64_t bytes) const {
        std::vector<fs::path> paths;
        for (importcache::Store const& gone : importcache::trim(folder_.path(), bytes))
            paths.push_back(gone.path);
        return paths;
    }

    TemporaryFolder const folder_;
    fs::path const old_ = store("old", 300h);
    fs::path const older_ = store("older", 400h);
    fs::path const fresh_ = store("fresh", 1h);
};

} // namespace

TEST_F(CacheLimitTest, StoresAreListedByTheirLastUse) {
    auto const stores = importcache::stores(folder_.path());
    ASSERT_EQ(stores.size(), 3u);
    EXPECT_EQ(stores[0].path, older_);
    EXPECT_EQ(stores[1].path, old_);
    EXPECT_EQ(stores[2].path, fresh_);
    EXPECT_EQ(stores[0].bytes, 100u);
    EXPECT_EQ(importcache::bytesOf(stores), 300u);
    auto const age = std::chrono::system_clock::now() - stores[0].used;
    EXPECT_GT(age, 399h);
    EXPECT_LT(age, 401h);
    EXPECT_TRUE(importcache::stores(folder_.path("none")).empty());
}

TEST_F(CacheLimitTest, ThoseThatWereUsedLongestAgoGoFirst) {
    EXPECT_TRUE(trimmedTo(300).empty());
    EXPECT_EQ(trimmedTo(299), std::vector<fs::path>{older_});
    EXPECT_EQ(trimmedTo(100), std::vector<fs::path>{old_});
    EXPECT_EQ(trimmedTo(0), std::vector<fs::path>{fresh_});
    EXPECT_EQ(folder_.names(), std::vector<std::string>{});
}

TEST_F(CacheLimitTest, AUseMakesAStoreTheLatest) {
    importcache::use(older_);
    EXPECT_EQ(trimmedTo(200), std::vector<fs::path>{old_});
}

TEST_F(CacheLimitTest, AStoreInUseStays) {
    {
        auto const used = importcache::use(older_);
        ASSERT_NE(used, nullptr);
        EXPECT_EQ(trimmedTo(0), (std::vector<fs::path>{old_, fresh_}));
    }
    EXPECT_EQ(trimmedTo(0), std::vector<fs::path>{older_});
    EXPECT_EQ(importcache::use(older_), nullptr);
}

TEST_F(CacheLimitTest, OtherFilesStay) {
    std::vector<std::string> const others{"notes.txt",
                                          "mine.vlm",
                                          "x-0123456789abcde.vlm",
                                          "x-0123456789abcdeX.vlm",
                                          ".x-0123456789abcdef.vlm",
                                          "x_0123456789abcdef.vlm",
                                          "x-0123456789abcdef.vlmx",
                                          "-0123456789abcdef"};
    for (std::string const& name : others)
        writeFile(folder_.path(name), "other");
    fs::create_symlink(fresh_, folder_.path("link-0123456789abcdef.vlm"));
    fs::create_directory(folder_.path("folder-0123456789abcdef.vlm"));
    EXPECT_EQ(trimmedTo(0).size(), 3u);
    EXPECT_EQ(folder_.names().size(), others.size() + 2);
}
