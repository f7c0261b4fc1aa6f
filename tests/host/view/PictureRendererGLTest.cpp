// Regions of stores through the GPU, byte for byte as the wavelet's formulas and the plain colour transform give them.
#include "tests/host/view/PictureRendererFixture.h"

#include "host/filter/EnhancedRenderer.h"
#include "host/view/LevelTile.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using testpictures::Content;
using testpictures::Picture;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes crop(Bytes const& bytes, size_t width, size_t bands, Region const& region) {
    Bytes out;
    for (size_t y = region.y; y < region.y + region.height; ++y) {
        auto const row = bytes.begin() + static_cast<std::ptrdiff_t>((y * width + region.x) * bands);
        out.insert(out.end(), row, row + static_cast<std::ptrdiff_t>(region.width * bands));
    }
    return out;
}

class PictureRendererGLTest : public PictureRendererFixture {};

} // namespace

TEST_F(PictureRendererGLTest, LevelZeroIsThePicture) {
    Picture const picture = testpictures::picture(301, 207, 3, 8, Content::Noise);
    import(picture, 64);
    EXPECT_TRUE(rendered(0, {0, 0, 301, 207}) == picture.bytes);
}

TEST_F(PictureRendererGLTest, EveryLevelIsTheWaveletsLowBand) {
    for (Content const content : {Content::Noise, Content::Ramp, Content::Checkerboard})
        expectEveryLevel(testpictures::picture(333, 258, 3, 8, content), 32, 4);
}

TEST_F(PictureRendererGLTest, EveryLevelOfAnyBandsAndBitsIsExact) {
    for (size_t bands = 1; bands <= 4; ++bands) {
        for (size_t const bits : {8U, 16U})
            expectEveryLevel(testpictures::picture(83, 61, bands, bits, Content::Noise), 32);
    }
}

TEST_F(PictureRendererGLTest, SinglePixelsRowsAndColumnsAreExact) {
    for (auto const& [width, height] : {std::pair{1, 1}, {2, 3}, {1, 1500}, {1500, 1}, {16, 16}, {17, 15}, {1021, 3}})
        expectEveryLevel(
            testpictures::picture(static_cast<size_t>(width), static_cast<size_t>(height), 3, 8, Content::Noise), 16);
}

TEST_F(PictureRendererGLTest, FlatPicturesAreExactWithoutATileThatIsRead) {
    expectEveryLevel(testpictures::picture(300, 200, 3, 8, Content::Flat), 64);
    expectEveryLevel(testpictures::picture(300, 200, 2, 16, Content::Flat), 64);
}

TEST_F(PictureRendererGLTest, RegionsAreTheirPartOfTheWholeLevel) {
    Picture const picture =
        testpictures::picture(isSampleRun() ? 603 : 1203, isSampleRun() ? 550 : 1100, 3, 8, Content::Noise);
    StoreInfo const info = import(picture, 64, 5);
    std::mt19937 random(11);
    for (size_t level = 0; level <= info.levels; ++level) {
        Size const extent = leveltile::levelExtent(info, level);
        Bytes const whole = renderedWhole(info, level);
        if (level == 0) {
            EXPECT_TRUE(whole == picture.bytes);
        }
        for (int i = 0; i < (isExhaustiveRun() ? 34 : 3); ++i) {
            size_t const x = random() % extent.width;
            size_t const y = random() % extent.height;
            Region const region{x, y, 1 + random() % std::min<size_t>(extent.width - x, 90),
                                1 + random() % std::min<size_t>(extent.height - y, 90)};
            ASSERT_TRUE(rendered(level, region) == crop(whole, extent.width, 3, region))
                << "level " << level << ", " << toText(region);
        }
    }
}

TEST_F(PictureRendererGLTest, EnhancementsGiveWhatTheyGiveOnThePictureItself) {
    Picture const picture = testpictures::picture(1050, 130, 4, 8, Content::Noise);
    import(picture, 128);
    std::vector<enhancement::Step> const steps = {enhancement::Equalise{3.0}, enhancement::Sharpen{0.5},
                                                  enhancement::Truncate{2, true}};
    Bytes expected;
    auto const source = testpictures::source(picture);
    EnhancedRenderer(instance_, steps)
        .render(
            *source, {0, 0, picture.width, picture.height},
            [&](std::uint8_t const* rows, size_t count) {
                expected.insert(expected.end(), rows, rows + count * picture.width * picture.bands);
            },
            [](size_t, size_t) {});
    EXPECT_TRUE(rendered(0, {0, 0, picture.width, picture.height}, steps) == expected);
}
