// One rule for showing 16 bits: their upper byte, and with enhancements the result of these on the upper 15 bits; the
// same for a file, its store, a window and a region, at every zoom.
#include "host/filter/EnhancedRenderer.h"
#include "host/filter/RegionRenderer.h"
#include "host/image/ImageReader.h"
#include "host/image/PixelBands.h"
#include "host/view/LevelTile.h"
#include "tests/host/store/FormatPictures.h"
#include "tests/host/store/LevelModel.h"
#include "tests/host/view/PictureRendererFixture.h"
#include "tests/support/LongRun.h"

#include <cmath>
#include <cstring>

using formatpictures::Format;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Steps = std::vector<enhancement::Step>;

std::vector<Steps> const& allSteps() {
    enhancement::ColourMatrix const matrix = {{0.5, 0.25, 0, 0, 1, -0.125, 0.75, 0, 0.5}, 1.0};
    static std::vector<Steps> const all = {
        {},
        {enhancement::Gamma{2.2, 1001, 50003}},
        {enhancement::Sharpen{0.5}},
        {matrix},
        {enhancement::LinearToSrgb{}},
        {enhancement::Equalise{3.0}},
        {enhancement::Truncate{5, true}},
        {enhancement::Sharpen{2.0}, enhancement::Truncate{9, false}, enhancement::Gamma{1.0, 0, 65535}},
    };
    return all;
}

std::vector<Steps> someSteps() {
    if (isSampleRun()) return {{}, allSteps()[5]};
    return {{}, allSteps()[2], allSteps()[5]};
}

std::vector<Steps> stepsOfThisRun() {
    return isSampleRun() ? someSteps() : allSteps();
}

// Several tiles of 512 in each direction, of which the last are small.
constexpr size_t kMostPixels = 700;
constexpr size_t kPixelsOfASampleRun = 140;

Picture upperBytesOf(Picture const& picture) {
    Picture upper = picture;
    upper.bits = 8;
    upper.bytes.clear();
    for (size_t i = 0; i < picture.bytes.size(); i += 2) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, &picture.bytes[i], 2);
        upper.bytes.push_back(static_cast<std::uint8_t>(sample >> 8U));
    }
    return upper;
}

Bytes crop(Bytes const& bytes, size_t width, size_t bands, Region const& region) {
    Bytes out;
    for (size_t y = region.y; y < region.y + region.height; ++y) {
        auto const row = bytes.begin() + static_cast<std::ptrdiff_t>((y * width + region.x) * bands);
        out.insert(out.end(), row, row + static_cast<std::ptrdiff_t>(region.width * bands));
    }
    return out;
}

template <class Renderer>
Bytes drawn(Renderer&& renderer, PixelSource& source, Region const& region, size_t bands) {
    Bytes bytes;
    renderer.render(
        source, region,
        [&](std::uint8_t const* rows, size_t count) {
            bytes.insert(bytes.end(), rows, rows + count * region.width * bands);
        },
        [](size_t, size_t) {});
    return bytes;
}

class SixteenBitsGLTest : public PictureRendererFixture {
protected:
    // As `velmora render` draws a file: without steps from its upper bytes.
    Bytes ofFile(Picture const& picture, Steps const& steps, Region const& region) const {
        size_t const bands = EnhancedRenderer::bandsOf(picture.bands, steps);
        if (!steps.empty())
            return drawn(EnhancedRenderer(instance_, steps), *testpictures::source(picture), region, bands);
        return drawn(RegionRenderer(instance_, 256), *testpictures::source(upperBytesOf(picture)), region, bands);
    }

    // At zoom 1.
    Bytes ofWindow(Steps const& steps, Region const& region, size_t bands) const {
        PictureView view(instance_, path(), {});
        view.enhance(steps);
        view.show({Zoom(), static_cast<std::int64_t>(region.x), static_cast<std::int64_t>(region.y), region.width,
                   region.height, false});
        while (!view.complete()) {
            if (!view.advance(50ms)) view.wait(50ms);
        }
        Bytes const rgba = view.pixels();
        Bytes bytes(region.width * region.height * bands);
        pixelbands::narrow(rgba.data(), bytes.data(), bands, region.width * region.height);
        return bytes;
    }

    void expectOneRule(Picture const& picture, std::vector<Steps> const& all) const {
        Region const whole = {0, 0, picture.width, picture.height};
        Region const part = {picture.width / 3, picture.height / 4, (picture.width + 1) / 2, (picture.height + 1) / 2};
        for (Steps const& steps : all) {
            size_t const bands = EnhancedRenderer::bandsOf(picture.bands, steps);
            Bytes const file = ofFile(picture, steps, whole);
            size_t const kind = steps.empty() ? 0 : steps.front().index() + 1;
            EXPECT_TRUE(rendered(0, whole, steps) == file) << "steps " << kind << ": the store";
            EXPECT_TRUE(ofWindow(steps, whole, bands) == file) << "steps " << kind << ": the window";
            Bytes const wanted = crop(file, picture.width, bands, part);
            EXPECT_TRUE(ofFile(picture, steps, part) == wanted) << "steps " << kind << ": a region of the file";
            EXPECT_TRUE(rendered(0, part, steps) == wanted) << "steps " << kind << ": a region of the store";
            if (steps.empty()) {
                EXPECT_TRUE(file == upperBytesOf(picture).bytes);
            }
        }
    }

