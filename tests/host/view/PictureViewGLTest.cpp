// Frames of stores at any zoom and place, byte for byte as the wavelet's formulas and the nearest sample give them.
#include "tests/host/view/PictureViewFixture.h"

#include "host/HostError.h"
#include "host/filter/EnhancedRenderer.h"
#include "host/store/TileStore.h"
#include "tests/support/ForwardingInstance.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>

using pictureview::backgroundPixels;
using pictureview::describe;
using pictureview::frameOf;
using pictureview::Level;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::array<Band, 3> kHighBands = {Band::HL, Band::LH, Band::HH};

class PictureViewGLTest : public PictureViewFixture {};

// Has no surface: what is drawn there is only noted.
class NotingInstance final : public ForwardingInstance<NotingInstance> {
public:
    struct Draw {
        std::string filter;
        std::vector<FilterSource> sources;
        Sizes numbers; // width, height, the clips, the offset
    };

    NotingInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : ForwardingInstance(std::move(instance), context) {}

    void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH,
                       size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, Sizes const& offset) override {
        if (destination == 0)
            presented.push_back({filter.name(),
                                 sources,
                                 {inputW, inputH, clipLeft, clipRight, clipTop, clipBottom, offset[0], offset[1]}});
        else
            ForwardingInstance::executeFilter(filter, sources, inputW, inputH, destination, clipLeft, clipRight,
                                              clipTop, clipBottom, params, offset);
    }

    std::vector<Draw> presented;

private:
    friend ForwardingInstance<NotingInstance>;

    template <class Operation>
    static auto call(char const* /*member*/, Operation const& operation) -> decltype(operation()) {
        return operation();
    }
};

} // namespace

TEST_F(PictureViewGLTest, AnyZoomAndPlaceShowsTheNearestSamplesWithoutASeam) {
    for (Content const content : {Content::Flat, Content::Ramp, Content::Noise}) {
        Picture const picture = testpictures::picture(701, 600, 3, 8, content);
        StoreInfo const info = import(picture);
        auto const levels = levelsOf(picture, info.levels);
        PictureView view(instance_, path(), options());
        for (int i = 0; i < (isExhaustiveRun() ? 400 : isSampleRun() ? 20 : 70); ++i) {
            View const wanted = randomView(info);
            ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
        }
    }
}

TEST_F(PictureViewGLTest, AnyBandsAndBitsAreShown) {
    for (size_t bands = 1; bands <= 4; ++bands) {
        for (size_t const bits : {8U, 16U}) {
            Picture const picture = testpictures::picture(211, 157, bands, bits, Content::Noise);
            StoreInfo const info = import(picture);
            auto const levels = levelsOf(picture, info.levels);
            PictureView view(instance_, path(), options());
            for (int i = 0; i < 6; ++i) {
                View const wanted = randomView(info);
                ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted))
                    << bands << " bands, " << bits << " bits, " << describe(wanted);
            }
        }
    }
}

