// Each `new` fails in turn while levels are opened and read: no file is called damaged for want of memory, and the same
// reader reads the same samples afterwards.
#include "host/pyramid/PyramidTiles.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/TestImages.h"

namespace {

class PyramidAllocationsTest : public PyramidFixture {
protected:
    // Levels of a view: the file's own, and means.
    static Bytes readFrom(PyramidTiles& tiles) {
        Bytes all;
        for (size_t const level : {0u, 1u, 3u}) {
            Region const region = wholeOf(tiles.size(level));
            Bytes samples(region.width * region.height * tiles.facts().image.layout.pixelBytes());
            tiles.read(level, region, samples.data());
            all.insert(all.end(), samples.begin(), samples.end());
        }
        return all;
    }

    // libvips keeps threads.
    static allocationsweep::Scenario scenario(std::string const& name, std::function<void()> const& work,
                                              std::function<void()> const& check) {
        allocationsweep::Scenario made{name, work, check};
        made.countsThreads = false;
        return made;
    }

    static void sweep(std::string const& file, ImageSelection const& selection = {}) {
        std::string const name = file.substr(file.rfind('/') + 1);
        PyramidOptions options;
        options.cacheBytes = 5000;
        options.selection = selection;
        auto const opened = [&] { return PyramidTiles(openPyramid(file, options).pyramid->reader()); };
        auto kept = opened();
        Bytes const expected = readFrom(kept);
        auto const openAndRead = [&] {
            auto tiles = opened();
            readFrom(tiles);
        };
        auto const check = [&] {
            auto tiles = opened();
            EXPECT_TRUE(readFrom(tiles) == expected);
        };
        EXPECT_GT(allocationsweep::sweep(scenario("open and read " + name, openAndRead, check)).thrown, 8U);
        auto const read = [&] { readFrom(kept); };
        auto const checkRead = [&] { EXPECT_TRUE(readFrom(kept) == expected); };
        EXPECT_GT(allocationsweep::sweep(scenario("read " + name, read, checkRead)).thrown, 2U);
    }
};

} // namespace

TEST_F(PyramidAllocationsTest, OfATiff) {
    Directory apart = level<std::uint16_t>(70, 50, 3, 1);
    apart.planesApart = true;
    sweep(write({apart, level<std::uint16_t>(35, 25, 3, 2, FILETYPE_REDUCEDIMAGE)}));
}

TEST_F(PyramidAllocationsTest, OfAStack) {
    Directory first = level(40, 30, 1, 1);
    first.description = R"(<OME><Image><Pixels SizeC="2"><Channel Name="DAPI"/><Channel/></Pixels></Image></OME>)";
    sweep(write({first, level(40, 30, 1, 2)}));
}

// Little CMS allocates on its own.
TEST_F(PyramidAllocationsTest, OfATurnedPictureWithAProfile) {
    Directory full = level(70, 50, 3, 1);
    full.orientation = 6;
    full.iccProfile = testprofiles::exchanged("Turned round");
    ImageSelection shown;
    shown.isUpright = true;
    shown.followsProfile = true;
    sweep(write({full, reduced(35, 25, 3, 2)}), shown);
}

TEST_F(PyramidAllocationsTest, OfAFileInMemory) {
    testimages::writePattern16(path("a.png"), "", 70, 60, 3);
    sweep(path("a.png"));
}

TEST_F(PyramidAllocationsTest, OfJpeg2000) {
    testimages::writePattern8(path("a.jp2"), "[lossless,tile-width=64,tile-height=64]", 130, 100, 3);
    sweep(path("a.jp2"));
}

TEST_F(PyramidAllocationsTest, OfAStore) {
    ImportOptions options;
    options.tileSize = 32;
    testpictures::import(testpictures::picture(70, 50, 3, 16, testpictures::Content::Noise), path("a.vlm"), options);
    sweep(path("a.vlm"));
}
