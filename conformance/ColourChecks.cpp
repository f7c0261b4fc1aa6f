// Colour transforms, conversions and truncation: each output pixel from one input pixel.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/FilterDescriptions.h"
#include "reference/ColourMatrix.h"
#include "reference/SixteenToEight.h"
#include "reference/Truncate16.h"
#include "reference/YCoCgR.h"
#include "renderbackend/FilterParameters.h"

#include <functional>
#include <random>

namespace conformance {

namespace {

using reference::Matrix3;
using reference::packThreeChannel16;
using reference::Planes3;
using reference::Texels;

constexpr std::uint32_t kRandomParts = 4;
constexpr std::size_t kFewBits = 3;

// All 2^24 colours, or a random sample of 2^18.
void expectColours(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                   SingleFilterParameters const& params = {},
                   std::function<Texels(Texels const&)> const& before = nullptr) {
    std::uint32_t const parts = trial.full() ? kColourParts : kRandomParts;
    for (std::uint32_t part = 0; part < parts; ++part) {
        Texels const picture = trial.full() ? colours(part) : randomColours(part);
        expectEach(trial, filter, pointwise, {before ? before(picture) : picture}, params);
    }
}

// Every sample in every channel, boundaries against each other, noise.
std::vector<Texels> threeChannelPictures() {
    return {packThreeChannel16(everySampleThrice()),        packThreeChannel16(everySampleOfChannel(0, 1)),
            packThreeChannel16(everySampleOfChannel(1, 2)), packThreeChannel16(everySampleOfChannel(2, 3)),
            packThreeChannel16(boundaryTriples()),          packThreeChannel16(randomPlanes(1024, 5, 4))};
}

// What an 8-bit target shows unclamped, and some beside it.
constexpr std::int32_t kBelowBytes = -60;
constexpr std::int32_t kAboveBytes = 320;

Texels pixelsAroundBytes(int width, int height, std::uint32_t randomStart) {
    return packThreeChannel16(randomPlanes(width / 2, height, randomStart, kBelowBytes, kAboveBytes));
}

Filter3x3MatrixParams times(Matrix3 const& matrix, double strength) {
    Filter3x3MatrixParams params;
    params.matrix = matrix;
    params.scale = strength;
    return params;
}

constexpr Matrix3 kIdentity = {1024, 0, 0, 0, 1024, 0, 0, 0, 1024};
constexpr Matrix3 kWarm = {1300, 20, -60, -200, 1050, 90, -76, -46, 994};

} // namespace

void check1x16ToRGB8(Trial& trial) {
    Filter const filter = trial.prepared(description::filter1x16ToRGB8());
    Pointwise const grey = {Layout::kOneChannel16, Layout::kRgb8, reference::oneChannel16ToRgb8,
                            [](int width, int height, std::uint32_t randomStart) {
                                return reference::packOneChannel16(
                                    randomPlane(2 * width, height, randomStart, kBelowBytes, kAboveBytes));
                            }};
    expectEach(trial, filter, grey,
               {reference::packOneChannel16(everySample()), randomTexels(37, 11, 1), randomTexels(1024, 3, 2)});
    expectEverywhere(trial, filter, grey);
}

void check3x16To4x8(Trial& trial) {
    Filter const filter = trial.prepared(description::filter3x16To4x8());
    Pointwise const shown = {Layout::kThreeChannel16, Layout::kRgba8, reference::threeChannel16ToRgba8,
                             pixelsAroundBytes};
    expectEach(trial, filter, shown, threeChannelPictures());
    expectEverywhere(trial, filter, shown);
}

void checkRGBA8ToYCoCg16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterRGBA8ToYCoCg16());
    Pointwise const forward = {Layout::kRgba8, Layout::kThreeChannel16, reference::rgba8ToYCoCg16};
    expectColours(trial, filter, forward);
    expectEverywhere(trial, filter, forward);
}

void checkYCoCg16ToRGBA8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterYCoCg16ToRGBA8());
    Pointwise const inverse = {Layout::kThreeChannel16, Layout::kRgba8, reference::yCoCg16ToRgba8, pixelsAroundBytes};
    expectEach(trial, filter, inverse, threeChannelPictures());
    expectColours(trial, filter, inverse, {}, reference::rgba8ToYCoCg16);
    expectEverywhere(trial, filter, inverse);
}

