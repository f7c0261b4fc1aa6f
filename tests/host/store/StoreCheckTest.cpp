#include "host/store/StoreCheck.h"

#include "tests/host/store/DocumentedReader.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <utility>

using testpictures::Content;

TEST(StoreCheckTest, ProgressCountsEachTile) {
    TemporaryFolder const folder;
    ImportOptions options;
    options.tileSize = 32;
    testpictures::import(testpictures::picture(100, 70, 3, 16, Content::Noise), folder.path("a.vlm"), options);
    size_t const tiles = DocumentedReader(folder.path("a.vlm")).ids().size();
    TileStore store(folder.path("a.vlm"));
    std::vector<std::pair<size_t, size_t>> told;
    checkStore(store, [&](size_t done, size_t all) { told.emplace_back(done, all); });
    ASSERT_EQ(told.size(), tiles + 1);
    for (size_t i = 0; i < told.size(); ++i)
        EXPECT_EQ(told[i], std::pair(i, tiles));
}
