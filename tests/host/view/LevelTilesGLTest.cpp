#include "host/view/LevelTiles.h"

#include "tests/host/view/PictureViewFixture.h"

#include <gtest/gtest.h>

namespace {

using testpictures::Content;

class LevelTilesGLTest : public PictureViewFixture {};

} // namespace

TEST_F(LevelTilesGLTest, ATileCountsTheBytesOfItsPlanesAndPixels) {
    struct Row {
        size_t bands;
        size_t bits;
        size_t bytes;
    };
    // 50 x 41 samples show the picture; with those that continue it a plane has 52 x 44.
    for (Row const& row : {Row{1, 8, 2 * 52 * 44 + 4 * 50 * 41},
                           {3, 8, 3 * 2 * 52 * 44 + 4 * 50 * 41},
                           {3, 16, 3 * 2 * 52 * 44 + 8 * 50 * 41},
                           {4, 16, 4 * 2 * 52 * 44 + 8 * 50 * 41}}) {
        StoreInfo const info = import(testpictures::picture(100, 81, row.bands, row.bits, Content::Noise), 64);
        ASSERT_EQ(info.levels, 1U);
        FilterRunner targets(instance_);
        LevelTiles tiles(instance_, targets, info);
        EXPECT_EQ(tiles.bytes(), 0U);
        tiles.buildEmpty({1, 0, 0});
        EXPECT_EQ(tiles.count(), 1U);
        EXPECT_EQ(tiles.bytes(), row.bytes) << row.bands << " bands of " << row.bits << " bits";
    }
}
