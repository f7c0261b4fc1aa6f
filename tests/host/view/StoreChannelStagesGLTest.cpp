// Stores whose samples are shown through ranges and colours, beside a model that reckons pixel by pixel.
#include "host/view/StoreChannelStages.h"

#include "host/HostError.h"
#include "host/store/Sqlite.h"
#include "host/store/TileStoreFormat.h"
#include "tests/host/store/LevelModel.h"
#include "tests/host/view/DisplayModel.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/LongRun.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

using displaymodel::byteOf;
using displaymodel::Range;
using pictureview::describe;
using pictureview::frameOf;
using pictureview::Level;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

using Levels = std::vector<std::vector<std::uint16_t>>;

size_t coloursOf(Picture const& picture) {
    return picture.bands <= 2 ? 1 : 3;
}

// Codes of each level, interleaved.
Levels samplesOf(Picture const& picture, size_t levels) {
    if (picture.bits == 16) return levelmodel::codesOf(picture, levels);
    Levels result;
    for (auto const& bytes : levelmodel::levelsOf(picture, levels))
        result.emplace_back(bytes.begin(), bytes.end());
    return result;
}

// Of the coarsest level, all colours together.
Range automatic(Picture const& picture, Levels const& levels) {
    std::vector<double> numbers;
    for (size_t i = 0; i < levels.back().size(); ++i)
        if (i % picture.bands < coloursOf(picture)) numbers.push_back(levels.back()[i]);
    return displaymodel::automatic(numbers);
}

// What is seen of each level, in RGBA.
std::vector<Level> shownLevels(Picture const& picture, Levels const& levels, Range const& range) {
    double const whole = picture.bits == 16 ? 65535 : 255;
    std::vector<Level> result;
    for (size_t level = 0; level < levels.size(); ++level) {
        Level shown{((picture.width - 1) >> level) + 1, ((picture.height - 1) >> level) + 1, 4, {}};
        for (size_t i = 0; i < levels[level].size(); i += picture.bands) {
            auto const* const pixel = &levels[level][i];
            for (size_t colour = 0; colour < 3; ++colour)
                shown.bytes.push_back(
                    static_cast<std::uint8_t>(byteOf(pixel[coloursOf(picture) == 1 ? 0 : colour], range)));
            bool const hasAlpha = picture.bands % 2 == 0;
            int const alpha = hasAlpha ? byteOf(pixel[picture.bands - 1], {0, whole}) : 255;
            shown.bytes.push_back(static_cast<std::uint8_t>(alpha));
        }
        result.push_back(shown);
    }
    return result;
}

class StoreChannelStagesGLTest : public PictureViewFixture {
protected:
    PictureSource shown(DisplayRequest const& request = {}) const {
        PictureSource source(path());
        source.display = request;
        return source;
    }

    static DisplayRequest inRange(double low, double high) {
        DisplayRequest request;
        request.range = SampleRange{low, high};
        return request;
    }

    void expectRandomViews(PictureView& view, std::vector<Level> const& levels, size_t count = views()) {
        for (size_t i = 0; i < count; ++i) {
            View const wanted = randomView(view.info());
            ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
        }
    }

    static size_t views() {
        if (isExhaustiveRun()) return 60;
        return runsOffLlvmpipe() || VELMORA_THREAD_SANITIZER ? 3 : 10;
    }
};

} // namespace

TEST_F(StoreChannelStagesGLTest, AllBitsOfAnyBandsAreShown) {
    for (size_t const bits : {16U, 8U}) {
        for (size_t bands = 1; bands <= 4; ++bands) {
            SCOPED_TRACE(std::to_string(bands) + " bands of " + std::to_string(bits) + " bits");
            Picture const picture = testpictures::picture(701, 600, bands, bits, Content::Noise);
            StoreInfo const info = import(picture);
            ASSERT_EQ(info.residualBits > 0, bits == 16);
            Levels const levels = samplesOf(picture, info.levels);
            PictureView view(instance_, shown(inRange(50, 201)), options());
            EXPECT_EQ(view.info().bands, bands);
            EXPECT_EQ(view.info().bits, 8U);
            expectRandomViews(view, shownLevels(picture, levels, {50, 201}));
        }
    }
}

TEST_F(StoreChannelStagesGLTest, SixteenBitsOpenInTheirAutomaticRange) {
    for (size_t const bands : {1U, 3U, 4U}) {
        Picture const picture = testpictures::picture(640, 501, bands, 16, Content::Noise);
        StoreInfo const info = import(picture);
        Levels const levels = samplesOf(picture, info.levels);
        PictureView view(instance_, shown(), options());
        Range const range = automatic(picture, levels);
        EXPECT_DOUBLE_EQ(view.channels().front().tone.low, range.low);
        EXPECT_DOUBLE_EQ(view.channels().front().tone.high, range.high);
        expectRandomViews(view, shownLevels(picture, levels, range));
        TileStore store(path());
        ShownChannels const showing = StoreChannelStages::showingOf(store, {});
        EXPECT_EQ(showing.info.bands, bands);
        EXPECT_EQ(showing.info.interpretation, view.info().interpretation);
        EXPECT_TRUE(showing.channels == view.channels());
    }
}

