#include "host/output/TemporaryOutput.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using Ending = OutputFile::Ending;

namespace {

using Names = std::vector<std::string>;

class TemporaryOutputTest : public testing::Test {
protected:
    void SetUp() override { before_ = umask(0022); }
    void TearDown() override { umask(before_); }

    std::string path(std::string const& name) const { return folder_.path(name); }

    OutputFile file(std::string const& name, bool replace = false, std::string const& source = "") const {
        OutputFile file(path(name));
        file.replace = replace;
        if (!source.empty()) file.sources.push_back(path(source));
        return file;
    }

    static void writeNew(OutputFile const& file) {
        TemporaryOutput output(file);
        output.write("new", 3);
        output.finish();
    }

    static mode_t modeOf(std::string const& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 0777;
    }

    // Permissions of an output whose sources have these permissions.
    mode_t modeMadeOf(std::vector<mode_t> const& modes) const {
        OutputFile output = file("out", true);
        for (mode_t const mode : modes) {
            std::string const source = path("source" + std::to_string(output.sources.size()));
            writeFile(source, "");
            EXPECT_EQ(chmod(source.c_str(), mode), 0);
            output.sources.push_back(source);
        }
        writeNew(output);
        mode_t const mode = modeOf(path("out"));
        for (std::string const& source : output.sources)
            fs::remove(source);
        return mode;
    }

    template <class Action>
    static void expectFailure(Action const& action, HostError::Kind kind, std::string const& words) {
        try {
            action();
            ADD_FAILURE() << words;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
            EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
        }
    }

    static void expectUnusable(OutputFile const& file, std::string const& words) {
        expectFailure([&] { requireUsable(file); }, HostError::Kind::UnwritableOutput, words);
        expectFailure([&] { TemporaryOutput const output(file); }, HostError::Kind::UnwritableOutput, words);
    }

    TemporaryFolder folder_;

private:
    mode_t before_ = 0;
};

} // namespace

TEST_F(TemporaryOutputTest, AFileAppearsWhenItIsFinished) {
    {
        TemporaryOutput output(file("a"));
        output.write("what is ", 8);
        output.write("written", 7);
        EXPECT_FALSE(fs::exists(path("a")));
        EXPECT_EQ(folder_.names().size(), 1u);
        output.finish();
        EXPECT_EQ(folder_.names(), Names{"a"});
    }
    EXPECT_EQ(readFile(path("a")), "what is written");
    EXPECT_EQ(folder_.names(), Names{"a"});
}

TEST_F(TemporaryOutputTest, OneThatIsNotFinishedLeavesNothing) {
    writeFile(path("a"), "old");
    { TemporaryOutput(file("a", true)).write("new", 3); }
    { TemporaryOutput(file("b")).write("new", 3); }
    EXPECT_EQ(folder_.names(), Names{"a"});
    EXPECT_EQ(readFile(path("a")), "old");
}

TEST_F(TemporaryOutputTest, AFileIsReplacedOnlyWhereThatIsSaid) {
    writeFile(path("a"), "old");
    expectUnusable(file("a"), "exists already; choose another name, or replace it with --force");
    EXPECT_EQ(readFile(path("a")), "old");
    writeNew(file("a", true));
    EXPECT_EQ(readFile(path("a")), "new");
    EXPECT_EQ(folder_.names(), Names{"a"});
}

TEST_F(TemporaryOutputTest, AFileThatAppearsMeanwhileStays) {
    TemporaryOutput output(file("a"));
    writeFile(path("a"), "somebody's");
    expectFailure([&] { output.finish(); }, HostError::Kind::UnwritableOutput, "exists already");
    EXPECT_EQ(readFile(path("a")), "somebody's");
}

TEST_F(TemporaryOutputTest, WhatItIsMadeOfIsNeverReplaced) {
    writeFile(path("source"), "precious");
    fs::create_symlink("source", path("link"));
    fs::create_symlink("link", path("link2"));
    fs::create_hard_link(path("source"), path("hard"));
    fs::create_directory(path("folder"));
    for (std::string const name : {"source", "link", "link2", "hard", "folder/../source"}) {
        expectUnusable(file(name, true, "source"), "it is the input itself");
        expectUnusable(file(name, true, "link"), "it is the input itself");
    }
    EXPECT_EQ(readFile(path("source")), "precious");
}

TEST_F(TemporaryOutputTest, ASourceThatGetsTheNameMeanwhileStays) {
    writeFile(path("source"), "precious");
    TemporaryOutput output(file("a", true, "source"));
    fs::create_hard_link(path("source"), path("a"));
    expectFailure([&] { output.finish(); }, HostError::Kind::UnwritableOutput, "it is the input itself");
    EXPECT_EQ(readFile(path("a")), "precious");
}

TEST_F(TemporaryOutputTest, ALinkStaysALink) {
    fs::create_directory(path("there"));
    fs::create_symlink("there/a", path("link"));
    writeNew(file("link"));
    EXPECT_EQ(readFile(path("there/a")), "new") << "it pointed to nothing";
    writeFile(path("there/a"), "old");
    expectUnusable(file("link"), "exists already");
    writeNew(file("link", true));
    EXPECT_EQ(readFile(path("there/a")), "new");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    fs::create_symlink("round", path("round"));
    expectUnusable(file("round", true), "symbolic links");
}

