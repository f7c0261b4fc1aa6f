#include "host/store/StoreLevels.h"
#include "tests/host/store/LevelModel.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

using testpictures::Content;
using testpictures::Picture;

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr size_t kLevels = 5;

Bytes cut(Bytes const& level, size_t width, size_t pixelBytes, Region const& region) {
    Bytes result;
    for (size_t y = region.y; y < region.y + region.height; ++y) {
        std::uint8_t const* const row = &level[(y * width + region.x) * pixelBytes];
        result.insert(result.end(), row, row + region.width * pixelBytes);
    }
    return result;
}

std::vector<Bytes> levelsOf(Picture const& picture) {
    if (picture.bits == 8) return levelmodel::levelsOf(picture, kLevels);
    std::vector<Bytes> result;
    for (auto const& codes : levelmodel::codesOf(picture, kLevels)) {
        result.emplace_back(2 * codes.size());
        std::memcpy(result.back().data(), codes.data(), result.back().size());
    }
    return result;
}

class StoreLevelsTest : public testing::Test {
protected:
    void import(Picture const& picture, size_t tileSize = 16, size_t levels = kLevels) const {
        ImportOptions options;
        options.tileSize = tileSize;
        options.levels = levels;
        options.replace = true;
        testpictures::import(picture, path_, options);
    }

    // Every level, whole and in parts from anywhere.
    void expectLevels(Picture const& picture, size_t cacheBytes = size_t{1} << 20) {
        TileStore store(path_);
        StoreLevels levels(store, std::make_shared<SampleCache>(cacheBytes));
        auto const expected = levelsOf(picture);
        size_t const pixelBytes = picture.bands * picture.bits / 8;
        for (size_t level = 0; level <= kLevels; ++level) {
            SCOPED_TRACE("level " + std::to_string(level));
            Size const size = levels.size(level);
            ASSERT_EQ(expected[level].size(), size.width * size.height * pixelBytes);
            std::vector<Region> regions{wholeOf(size)};
            for (int i = 0; i < 40; ++i)
                regions.push_back(anyRegion(size));
            for (Region const& region : regions) {
                Bytes pixels(region.width * region.height * pixelBytes + 1, 77);
                levels.read(level, region, pixels.data());
                EXPECT_EQ(pixels.back(), 77) << "behind the pixels";
                pixels.pop_back();
                ASSERT_TRUE(pixels == cut(expected[level], size.width, pixelBytes, region)) << toText(region);
            }
        }
    }

    Region anyRegion(Size const& size) {
        auto const part = [this](size_t length) {
            size_t const start = random_() % length;
            return Interval{start, 1 + random_() % (length - start)};
        };
        Interval const x = part(size.width);
        return regionOf(x, part(size.height));
    }

    TemporaryFolder const folder_;
    std::string const path_ = folder_.path("a.vlm");
    std::mt19937 random_{20261123};
};

} // namespace

TEST_F(StoreLevelsTest, EachRegionOfEachLevelIsThatOfTheModel) {
    for (size_t const bands : {1u, 2u, 3u, 4u})
        for (size_t const bits : {8u, 16u}) {
            SCOPED_TRACE(std::to_string(bands) + " bands of " + std::to_string(bits) + " bits");
            Picture const picture = testpictures::picture(150, 91, bands, bits, Content::Noise);
            import(picture);
            expectLevels(picture);
        }
}

TEST_F(StoreLevelsTest, SidesOfAnyLength) {
    for (auto const& [width, height] :
         {std::pair<size_t, size_t>{1, 1}, {1, 70}, {70, 1}, {2, 2}, {63, 64}, {65, 33}}) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        Picture const picture = testpictures::picture(width, height, 3, 8, Content::Noise);
        import(picture);
        expectLevels(picture);
    }
}

TEST_F(StoreLevelsTest, TilesOfOneValueAndTilesOfOthersSideBySide) {
    for (Content const content : {Content::Flat, Content::Checkerboard, Content::Ramp, Content::Resonance}) {
        Picture picture = testpictures::picture(150, 91, 3, 8, content);
        std::fill(picture.bytes.begin() + 150 * 3 * 20, picture.bytes.begin() + 150 * 3 * 80, std::uint8_t{200});
        import(picture);
        expectLevels(picture);
    }
}

TEST_F(StoreLevelsTest, TheCacheDoesNotCount) {
    Picture const picture = testpictures::picture(150, 91, 4, 16, Content::Noise);
    for (size_t const tileSize : {16u, 32u, 128u}) {
        import(picture, tileSize);
        expectLevels(picture, 0);
        expectLevels(picture, 5000);
    }
}