    // A picture that holds a level's codes itself.
    void expectLevelsLikePictures(Picture const& picture, StoreInfo const& info, Steps const& steps) const {
        auto const codes = levelmodel::codesOf(picture, info.levels);
        for (size_t level = 0; level <= info.levels; ++level) {
            Picture of = {
                ((picture.width - 1) >> level) + 1, ((picture.height - 1) >> level) + 1, picture.bands, 16, {}};
            of.bytes.resize(2 * codes[level].size());
            std::memcpy(of.bytes.data(), codes[level].data(), of.bytes.size());
            Region const whole = {0, 0, of.width, of.height};
            EXPECT_TRUE(rendered(level, whole, steps) == ofFile(of, steps, whole)) << "level " << level;
        }
    }
};

class SixteenBitCodesGLTest : public SixteenBitsGLTest {
protected:
    using Codes = std::vector<std::uint16_t>;

    static Codes codesOf(Bytes const& bytes) {
        Codes codes(bytes.size() / 2);
        std::memcpy(codes.data(), bytes.data(), bytes.size());
        return codes;
    }

    // What a TIFF of the store holds.
    Codes ofStore(Zoom const& zoom, Region const& region, size_t bands) const {
        PictureRenderer renderer(instance_, path(), {}, {}, 16);
        Bytes bytes;
        renderer.render(
            zoom, false, region,
            [&](std::uint8_t const* rows, size_t count) {
                bytes.insert(bytes.end(), rows, rows + 2 * count * region.width * bands);
            },
            [](size_t, size_t) {});
        return codesOf(bytes);
    }

    // The nearest samples of a level in plain memory.
    static Codes expected(Codes const& level, size_t width, size_t bands, Zoom const& zoom, Region const& region) {
        double const samplesPerPixel = static_cast<double>(zoom.samples()) / static_cast<double>(zoom.pixels());
        auto const sampleAt = [&](size_t pixel) {
            return static_cast<size_t>(std::floor((static_cast<double>(pixel) + 0.5) * samplesPerPixel));
        };
        Codes codes;
        for (size_t y = region.y; y < region.y + region.height; ++y) {
            for (size_t x = region.x; x < region.x + region.width; ++x) {
                auto const* const pixel = &level[(sampleAt(y) * width + sampleAt(x)) * bands];
                codes.insert(codes.end(), pixel, pixel + bands);
            }
        }
        return codes;
    }
};

class SixteenBitFormatsGLTest : public SixteenBitsGLTest, public testing::WithParamInterface<Format> {};

std::vector<Format> sixteenBitFormats() {
    std::vector<Format> formats;
    for (Format const& format : formatpictures::all())
        if (format.bits == 16) formats.push_back(format);
    return formats;
}

// All codes, in rows of 256.
Picture everyCode(size_t bands) {
    Picture picture = {256, 256, bands, 16, {}};
    for (unsigned code = 0; code < 65536; ++code) {
        for (size_t band = 0; band < bands; ++band) {
            auto const sample = static_cast<std::uint16_t>(band == 1 ? 65535 - code : code);
            picture.bytes.push_back(static_cast<std::uint8_t>(sample & 0xFFU));
            picture.bytes.push_back(static_cast<std::uint8_t>(sample >> 8U));
        }
    }
    return picture;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Pictures, SixteenBitFormatsGLTest, testing::ValuesIn(sixteenBitFormats()),
                         [](auto const& test) { return std::string(test.param.name); });

TEST_P(SixteenBitFormatsGLTest, FileStoreWindowAndRegionShowTheSame) {
    auto const located = formatpictures::locate(GetParam(), folder_.path());
    if (!located.missing.empty()) {
        if (formatpictures::areRequired()) FAIL() << located.missing;
        GTEST_SKIP() << located.missing;
    }
    Picture const picture =
        formatpictures::middleOf(located.path, isSampleRun() ? kPixelsOfASampleRun : kMostPixels, GetParam().choice);
    ASSERT_EQ(picture.bits, 16U);
    import(picture, 128);
    // Each of the others in turn.
    size_t const other = 1 + std::hash<std::string>()(GetParam().name) % (allSteps().size() - 1);
    std::vector<Steps> const some = {{}, allSteps()[other]};
    expectOneRule(picture, isExhaustiveRun() ? allSteps() : some);
    // What the reader itself makes of the file.
    auto const eightBits = formatpictures::openAsShown(located.path, GetParam().choice);
    Region const middle = {(eightBits->width() - picture.width) / 2, (eightBits->height() - picture.height) / 2,
                           picture.width, picture.height};
    Bytes shown;
    eightBits->read(middle, shown);
    EXPECT_TRUE(shown == upperBytesOf(picture).bytes);
}

