#include "host/output/PngWriter.h"
#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sys/stat.h>

using testimages::Pixels;

namespace {

using Names = std::vector<std::string>;

void write(PngWriter& png, Pixels const& pixels, size_t rowsAtOnce) {
    for (size_t y = 0; y < pixels.height; y += rowsAtOnce)
        png.writeRows(&pixels.samples[y * pixels.width * pixels.bands], std::min(rowsAtOnce, pixels.height - y));
}

OutputFile over(std::string const& path) {
    OutputFile file(path);
    file.replace = true;
    return file;
}

void write(std::string const& path, Pixels const& pixels, size_t rowsAtOnce = 7) {
    PngWriter png(over(path), pixels.width, pixels.height, pixels.bands);
    write(png, pixels, rowsAtOnce);
    png.finish();
}

HostError::Kind failureKind(std::function<void()> const& action) {
    try {
        action();
    } catch (HostError const& error) {
        return error.kind();
    }
    throw std::logic_error("nothing was thrown");
}

} // namespace

TEST(PngWriterTest, RowsAreReadBackAsWritten) {
    TemporaryFolder const folder;
    for (size_t bands = 1; bands <= 4; ++bands) {
        Pixels const pixels = testimages::pattern8(123, 45, bands);
        write(folder.path("a.png"), pixels);
        EXPECT_EQ(testimages::difference(testimages::readByVips(folder.path("a.png")), pixels), "") << bands;
    }
}

TEST(PngWriterTest, TheNameAppearsOnlyWhenTheFileIsComplete) {
    TemporaryFolder const folder;
    Pixels const pixels = testimages::pattern8(20, 20, 3);
    PngWriter png(folder.path("a.png"), 20, 20, 3);
    write(png, pixels, 20);
    EXPECT_FALSE(std::filesystem::exists(folder.path("a.png")));
    png.finish();
    EXPECT_EQ(folder.names(), Names{"a.png"});
}

TEST(PngWriterTest, AnUnfinishedFileIsRemovedAndTheOldOneStays) {
    TemporaryFolder const folder;
    writeFile(folder.path("a.png"), "old");
    {
        PngWriter png(over(folder.path("a.png")), 20, 20, 3);
        EXPECT_EQ(folder.names().size(), 2u);
    }
    EXPECT_EQ(folder.names(), Names{"a.png"});
    EXPECT_EQ(readFile(folder.path("a.png")), "old");
}

TEST(PngWriterTest, AFileOfTheSameNameStaysUnlessItMayBeReplaced) {
    TemporaryFolder const folder;
    writeFile(folder.path("a.png"), "old");
    EXPECT_EQ(failureKind([&] { PngWriter(folder.path("a.png"), 2, 2, 3); }), HostError::Kind::UnwritableOutput);
    EXPECT_EQ(readFile(folder.path("a.png")), "old");
}

TEST(PngWriterTest, AFileOfTheSameNameIsReplaced) {
    TemporaryFolder const folder;
    writeFile(folder.path("a.png"), "old");
    Pixels const pixels = testimages::pattern8(5, 5, 1);
    write(folder.path("a.png"), pixels);
    EXPECT_EQ(testimages::difference(testimages::readByVips(folder.path("a.png")), pixels), "");
}

TEST(PngWriterTest, ALinkStaysALinkAndItsTargetIsReplaced) {
    TemporaryFolder const folder;
    writeFile(folder.path("real.png"), "old");
    std::filesystem::create_symlink("real.png", folder.path("link.png"));
    Pixels const pixels = testimages::pattern8(5, 5, 1);
    write(folder.path("link.png"), pixels);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link.png")));
    EXPECT_EQ(testimages::difference(testimages::readByVips(folder.path("real.png")), pixels), "");
}

TEST(PngWriterTest, AFileHasTheUsualPermissions) {
    TemporaryFolder const folder;
    mode_t const mask = umask(0027);
    write(folder.path("a.png"), testimages::pattern8(2, 2, 1));
    umask(mask);
    struct stat status {};
    ASSERT_EQ(stat(folder.path("a.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0640u);
}

TEST(PngWriterTest, AMissingFolderIsAnUnwritableOutput) {
    TemporaryFolder const folder;
    EXPECT_EQ(failureKind([&] { PngWriter(folder.path("none/a.png"), 2, 2, 3); }), HostError::Kind::UnwritableOutput);
}

TEST(PngWriterTest, AFolderIsAnUnwritableOutput) {
    TemporaryFolder const folder;
    EXPECT_EQ(failureKind([&] { PngWriter(folder.path(), 2, 2, 3); }), HostError::Kind::UnwritableOutput);
}

// A rename would replace the device.
TEST(PngWriterTest, ADeviceIsAnUnwritableOutput) {
    EXPECT_EQ(failureKind([] { PngWriter(over("/dev/null"), 2, 2, 3); }), HostError::Kind::UnwritableOutput);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(PngWriterTest, MissingRowsAreAnErrorAndLeaveNoFile) {
    TemporaryFolder const folder;
    Pixels const pixels = testimages::pattern8(20, 19, 3);
    EXPECT_EQ(failureKind([&] {
                  PngWriter png(folder.path("a.png"), 20, 20, 3);
                  write(png, pixels, 19);
                  png.finish();
              }),
              HostError::Kind::UnwritableOutput);
    EXPECT_EQ(folder.names(), Names{});
}

TEST(PngWriterTest, RowsOfAMillionPixelsAndMoreAreWritten) {
    TemporaryFolder const folder;
    Pixels const pixels = testimages::pattern8(1200000, 2, 1);
    write(folder.path("a.png"), pixels);
    std::string const file = readFile(folder.path("a.png"));
    // Bytes 16 to 19 are the width, big-endian.
    EXPECT_EQ(file.substr(16, 4), std::string("\x00\x12\x4f\x80", 4));
}
