// A photograph through the lossless chain and back: RGB -> YCoCg-R -> five levels of 5/3 on the processor, then
// wavelet, interleaving and colour transform on the GPU. Not one byte may differ.
#include "gles3renderbackend/Gl.h"
#include "host/filter/FilterDescriptions.h"
#include "host/image/ImageReader.h"
#include "reference/LeGall53Plane.h"
#include "reference/YCoCgR.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/gles3renderbackend/filters/LeGall53Steps.h"
#include "tests/support/GlErrors.h"
#include "tests/support/LongRun.h"
#include "tests/support/OptimisedBuild.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <stdexcept>

namespace {

using namespace filtertest;
using reference::Plane;
using reference::Planes3;
using reference::Pyramid;

constexpr size_t kLevels = 5;
// Number of pixels per sample of the coarsest band; parts of the picture start at multiples of it.
constexpr int kUnit = 1 << kLevels;
constexpr int kPart = 32 * kUnit;
// Apron of a part: one coarse sample before it and, over all levels, seven after it.
constexpr int kBefore = kUnit;
constexpr int kAfter = 8 * kUnit;

struct Rgb {
    int width;
    int height;
    std::vector<std::uint8_t> bytes;
};

Rgb read(std::filesystem::path const& file, Region const& region) {
    ImageReader reader(file.string());
    if (reader.bands() != 3) throw std::invalid_argument(file.string() + " is not RGB");
    Region const whole{0, 0, reader.width(), reader.height()};
    Region const wanted = region.width == 0 ? whole : region;
    Rgb rgb{static_cast<int>(wanted.width), static_cast<int>(wanted.height), {}};
    reader.read(wanted, rgb.bytes);
    return rgb;
}

// The picture mirrored at its edges, so that every part of it finds true neighbours in every band.
Planes3 extendedYCoCg(Rgb const& rgb) {
    auto const extended = [](int extent) { return kBefore + (extent + kUnit - 1) / kUnit * kUnit + kAfter; };
    Plane const empty(extended(rgb.width), extended(rgb.height));
    Planes3 planes{empty, empty, empty};
    for (int y = 0; y < empty.height; ++y) {
        auto const row = reference::reflected(y - kBefore, rgb.height);
        for (int x = 0; x < empty.width; ++x) {
            auto const at = static_cast<size_t>(row * rgb.width + reference::reflected(x - kBefore, rgb.width)) * 3;
            auto const colour = reference::yCoCgFromRgb({rgb.bytes[at], rgb.bytes[at + 1], rgb.bytes[at + 2]});
            planes[0].at(x, y) = colour.y;
            planes[1].at(x, y) = colour.co;
            planes[2].at(x, y) = colour.cg;
        }
    }
    return planes;
}

// The stretches of all levels, the finest first, for the samples from `start`, a multiple of kUnit, up to `end`.
std::vector<Stretch> stretchesFor(int start, int end) {
    std::vector<Stretch> stretches;
    while (stretches.size() < kLevels) {
        start /= 2;
        stretches.push_back(stretchFor(start, end));
        end = start + stretches.back().count;
    }
    return stretches;
}

// A high band starts one sample earlier.
Plane cut(Plane const& band, bool highX, bool highY, Stretch const& x, Stretch const& y) {
    int const left = x.start - (highX ? 1 : 0);
    int const top = y.start - (highY ? 1 : 0);
    if (left < 0 || top < 0 || left + x.count > band.width || top + y.count > band.height)
        throw std::logic_error("the picture is not extended far enough");
    return cropped(band, left, top, x.count, y.count);
}

class PhotographGLTest : public FilterGLTest {
protected:
    void TearDown() override { EXPECT_THAT(gl_errors::findings(), ::testing::IsEmpty()); }

    // The part of the extended picture from (x, y) on, kPart pixels or less a side.
    Texels part(std::array<Pyramid, 3> const& pyramids, int x, int y, int width, int height) {
        auto const across = stretchesFor(x, x + width);
        auto const down = stretchesFor(y, y + height);
        FilterRun interleaving;
        for (Pyramid const& pyramid : pyramids)
            interleaving.sources.push_back({reconstructed(pyramid, across, down), 0, 0, false});
        interleaving.input = {static_cast<size_t>(width), static_cast<size_t>(height)};
        size_t const yCoCg = rig.target(Layout::kThreeChannel16, 2 * width, height);
        rig.run(interleave_, interleaving, yCoCg);
        size_t const rgba = rig.target(Layout::kRgba8, width, height);
        rig.run(toRgba_, {{{yCoCg, 0, 0, false}}, interleaving.input}, rgba);
        Texels texels = rig.read(rgba);
        for (FilterSource const& plane : interleaving.sources)
            rig.erase(plane.target);
        for (size_t const used : {yCoCg, rgba})
            rig.erase(used);
        return texels;
    }

