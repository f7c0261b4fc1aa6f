#include "host/filter/RegionRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

TEST(RegionRendererTest, StripsEndOnGridLinesWhereTheyCan) {
    EXPECT_EQ(RegionRenderer::stripRows(0, 1000, 256), 512u);
    EXPECT_EQ(RegionRenderer::stripRows(10, 1000, 256), 502u);
    EXPECT_EQ(RegionRenderer::stripRows(0, 1000, 100), 500u);
    EXPECT_EQ(RegionRenderer::stripRows(499, 1000, 100), 501u);
    EXPECT_EQ(RegionRenderer::stripRows(0, 1000, 2048), 2048u);
    EXPECT_EQ(RegionRenderer::stripRows(1, 1000, 2048), 2047u);
}

TEST(RegionRendererTest, StripsOfAnyWidthFitInTheirBytes) {
    for (size_t width = 1; width < 10'000'000; width = width * 3 + 1) {
        for (size_t const tile : {16u, 100u, 256u, 2048u}) {
            for (size_t const y : {0u, 1u, 255u, 1999u}) {
                size_t const rows = RegionRenderer::stripRows(y, width, tile);
                ASSERT_GE(rows, 1u);
                ASSERT_LE(rows, RegionRenderer::kMaxBlockPixels);
                ASSERT_LE(rows * width * 4, RegionRenderer::kMaxStripBytes);
            }
        }
    }
}

TEST(RegionRendererTest, ARowBeyondTheBytesIsAStripOfItsOwn) {
    EXPECT_EQ(RegionRenderer::stripRows(5, RegionRenderer::kMaxStripBytes, 256), 1u);
}

TEST(RegionRendererTest, TileSizesThatNoDriverNeedTakeAreRefused) {
    EXPECT_THROW(RegionRenderer(nullptr, 15), std::invalid_argument);
    EXPECT_THROW(RegionRenderer(nullptr, 2049), std::invalid_argument);
    EXPECT_NO_THROW(RegionRenderer(nullptr, 16));
    EXPECT_NO_THROW(RegionRenderer(nullptr, 2048));
}