void checkYCoCg16ToRGB16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterYCoCg16ToRGB16());
    Pointwise const inverse = {Layout::kThreeChannel16, Layout::kThreeChannel16, reference::yCoCg16ToRgb16};
    expectEach(trial, filter, inverse, threeChannelPictures());
    expectColours(trial, filter, inverse, {}, reference::rgba8ToYCoCg16);
    expectEverywhere(trial, filter, inverse);
}

void checkTruncate16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterTruncate16());
    for (std::size_t bits = 0; bits <= 16; ++bits) {
        for (bool const rounding : {false, true}) {
            FilterTruncate16Params params;
            params.shift = bits;
            params.rounding = rounding;
            Pointwise const truncation = {Layout::kOneChannel16, Layout::kOneChannel16, [=](Texels const& samples) {
                                              return reference::truncate16(samples, bits, rounding);
                                          }};
            // Every value, whose neighbours in a texel share a high byte, and noise, whose neighbours share nothing.
            expectEach(trial, filter, truncation, {reference::packOneChannel16(everySample()), randomTexels(61, 47, 3)},
                       params);
            if (bits == kFewBits) expectEverywhere(trial, filter, truncation, params);
        }
    }
}

void check3x3Matrix8(Trial& trial) {
    Filter const filter = trial.prepared(description::filter3x3Matrix8());
    auto const by = [](Matrix3 const& matrix, double strength) {
        return Pointwise{Layout::kRgba8, Layout::kRgba8,
                         [=](Texels const& image) { return reference::matrix8(image, matrix, strength); }};
    };
    expectColours(trial, filter, by(kWarm, 1.0), times(kWarm, 1.0));
    expectColours(trial, filter, by(kIdentity, 0.5), times(kIdentity, 0.5));
    expectEverywhere(trial, filter, by(kWarm, 1.0), times(kWarm, 1.0));
    std::mt19937 random(8);
    for (int i = 0; i < 24; ++i) {
        std::int32_t const range = i % 2 == 0 ? 1200 : 20000;
        Matrix3 matrix{};
        for (auto& coefficient : matrix)
            coefficient = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(2 * range)) - range;
        expectEach(trial, filter, by(matrix, -0.77), {randomTexels(61, 47, 9)}, times(matrix, -0.77));
    }
}

void check3x3Matrix16(Trial& trial) {
    Filter const filter = trial.prepared(description::filter3x3Matrix16());
    auto const by = [](Matrix3 const& matrix, double strength) {
        return Pointwise{Layout::kThreeChannel16, Layout::kThreeChannel16,
                         [=](Texels const& texels) { return reference::matrix16(texels, matrix, strength); },
                         [](int width, int height, std::uint32_t randomStart) {
                             return packThreeChannel16(randomPlanes(width / 2, height, randomStart, -8192, 8191));
                         }};
    };
    auto const expectMatrix = [&](Planes3 const& pixels, Matrix3 const& matrix, double strength) {
        expectEach(trial, filter, by(matrix, strength), {packThreeChannel16(pixels)}, times(matrix, strength));
    };
    expectMatrix(everySampleThrice(), kIdentity, 1.0);
    // Rows of coefficients that keep every sum of three samples within 16384.
    for (Matrix3 const& matrix : {Matrix3{170, -1, 100, -171, 255, -200, 150, 256, 211},
                                  {-512, 0, 1, 0, 511, 0, 0, 1, -510},
                                  {1, 2, 3, 4, 5, 6, 7, 8, 9}})
        expectMatrix(everySampleThrice(), matrix, 1.0);
    expectMatrix(boundaryTriples(), {170, -1, 100, -171, 255, -200, 150, 256, 211}, 1.0);
    expectEverywhere(trial, filter, by(kWarm, 1.0), times(kWarm, 1.0));
    std::uint32_t const rounds = trial.full() ? 64 : 2;
    for (std::uint32_t i = 0; i < rounds; ++i) {
        expectMatrix(randomPlanes(256, 256, 3 * i, -8192, 8191), kWarm, 1.0);
        expectMatrix(randomPlanes(256, 256, 500 + 3 * i, -8192, 8191), kWarm, -0.37);
    }
}

} // namespace conformance
