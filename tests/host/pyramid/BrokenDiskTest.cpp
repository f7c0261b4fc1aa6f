// A disk that fails is told as such, not as a damaged file; a later read goes on where it works again.
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/support/TestImages.h"

#include <cstdlib>

namespace {

// BrokenDisk.cpp is linked into the program: reads behind byte 8192 of files of this name fail.
class BrokenDiskTest : public PyramidFixture {
protected:
    void TearDown() override { unsetenv("VELMORA_BROKEN_FILE"); }

    static void breakDisk() { setenv("VELMORA_BROKEN_FILE", "broken", 1); }
    static void mendDisk() { unsetenv("VELMORA_BROKEN_FILE"); }

    static void expectDiskFailure(std::function<void()> const& action, std::string const& file) {
        HostError const error = failure(action);
        EXPECT_EQ(error.kind(), HostError::Kind::MissingFile) << error.what();
        EXPECT_EQ(std::string(error.what()),
                  "cannot read '" + file + "': Input/output error; check the disk that the file lies on");
    }
};

} // namespace

TEST_F(BrokenDiskTest, TilesOfATiff) {
    Directory const full = level(200, 100, 3, 1);
    std::string const file = write({full}, "w", "broken.tif");
    auto const pyramid = open(file);
    auto const reader = pyramid->reader();
    breakDisk();
    for (int i = 0; i < 2; ++i)
        expectDiskFailure([&] { readAll(*reader); }, file);
    // The directory lies at the end.
    expectDiskFailure([&] { openPyramid(file); }, file);
    mendDisk();
    expectLevel(*reader, 0, full.bytes);
}

TEST_F(BrokenDiskTest, FilesThatAreDecodedIntoMemory) {
    testimages::writePattern16(path("broken.png"), "[compression=0]", 90, 70, 3);
    auto const pyramid = open(path("broken.png"));
    auto const reader = pyramid->reader();
    breakDisk();
    for (int i = 0; i < 2; ++i)
        expectDiskFailure([&] { readAll(*reader); }, path("broken.png"));
    mendDisk();
    EXPECT_EQ(readAll(*reader).size(), 90u * 70 * 6);
}
