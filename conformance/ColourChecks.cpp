// Conversions, colour transforms and truncation: pointwise filters.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/SixteenToEight.h"
#include "reference/Truncate16.h"
#include "reference/YCoCgR.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::packThreeChannel16;
using reference::Planes3;
using reference::Texels;

// The values that an 8-bit target shows unclamped, and some beside them.
constexpr std::int32_t kBelowBytes = -60;
constexpr std::int32_t kAboveBytes = 320;

Texels pixelsAroundBytes(int width, int height, std::uint32_t randomStart) {
    return packThreeChannel16(randomPlanes(width / 2, height, randomStart, kBelowBytes, kAboveBytes));
}

Texels samplesAroundBytes(int width, int height, std::uint32_t randomStart) {
    return reference::packOneChannel16(randomPlane(2 * width, height, randomStart, kBelowBytes, kAboveBytes));
}

// Every sample in every channel, with others around the bytes' range; boundaries against each other; random bytes in
// the unused places. Then every sample combined with all others.
std::vector<Texels> threeChannelPictures(Trial const& trial) {
    std::vector<Texels> pictures = {packThreeChannel16(boundaryTriples()), randomTexels(64, 40, 6),
                                    packThreeChannel16(randomPlanes(64, 40, 7, -300, 300))};
    for (size_t channel = 0; channel < 3; ++channel) {
        Planes3 planes = randomPlanes(256, 256, 8, -300, 300);
        planes[channel] = everySample();
        pictures.push_back(packThreeChannel16(planes));
    }
    if (!trial.thorough()) return pictures;
    for (std::uint32_t channel = 0; channel < 3; ++channel)
        pictures.push_back(packThreeChannel16(everySampleOfChannel(channel, channel + 1)));
    pictures.push_back(packThreeChannel16(everySampleThrice()));
    pictures.push_back(packThreeChannel16(randomPlanes(1024, 5, 4)));
    return pictures;
}

// Large coefficients whose sum lies in a byte's range, where every unit is visible: green, or blue in every other
// pixel.
Texels cancellingCoefficients() {
    Planes3 const rgb = randomPlanes(256, 128, 12, -20, 275);
    Planes3 yCoCg = randomPlanes(256, 128, 13, -16000, 16000);
    for (size_t i = 0; i < rgb[0].samples.size(); ++i) {
        std::int32_t const halfCg = (yCoCg[2].samples[i] + 32768) / 2 - 16384;
        std::int32_t const halfCo = (yCoCg[1].samples[i] + 32768) / 2 - 16384;
        yCoCg[0].samples[i] =
            i % 2 == 0 ? rgb[1].samples[i] - yCoCg[2].samples[i] + halfCg : rgb[2].samples[i] + halfCo + halfCg;
    }
    return packThreeChannel16(yCoCg);
}

// All values of the two other channels, the third one random.
std::vector<Texels> pairsOfChannels() {
    std::vector<Texels> pictures(3, randomTexels(256, 256, 1));
    for (size_t fixed = 0; fixed < pictures.size(); ++fixed) {
        for (size_t i = 0; i < 65536; ++i) {
            pictures[fixed].bytes[4 * i + (fixed + 1) % 3] = static_cast<std::uint8_t>(i >> 8);
            pictures[fixed].bytes[4 * i + (fixed + 2) % 3] = static_cast<std::uint8_t>(i);
        }
    }
    return pictures;
}

// The same samples onto targets with and without alpha.
void check1x16ToRGB8(Trial& trial) {
    Filter const filter = trial.prepared(description::filter1x16ToRGB8());
    for (Layout const out : {Layout::kRgb8, Layout::kRgba8}) {
        Pointwise const grey = {Layout::kOneChannel16, out, reference::oneChannel16ToRgb8, samplesAroundBytes};
        expectEach(trial, filter, grey, {reference::packOneChannel16(everySample())});
        if (trial.thorough()) expectEach(trial, filter, grey, {randomTexels(37, 11, 1), randomTexels(1024, 3, 2)});
        expectEverywhere(trial, filter, grey);
    }
}

