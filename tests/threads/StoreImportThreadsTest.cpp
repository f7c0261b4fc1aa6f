#include "host/store/TileStore.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using testpictures::Content;
using testpictures::Picture;

namespace {

ImportOptions optionsOf(size_t jobs) {
    ImportOptions options;
    options.tileSize = 16;
    options.jobs = jobs;
    return options;
}

// Each tile of the plane's band HH at level 1.
std::vector<std::vector<std::int16_t>> tilesOf(std::string const& path) {
    TileStore store(path);
    Size const count = storegeometry::tileCount(store.info(), 1);
    std::vector<std::vector<std::int16_t>> tiles;
    for (size_t row = 0; row < count.height; ++row)
        for (size_t column = 0; column < count.width; ++column)
            tiles.push_back(store.tile({1, Band::HH, 0, column, row}));
    return tiles;
}

} // namespace

TEST(StoreImportThreadsTest, AnyNumberOfJobsMakesTheSameTiles) {
    TemporaryFolder const folder;
    Picture const picture = testpictures::picture(500, 300, 3, 8, Content::Noise);
    testpictures::import(picture, folder.path("1"), optionsOf(1));
    for (size_t const jobs : {2u, 8u, 32u}) {
        std::string const path = folder.path(std::to_string(jobs));
        testpictures::import(picture, path, optionsOf(jobs));
        EXPECT_EQ(tilesOf(path), tilesOf(folder.path("1"))) << jobs;
    }
}

TEST(StoreImportThreadsTest, AnImportThatStartsOverOrIsStoppedEndsItsThreads) {
    TemporaryFolder const folder;
    Picture const picture = testpictures::picture(200, 300, 3, 16, Content::Resonance);
    EXPECT_EQ(testpictures::import(picture, folder.path("a"), optionsOf(8)).residualBits, 5u);
    struct Stop {};
    EXPECT_THROW(importStore([&] { return testpictures::source(picture); }, folder.path("b"), optionsOf(8),
                             [](size_t done, size_t) {
                                 if (done > 0) throw Stop();
                             }),
                 Stop);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a"});
}
