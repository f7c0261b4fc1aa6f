// Tile stores shown like other files that have levels. What they hold at each is StoreLevelsTest's.
#include "host/image/ImageReader.h"
#include "host/store/StoreImporter.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/host/store/TestPictures.h"

#include <filesystem>
#include <fstream>

using testpictures::Content;
using testpictures::Picture;

namespace {

class StorePyramidTest : public PyramidFixture {
protected:
    std::string import(Picture const& picture, size_t tileSize = 64) const {
        ImportOptions options;
        options.tileSize = tileSize;
        options.replace = true;
        testpictures::import(picture, path("a.vlm"), options);
        return path("a.vlm");
    }

    static Picture described(Picture picture, std::uint8_t orientation, Bytes const& profile) {
        if (orientation != 1) picture.metadata.push_back({picturemetadata::kTag, "274", {3, 0, orientation, 0}});
        if (!profile.empty()) picture.metadata.push_back({picturemetadata::kProfile, {}, profile});
        return picture;
    }

    static PyramidOptions shown(bool isUpright, bool followsProfile) {
        PyramidOptions options;
        options.selection.isUpright = isUpright;
        options.selection.followsProfile = followsProfile;
        return options;
    }
};

} // namespace

TEST_F(StorePyramidTest, HasTheLevelsAndTheSamplesOfTheStore) {
    for (size_t const bands : {1u, 2u, 3u, 4u})
        for (size_t const bits : {8u, 16u}) {
            Picture const picture = testpictures::picture(700, 530, bands, bits, Content::Noise);
            auto const pyramid = open(import(picture));
            PyramidFacts const& facts = pyramid->facts();
            EXPECT_EQ(sizesOf(facts), (Sizes{"700x530", "350x265", "175x133", "88x67", "44x34"}));
            EXPECT_EQ(facts.levels[0].unit.width, 512u);
            EXPECT_EQ(facts.levels[4].unit.width, 44u);
            EXPECT_EQ(facts.image.format, "tile store");
            EXPECT_EQ(facts.image.layout.colours, bands <= 2 ? 1u : 3u);
            EXPECT_EQ(facts.image.layout.alpha, bands % 2 == 0);
            EXPECT_EQ(facts.image.layout.type, bits == 8 ? SampleType::Unsigned8 : SampleType::Unsigned16);
            auto const reader = pyramid->reader();
            EXPECT_TRUE(readAll(*reader) == picture.bytes);
            EXPECT_EQ(reader->statistics().decodedUnits, 4u);
            EXPECT_TRUE(read(*reader, 0, {100, 40, 20, 30}) ==
                        crop(picture.bytes, 700, bands * bits / 8, {100, 40, 20, 30}));
            EXPECT_EQ(reader->statistics().decodedUnits, 4u);
            EXPECT_EQ(reader->statistics().cachedUnits, 1u);
        }
}

TEST_F(StorePyramidTest, ASideOfOneSampleHasNoMoreLevels) {
    ImportOptions options;
    options.levels = 12;
    testpictures::import(testpictures::picture(5, 1, 1, 8, Content::Noise), path("a.vlm"), options);
    EXPECT_EQ(sizesOf(open(path("a.vlm"))->facts()), (Sizes{"5x1", "3x1", "2x1", "1x1"}));
}

TEST_F(StorePyramidTest, IsTurnedAndConvertedAsTheFileThatItWasMadeOf) {
    Bytes const profile = testprofiles::rgb(testprofiles::kAdobe, 2.2, "Wide");
    Picture const picture = testpictures::picture(90, 70, 3, 8, Content::Ramp);
    Directory file = testtiff::directory<std::uint8_t>(90, 70, 3, picture.bytes);
    file.photometric = PHOTOMETRIC_RGB;
    file.iccProfile = profile;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        file.orientation = static_cast<std::uint16_t>(orientation);
        write({file});
        import(described(picture, static_cast<std::uint8_t>(orientation), profile));
        for (auto const& [isUpright, followsProfile] :
             {std::pair{false, false}, std::pair{false, true}, std::pair{true, false}, std::pair{true, true}}) {
            auto const expected = open(path("a.tif"), shown(isUpright, followsProfile));
            auto const store = open(path("a.vlm"), shown(isUpright, followsProfile));
            EXPECT_EQ(store->orientation(), expected->orientation());
            EXPECT_EQ(store->facts().image.followedProfile, expected->facts().image.followedProfile);
            EXPECT_EQ(sizesOf(store->facts())[0], sizesOf(expected->facts())[0]);
            EXPECT_TRUE(readAll(*store->reader()) == readAll(*expected->reader())) << orientation;
        }
    }
}