void check3x16To4x8(Trial& trial) {
    Filter const filter = trial.prepared(description::filter3x16To4x8());
    Pointwise const shown = {Layout::kThreeChannel16, Layout::kRgba8, reference::threeChannel16ToRgba8,
                             pixelsAroundBytes};
    expectEach(trial, filter, shown, threeChannelPictures(trial));
    expectEverywhere(trial, filter, shown);
}

void checkRGBA8ToYCoCg16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterRGBA8ToYCoCg16());
    Pointwise const forward = {Layout::kRgba8, Layout::kThreeChannel16, reference::rgba8ToYCoCg16};
    expectEach(trial, filter, forward, {randomColours(1)});
    expectEverywhere(trial, filter, forward);
    if (!trial.thorough()) return;
    expectEach(trial, filter, forward, pairsOfChannels());
    expectColours(trial, filter, forward);
}

void checkYCoCg16ToRGBA8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterYCoCg16ToRGBA8());
    Pointwise const inverse = {Layout::kThreeChannel16, Layout::kRgba8, reference::yCoCg16ToRgba8, pixelsAroundBytes};
    expectEach(trial, filter, inverse, threeChannelPictures(trial));
    expectEach(trial, filter, inverse, {cancellingCoefficients()});
    expectEverywhere(trial, filter, inverse);
    if (trial.thorough()) expectColours(trial, filter, inverse, {}, reference::rgba8ToYCoCg16);
}

void checkYCoCg16ToRGB16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterYCoCg16ToRGB16());
    Pointwise const inverse = {Layout::kThreeChannel16, Layout::kThreeChannel16, reference::yCoCg16ToRgb16};
    expectEach(trial, filter, inverse, threeChannelPictures(trial));
    expectEverywhere(trial, filter, inverse);
    if (!trial.thorough()) return;
    expectHalvesOfPixels(trial, filter, inverse);
    expectColours(trial, filter, inverse, {}, reference::rgba8ToYCoCg16);
}

struct Truncation {
    size_t bits;
    bool rounding;
};

Pointwise truncating(Truncation const& truncation) {
    return {Layout::kOneChannel16, Layout::kOneChannel16, [=](Texels const& samples) {
                return reference::truncate16(samples, truncation.bits, truncation.rounding);
            }};
}

FilterTruncate16Params paramsOf(Truncation const& truncation) {
    FilterTruncate16Params params;
    params.shift = truncation.bits;
    params.rounding = truncation.rounding;
    return params;
}

// Every value, whose neighbours in a texel share a high byte, and noise, whose neighbours share nothing.
void expectTruncated(Trial& trial, Filter const& filter, Truncation const& truncation) {
    std::vector<Texels> inputs = {reference::packOneChannel16(everySample())};
    if (trial.thorough()) inputs.push_back(randomTexels(61, 47, 3));
    expectEach(trial, filter, truncating(truncation), inputs, paramsOf(truncation));
}

void checkTruncate16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterTruncate16());
    std::vector<size_t> depths = {0, 1, 4, 11, 15, 16};
    if (trial.thorough()) depths.insert(depths.end(), {2, 3, 5, 6, 7, 8, 9, 10, 12, 13, 14});
    // From 17 bits on every sample becomes 0. The count is taken modulo 64: 68 bits are 4.
    if (trial.thorough()) depths.insert(depths.end(), {17, 31, 32, 33, 47, 63, 64, 68, 81});
    for (size_t const bits : depths) {
        for (bool const rounding : {false, true})
            expectTruncated(trial, filter, {bits, rounding});
    }
    std::vector<Truncation> everywhere = {{3, true}};
    if (trial.thorough()) everywhere.insert(everywhere.end(), {{3, false}, {5, true}});
    for (Truncation const& truncation : everywhere)
        expectEverywhere(trial, filter, truncating(truncation), paramsOf(truncation));
}

} // namespace

Checks colourChecks() {
    return {{"Filter1x16ToRGB8", check1x16ToRGB8},         {"Filter3x16To4x8", check3x16To4x8},
            {"FilterRGBA8ToYCoCg16", checkRGBA8ToYCoCg16}, {"FilterYCoCg16ToRGBA8", checkYCoCg16ToRGBA8},
            {"FilterYCoCg16ToRGB16", checkYCoCg16ToRGB16}, {"FilterTruncate16", checkTruncate16}};
}

} // namespace conformance
