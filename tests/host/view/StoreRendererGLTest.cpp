// Regions of stores through the GPU, byte for byte as the wavelet's formulas and the plain colour transform give them.
#include "host/view/StoreRenderer.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/EnhancedRenderer.h"
#include "host/SurfacelessContext.h"
#include "host/view/PictureTile.h"
#include "reference/Integers.h"
#include "reference/ToneTables.h"
#include "reference/YCoCgR.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/store/TestPictures.h"
#include "tests/host/store/WaveletModel.h"
#include "tests/support/GlErrors.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using testpictures::Content;
using testpictures::Picture;

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kResidualBits = 3;
constexpr std::size_t kTileBudgetBytes = 64 * 1000 * 1000;

unsigned sampleOf(Picture const& picture, std::size_t pixel, std::size_t band) {
    std::size_t const index = pixel * picture.bands + band;
    if (picture.bits == 8) return picture.bytes[index];
    std::uint16_t sample = 0;
    std::copy_n(&picture.bytes[2 * index], 2, reinterpret_cast<std::uint8_t*>(&sample));
    return static_cast<unsigned>(sample) >> kResidualBits;
}

// Luma, Co, Cg, alpha; or grey, alpha.
std::vector<waveletmodel::Plane> planesOf(Picture const& picture) {
    auto const width = static_cast<std::int64_t>(picture.width);
    auto const height = static_cast<std::int64_t>(picture.height);
    std::vector<waveletmodel::Plane> planes(picture.bands, {width, height, {}});
    for (std::size_t i = 0; i < picture.width * picture.height; ++i) {
        std::vector<int> samples;
        for (std::size_t band = 0; band < picture.bands; ++band)
            samples.push_back(static_cast<int>(sampleOf(picture, i, band)));
        if (picture.bands >= 3) {
            reference::YCoCg const colour = reference::yCoCgFromRgb({samples[0], samples[1], samples[2]});
            samples[0] = colour.y;
            samples[1] = colour.co;
            samples[2] = colour.cg;
        }
        for (std::size_t plane = 0; plane < planes.size(); ++plane)
            planes[plane].samples.push_back(samples[plane]);
    }
    return planes;
}

// Each level is the low band of the finer one, which goes on mirrored beyond its ends.
waveletmodel::Plane levelOf(waveletmodel::Plane const& plane, std::size_t level, Extent const& extent) {
    waveletmodel::Plane current = plane;
    for (std::size_t k = 0; k < level; ++k)
        current = waveletmodel::coarser(current);
    waveletmodel::Plane result{static_cast<std::int64_t>(extent.width), static_cast<std::int64_t>(extent.height), {}};
    result.samples.reserve(extent.width * extent.height);
    for (std::int64_t y = 0; y < result.height; ++y) {
        for (std::int64_t x = 0; x < result.width; ++x)
            result.samples.push_back(current.at(x, y));
    }
    return result;
}

std::uint8_t shown(std::int64_t code, std::size_t bits) {
    if (bits == 8) return reference::clampToByte(code);
    static reference::ByteTable const table = reference::gammaTable(13, 1.0, 0, 8191);
    return table[static_cast<std::size_t>(std::clamp<std::int64_t>(code, 0, 8191))];
}

Bytes modelOf(Picture const& picture, StoreInfo const& info, std::size_t level) {
    Extent const extent = picturetile::levelExtent(info, level);
    std::vector<waveletmodel::Plane> planes;
    planes.reserve(picture.bands);
    for (auto const& plane : planesOf(picture))
        planes.push_back(levelOf(plane, level, extent));
    Bytes bytes;
    for (std::size_t i = 0; i < extent.width * extent.height; ++i) {
        std::vector<std::int64_t> samples(planes.size());
        std::transform(planes.begin(), planes.end(), samples.begin(),
                       [i](waveletmodel::Plane const& plane) { return plane.samples[i]; });
        if (picture.bands >= 3) {
            auto const whole = [&](std::size_t k) { return static_cast<std::int32_t>(samples[k]); };
            reference::Rgb const rgb = reference::rgbFromYCoCg({whole(0), whole(1), whole(2)});
            samples[0] = rgb.r;
            samples[1] = rgb.g;
            samples[2] = rgb.b;
        }
        bool const alpha = picture.bands == 2 || picture.bands == 4;
        for (std::size_t band = 0; band < samples.size(); ++band) {
            bool const isAlpha = alpha && band + 1 == samples.size();
            bytes.push_back(isAlpha && picture.bits == 16 ? reference::clampToByte(samples[band] >> 5)
                                                          : shown(samples[band], picture.bits));
        }
    }
    return bytes;
}

Bytes crop(Bytes const& bytes, std::size_t width, std::size_t bands, Region const& region) {
    Bytes out;
    for (std::size_t y = region.y; y < region.y + region.height; ++y) {
        auto const row = bytes.begin() + static_cast<std::ptrdiff_t>((y * width + region.x) * bands);
        out.insert(out.end(), row, row + static_cast<std::ptrdiff_t>(region.width * bands));
    }
    return out;
}

class StoreRendererGLTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(gl_errors::findings(), std::vector<std::string>()); }

    StoreInfo import(Picture const& picture, std::size_t tileSize, std::optional<std::size_t> levels = std::nullopt) {
        ImportOptions options;
        options.tileSize = tileSize;
        options.levels = levels;
        options.replace = true;
        return testpictures::import(picture, path(), options);
    }

    Bytes rendered(std::size_t level, Region const& region, std::vector<enhancement::Step> const& steps = {}) {
        Bytes bytes;
        StoreRenderer renderer(instance_, path(), steps);
        std::size_t const rowBytes = region.width * renderer.bands();
        Zoom const zoom = Zoom::nearest(std::ldexp(1.0, -static_cast<int>(level)), renderer.info().levels);
        renderer.render(
            zoom, false, region,
            [&](std::uint8_t const* rows, std::size_t count) {
                bytes.insert(bytes.end(), rows, rows + count * rowBytes);
            },
            [](std::size_t, std::size_t) {});
        return bytes;
    }

    Bytes renderedWhole(StoreInfo const& info, std::size_t level) {
        Extent const extent = picturetile::levelExtent(info, level);
        return rendered(level, {0, 0, extent.width, extent.height});
    }

    void expectEveryLevel(Picture const& picture, std::size_t tileSize,
                          std::optional<std::size_t> levels = std::nullopt) {
        StoreInfo const info = import(picture, tileSize, levels);
        for (std::size_t level = 0; level <= info.levels; ++level)
            EXPECT_TRUE(renderedWhole(info, level) == modelOf(picture, info, level))
                << picture.width << " x " << picture.height << ", " << picture.bands << " bands of " << picture.bits
                << " bits, level " << level;
    }

    std::string path() const { return folder_.path("a.store"); }

    TemporaryFolder folder_;
    SurfacelessContext context_;
    Gles3RenderBackend backend_{RenderBackend::RGBA32, kTileBudgetBytes};
    std::shared_ptr<RenderBackendInstance> instance_ = backend_.createInstance(context_);
};

} // namespace

TEST_F(StoreRendererGLTest, LevelZeroIsThePicture) {
    Picture const picture = testpictures::picture(301, 207, 3, 8, Content::Noise);
    import(picture, 64);
    EXPECT_TRUE(rendered(0, {0, 0, 301, 207}) == picture.bytes);
}

TEST_F(StoreRendererGLTest, EveryLevelIsTheWaveletsLowBand) {
    for (Content const content : {Content::Noise, Content::Ramp, Content::Checkerboard})
        expectEveryLevel(testpictures::picture(333, 258, 3, 8, content), 32, 4);
}

TEST_F(StoreRendererGLTest, EveryLevelOfAnyBandsAndBitsIsExact) {
    for (std::size_t bands = 1; bands <= 4; ++bands) {
        for (std::size_t const bits : {8U, 16U})
            expectEveryLevel(testpictures::picture(83, 61, bands, bits, Content::Noise), 32);
    }
}

TEST_F(StoreRendererGLTest, SinglePixelsRowsAndColumnsAreExact) {
    for (auto const& [width, height] : {std::pair{1, 1}, {2, 3}, {1, 1500}, {1500, 1}, {16, 16}, {17, 15}, {1021, 3}})
        expectEveryLevel(testpictures::picture(static_cast<std::size_t>(width), static_cast<std::size_t>(height), 3, 8,
                                               Content::Noise),
                         16);
}

TEST_F(StoreRendererGLTest, FlatPicturesAreExactWithoutATileThatIsRead) {
    expectEveryLevel(testpictures::picture(300, 200, 3, 8, Content::Flat), 64);
    expectEveryLevel(testpictures::picture(300, 200, 2, 16, Content::Flat), 64);
}

TEST_F(StoreRendererGLTest, RegionsAreTheirPartOfTheWholeLevel) {
    Picture const picture = testpictures::picture(1203, 1100, 3, 8, Content::Noise);
    StoreInfo const info = import(picture, 64, 5);
    std::mt19937 random(11);
    for (std::size_t level = 0; level <= info.levels; ++level) {
        Extent const extent = picturetile::levelExtent(info, level);
        Bytes const whole = renderedWhole(info, level);
        if (level == 0) {
            EXPECT_TRUE(whole == picture.bytes);
        }
        for (int i = 0; i < (isLongRun() ? 34 : 8); ++i) {
            std::size_t const x = random() % extent.width;
            std::size_t const y = random() % extent.height;
            Region const region{x, y, 1 + random() % std::min<std::size_t>(extent.width - x, 90),
                                1 + random() % std::min<std::size_t>(extent.height - y, 90)};
            ASSERT_TRUE(rendered(level, region) == crop(whole, extent.width, 3, region))
                << "level " << level << ", " << toText(region);
        }
    }
}

TEST_F(StoreRendererGLTest, EnhancementsGiveWhatTheyGiveOnThePictureItself) {
    Picture const picture = testpictures::picture(1050, 130, 4, 8, Content::Noise);
    import(picture, 128);
    std::vector<enhancement::Step> const steps = {enhancement::Equalise{3.0}, enhancement::Sharpen{0.5},
                                                  enhancement::Truncate{2, true}};
    Bytes expected;
    auto const source = testpictures::source(picture);
    EnhancedRenderer(instance_, steps)
        .render(
            *source, {0, 0, picture.width, picture.height},
            [&](std::uint8_t const* rows, std::size_t count) {
                expected.insert(expected.end(), rows, rows + count * picture.width * picture.bands);
            },
            [](std::size_t, std::size_t) {});
    EXPECT_TRUE(rendered(0, {0, 0, picture.width, picture.height}, steps) == expected);
}
