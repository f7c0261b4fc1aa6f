#include "host/view/UploadedTiles.h"

#include "tests/host/view/PictureViewFixture.h"

#include <gtest/gtest.h>

#include <array>

namespace {

// Tiles through the upload ring, whose buffers have room for five of them, and whose writers are late in turn.
class UploadedTilesGLTest : public PictureViewFixture {
protected:
    using Bytes = std::vector<std::uint8_t>;

    static constexpr size_t kTiles = 6;
    static constexpr std::array<size_t, 5> kUploadedLater{0, 2, 3, 4, 5};
    static constexpr size_t kPixels = leveltile::kSide * leveltile::kSide;

    UploadedTilesGLTest() {
        info_.width = (kTiles + 1) * leveltile::kSide;
        info_.height = leveltile::kSide;
        info_.bands = 3;
    }

    // Reserved, not written yet.
    LoadedTile reserved(UploadedTiles& tiles, size_t column) const {
        LoadedTile tile;
        tile.job.tile = {0, column, 0};
        tile.pixels.resize(kPixels * info_.bands);
        for (size_t i = 0; i < tile.pixels.size(); ++i)
            tile.pixels[i] = static_cast<std::uint8_t>(i * 7 + i / 100 + column * 50);
        EXPECT_TRUE(tiles.reserve(tile));
        return tile;
    }

    // The last one closes the buffer of the others; the first one's writer is late.
    std::vector<LoadedTile> reserveAndWriteAllButTheFirst(UploadedTiles& tiles) const {
        std::vector<LoadedTile> result;
        for (size_t column = 0; column < kTiles; ++column)
            result.push_back(reserved(tiles, column));
        for (size_t column = 1; column < kTiles; ++column)
            result[column].room->write(result[column].pixels, 0);
        return result;
    }

    static void expectBuilt(FilterRunner& targets, UploadedTiles& tiles, LoadedTile const& loaded) {
        tiles.build(loaded);
        OwnedTarget const* const target = tiles.pixels(loaded.job.tile);
        ASSERT_NE(target, nullptr);
        Bytes const rgba = targets.read(*target, SampleLayout::kRgba8, {0, 0, leveltile::kSide, leveltile::kSide});
        ASSERT_EQ(rgba.size(), kPixels * 4);
        for (size_t i = 0; i < kPixels; ++i)
            for (size_t band = 0; band < 3; ++band)
                ASSERT_EQ(rgba[4 * i + band], loaded.pixels[3 * i + band]) << i;
    }

    PictureInfo info_;
};

} // namespace

TEST_F(UploadedTilesGLTest, ATileBehindALateWriterIsBuiltFromItsPixelsAndErasedWhenItComes) {
    FilterRunner targets(instance_);
    UploadedTiles tiles(instance_, targets, info_);
    auto loaded = reserveAndWriteAllButTheFirst(tiles);
    size_t const number = loaded[1].room->targetOrTileId();
    tiles.upload(loaded[1]);
    EXPECT_EQ(loaded[1].staged, nullptr) << "the buffer waits for its first writer";
    expectBuilt(targets, tiles, loaded[1]);

    loaded[0].room->write(loaded[0].pixels, 0);
    for (size_t const column : kUploadedLater) {
        tiles.upload(loaded[column]);
        EXPECT_NE(loaded[column].staged, nullptr) << column;
        expectBuilt(targets, tiles, loaded[column]);
    }
    EXPECT_TRUE(instance_->tileSet(number)) << "came out of the ring with the others";
    LoadedTile next = reserved(tiles, kTiles);
    EXPECT_FALSE(instance_->tileSet(number)) << "nobody takes it";
    next.room->write(next.pixels, 0);
    tiles.upload(next);
    expectBuilt(targets, tiles, next);
}

TEST_F(UploadedTilesGLTest, WhatIsInTheRingAtTheEndIsErased) {
    FilterRunner targets(instance_);
    std::vector<size_t> numbers;
    {
        UploadedTiles tiles(instance_, targets, info_);
        auto loaded = reserveAndWriteAllButTheFirst(tiles);
        for (LoadedTile const& tile : loaded)
            numbers.push_back(tile.room->targetOrTileId());
        tiles.upload(loaded[1]);
        EXPECT_EQ(loaded[1].staged, nullptr);
        loaded[0].room->write(loaded[0].pixels, 0);
        for (size_t const column : kUploadedLater) {
            loaded[column].room.reset();
            tiles.abandon(numbers[column]);
        }
    }
    for (size_t const number : numbers)
        EXPECT_FALSE(instance_->tileSet(number));
}