// Codes beside one another, of which the upper bits alone would show every eighth.
TEST_F(StoreChannelStagesGLTest, EachCodeOfANarrowRangeIsShown) {
    Picture picture = testpictures::picture(1010, 20, 1, 16, Content::Flat);
    for (size_t y = 0; y < 20; ++y)
        for (size_t x = 0; x < 1010; ++x) {
            auto const code = static_cast<std::uint16_t>(x / 10);
            std::memcpy(&picture.bytes[2 * (y * 1010 + x)], &code, 2);
        }
    import(picture);
    PictureView view(instance_, shown(inRange(0, 100)), options());
    Bytes const frame = completed(view, {Zoom(), 0, 0, 1010, 20, false});
    std::set<std::uint8_t> greys;
    for (size_t i = 0; i < frame.size(); i += 4)
        greys.insert(frame[i]);
    EXPECT_EQ(greys.size(), 101U);
}

TEST_F(StoreChannelStagesGLTest, OtherRangesAndColoursReadNothing) {
    Picture const picture = testpictures::picture(900, 700, 1, 16, Content::Noise);
    StoreInfo const info = import(picture);
    Levels const levels = samplesOf(picture, info.levels);
    PictureView view(instance_, shown(), options());
    View const wanted{Zoom(), 200, 100, 500, 400, false};
    completed(view, wanted);
    settle(view);
    auto channels = view.channels();
    channels[0].tone.low = 1000;
    channels[0].tone.high = 60001;
    view.display(channels);
    EXPECT_EQ(view.statistics().waiting, 0U);
    while (!view.complete())
        ASSERT_TRUE(view.advance(0ms));
    EXPECT_TRUE(view.pixels() == frameOf(shownLevels(picture, levels, {1000, 60001}), wanted));
    channels[0].colours = colourmap::rampTo({255, 0, 0});
    view.display(channels);
    Bytes red = frameOf(shownLevels(picture, levels, {1000, 60001}), wanted);
    for (size_t i = 0; i < red.size(); i += 4)
        red[i + 1] = red[i + 2] = 0;
    EXPECT_TRUE(completed(view, wanted) == red);
    channels = view.automaticChannels();
    channels[0].colours = colourmap::rampTo({255, 255, 255});
    view.display(channels);
    EXPECT_TRUE(completed(view, wanted) == frameOf(shownLevels(picture, levels, automatic(picture, levels)), wanted));
}

TEST_F(StoreChannelStagesGLTest, ChannelsThatAreOffAreLeftOut) {
    Picture const picture = testpictures::picture(600, 300, 4, 16, Content::Noise);
    StoreInfo const info = import(picture);
    Levels const levels = samplesOf(picture, info.levels);
    PictureView view(instance_, shown(inRange(0, 65535)), options());
    auto channels = view.channels();
    ASSERT_EQ(channels.size(), 4U);
    auto model = shownLevels(picture, levels, {0, 65535});
    expectRandomViews(view, model, 2);
    channels[1].isOn = false;
    view.display(channels);
    for (Level& level : model)
        for (size_t i = 0; i < level.bytes.size(); i += 4)
            level.bytes[i + 1] = 0;
    expectRandomViews(view, model, 3);
    channels[3].isOn = false; // alpha: all is opaque
    view.display(channels);
    for (Level& level : model)
        for (size_t i = 0; i < level.bytes.size(); i += 4)
            level.bytes[i + 3] = 255;
    expectRandomViews(view, model, 3);
}

TEST_F(StoreChannelStagesGLTest, SmallestBudgetsGiveTheSamePixels) {
    Picture const picture = testpictures::picture(1100, 700, 3, 16, Content::Noise);
    StoreInfo const info = import(picture);
    Levels const levels = samplesOf(picture, info.levels);
    Gles3RenderBackend poor(hostfilters::registry(), RenderBackend::RGBA32, 1);
    auto const instance = poor.createInstance(context_);
    PictureView view(instance, shown(inRange(0, 65535)), forgetful());
    expectRandomViews(view, shownLevels(picture, levels, {0, 65535}));
}