    void expectRoundTrip(Rgb const& rgb) {
        Planes3 const planes = extendedYCoCg(rgb);
        std::array<Pyramid, 3> pyramids;
        std::transform(planes.begin(), planes.end(), pyramids.begin(),
                       [](Plane const& plane) { return reference::forward53Pyramid(plane, kLevels); });
        size_t compared = 0;
        size_t different = 0;
        for (int y = 0; y < rgb.height; y += kPart) {
            for (int x = 0; x < rgb.width; x += kPart) {
                int const width = std::min(kPart, rgb.width - x);
                int const height = std::min(kPart, rgb.height - y);
                Texels const texels = part(pyramids, kBefore + x, kBefore + y, width, height);
                different += differences(rgb, texels, x, y);
                compared += texels.bytes.size() / 4 * 3;
            }
        }
        EXPECT_EQ(compared, rgb.bytes.size());
        EXPECT_EQ(different, 0U) << "bytes of " << rgb.width << " x " << rgb.height << " pixels";
    }

private:
    // Every level stays on the GPU: the output of one is the low band of the next.
    size_t reconstructed(Pyramid const& pyramid, std::vector<Stretch> const& across, std::vector<Stretch> const& down) {
        size_t current = rig.uploaded(cut(pyramid.levels.back().ll, false, false, across.back(), down.back()));
        for (size_t n = kLevels; n-- > 0;) {
            reference::PlaneBands const& bands = pyramid.levels[n];
            Stretch const& x = across[n];
            Stretch const& y = down[n];
            size_t const finer = steps_.level(
                {current, 0, 0, false},
                {cut(bands.hl, true, false, x, y), cut(bands.lh, false, true, x, y), cut(bands.hh, true, true, x, y)},
                x, y);
            rig.erase(current);
            current = finer;
        }
        return current;
    }

    static size_t differences(Rgb const& rgb, Texels const& texels, int x, int y) {
        size_t different = 0;
        for (int row = 0; row < texels.height; ++row) {
            for (int column = 0; column < texels.width; ++column) {
                auto const at = static_cast<size_t>((y + row) * rgb.width + x + column) * 3;
                auto const texel = texels.at(column, row);
                for (size_t channel = 0; channel < 3; ++channel)
                    different += texel[channel] != rgb.bytes[at + channel] ? 1U : 0U;
            }
        }
        return different;
    }

    LeGall53Steps steps_{rig};
    Filter interleave_ = rig.instantiated(description::filterInterleave16());
    Filter toRgba_ = rig.instantiated(description::filterYCoCg16ToRGBA8());
};

struct Shot {
    char const* name;
    char const* file;
    Region region; // without pixels: all of it
    enum { kAlways, kOnLlvmpipe, kInLongRuns } when = kAlways;
};

std::ostream& operator<<(std::ostream& stream, Shot const& shot) {
    return stream << shot.file;
}

bool drawsOn(std::string const& driver) {
    std::string const renderer = reinterpret_cast<char const*>(glGetString(GL_RENDERER));
    return renderer.rfind(driver, 0) == 0;
}

// softpipe interprets every shader: one whole photograph there, and in optimised builds only.
bool isAmongLongRuns(Shot const& shot) {
    return isLongRun() && (!drawsOn("softpipe") || (kOptimisedBuild && shot.when == Shot::kOnLlvmpipe));
}

class PhotographShotGLTest : public PhotographGLTest, public ::testing::WithParamInterface<Shot> {};

TEST_P(PhotographShotGLTest, ComesBackByteForByte) {
    Shot const& shot = GetParam();
    bool const now = shot.when == Shot::kAlways || (shot.when == Shot::kOnLlvmpipe && drawsOn("llvmpipe"));
    if (!now && !isAmongLongRuns(shot)) GTEST_SKIP() << "a whole photograph: VELMORA_LONG is not set, or too slow here";
    std::filesystem::path const file = std::filesystem::path(VELMORA_PHOTOGRAPHS) / shot.file;
    if (!std::filesystem::exists(file)) {
        ASSERT_EQ(std::getenv("VELMORA_REQUIRE_PHOTOGRAPHS"), nullptr) << file << " is missing";
        GTEST_SKIP() << file << " is missing: scripts/fetch-photographs fetches it";
    }
    expectRoundTrip(read(file, shot.region));
}

constexpr char const* kDragonfly = "Dragonfly_by_Bolly.jpg"; // 4224 x 3168

INSTANTIATE_TEST_SUITE_P(Crops, PhotographShotGLTest,
                         ::testing::Values(Shot{"PrimeSides", kDragonfly, {1300, 900, 1063, 571}},
                                           Shot{"OddWidth", kDragonfly, {1901, 1203, 385, 512}},
                                           Shot{"OddHeight", kDragonfly, {2200, 1000, 640, 333}},
                                           Shot{"WholeParts", kDragonfly, {1024, 1024, 1024, 1024}},
                                           Shot{"FewerPixelsThanLevels", kDragonfly, {2000, 1500, 13, 7}}),
                         [](auto const& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Whole, PhotographShotGLTest,
    ::testing::Values(Shot{"Of13Megapixels", kDragonfly, {}, Shot::kOnLlvmpipe},
                      Shot{"Of13MegapixelsWithPrimeSides", kDragonfly, {3, 1, 4219, 3163}, Shot::kInLongRuns},
                      Shot{"Of16Megapixels", "seeding_by_Clements_Engelhardt.jpg", {}, Shot::kInLongRuns},
                      Shot{"Of12Megapixels", "sunset_by_Aitzol_Berasategi.jpg", {}, Shot::kInLongRuns}),
    [](auto const& row) { return std::string(row.param.name); });

} // namespace
