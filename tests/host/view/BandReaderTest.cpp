#include "host/view/BandReader.h"

#include "tests/host/store/TestPictures.h"
#include "tests/host/view/BandParts.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using testpictures::Content;

constexpr size_t kTileSize = 32;
constexpr size_t kCacheBytes = 64 * 1000;

class BandReaderTest : public testing::Test {
protected:
    StoreInfo import(testpictures::Picture const& picture) const {
        ImportOptions options;
        options.tileSize = kTileSize;
        return testpictures::import(picture, path_, options);
    }

    // The samples of a part, one by one from the tiles of the store.
    void expectStored(BandPart const& part, size_t level) const {
        TileStore store(path_);
        Region const& region = part.region;
        size_t at = 0;
        for (size_t y = region.y; y < region.y + region.height; ++y) {
            for (size_t x = region.x; x < region.x + region.width; ++x, at += 2) {
                TileAddress const address = {level, part.band, part.plane, x / kTileSize, y / kTileSize};
                std::int16_t const expected = store.tile(address)[(y % kTileSize) * kTileSize + x % kTileSize];
                std::int16_t const found =
                    part.value ? *part.value
                               : static_cast<std::int16_t>(part.bytes.at(at) | part.bytes.at(at + 1) << 8U);
                ASSERT_EQ(found, expected) << toText(address) << ", sample " << x << "," << y;
            }
        }
        EXPECT_EQ(part.bytes.size(), part.value ? 0U : at);
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    std::shared_ptr<SampleCache> cache_ = std::make_shared<SampleCache>(kCacheBytes);
};

} // namespace

TEST_F(BandReaderTest, PartsAreThoseOfEachPlanesBandsInTheirOrder) {
    StoreInfo const info = import(testpictures::picture(90, 75, 3, 8, Content::Noise));
    BandReader reader(path_, cache_);
    for (size_t level = 0; level <= info.levels; ++level) {
        LevelTile const tile = {level, 0, 0};
        std::vector<Band> const bands =
            level == info.levels ? std::vector<Band>{Band::LL} : std::vector<Band>{Band::HL, Band::LH, Band::HH};
        std::vector<BandPart> const parts = partsOf(reader, tile);
        ASSERT_EQ(parts.size(), 3 * bands.size());
        for (size_t i = 0; i < parts.size(); ++i) {
            EXPECT_EQ(parts[i].plane, i / bands.size());
            EXPECT_EQ(parts[i].band, bands[i % bands.size()]);
            EXPECT_EQ(parts[i].region.width % 2, 0U);
            expectStored(parts[i], std::min(level + 1, info.levels));
        }
    }
}

TEST_F(BandReaderTest, ResidualsAreThoseOfThePicturesOwnBands) {
    import(testpictures::picture(70, 45, 4, 16, Content::Noise));
    BandReader reader(path_, cache_);
    std::vector<BandPart> const parts = partsOf(reader, {0, 0, 0}, TileJob::What::Residuals);
    ASSERT_EQ(parts.size(), 4U);
    for (size_t band = 0; band < parts.size(); ++band) {
        EXPECT_EQ(parts[band].plane, band);
        EXPECT_EQ(parts[band].band, Band::Residual);
        EXPECT_EQ(parts[band].region.width, 70U);
        EXPECT_EQ(parts[band].region.height, 45U);
        expectStored(parts[band], 0);
    }
}

TEST_F(BandReaderTest, APartOfOneValueHasNoBytes) {
    import(testpictures::picture(90, 75, 1, 8, Content::Flat));
    BandReader reader(path_, cache_);
    for (BandPart const& part : partsOf(reader, {0, 0, 0})) {
        EXPECT_EQ(part.value, std::int16_t{0});
        EXPECT_TRUE(part.bytes.empty());
    }
    EXPECT_EQ(cache_->bytes(), 0U) << "no tile was decompressed";
}