// Of the bytes that are shown.
TEST_F(StoreChannelStagesGLTest, SamplesOfPixelsAreThoseOfThePicture) {
    for (size_t const bits : {16U, 8U})
        for (size_t const bands : {1U, 2U, 3U, 4U}) {
            Picture const picture = testpictures::picture(701, 600, bands, bits, Content::Noise);
            StoreInfo const info = import(picture);
            PictureView view(instance_, shown(inRange(0, 20)), options());
            EXPECT_FALSE(view.samplesAt({0, 0})) << "nothing is there yet";
            completed(view, {Zoom::nearest(0.4, info.levels), 0, 0, 200, 200, false});
            EXPECT_FALSE(view.samplesAt({10, 10})) << "a coarser level is";
            completed(view, {Zoom(), 0, 0, 701, 600, false});
            for (int i = 0; i < 30; ++i) {
                PicturePixel const pixel = {random_() % 701, random_() % 600};
                std::vector<std::uint16_t> expected(bands);
                for (size_t band = 0; band < bands; ++band)
                    std::memcpy(&expected[band], &picture.bytes[((pixel.y * 701 + pixel.x) * bands + band) * bits / 8],
                                bits / 8);
                auto const samples = view.samplesAt(pixel);
                ASSERT_TRUE(samples);
                ASSERT_EQ(*samples, expected) << pixel.x << "," << pixel.y;
            }
        }
}

TEST_F(StoreChannelStagesGLTest, EnhancementsAreThoseOfTheWholeLevel) {
    Picture const picture = testpictures::picture(1300, 620, 3, 16, Content::Noise);
    import(picture);
    PictureView whole(instance_, shown(), options());
    PictureView pieces(instance_, shown(), options());
    std::vector<enhancement::Step> const steps{enhancement::Sharpen{1.5}, enhancement::Equalise{2}};
    Bytes const plain = completed(whole, {Zoom(), 0, 0, 1300, 620, false});
    whole.enhance(steps);
    pieces.enhance(steps);
    Bytes const all = completed(whole, {Zoom(), 0, 0, 1300, 620, false});
    EXPECT_FALSE(all == plain);
    for (std::int64_t const x : {0, 480, 1090}) {
        Bytes const part = completed(pieces, {Zoom(), x, 400, 200, 200, false});
        for (size_t row = 0; row < 200; ++row) {
            auto const from = all.begin() + static_cast<std::ptrdiff_t>(4 * ((400 + row) * 1300)) + 4 * x;
            ASSERT_TRUE(std::equal(from, from + 800, part.begin() + static_cast<std::ptrdiff_t>(row) * 800))
                << x << ", row " << row;
        }
    }
}

TEST_F(StoreChannelStagesGLTest, AColourMapIsForOneChannel) {
    Picture const picture = testpictures::picture(300, 200, 1, 8, Content::Ramp);
    StoreInfo const info = import(picture);
    DisplayRequest request;
    request.colourMap = "viridis";
    PictureView view(instance_, shown(request), options());
    EXPECT_EQ(view.info().bands, 3U);
    ColourMap const colours = colourmap::named("viridis");
    Bytes const frame = completed(view, {Zoom(), 0, 0, 300, 200, false});
    for (size_t i = 0; i < 300 * 200; ++i)
        for (size_t band = 0; band < 3; ++band)
            ASSERT_EQ(frame[4 * i + band], colours[picture.bytes[i]][band]) << i;
    import(testpictures::picture(300, 200, 3, 8, Content::Ramp));
    try {
        PictureView const other(instance_, shown(request), options());
        ADD_FAILURE() << "nothing was refused";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::Usage);
    }
}

// Who made the store may have chosen few levels.
TEST_F(StoreChannelStagesGLTest, TheRangeOfALargeCoarsestLevelIsThatOfATileOfMany) {
    ImportOptions importing;
    importing.tileSize = 64;
    importing.levels = 1;
    Picture const picture = testpictures::picture(5000, 4100, 1, 16, Content::Ramp);
    testpictures::import(picture, path(), importing);
    PictureView view(instance_, shown(), options());
    TileStore store(path());
    Levels const levels = samplesOf(picture, 1);
    Range const all = automatic(picture, levels);
    EXPECT_NEAR(view.channels().front().tone.low, all.low, 700);
    EXPECT_NEAR(view.channels().front().tone.high, all.high, 700);
}

TEST_F(StoreChannelStagesGLTest, WithoutTheCoarsestLevelTheWholeRangeIsTaken) {
    StoreInfo const info = import(testpictures::picture(500, 400, 1, 16, Content::Noise));
    sqlite::Database(path(), sqlite::Database::Mode::ReadWrite)
        .execute("UPDATE tiles SET crc = crc + 1 WHERE id = " +
                 std::to_string(storeformat::keyOf({info.levels, Band::LL, 0, 0, 0})));
    PictureView::Options tolerant = options();
    tolerant.showHoles = true;
    PictureView view(instance_, shown(), tolerant);
    EXPECT_EQ(view.channels().front().tone.low, 0);
    EXPECT_EQ(view.channels().front().tone.high, 65535);
    completed(view, {Zoom(), 0, 0, 500, 400, false});
    EXPECT_TRUE(view.hasHoles());
}