TEST_F(StorePyramidTest, KeepsTheSizeOfAPixel) {
    Directory file = level(90, 70, 1, 1);
    file.resolutionUnit = 3;
    file.xResolution = 20000;
    file.yResolution = 10000;
    write({file});
    importStore([&] { return std::make_unique<ImageReader>(path("a.tif"), ImageReader::Options()); }, path("a.vlm"), {},
                [](size_t, size_t) {});
    ImageFacts const facts = open(path("a.vlm"))->facts().image;
    EXPECT_NEAR(facts.pixelsPerMillimetreX, 2000, 1e-9);
    EXPECT_NEAR(facts.pixelsPerMillimetreY, 1000, 1e-9);
}

TEST_F(StorePyramidTest, ADamagedTileFailsAndTheOthersAreRead) {
    Picture const picture = testpictures::picture(1100, 60, 1, 8, Content::Noise);
    std::string const store = import(picture);
    auto const pyramid = open(store);
    auto const reader = pyramid->reader();
    std::fstream file(store, std::ios::in | std::ios::out | std::ios::binary);
    auto const size = static_cast<std::streamoff>(std::filesystem::file_size(store));
    file.seekp(size / 2);
    file.write("damage that nobody has written", 30);
    file.close();
    int failed = 0;
    int right = 0;
    for (size_t x = 0; x < 1100; x += 100) {
        try {
            right += read(*reader, 0, {x, 0, 100, 60}) == crop(picture.bytes, 1100, 1, {x, 0, 100, 60}) ? 1 : 100;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::DamagedStore) << error.what();
            ++failed;
        }
    }
    EXPECT_GT(failed, 0);
    EXPECT_GT(right, 0);
    EXPECT_EQ(failed + right, 11) << "a wrong sample";
}

TEST_F(StorePyramidTest, AStoreThatHasChangedIsNotRead) {
    auto const pyramid = open(import(testpictures::picture(90, 70, 1, 8, Content::Noise)));
    std::string const changed = "it has changed while it was being read; open it once more";
    for (Picture const& other :
         {testpictures::picture(91, 70, 1, 8, Content::Noise), testpictures::picture(90, 70, 2, 8, Content::Noise),
          testpictures::picture(90, 70, 1, 16, Content::Noise)}) {
        import(other);
        EXPECT_TRUE(has(failure([&] { readAll(*pyramid->reader()); }).what(), changed));
    }
    import(testpictures::picture(90, 70, 1, 8, Content::Noise), 16);
    EXPECT_TRUE(has(failure([&] { readAll(*pyramid->reader()); }).what(), changed));
}

TEST_F(StorePyramidTest, ACheckStopsReading) {
    struct Stop {};
    auto const pyramid = open(import(testpictures::picture(90, 70, 1, 8, Content::Noise)));
    auto const reader = pyramid->reader([] { throw Stop(); });
    EXPECT_THROW(readAll(*reader), Stop);
    reader->setCheck({});
    EXPECT_EQ(readAll(*reader).size(), 90u * 70u);
    reader->setCheck([] { throw Stop(); });
    EXPECT_NO_THROW(readAll(*reader)) << "it is in the cache";
}

TEST_F(StorePyramidTest, WhatIsNoPartOfAStoreIsRefused) {
    import(testpictures::picture(90, 70, 3, 8, Content::Noise));
    auto const opened = [&](PyramidOptions const& options) { return openPyramid(path("a.vlm"), options).pyramid; };
    PyramidOptions options;
    options.selection.page = 2;
    EXPECT_TRUE(has(failure([&] { opened(options); }).what(), "is a tile store, of one picture; leave out --page"));
    options.selection.page = 1;
    options.selection.bands = {4};
    EXPECT_TRUE(has(failure([&] { opened(options); }).what(), "has no band 4; --bands are 1 to 3"));
    options.selection.bands = {2};
    EXPECT_EQ(opened(options)->facts().image.layout.bands, 1u);
    std::filesystem::resize_file(path("a.vlm"), 100);
    EXPECT_EQ(failure([&] { opened({}); }).kind(), HostError::Kind::DamagedStore);
}
