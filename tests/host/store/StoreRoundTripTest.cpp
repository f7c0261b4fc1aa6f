#include "host/image/ImageReader.h"
#include "host/store/StoreExporter.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using testpictures::Content;
using testpictures::Picture;

namespace {

// Exports the store into a TIFF file beside it and reads that one.
Picture exported(std::string const& path) {
    std::string const tiff = path + ".tif";
    TileStore store(path);
    exportStore(store, tiff, [](size_t, size_t) {});
    ImageReader reader(tiff, ImageReader::Samples::kAsStored);
    Picture picture{reader.width(), reader.height(), reader.bands(), 8 * reader.sampleBytes(), {}};
    reader.read({0, 0, picture.width, picture.height}, picture.bytes);
    return picture;
}

// Every sample of the picture comes back out of the store.
void expectRoundTrip(Picture const& picture, ImportOptions const& options) {
    TemporaryFolder const folder;
    std::string const path = folder.path("a.vlm");
    testpictures::import(picture, path, options);
    EXPECT_TRUE(exported(path) == picture) << picture.width << " x " << picture.height << ", " << picture.bands
                                           << " bands of " << picture.bits << " bits, tiles of " << options.tileSize;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.vlm", "a.vlm.tif"}));
}

ImportOptions optionsOf(size_t tileSize, std::optional<size_t> levels, size_t jobs) {
    ImportOptions options;
    options.tileSize = tileSize;
    options.levels = levels;
    options.jobs = jobs;
    return options;
}

class StoreRoundTripSizesTest : public testing::TestWithParam<std::pair<size_t, size_t>> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(Sizes, StoreRoundTripSizesTest,
                         testing::Values(std::pair{1, 1}, std::pair{1, 5000}, std::pair{5000, 1}, std::pair{2, 3},
                                         std::pair{17, 31}, std::pair{255, 16}, std::pair{256, 257},
                                         std::pair{257, 255}, std::pair{640, 481}),
                         [](auto const& test) {
                             return std::to_string(test.param.first) + "x" + std::to_string(test.param.second);
                         });

TEST_P(StoreRoundTripSizesTest, EverySampleComesBackAtEachTileSize) {
    auto const [width, height] = GetParam();
    Picture const picture = testpictures::picture(width, height, 3, 8, Content::Noise);
    for (size_t const tileSize : {16u, 64u, 256u})
        expectRoundTrip(picture, optionsOf(tileSize, std::nullopt, 4));
}

TEST_P(StoreRoundTripSizesTest, EverySampleOfAnyBandsAndBitsComesBack) {
    auto const [width, height] = GetParam();
    for (size_t bands = 1; bands <= 4; ++bands)
        for (size_t const bits : {8u, 16u})
            expectRoundTrip(testpictures::picture(width, height, bands, bits, Content::Noise),
                            optionsOf(64, std::nullopt, 1));
}

TEST(StoreRoundTripTest, EverySampleComesBackWithAnyBandsBitsAndContent) {
    for (size_t bands = 1; bands <= 4; ++bands)
        for (size_t const bits : {8u, 16u})
            for (Content const content :
                 {Content::Noise, Content::Ramp, Content::Flat, Content::Checkerboard, Content::Resonance})
                expectRoundTrip(testpictures::picture(83, 61, bands, bits, content), optionsOf(32, std::nullopt, 2));
}

TEST(StoreRoundTripTest, EverySampleComesBackFromAnyNumberOfLevels) {
    Picture const picture = testpictures::picture(203, 157, 3, 16, Content::Ramp);
    for (size_t levels = 1; levels <= 12; ++levels)
        expectRoundTrip(picture, optionsOf(64, levels, 1));
}

TEST(StoreRoundTripTest, TheFileDoesNotDependOnTheNumberOfJobsButForItsOrder) {
    TemporaryFolder const folder;
    Picture const picture = testpictures::picture(300, 200, 3, 8, Content::Noise);
    StoreInfo const info = testpictures::import(picture, folder.path("1"), optionsOf(32, 3, 1));
    testpictures::import(picture, folder.path("4"), optionsOf(32, 3, 4));
    TileStore one(folder.path("1"));
    TileStore four(folder.path("4"));
    Size const tiles = storegeometry::tileCount(info, 1);
    for (size_t row = 0; row < tiles.height; ++row)
        for (size_t column = 0; column < tiles.width; ++column)
            EXPECT_EQ(one.tile({1, Band::HH, 2, column, row}), four.tile({1, Band::HH, 2, column, row}));
}

TEST(StoreRoundTripTest, AFlatPictureHasOnlyUniformTiles) {
    TemporaryFolder const folder;
    for (size_t const bits : {8u, 16u}) {
        std::string const path = folder.path(std::to_string(bits));
        StoreInfo const info =
            testpictures::import(testpictures::picture(150, 90, 1, bits, Content::Flat), path, optionsOf(32, 3, 1));
        TileStore store(path);
        unsigned const sample = ((1u << bits) - 1) / 3;
        EXPECT_EQ(store.uniformValue({3, Band::LL, 0, 0, 0}), sample >> info.residualBits);
        for (size_t level = 1; level <= 3; ++level) {
            Size const tiles = storegeometry::tileCount(info, level);
            for (size_t row = 0; row < tiles.height; ++row)
                for (size_t column = 0; column < tiles.width; ++column)
                    for (Band const band : {Band::HL, Band::LH, Band::HH})
                        EXPECT_EQ(store.uniformValue({level, band, 0, column, row}), 0);
        }
        if (bits == 16) {
            EXPECT_EQ(store.uniformValue({0, Band::Residual, 0, 4, 2}), sample & 7u);
        }
    }
}

TEST(StoreRoundTripTest, SixteenBitsLeaveThreeOutsideTheWaveletAndEightNone) {
    TemporaryFolder const folder;
    for (Content const content : {Content::Noise, Content::Checkerboard})
        EXPECT_EQ(testpictures::import(testpictures::picture(100, 100, 3, 16, content),
                                       folder.path(std::to_string(static_cast<int>(content))), optionsOf(32, 3, 1))
                      .residualBits,
                  3u);
    EXPECT_EQ(testpictures::import(testpictures::picture(100, 100, 3, 8, Content::Resonance), folder.path("8"),
                                   optionsOf(32, 3, 1))
                  .residualBits,
              0u);
}

TEST(StoreRoundTripTest, APictureWhoseCoefficientsDoNotFitStartsOverWithFiveBitsOutside) {
    TemporaryFolder const folder;
    Picture const picture = testpictures::picture(200, 150, 3, 16, Content::Resonance);
    size_t opened = 0;
    std::vector<size_t> rowsDone;
    StoreInfo const info = importStore(
        [&] {
            ++opened;
            return testpictures::source(picture);
        },
        folder.path("a"), optionsOf(32, std::nullopt, 3), [&](size_t done, size_t) { rowsDone.push_back(done); });
    EXPECT_EQ(info.residualBits, 5u);
    EXPECT_EQ(opened, 2u);
    EXPECT_EQ(rowsDone.front(), 0u);
    EXPECT_EQ(rowsDone.back(), 150u);
    EXPECT_TRUE(exported(folder.path("a")) == picture);
}

// Tiles go into the file as soon as they are compressed: an import takes no memory for all of them.
TEST(StoreRoundTripTest, TheFileGrowsDuringAnImport) {
    TemporaryFolder const folder;
    Picture const picture = testpictures::picture(2000, 8000, 1, 8, Content::Noise);
    std::uintmax_t most = 0;
    importStore([&] { return testpictures::source(picture); }, folder.path("a.vlm"), {},
                [&](size_t done, size_t total) {
                    if (done == total) return;
                    for (std::string const& name : folder.names())
                        most = std::max(most, std::filesystem::file_size(folder.path(name)));
                });
    EXPECT_GT(most, 8'000'000U) << "of 16 million bytes of noise";
}

// SQLite's own names beside it are longer.
TEST(StoreRoundTripTest, AStoreMayLieInDeepFolders) {
    TemporaryFolder const folder;
    std::string deep = folder.path(std::string(100, 'a'));
    for (int depth = 0; depth < 3; ++depth)
        deep += "/" + std::string(90, 'b');
    std::filesystem::create_directories(deep);
    Picture const picture = testpictures::picture(40, 30, 1, 8, Content::Noise);
    for (std::string path = deep; path.size() > folder.path("").size() + 90;
         path = std::filesystem::path(path).parent_path()) {
        testpictures::import(picture, path + "/x.vlm");
        EXPECT_TRUE(exported(path + "/x.vlm") == picture) << path.size();
    }
}