TEST_F(PictureViewGLTest, FramesLargerThanAPieceHaveNoSeamsEither) {
    Picture const picture = testpictures::picture(1700, 40, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    PictureView view(instance_, path(), options());
    for (double const zoom : {0.51, 0.55, 0.97, 1.0, 2.0, 32.0}) {
        View const wanted = {Zoom::nearest(zoom, info.levels), -10, -3, 1900, 50, false};
        EXPECT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
    }
    // Of all pieces the ones that read most: 63 samples for 32 pixels, from the last pixel of 32 on.
    View const most = {Zoom::nearest(32.0 / 63, info.levels), 31, 0, 384, 20, false};
    EXPECT_TRUE(completed(view, most) == frameOf(levels, most));
}

TEST_F(PictureViewGLTest, OnceAFrameWasShownNoBackgroundIsWithinThePicture) {
    Picture const picture = testpictures::picture(1700, 1100, 1, 8, Content::Ramp);
    StoreInfo const info = import(picture, 256);
    PictureView view(instance_, path(), options());
    View wanted = {Zoom::nearest(1.0, info.levels), 100, 50, 200, 150, false};
    view.show(wanted);
    EXPECT_EQ(backgroundPixels(view.pixels()), 200U * 150U) << "nothing is there yet";
    while (!view.advance(0ms))
        view.wait(50ms);
    size_t frames = 0;
    for (int step = 0; step < 12; ++step) {
        wanted.x += 70;
        wanted.y += 50;
        wanted.zoom = Zoom::nearest(step % 3 == 0 ? 0.7 : 1.0, info.levels);
        view.show(wanted);
        do {
            ASSERT_EQ(backgroundPixels(view.pixels()), 0U) << describe(wanted);
            ++frames;
            if (!view.advance(0ms)) view.wait(50ms);
        } while (!view.complete() && step % 2 == 0);
    }
    EXPECT_GT(frames, 12U);
    EXPECT_TRUE(completed(view) == frameOf(levelsOf(picture, info.levels), wanted));
}

// Scaled samples lie side by side in a target that is used again and again.
TEST_F(PictureViewGLTest, WhereNothingIsThereYetTheBackgroundIsShownAtAnyZoom) {
    import(testpictures::picture(1700, 600, 1, 8, Content::Noise), 256);
    PictureView view(instance_, path(), options());
    for (double const zoom : {1.0, 0.8, 3.0}) {
        Zoom const at = Zoom::nearest(zoom, view.info().levels);
        completed(view, {at, 10, 10, 100, 80, false});
        PictureView other(instance_, path(), options());
        other.show({at, 10, 10, 100, 80, false});
        EXPECT_EQ(backgroundPixels(other.pixels()), 100U * 80U) << zoom;
        // Where the picture ends.
        other.show({at, static_cast<std::int64_t>(other.sizeAt(at).width) - 40, 10, 100, 80, false});
        EXPECT_EQ(backgroundPixels(other.pixels()), 100U * 80U) << zoom;
    }
}

// Level 2 has been seen, level 1 and the picture itself have not.
TEST_F(PictureViewGLTest, WhatIsNotThereYetIsTheCoarserLevelEnlarged) {
    Picture const picture = testpictures::picture(2600, 2300, 3, 8, Content::Noise);
    StoreInfo const info = import(picture, 256);
    auto const levels = levelsOf(picture, info.levels);
    auto const enlarged = [&](size_t level) {
        Level result{levels[level].width, levels[level].height, 3, {}};
        size_t const halvings = 2 - level;
        for (size_t y = 0; y < result.height; ++y)
            for (size_t x = 0; x < result.width; ++x) {
                auto const* const sample = &levels[2].bytes[3 * ((y >> halvings) * levels[2].width + (x >> halvings))];
                result.bytes.insert(result.bytes.end(), sample, sample + 3);
            }
        return result;
    };
    std::vector<Level> const shown{enlarged(0), enlarged(1), levels[2]};
    std::vector<double> const zooms{0.7, 3.0, 1.0, 0.5, 0.4};
    for (size_t i = 0; i < (isSampleRun() ? 1 : zooms.size()); ++i) {
        PictureView view(instance_, path(), options());
        Zoom const coarse = Zoom::nearest(0.25, info.levels);
        completed(view, {coarse, 0, 0, view.sizeAt(coarse).width, view.sizeAt(coarse).height, false});
        Zoom const fine = Zoom::nearest(zooms[i], info.levels);
        // About the corner of four tiles of level 2, whose pixels begin anywhere in its samples, and the picture's end.
        Size const all = view.sizeAt(fine);
        auto const corner = static_cast<std::int64_t>(2048 * fine.value());
        for (View const& wanted :
             {View{fine, corner - 37, corner - 22, 90, 70, false}, View{fine, 401, 303, 61, 43, false},
              View{fine, static_cast<std::int64_t>(all.width) - 41, static_cast<std::int64_t>(all.height) - 31, 50, 40,
                   false}}) {
            view.show(wanted);
            EXPECT_TRUE(view.pixels() == frameOf(shown, wanted)) << describe(wanted);
        }
    }
}

TEST_F(PictureViewGLTest, SmallestBudgetsGiveTheSamePixels) {
    Picture const picture = testpictures::picture(701, 600, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    Gles3RenderBackend poor(hostfilters::registry(), RenderBackend::RGBA32, 1);
    auto const instance = poor.createInstance(context_);
    PictureView view(instance, path(), forgetful());
    for (int i = 0; i < 20; ++i) {
        View const wanted = randomView(info);
        ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
    }
}

TEST_F(PictureViewGLTest, TilesBeyondTheBudgetGo) {
    import(testpictures::picture(1600, 1600, 1, 8, Content::Ramp), 256);
    auto const mostBytes = [&](size_t budget) {
        PictureView::Options limited = options();
        limited.gpuBytes = budget;
        PictureView view(instance_, path(), limited);
        size_t most = 0;
        for (std::int64_t const x : {100, 700, 1200, 1550}) {
            completed(view, {Zoom(), x, x, 20, 20, false});
            most = std::max(most, view.statistics().gpuBytes);
        }
        return most;
    };
    // Each of these frames needs one tile of each of four levels: 516 x 516 samples of two bytes, 512 x 512 texels of
    // four.
    constexpr size_t kFrame = 4 * (516 * 516 * 2 + 512 * 512 * 4);
    EXPECT_LE(mostBytes(1), kFrame);
    EXPECT_GT(mostBytes(256 * 1000 * 1000), kFrame) << "there is no budget to exceed";
}

TEST_F(PictureViewGLTest, ViewsThatPassByLeaveNothingBehind) {
    Picture const picture = testpictures::picture(1500, 1100, 1, 8, Content::Noise);
    StoreInfo const info = import(picture, 256);
    PictureView view(instance_, path(), options());
    View wanted;
    for (int i = 0; i < 50; ++i) {
        wanted = randomView(info);
        view.show(wanted);
        view.advance(0ms);
    }
    EXPECT_TRUE(completed(view) == frameOf(levelsOf(picture, info.levels), wanted));
    settle(view);
    EXPECT_TRUE(view.complete());
}

TEST_F(PictureViewGLTest, EnhancementsAreThoseOfTheWholeLevel) {
    Picture const picture = testpictures::picture(650, 530, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    std::vector<enhancement::Step> const steps = {enhancement::Equalise{3.0}, enhancement::Sharpen{0.5}};
    PictureView view(instance_, path(), options());
    auto levels = levelsOf(picture, info.levels);
    for (size_t const level : {0U, 1U}) {
        Level& whole = levels[level];
        Picture const plain = {whole.width, whole.height, 3, 8, whole.bytes};
        whole.bytes.clear();
        auto const source = testpictures::source(plain);
        EnhancedRenderer(instance_, steps)
            .render(
                *source, {0, 0, whole.width, whole.height},
                [&](std::uint8_t const* rows, size_t count) {
                    whole.bytes.insert(whole.bytes.end(), rows, rows + count * whole.width * 3);
                },
                [](size_t, size_t) {});
    }
    view.enhance(steps);
    for (double const zoom : {1.0, 0.5, 0.45, 2.0}) {
        View const wanted = {Zoom::nearest(zoom, info.levels), 50, 100, 300, 200, false};
        EXPECT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
    }
    view.enhance(steps); // again: something is shown all the time
    EXPECT_EQ(backgroundPixels(view.pixels()), 0U);
    view.enhance({});
    EXPECT_EQ(backgroundPixels(view.pixels()), 0U);
    View const plain = {Zoom(), 5, 6, 100, 100, false};
    EXPECT_TRUE(completed(view, plain) == frameOf(levelsOf(picture, 0), plain));
}

TEST_F(PictureViewGLTest, MoreEnhancementsThanATileHasRoomForAreShownInPieces) {
    std::vector<enhancement::Step> const steps(4, enhancement::Equalise{2.0});
    ASSERT_EQ(EnhancementChain::partSide(steps), 360U);
    constexpr size_t kWidth = 600;                 // tiles of 512 and 88
    for (size_t const lastHeight : {360U, 400U}) { // a piece, and a piece and 40 rows
        size_t const height = 512 + lastHeight;
        Picture const picture = testpictures::picture(kWidth, height, 1, 8, Content::Noise);
        import(picture);
        PictureView view(instance_, path(), options());
        view.enhance(steps);
        Bytes expected;
        auto const source = testpictures::source(picture);
        EnhancedRenderer(instance_, steps)
            .render(
                *source, {0, 0, kWidth, height},
                [&](std::uint8_t const* rows, size_t count) {
                    for (size_t i = 0; i < count * kWidth; ++i)
                        expected.insert(expected.end(), {rows[i], rows[i], rows[i], 255});
                },
                [](size_t, size_t) {});
        EXPECT_TRUE(completed(view, {Zoom(), 0, 0, kWidth, height, false}) == expected) << height;
        EXPECT_THROW(view.enhance(std::vector<enhancement::Step>(9, enhancement::Equalise{2.0})), HostError);
    }
}

TEST_F(PictureViewGLTest, SmoothFlatPicturesStayFlatUpToTheirEdges) {
    Picture const picture = testpictures::picture(701, 600, 3, 8, Content::Flat);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    PictureView view(instance_, path(), options());
    for (int i = 0; i < 30; ++i) {
        View wanted = randomView(info);
        wanted.smooth = true;
        ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
    }
}

TEST_F(PictureViewGLTest, FromOneOnSmoothShowsTheSamplesThemselves) {
    Picture const picture = testpictures::picture(301, 200, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    PictureView view(instance_, path(), options());
    for (double const zoom : {0.5, 1.0, 2.0, 7.0}) {
        View const wanted = {Zoom::nearest(zoom, info.levels), 9, 5, 100, 60, true};
        EXPECT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
    }
}

TEST_F(PictureViewGLTest, SmoothPixelsLieBetweenTheSamplesAround) {
    Picture const picture = testpictures::picture(897, 198, 1, 8, Content::Noise);
    StoreInfo const info = import(picture);
    Level const level = levelsOf(picture, 0)[0];
    PictureView view(instance_, path(), options());
    Zoom const zoom = Zoom::nearest(0.6, info.levels);
    double const step = static_cast<double>(zoom.samples()) / static_cast<double>(zoom.pixels());
    auto const at = [&](double x, double y) {
        auto const clampedX = static_cast<size_t>(std::clamp(x, 0.0, 896.0));
        auto const clampedY = static_cast<size_t>(std::clamp(y, 0.0, 197.0));
        return static_cast<double>(level.bytes[clampedY * level.width + clampedX]);
    };
    // The whole, of more than a piece, whose last pixels lie behind the middle of the last samples; and parts that
    // begin where samples and pixels do together, and beside that.
    ASSERT_EQ(view.sizeAt(zoom).width, 542U);
    ASSERT_EQ(view.sizeAt(zoom).height, 120U);
    for (View const& wanted :
         {View{zoom, 0, 0, 542, 120, true}, View{zoom, 32, 32, 50, 40, true}, View{zoom, 31, 65, 50, 40, true}}) {
        Bytes const frame = completed(view, wanted);
        for (size_t y = 0; y < wanted.height; ++y) {
            for (size_t x = 0; x < wanted.width; ++x) {
                double const column = (static_cast<double>(wanted.x) + static_cast<double>(x) + 0.5) * step - 0.5;
                double const row = (static_cast<double>(wanted.y) + static_cast<double>(y) + 0.5) * step - 0.5;
                double const left = std::floor(column);
                double const top = std::floor(row);
                double const upper = at(left, top) + (at(left + 1, top) - at(left, top)) * (column - left);
                double const lower = at(left, top + 1) + (at(left + 1, top + 1) - at(left, top + 1)) * (column - left);
                // GPUs weigh with 8 bits or more along each axis.
                ASSERT_NEAR(frame[4 * (y * wanted.width + x)], upper + (lower - upper) * (row - top), 2.5)
                    << describe(wanted) << ": " << x << "," << y;
            }
        }
    }
}

TEST_F(PictureViewGLTest, MaskOfDetailEverywhereIsTheWholeView) {
    StoreInfo const info = import(testpictures::picture(300, 200, 1, 8, Content::Noise));
    PictureView view(instance_, path(), options());
    for (double const zoom : {1.0, 0.5}) {
        view.show({Zoom::nearest(zoom, info.levels), 0, 0, 100, 80, false});
        EXPECT_EQ(view.dataMask(), Bytes(100 * 80, 255)) << zoom;
    }
}

TEST_F(PictureViewGLTest, WaitingEndsWithATileThatIsLoaded) {
    StoreInfo const info = import(testpictures::picture(1500, 1100, 3, 8, Content::Noise));
    PictureView view(instance_, path(), options());
    for (size_t level = info.levels; level > 0; --level) {
        view.show({Zoom::nearest(1.0 / static_cast<double>(size_t{1} << level), info.levels), 0, 0, 50, 40, false});
        while (!view.complete()) {
            view.wait(60s);
            EXPECT_TRUE(view.advance(0ms)) << "level " << level;
        }
    }
}

TEST_F(PictureViewGLTest, MaskCoversWhereThePictureHasDetail) {
    Picture picture = testpictures::picture(2048, 1024, 1, 8, Content::Flat);
    Picture const noise = testpictures::picture(256, 256, 1, 8, Content::Noise);
    for (size_t y = 0; y < 256; ++y)
        std::copy_n(&noise.bytes[y * 256], 256, &picture.bytes[(y + 512) * 2048 + 1024]);
    StoreInfo const info = import(picture, 64);
    PictureView view(instance_, path(), options());
    for (double const zoom : {1.0, 0.5, 0.3}) {
        View const wanted = {Zoom::nearest(zoom, info.levels), 0, 0, 2048, 1024, false};
        view.show(wanted);
        Bytes const mask = view.dataMask();
        ASSERT_EQ(mask.size(), wanted.width * wanted.height);
        double const scale = wanted.zoom.value();
        auto const at = [&](double x, double y) {
            return mask[static_cast<size_t>(y * scale) * wanted.width + static_cast<size_t>(x * scale)];
        };
        EXPECT_EQ(at(1030, 520), 255) << zoom;
        EXPECT_EQ(at(1270, 760), 255) << zoom;
        EXPECT_EQ(at(1150, 640), 255) << zoom;
        EXPECT_EQ(at(500, 200), 0) << zoom;
        EXPECT_EQ(at(1150, 100), 0) << zoom;
        EXPECT_EQ(at(1900, 640), 0) << zoom;
    }
}

// A tile of the finest bands spans 128 pixels, whose corners are corners of the mask's cells.
TEST_F(PictureViewGLTest, AtFullSizeTheMaskShowsTilesWithDataToThePixel) {
    Picture picture = testpictures::picture(1024, 768, 1, 8, Content::Flat);
    picture.bytes[500 * 1024 + 300] ^= 0x40U;
    picture.bytes[420 * 1024 + 700] ^= 0x40U;
    import(picture, 64);
    TileStore store(path());
    auto const hasData = [&](size_t column, size_t row) {
        return std::any_of(kHighBands.begin(), kHighBands.end(), [&](Band band) {
            return store.uniformValue({1, band, 0, column, row}) != std::int16_t{0};
        });
    };
    PictureView view(instance_, path(), options());
    completed(view, {Zoom(), 128, 256, 640, 400, false});
    Bytes const mask = view.dataMask();
    ASSERT_EQ(mask.size(), 640U * 400U);
    for (size_t y = 0; y < 400; ++y) {
        for (size_t x = 0; x < 640; ++x)
            ASSERT_EQ(mask[y * 640 + x], hasData((128 + x) / 128, (256 + y) / 128) ? 255 : 0) << x << "," << y;
    }
    EXPECT_GT(std::count(mask.begin(), mask.end(), 255), 0);
}

TEST_F(PictureViewGLTest, ADamagedTileIsAnErrorAndNoWrongPicture) {
    Picture const picture = testpictures::picture(1500, 1400, 3, 8, Content::Noise);
    import(picture, 256);
    {
        std::fstream file(path(), std::ios::in | std::ios::out | std::ios::binary);
        for (int place = 200000; place < 6000000; place += 20000)
            file.seekp(place).write("damaged", 7);
    }
    PictureView view(instance_, path(), options());
    view.show({Zoom(), 0, 0, 1500, 1400, false});
    try {
        completed(view);
        FAIL() << "a damaged store was shown";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::DamagedStore) << error.what();
    }
}

TEST_F(PictureViewGLTest, AFrameIsPresentedWholeAtTheSurfacesOrigin) {
    import(testpictures::picture(300, 200, 3, 8, Content::Noise));
    auto const noting = std::make_shared<NotingInstance>(instance_, context_);
    PictureView view(noting, path(), options());
    view.present();
    EXPECT_TRUE(noting->presented.empty()) << "there is no frame yet";
    completed(view, {Zoom(), 10, 20, 123, 45, false});
    size_t const frame = view.frame();
    view.present();
    ASSERT_EQ(noting->presented.size(), 1U);
    NotingInstance::Draw const& drawn = noting->presented.front();
    EXPECT_EQ(drawn.filter, "BlitFilter4x8");
    ASSERT_EQ(drawn.sources.size(), 1U);
    EXPECT_EQ(drawn.sources.front().target, frame);
    EXPECT_EQ(drawn.sources.front().x, 0U);
    EXPECT_EQ(drawn.sources.front().y, 0U);
    EXPECT_FALSE(drawn.sources.front().wholeTexture);
    EXPECT_EQ(drawn.numbers, (std::vector<size_t>{123, 45, 0, 0, 0, 0, 0, 0}));
    view.show({Zoom(), 0, 0, 0, 45, false});
    view.present();
    EXPECT_EQ(noting->presented.size(), 1U) << "a view without pixels has no frame";
}

TEST_F(PictureViewGLTest, CodesAreThoseOfACompleteViewWithinThePictureAlone) {
    Picture const picture = testpictures::picture(100, 100, 4, 16, Content::Noise);
    import(picture);
    PictureView::Options wanted = options();
    wanted.forCodes = true;
    PictureView view(instance_, path(), wanted);
    auto const complete = [&view] {
        while (!view.complete()) {
            if (!view.advance(50ms)) view.wait(50ms);
        }
    };
    auto const refused = [&view] {
        try {
            view.codes();
        } catch (std::logic_error const& error) {
            return std::string(error.what()) == "codes are those of a complete view within the picture";
        }
        return false;
    };
    view.show({Zoom(), 10, 10, 30, 20, false});
    EXPECT_TRUE(refused()) << "nothing was read yet";
    complete();
    std::vector<std::uint16_t> expected(30U * 20U * 4);
    for (size_t row = 0; row < 20; ++row)
        std::memcpy(&expected[row * 30 * 4], &picture.bytes[((10 + row) * 100 + 10) * 8], 30U * 8);
    EXPECT_TRUE(view.codes() == expected);
    for (View const& beyond : {View{Zoom(), 90, 10, 30, 20, false}, View{Zoom(), 10, 90, 30, 20, false}}) {
        view.show(beyond);
        complete();
        EXPECT_TRUE(refused()) << describe(beyond);
    }
}

TEST_F(PictureViewGLTest, ViewsWithoutPixelsOrBesideThePictureAreComplete) {
    StoreInfo const info = import(testpictures::picture(100, 100, 3, 8, Content::Noise));
    PictureView view(instance_, path(), options());
    EXPECT_TRUE(view.pixels().empty()) << "before the first view";
    view.show({Zoom(), 0, 0, 0, 100, false});
    EXPECT_TRUE(view.complete());
    EXPECT_TRUE(view.pixels().empty());
    EXPECT_TRUE(view.dataMask().empty());
    for (View const& beside : {View{Zoom(), 100, 0, 30, 20, false}, View{Zoom(), -30, 0, 30, 20, false},
                               View{Zoom(), 0, 100, 30, 20, false}, View{Zoom(), 0, -20, 30, 20, false}}) {
        view.show(beside);
        EXPECT_TRUE(view.complete()) << describe(beside);
        EXPECT_EQ(backgroundPixels(view.pixels()), 600U);
        EXPECT_EQ(view.statistics().waiting, 0U) << "nothing is read for it";
    }
    EXPECT_EQ(view.sizeAt(Zoom::nearest(0.5, info.levels)).width, 50U);
}