TEST_F(SixteenBitsGLTest, EveryCodeIsShownAlike) {
    for (size_t const bands : {1U, 3U}) {
        Picture const picture = everyCode(bands);
        EXPECT_EQ(import(picture, 64).residualBits, 3U);
        expectOneRule(picture, stepsOfThisRun());
    }
}

TEST_F(SixteenBitsGLTest, NoiseOfAnyBandsIsShownAlike) {
    for (size_t bands = 1; bands <= 4; ++bands) {
        Picture const picture = testpictures::picture(isSampleRun() ? 140 : 550, 61, bands, 16, Content::Noise);
        import(picture, 64);
        expectOneRule(picture, bands == 4 ? stepsOfThisRun() : someSteps());
    }
}

TEST_F(SixteenBitsGLTest, PicturesWithMoreResidualBitsAreShownAlike) {
    Picture const picture = testpictures::picture(200, 180, 3, 16, Content::Resonance);
    EXPECT_EQ(import(picture, 64).residualBits, 5U);
    expectOneRule(picture, stepsOfThisRun());
}

TEST_F(SixteenBitsGLTest, EnhancementsMeanTheSameAtEveryLevel) {
    Picture const picture = testpictures::picture(571, 130, 3, 16, Content::Noise);
    StoreInfo const info = import(picture, 32, 4);
    ASSERT_EQ(info.residualBits, levelmodel::kResidualBits);
    for (Steps const& steps : stepsOfThisRun())
        expectLevelsLikePictures(picture, info, steps);
}

TEST_F(SixteenBitCodesGLTest, AFileKeepsEverySample) {
    for (size_t bands = 1; bands <= 4; ++bands) {
        Picture const picture = testpictures::picture(301, 67, bands, 16, Content::Noise);
        for (Region const& region : {Region{0, 0, 301, 67}, Region{11, 3, 57, 41}, Region{300, 66, 1, 1}}) {
            Bytes const bytes = drawn(RegionRenderer(instance_, 32), *testpictures::source(picture), region, 2 * bands);
            EXPECT_TRUE(bytes == crop(picture.bytes, picture.width, 2 * bands, region)) << toText(region);
        }
    }
}

TEST_F(SixteenBitCodesGLTest, BlocksOfAFileStandSideBySide) {
    Picture const picture = testpictures::picture(2051, 700, 1, 16, Content::Noise);
    EXPECT_TRUE(drawn(RegionRenderer(instance_, 256), *testpictures::source(picture), {0, 0, 2051, 700}, 2) ==
                picture.bytes);
}

TEST_F(SixteenBitCodesGLTest, AStoreKeepsEverySampleAtItsOwnSize) {
    for (size_t bands = 1; bands <= 4; ++bands) {
        Picture const picture = testpictures::picture(571, 130, bands, 16, Content::Noise);
        import(picture, 32);
        Codes const all = codesOf(picture.bytes);
        EXPECT_TRUE(ofStore(Zoom(), {0, 0, 571, 130}, bands) == all) << bands;
        Region const part = {500, 17, 60, 50};
        EXPECT_TRUE(ofStore(Zoom(), part, bands) == expected(all, 571, bands, Zoom(), part)) << bands;
    }
    Picture const picture = testpictures::picture(200, 180, 3, 16, Content::Resonance);
    EXPECT_EQ(import(picture, 64).residualBits, 5U);
    EXPECT_TRUE(ofStore(Zoom(), {0, 0, 200, 180}, 3) == codesOf(picture.bytes));
}

TEST_F(SixteenBitCodesGLTest, AStoreGivesTheNearestSamplesAtAnyZoom) {
    Picture const picture = testpictures::picture(571, 330, 4, 16, Content::Noise);
    StoreInfo const info = import(picture, 32, 4);
    auto const levels = levelmodel::codesOf(picture, info.levels);
    for (double const number : {2.0, 0.9, 0.7, 0.5, 0.3, 0.25, 0.0625}) {
        Zoom const zoom = Zoom::nearest(number, info.levels);
        Size const all = leveltile::pixelExtent(info, zoom);
        size_t const width = leveltile::levelExtent(info, zoom.level()).width;
        Region const region = {all.width / 5, all.height / 7, all.width - all.width / 5, all.height - all.height / 7};
        EXPECT_TRUE(ofStore(zoom, region, 4) == expected(levels[zoom.level()], width, 4, zoom, region)) << number;
    }
}
