#include "host/output/Leftovers.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

// A temporary file, held as by a writer.
class Writer {
public:
    explicit Writer(fs::path const& target)
        : name_(leftovers::temporaryName(target)),
          descriptor_(open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {}
    ~Writer() { close(descriptor_); }
    Writer(Writer const&) = delete;
    Writer& operator=(Writer const&) = delete;

    bool hold() const { return leftovers::hold(descriptor_); }
    fs::path const& name() const { return name_; }

private:
    fs::path name_;
    int descriptor_;
};

} // namespace

TEST(LeftoversTest, ATemporaryNameIsHiddenBesideTheTargetAndNamesIt) {
    fs::path const name = leftovers::temporaryName("/there/a.vlm");
    EXPECT_EQ(name.parent_path(), "/there");
    EXPECT_EQ(name.filename().string().rfind(".a.vlm.velmora-", 0), 0u) << name;
    EXPECT_EQ(leftovers::temporaryName("a.vlm").parent_path(), "");
}

TEST(LeftoversTest, TemporaryNamesDiffer) {
    std::set<fs::path> names;
    for (int i = 0; i < 100; ++i)
        names.insert(leftovers::temporaryName("a.vlm"));
    EXPECT_GE(names.size(), 99u);
}

TEST(LeftoversTest, TheTemporaryNameOfTheLongestNameFitsInAFileSystem) {
    TemporaryFolder const folder;
    fs::path const target = folder.path(std::string(255, 'n'));
    Writer const writer(target);
    EXPECT_TRUE(fs::exists(writer.name()));
    leftovers::removeOf(folder.path(std::string(254, 'n')));
    EXPECT_TRUE(fs::exists(writer.name())) << "that of another long name";
    leftovers::removeOf(target);
    EXPECT_FALSE(fs::exists(writer.name()));
}

TEST(LeftoversTest, WhatNobodyHoldsIsRemoved) {
    TemporaryFolder const folder;
    fs::path const target = folder.path("a.vlm");
    fs::path left;
    {
        Writer const killed(target);
        EXPECT_TRUE(killed.hold());
        leftovers::removeOf(target);
        EXPECT_EQ(folder.names().size(), 1u) << "it is held";
    }
    leftovers::removeOf(target);
    EXPECT_TRUE(folder.names().empty());
}

// As SQLite does, whose own locks go when any descriptor of the file is closed.
TEST(LeftoversTest, AWriterThatClosesAnotherDescriptorStillHoldsItsFile) {
    TemporaryFolder const folder;
    Writer const writer(folder.path("a.vlm"));
    EXPECT_TRUE(writer.hold());
    close(open(writer.name().c_str(), O_RDWR | O_CLOEXEC));
    leftovers::removeOf(folder.path("a.vlm"));
    EXPECT_TRUE(fs::exists(writer.name()));
}

TEST(LeftoversTest, AFileThatIsTakenBeforeItIsHeldIsNoticed) {
    TemporaryFolder const folder;
    Writer const writer(folder.path("a.vlm"));
    leftovers::removeOf(folder.path("a.vlm"));
    EXPECT_FALSE(writer.hold());
}

TEST(LeftoversTest, NothingElseIsRemoved) {
    TemporaryFolder const folder;
    // Names that other programs and people use; others' temporary files; and names that almost match ours.
    Names names{".a.vlm.0a1b2c",
                ".a.vlm.backup",
                ".a.vlm.velmora-0123456",
                ".a.vlm.velmora-012345678",
                ".a.vlm.velmora-notes123",
                ".b.vlm.velmora-01234567",
                "a.vlm",
                "a.vlm.velmora-01234567"};
    std::sort(names.begin(), names.end());
    for (std::string const& name : names)
        writeFile(folder.path(name), "");
    writeFile(folder.path(".a.vlm.velmora-01234567"), "");
    leftovers::removeOf(folder.path("a.vlm"));
    EXPECT_EQ(folder.names(), names);
}

TEST(LeftoversTest, OnlyRegularFilesAreRemovedAndLinksAreNotFollowed) {
    TemporaryFolder const folder;
    fs::create_directory(folder.path(".a.velmora-00000001"));
    ASSERT_EQ(mkfifo(folder.path(".a.velmora-00000002").c_str(), 0600), 0);
    writeFile(folder.path("mine"), "");
    fs::create_symlink("mine", folder.path(".a.velmora-00000003"));
    leftovers::removeOf(folder.path("a"));
    EXPECT_EQ(folder.names().size(), 4u);
}

TEST(LeftoversTest, OfAFolderThoseOfAllTargetsAreRemoved) {
    TemporaryFolder const folder;
    Writer const living(folder.path("c.vlm"));
    EXPECT_TRUE(living.hold());
    for (std::string const name : {".a.vlm.velmora-01234567", ".b.png.velmora-89abcdef", "d.vlm", ".hidden"})
        writeFile(folder.path(name), "");
    leftovers::removeAll(folder.path());
    EXPECT_EQ(folder.names(), (Names{living.name().filename().string(), ".hidden", "d.vlm"}));
    leftovers::removeAll(folder.path("none"));
}
