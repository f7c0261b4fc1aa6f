#include "host/output/PictureWriter.h"
#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

namespace {

// "\x89PNG" or "II*", on a little-endian machine.
std::string formatOf(std::string const& path) {
    std::string const start = readFile(path).substr(0, 4);
    if (start == "\x89PNG") return "PNG";
    return start == std::string("II*\0", 4) || start == std::string("MM\0*", 4) ? "TIFF" : "neither";
}

} // namespace

TEST(PictureWriterTest, TheEndOfTheNameDecidesTheFormat) {
    TemporaryFolder const folder;
    auto const pixels = testimages::pattern8(31, 17, 3);
    for (auto const& [name, format] : std::vector<std::pair<char const*, char const*>>{{"a.tif", "TIFF"},
                                                                                       {"a.tiff", "TIFF"},
                                                                                       {"a.TIF", "TIFF"},
                                                                                       {"a.b.Tiff", "TIFF"},
                                                                                       {"a.png", "PNG"},
                                                                                       {"a.PNG", "PNG"},
                                                                                       {"a.tif.png", "PNG"}}) {
        auto const writer = makePictureWriter(folder.path(name), 31, 17, 3);
        writer->writeRows(pixels.samples.data(), 17);
        writer->finish();
        EXPECT_EQ(formatOf(folder.path(name)), format) << name;
        EXPECT_EQ(testimages::difference(testimages::readByVips(folder.path(name)), pixels), "") << name;
    }
}

TEST(PictureWriterTest, SixteenBitsComeBackAsTheyWere) {
    TemporaryFolder const folder;
    for (size_t bands = 1; bands <= 4; ++bands) {
        auto const samples = testimages::pattern16(31, 17, bands);
        for (std::string const name : {"a.png", "a.tif"}) {
            OutputFile file(folder.path(name));
            file.replace = true;
            auto const writer = makePictureWriter(file, 31, 17, bands, 16);
            auto const* const bytes = reinterpret_cast<std::uint8_t const*>(samples.data());
            writer->writeRows(bytes, 5);
            writer->writeRows(bytes + 2 * 5 * 31 * bands, 12);
            writer->finish();
            EXPECT_EQ(testimages::read16ByVips(folder.path(name)), samples) << name << ", " << bands << " bands";
        }
    }
}

TEST(PictureWriterTest, OtherEndsAreRefusedWithThoseThatThereAre) {
    TemporaryFolder const folder;
    for (std::string const name : {"a.jpg", "a.tifs", "a.png.vlm", "a", "tif", ".png", "a.png~"})
        try {
            makePictureWriter(folder.path(name), 31, 17, 3);
            ADD_FAILURE() << name;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::Usage);
            EXPECT_NE(std::string(error.what()).find(".png, .tif or .tiff"), std::string::npos) << error.what();
        }
    EXPECT_TRUE(folder.names().empty());
}

TEST(PictureWriterTest, OneThatIsNotFinishedLeavesTheOldFile) {
    TemporaryFolder const folder;
    auto const pixels = testimages::pattern8(200, 300, 4);
    for (std::string const name : {"a.png", "a.tif"}) {
        writeFile(folder.path(name), "old");
        OutputFile file(folder.path(name));
        file.replace = true;
        makePictureWriter(file, 200, 300, 4)->writeRows(pixels.samples.data(), 299);
        EXPECT_EQ(readFile(folder.path(name)), "old");
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.png", "a.tif"}));
}
