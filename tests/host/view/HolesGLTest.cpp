// Views of damaged stores: what cannot be shown is striped, never anything else, and the rest is as it is.
#include "host/HostError.h"
#include "host/store/Sqlite.h"
#include "host/store/TileStoreFormat.h"
#include "host/view/LevelTile.h"
#include "host/view/PictureRenderer.h"
#include "tests/host/view/PictureViewFixture.h"

#include <gtest/gtest.h>

#include <fstream>

using pictureview::describe;
using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

constexpr size_t kSide = leveltile::kSide;

class HolesGLTest : public PictureViewFixture {
protected:
    void change(std::string const& statement) const {
        sqlite::Database(path(), sqlite::Database::Mode::ReadWrite).execute(statement);
    }

    void damage(TileAddress const& address) const {
        change("UPDATE tiles SET crc = crc + 1 WHERE id = " + std::to_string(storeformat::keyOf(address)));
    }

    std::unique_ptr<PictureView> view() const {
        PictureView::Options tolerant = options();
        tolerant.showHoles = true;
        return std::make_unique<PictureView>(instance_, path(), tolerant);
    }

    // The frame, but for the pixels whose samples of the view's level lie in a hole: those are striped.
    static Bytes striped(Bytes frame, View const& view, Region const& hole) {
        for (size_t y = 0; y < view.height; ++y) {
            for (size_t x = 0; x < view.width; ++x) {
                auto const pixelX = static_cast<size_t>(view.x) + x;
                auto const pixelY = static_cast<size_t>(view.y) + y;
                size_t const column = view.zoom.sampleAt(pixelX);
                size_t const row = view.zoom.sampleAt(pixelY);
                if (column < hole.x || column >= hole.x + hole.width || row < hole.y || row >= hole.y + hole.height)
                    continue;
                bool const dark = (pixelX + pixelY) / 8 % 2 == 0;
                std::uint8_t const red = dark ? 0 : 255;
                Bytes const texel = {red, 0, red, 255};
                std::copy(texel.begin(), texel.end(), &frame[4 * (y * view.width + x)]);
            }
        }
        return frame;
    }
};

Region tileAt(size_t column, size_t row) {
    return {column * kSide, row * kSide, kSide, kSide};
}

} // namespace

