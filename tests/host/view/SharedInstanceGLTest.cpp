// Views, renderers and a program's own tiles on one instance: none shows what belongs to another.
#include "host/filter/RegionRenderer.h"
#include "host/filter/TileNumbers.h"
#include "host/view/PictureRenderer.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <optional>

using pictureview::describe;
using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

class SharedInstanceGLTest : public PictureViewFixture {
protected:
    StoreInfo import(Picture const& picture, std::string const& name) const {
        ImportOptions options;
        options.tileSize = 64;
        return testpictures::import(picture, folder_.path(name), options);
    }

    std::unique_ptr<PictureView> view(std::string const& name, PictureView::Options const& how = options()) const {
        return std::make_unique<PictureView>(instance_, folder_.path(name), how);
    }

    // Rebuilt tiles go at once, their bands stay in the instance's cache.
    static PictureView::Options forgetful() {
        PictureView::Options forgetful = options();
        forgetful.gpuBytes = 1;
        return forgetful;
    }

    Bytes regionOf(Picture const& picture) const {
        Bytes bytes;
        auto const source = testpictures::source(picture);
        RegionRenderer(instance_, 64)
            .render(
                *source, {0, 0, picture.width, picture.height},
                [&](std::uint8_t const* rows, size_t count) {
                    bytes.insert(bytes.end(), rows, rows + count * picture.width * picture.bands);
                },
                [](size_t, size_t) {});
        return bytes;
    }
};

} // namespace

TEST_F(SharedInstanceGLTest, ViewsOfDifferentPicturesInTurnShowTheirOwnSamples) {
    Picture const first = testpictures::picture(701, 600, 3, 8, Content::Noise);
    Picture const second = testpictures::picture(640, 803, 3, 8, Content::Noise);
    StoreInfo const firstInfo = import(first, "first");
    StoreInfo const secondInfo = import(second, "second");
    auto const firstLevels = levelsOf(first, firstInfo.levels);
    auto const secondLevels = levelsOf(second, secondInfo.levels);
    auto const one = view("first", forgetful());
    auto const other = view("second", forgetful());
    for (int i = 0; i < (isSampleRun() ? 8 : 25); ++i) {
        View const wanted = randomView(firstInfo);
        ASSERT_TRUE(completed(*one, wanted) == frameOf(firstLevels, wanted)) << describe(wanted);
        View const too = randomView(secondInfo);
        ASSERT_TRUE(completed(*other, too) == frameOf(secondLevels, too)) << describe(too);
    }
}

TEST_F(SharedInstanceGLTest, ViewsThatAdvanceStepByStepShowTheirOwnSamples) {
    Picture const first = testpictures::picture(1300, 600, 3, 8, Content::Noise);
    Picture const second = testpictures::picture(1290, 610, 1, 16, Content::Noise);
    StoreInfo const firstInfo = import(first, "first");
    StoreInfo const secondInfo = import(second, "second");
    auto const firstLevels = levelsOf(first, firstInfo.levels);
    auto const secondLevels = levelsOf(second, secondInfo.levels);
    auto const one = view("first", forgetful());
    auto const other = view("second", forgetful());
    // Back to where they were, what tiles are rebuilt from is there still.
    std::vector<std::int64_t> places{0, 500, 1000, 0, 500, 1000};
    if (isSampleRun()) places = {0, 700, 0};
    for (std::int64_t const place : places) {
        View const wanted = {Zoom(), place, place / 4, 300, 200, false};
        one->show(wanted);
        other->show(wanted);
        while (!one->complete() || !other->complete()) {
            bool const changed = one->advance(0ms);
            if (!other->advance(0ms) && !changed) one->wait(1ms);
        }
        EXPECT_TRUE(one->pixels() == frameOf(firstLevels, wanted)) << describe(wanted);
        EXPECT_TRUE(other->pixels() == frameOf(secondLevels, wanted)) << describe(wanted);
    }
}

// Parts of a smaller picture's bands are smaller too: into the corner of a larger texture they must not go.
TEST_F(SharedInstanceGLTest, AViewThatFollowsAnotherShowsItsOwnSamples) {
    for (size_t const side : {500U, 300U, 423U, 90U}) {
        Picture const picture = testpictures::picture(side, side, 3, 8, Content::Noise);
        std::string const name = std::to_string(side);
        StoreInfo const info = import(picture, name);
        auto const shown = view(name);
        View const wanted = {Zoom(), 0, 0, side, side, false};
        EXPECT_TRUE(completed(*shown, wanted) == frameOf(levelsOf(picture, info.levels), wanted)) << side;
    }
}

TEST_F(SharedInstanceGLTest, AViewTakesItsTilesAlong) {
    Picture const picture = testpictures::picture(700, 600, 3, 8, Content::Noise);
    import(picture, "a");
    completed(*view("a"), {Zoom(), 0, 0, 700, 600, false});
    EXPECT_EQ(instance_->clearTiles(), 0U) << "bytes that nobody needs";
}

// Programs give their tiles small numbers.
TEST_F(SharedInstanceGLTest, TilesOfTheProgramItselfStayAsTheyAre) {
    std::vector<size_t> const numbers = {0, 1, 7, 1000, (size_t{1} << TileNumbers::kBits) - 1};
    for (size_t const number : numbers)
        instance_->setTile(number, std::vector<unsigned char>(4), {1, 1, 4}, 0);
    Picture const picture = testpictures::picture(333, 258, 3, 8, Content::Noise);
    import(picture, "a");
    EXPECT_TRUE(regionOf(picture) == picture.bytes);
    completed(*view("a"), {Zoom(), 0, 0, 333, 258, false});
    for (size_t const number : numbers)
        EXPECT_EQ(instance_->eraseTile(number), 4U) << number;
}

TEST_F(SharedInstanceGLTest, NumbersAreOneOwnersAloneUntilItGoes) {
    std::optional<TileNumbers> first(std::in_place, instance_);
    TileNumbers const second(instance_);
    size_t const last = (size_t{1} << TileNumbers::kBits) - 1;
    EXPECT_EQ(first->id(last) - first->id(0), last);
    EXPECT_TRUE(first->id(last) < second.id(0) || second.id(last) < first->id(0));
    for (size_t const number : {size_t{0}, last}) {
        instance_->setTile(first->id(number), std::vector<unsigned char>(4), {1, 1, 4}, 0);
        instance_->setTile(second.id(number), std::vector<unsigned char>(4), {1, 1, 4}, 0);
        instance_->lockTile(first->id(number));
    }
    size_t const id = first->id(0);
    first.reset();
    EXPECT_FALSE(instance_->tileSet(id));
    EXPECT_TRUE(instance_->tileSet(second.id(0)));
    EXPECT_TRUE(instance_->tileSet(second.id(last)));
    EXPECT_EQ(TileNumbers(instance_).id(0), id) << "numbers that are free again are used again";
}
