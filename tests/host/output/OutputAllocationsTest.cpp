// Each `new` fails in turn while a picture is written: the old file stays, and nothing else is left.
#include "host/output/PictureWriter.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/NoiseBytes.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class OutputAllocationsTest : public testing::TestWithParam<char const*> {
protected:
    TemporaryFolder folder_;
};

} // namespace

TEST_P(OutputAllocationsTest, TheOldFileStays) {
    constexpr size_t kWidth = 300;
    constexpr size_t kHeight = 200;
    auto const pixels = noiseBytes(kWidth * kHeight * 3, 1);
    OutputFile file(folder_.path(std::string("a") + GetParam()));
    file.replace = true;
    auto const write = [&] {
        auto const writer = makePictureWriter(file, kWidth, kHeight, 3, 8);
        writer->writeRows(pixels.data(), kHeight);
        writer->finish();
    };
    write();
    std::string const expected = readFile(file.path);
    auto const check = [&] {
        std::string const now = readFile(file.path);
        EXPECT_TRUE(now == "old" || now == expected);
        EXPECT_EQ(folder_.names().size(), 1U) << "nothing is left behind";
        write();
        EXPECT_TRUE(readFile(file.path) == expected);
        writeFile(file.path, "old");
    };
    EXPECT_GT(allocationsweep::sweep({std::string("write ") + GetParam(), write, check}).thrown, 20U);
}

INSTANTIATE_TEST_SUITE_P(Formats, OutputAllocationsTest, testing::Values(".png", ".tif"),
                         [](auto const& format) { return std::string(format.param + 1); });
