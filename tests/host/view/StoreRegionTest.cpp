// The pixels at a zoom that show a region of a picture.
#include "host/view/PictureRenderer.h"

#include <gtest/gtest.h>

namespace {

PictureInfo picture() {
    PictureInfo info;
    info.width = 1000;
    info.height = 801;
    info.bands = 1;
    info.levels = 3;
    return info;
}

void expectRegion(double zoom, Region const& of, Region const& expected) {
    Region const found = PictureRenderer::regionAt(picture(), Zoom::nearest(zoom, 3), of);
    EXPECT_EQ(found.x, expected.x);
    EXPECT_EQ(found.y, expected.y);
    EXPECT_EQ(found.width, expected.width);
    EXPECT_EQ(found.height, expected.height);
}

} // namespace

TEST(StoreRegionTest, AtFullSizeItIsTheRegion) {
    expectRegion(1, {7, 9, 100, 200}, {7, 9, 100, 200});
}

TEST(StoreRegionTest, PartsOfPixelsCountAsWhole) {
    // From 50.5 to 200.5, and from 25 to 74.5.
    expectRegion(0.5, {101, 50, 300, 99}, {50, 25, 151, 50});
    expectRegion(0.125, {8, 16, 8, 8}, {1, 2, 1, 1});
    expectRegion(0.125, {8, 16, 1, 1}, {1, 2, 1, 1});
    expectRegion(3, {7, 9, 100, 200}, {21, 27, 300, 600});
}

TEST(StoreRegionTest, ItEndsWithThePicture) {
    expectRegion(0.5, {0, 0, 1000, 801}, {0, 0, 500, 401});
    expectRegion(0.5, {999, 800, 1, 1}, {499, 400, 1, 1});
}
