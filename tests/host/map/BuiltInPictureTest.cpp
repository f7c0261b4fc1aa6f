#include "host/map/BuiltInPicture.h"
#include "host/HostError.h"
#include "host/map/MapLabels.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

using testimages::Pixels;

namespace {

Pixels read(Region const& region) {
    BuiltInPicture picture;
    Pixels pixels{region.width, region.height, 3, {}};
    picture.read(region, pixels.samples);
    return pixels;
}

} // namespace

TEST(BuiltInPictureTest, Has16384By16384RgbPixels) {
    BuiltInPicture const picture;
    EXPECT_EQ(picture.width(), 16384u);
    EXPECT_EQ(picture.height(), 16384u);
    EXPECT_EQ(picture.bands(), 3u);
}

TEST(BuiltInPictureTest, IsTheSameWhicheverWayItIsCut) {
    // Crosses cells of the noise, grid lines and labels; 700 columns are more than one batch.
    Region const whole{3900, 4000, 700, 160};
    Pixels const reference = read(whole);
    for (size_t const side : {1u, 37u, 100u, 256u, 699u}) {
        // One pixel at a time is slow: a strip suffices.
        size_t const rows = side == 1 ? 2 : whole.height;
        for (size_t y = 0; y < rows; y += side) {
            for (size_t x = 0; x < whole.width; x += side) {
                size_t const width = std::min(side, whole.width - x);
                size_t const height = std::min(side, whole.height - y);
                ASSERT_EQ(testimages::difference(read({whole.x + x, whole.y + y, width, height}),
                                                 testimages::crop(reference, x, y, width, height)),
                          "")
                    << side << " at " << x << "," << y;
            }
        }
    }
}

TEST(BuiltInPictureTest, RegionsLargeEnoughForThreadsEqualTheirRows) {
    Region const large{8000, 12000, 1024, 300};
    Pixels const reference = read(large);
    for (size_t y = 0; y < large.height; y += 23)
        ASSERT_EQ(testimages::difference(read({large.x, large.y + y, large.width, 1}),
                                         testimages::crop(reference, 0, y, large.width, 1)),
                  "")
            << y;
}

TEST(BuiltInPictureTest, IsTheSameEveryTime) {
    Region const region{5000, 9000, 400, 300};
    EXPECT_EQ(testimages::difference(read(region), read(region)), "");
}

TEST(BuiltInPictureTest, HasADarkFrameOfSixPixelsOnEveryEdge) {
    size_t const last = BuiltInPicture::kSide - 1;
    Pixels const corner = read({0, 0, 1, 1});
    for (Region const& frame :
         {Region{0, 3000, 6, 1}, Region{last - 5, 3000, 6, 1}, Region{3000, 0, 1, 6}, Region{3000, last - 5, 1, 6}}) {
        Pixels const pixels = read(frame);
        for (size_t i = 0; i < pixels.samples.size(); ++i)
            EXPECT_EQ(pixels.samples[i], corner.samples[i % 3]) << toText(frame);
    }
    EXPECT_NE(testimages::difference(read({6, 3000, 1, 1}), corner), "");
    EXPECT_NE(testimages::difference(read({last - 6, 3000, 1, 1}), corner), "");
}

TEST(BuiltInPictureTest, ShowsManyColoursAlsoInSmallParts) {
    for (Region const& part : {Region{2500, 6500, 256, 256}, Region{12500, 9000, 256, 256}}) {
        Pixels const pixels = read(part);
        std::set<std::vector<std::uint8_t>> colours;
        for (size_t i = 0; i < pixels.samples.size(); i += 3)
            colours.insert({pixels.samples[i], pixels.samples[i + 1], pixels.samples[i + 2]});
        EXPECT_GT(colours.size(), 500u) << toText(part);
    }
}

// Dark ink on a light plate, twelve pixels right of the crossing and below it.
TEST(BuiltInPictureTest, GridCrossingsAreLabelledWithTheirCoordinates) {
    for (auto const& [x, y] : {std::pair<size_t, size_t>{9216, 1024}, {1024, 11264}, {15360, 15360}}) {
        std::string const text = std::to_string(x) + "," + std::to_string(y);
        Region const box{x + 12, y + 12, text.size() * 12, 14};
        Pixels const pixels = read(box);
        for (size_t i = 0; i < box.width * box.height; ++i) {
            bool const dark = pixels.samples[i * 3] < 100;
            auto const column = static_cast<std::int64_t>(i % box.width);
            auto const row = static_cast<std::int64_t>(i / box.width);
            ASSERT_EQ(dark, maplabels::covers(text, column, row, 2)) << text << " at " << column << "," << row;
        }
    }
}

TEST(BuiltInPictureTest, ARegionThatLeavesThePictureIsRefused) {
    BuiltInPicture picture;
    std::vector<std::uint8_t> pixels;
    try {
        picture.read({16000, 0, 385, 1}, pixels);
        FAIL() << "nothing was thrown";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::RegionOutside);
        EXPECT_NE(std::string(error.what()).find("16000,0,385,1"), std::string::npos);
    }
}