TEST_F(HolesGLTest, ADamagedTileIsStripedAndTheRestIsExact) {
    Picture const picture = testpictures::picture(1300, 1100, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    // In the middle of the picture's tile 1,1.
    damage({1, Band::HL, 1, 6, 6});
    auto const shown = view();
    for (double const zoom : {1.0, 0.8, 2.0}) {
        Zoom const at = Zoom::nearest(zoom, info.levels);
        auto const place = [&](double sample) { return static_cast<std::int64_t>(sample * at.value()); };
        View const wanted = {at, place(400), place(430), 300, 200, false};
        EXPECT_TRUE(completed(*shown, wanted) == striped(frameOf(levels, wanted), wanted, tileAt(1, 1)))
            << describe(wanted);
        EXPECT_TRUE(shown->hasHoles());
        View const inside = {at, place(700), place(700), 100, 80, false};
        EXPECT_TRUE(completed(*shown, inside) == striped(frameOf(levels, inside), inside, tileAt(1, 1)));
        View const beside = {at, place(100), place(100), 90, 80, false};
        EXPECT_TRUE(completed(*shown, beside) == frameOf(levels, beside)) << describe(beside);
        EXPECT_FALSE(shown->hasHoles());
    }
    View const whole = {Zoom(), 0, 0, 1300, 1100, false};
    EXPECT_TRUE(completed(*shown, whole) == striped(frameOf(levels, whole), whole, tileAt(1, 1)));
    View const coarser = {Zoom::nearest(0.5, info.levels), 0, 0, 650, 550, false};
    EXPECT_TRUE(completed(*shown, coarser) == frameOf(levels, coarser)) << "level 1 is not made of it";
    EXPECT_FALSE(shown->hasHoles());
    EXPECT_EQ(shown->damages().count(), 1U);
    EXPECT_NE(shown->damages().first().find("tile 6,6 of HL, plane 1, level 1"), std::string::npos);
}

TEST_F(HolesGLTest, WhatIsRebuiltFromADamagedTileIsAHoleToo) {
    Picture const picture = testpictures::picture(1900, 1100, 1, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    // Missing, of tile 0,0 of level 1, from which tiles 0 and 1 of level 0 come along each axis.
    change("DELETE FROM tiles WHERE id = " + std::to_string(storeformat::keyOf({2, Band::LH, 0, 1, 1})));
    auto const shown = view();
    View const fine = {Zoom(), 900, 20, 300, 100, false};
    EXPECT_TRUE(completed(*shown, fine) == striped(frameOf(levels, fine), fine, {0, 0, 2 * kSide, 2 * kSide}));
    View const coarse = {Zoom::nearest(0.5, info.levels), 400, 20, 300, 100, false};
    EXPECT_TRUE(completed(*shown, coarse) == striped(frameOf(levels, coarse), coarse, tileAt(0, 0)));
    View const coarser = {Zoom::nearest(0.25, info.levels), 0, 0, 475, 275, false};
    EXPECT_TRUE(completed(*shown, coarser) == frameOf(levels, coarser));
    EXPECT_EQ(shown->damages().count(), 1U);
    settle(*shown);
}

TEST_F(HolesGLTest, WithoutTheCoarsestLevelAllIsAHole) {
    Picture const picture = testpictures::picture(700, 300, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    damage({info.levels, Band::LL, 0, 0, 0});
    auto const shown = view();
    for (double const zoom : {1.0, 0.05}) {
        Zoom const at = Zoom::nearest(zoom, info.levels);
        View const within = {
            at,   0, 0, std::min<size_t>(30, shown->sizeAt(at).width), std::min<size_t>(20, shown->sizeAt(at).height),
            false};
        EXPECT_TRUE(completed(*shown, within) ==
                    striped(Bytes(4 * within.width * within.height), within, {0, 0, 700, 300}));
    }
}

TEST_F(HolesGLTest, WhatAnEnhancementReadsADamagedTileForIsAHoleToo) {
    Picture const picture = testpictures::picture(2000, 300, 1, 8, Content::Noise);
    import(picture);
    View const wanted = {Zoom(), 0, 0, 2000, 300, false};
    auto const whole = view();
    whole->enhance({enhancement::Sharpen{1.0}});
    Bytes const sharp = completed(*whole, wanted);
    damage({1, Band::HH, 0, 6, 2});
    auto const shown = view();
    shown->enhance({enhancement::Sharpen{1.0}});
    EXPECT_TRUE(completed(*shown, wanted) == striped(sharp, wanted, {0, 0, 3 * kSide, kSide}))
        << "tile 1 and its neighbours";
    shown->enhance({});
    Bytes const plain = completed(*shown, wanted);
    EXPECT_TRUE(plain == striped(plain, wanted, tileAt(1, 0))) << "tile 1 alone";
    EXPECT_FALSE(plain == striped(plain, wanted, {0, 0, 10, 10}));
}

TEST_F(HolesGLTest, DamagedResidualBitsAreHolesWhereTheyAreNeeded) {
    Picture const picture = testpictures::picture(1100, 300, 1, 16, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    View const wanted = {Zoom(), 0, 0, 1100, 300, false};
    std::vector<enhancement::Step> const steps = {enhancement::Gamma{1.5, 1000, 60000}};
    auto const whole = view();
    whole->enhance(steps);
    Bytes const toned = completed(*whole, wanted);
    damage({0, Band::Residual, 0, 10, 1});
    auto const shown = view();
    EXPECT_TRUE(completed(*shown, wanted) == frameOf(levels, wanted)) << "the upper byte needs none";
    EXPECT_FALSE(shown->hasHoles());
    shown->enhance(steps);
    EXPECT_TRUE(completed(*shown, wanted) == striped(toned, wanted, tileAt(1, 0)));
    EXPECT_TRUE(shown->hasHoles());
    EXPECT_THROW(PictureRenderer(instance_, path(), {}, {}, 16)
                     .render(
                         Zoom(), false, {0, 0, 1100, 300}, [](std::uint8_t const*, size_t) {}, [](size_t, size_t) {}),
                 HostError);
}

TEST_F(HolesGLTest, HolesAreOpaque) {
    Picture const picture = testpictures::picture(1100, 300, 4, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    damage({1, Band::HL, 3, 6, 1});
    View const wanted = {Zoom(), 450, 100, 300, 100, false};
    EXPECT_TRUE(completed(*view(), wanted) == striped(frameOf(levels, wanted), wanted, tileAt(1, 0)));
}

// Which places have data is not known then: all are read.
TEST_F(HolesGLTest, ADamagedIndexOfPlacesChangesNoPixel) {
    Picture picture = testpictures::picture(1300, 700, 1, 8, Content::Flat);
    for (size_t i = 0; i < 300; ++i)
        picture.bytes[400 * 1300 + 700 + i] = static_cast<std::uint8_t>(i);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    std::int64_t page = 0;
    {
        sqlite::Database store(path(), sqlite::Database::Mode::ReadOnly);
        page = store.number("SELECT rootpage FROM sqlite_master WHERE name = 'tiles_with_data'");
        ASSERT_GT(page, 1);
    }
    constexpr std::int64_t kPageBytes = 4096;
    std::fstream(path(), std::ios::in | std::ios::out | std::ios::binary)
        .seekp((page - 1) * kPageBytes)
        .write(std::string(64, '\x55').data(), 64);
    auto const shown = view();
    View const wanted = {Zoom(), 500, 300, 600, 300, false};
    EXPECT_TRUE(completed(*shown, wanted) == frameOf(levels, wanted));
    EXPECT_FALSE(shown->hasHoles());
    EXPECT_NE(shown->damages().first(), "");
    EXPECT_EQ(shown->dataMask(), Bytes(600 * 300, 0)) << "no place is known";
    PictureView strict(instance_, path(), options());
    EXPECT_THROW(completed(strict, wanted), HostError);
}