TEST_F(TemporaryOutputTest, WhatIsNoRegularFileIsNamed) {
    fs::create_directory(path("folder"));
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    expectUnusable(file("folder", true), "it is a folder");
    expectUnusable(file("folder/", true), "it is a folder");
    expectUnusable(file("none/", true), "the name of a folder");
    expectUnusable(file("fifo", true), "it is a FIFO");
    for (std::string const device : {"/dev/null", "/dev/full"})
        expectUnusable(device, "it is a device");
    for (std::string const stream : {"/dev/stdout", "/dev/stderr", "/dev/fd/1", "/proc/self/fd/2"})
        expectUnusable(stream, "it is a stream");
    EXPECT_TRUE(fs::is_fifo(path("fifo")));
}

TEST_F(TemporaryOutputTest, AFolderThatIsMissingIsNoticedAtOnce) {
    expectUnusable(file("none/a"), "No such file or directory; make the folder first");
    writeFile(path("a"), "");
    expectUnusable(file("a/b"), "Not a directory");
    expectUnusable(file(std::string(256, 'n')), "File name too long; choose a shorter name");
    expectFailure([] { requireUsable(std::string()); }, HostError::Kind::Usage, "empty");
}

TEST_F(TemporaryOutputTest, EndingsThatDoNotFitAreRefused) {
    auto const expectMisfit = [&](std::string const& name, Ending ending, std::string const& words) {
        expectFailure([&] { requireUsable(file(name), ending); }, HostError::Kind::Usage, words);
    };
    for (std::string const name : {"a.jpg", "a.tif", "a", "a.png.vlm", "png"})
        expectMisfit(name, Ending::Png, "ends in .png");
    for (std::string const name : {"a.jpg", "a.png", "a", "a.tif.vlm", ".tif"})
        expectMisfit(name, Ending::Tiff, "ends in .tif or .tiff");
    for (std::string const name : {"a.tif", "a.TIFF", "a.png", "a.jpg", "a.Jpeg", "a.svs", "a.jp2", "a.webp", "a.v"})
        expectMisfit(name, Ending::NotOfAPicture, "ends in .vlm");
    for (std::string const name : {"a.vlm", "a.VLM", "a", "a.store", "tif", "a.tif.vlm", ".png"})
        EXPECT_NO_THROW(requireUsable(file(name), Ending::NotOfAPicture)) << name;
    EXPECT_NO_THROW(requireUsable(file("a.PNG"), Ending::Png));
    EXPECT_NO_THROW(requireUsable(file("a.b.Tiff"), Ending::Tiff));
}

TEST_F(TemporaryOutputTest, WhoMayNotReadASourceMayNotReadTheOutput) {
    EXPECT_EQ(modeMadeOf({}), 0644u);
    EXPECT_EQ(modeMadeOf({0666}), 0644u) << "the mask";
    EXPECT_EQ(modeMadeOf({0755}), 0644u);
    EXPECT_EQ(modeMadeOf({0600}), 0600u);
    EXPECT_EQ(modeMadeOf({0640}), 0640u);
    EXPECT_EQ(modeMadeOf({0604}), 0604u);
    EXPECT_EQ(modeMadeOf({0400}), 0400u);
    EXPECT_EQ(modeMadeOf({0440}), 0440u);
    EXPECT_EQ(modeMadeOf({0640, 0604}), 0600u) << "of all sources";
    umask(0077);
    EXPECT_EQ(modeMadeOf({0644}), 0600u);
    EXPECT_EQ(modeMadeOf({}), 0600u);
}

TEST_F(TemporaryOutputTest, NobodyMayReadAnUnfinishedFileWhoMayNotReadTheSource) {
    writeFile(path("source"), "");
    chmod(path("source").c_str(), 0600);
    TemporaryOutput const output(file("a", false, "source"));
    EXPECT_EQ(modeOf(output.temporaryName()), 0600u);
}

TEST_F(TemporaryOutputTest, AnotherGroupThanTheSourcesHasNoMoreThanEverybody) {
    writeFile(path("source"), "");
    constexpr gid_t kGroup = 12345;
    if (chown(path("source").c_str(), static_cast<uid_t>(-1), kGroup) != 0)
        GTEST_SKIP() << "files cannot be given to another group";
    for (auto const& [source, output] :
         std::vector<std::pair<mode_t, mode_t>>{{0640, 0600}, {0644, 0644}, {0604, 0600}}) {
        chmod(path("source").c_str(), source);
        writeNew(file("a", true, "source"));
        EXPECT_EQ(modeOf(path("a")), output);
    }
}

TEST_F(TemporaryOutputTest, ALeftoverOfTheSameTargetIsRemoved) {
    std::string left;
    {
        TemporaryOutput const living(file("a"));
        left = fs::path(living.temporaryName()).filename();
    }
    writeFile(path(left), "of one that was killed");
    writeNew(file("a"));
    EXPECT_EQ(folder_.names(), Names{"a"});
}

TEST_F(TemporaryOutputTest, TwoOfOneTargetLeaveEachOtherAlone) {
    auto first = std::make_unique<TemporaryOutput>(file("a", true));
    auto second = std::make_unique<TemporaryOutput>(file("a", true));
    EXPECT_EQ(folder_.names().size(), 2u);
    first->write("first", 5);
    second->write("second", 6);
    first->finish();
    EXPECT_EQ(readFile(path("a")), "first");
    second->finish();
    EXPECT_EQ(readFile(path("a")), "second");
    EXPECT_EQ(folder_.names(), Names{"a"});
}
