// Tables, and the equalisation that makes its own.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Clahe.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <utility>

namespace conformance {

namespace {

using reference::packThreeChannel16;
using reference::Texels;

using AnyKey = ComparableSingleFilterParameters<unsigned char>;

constexpr std::size_t kShallowest = 9;
constexpr std::size_t kDeepest = 16;

struct Curve {
    double gamma;
    std::uint64_t black;
    std::uint64_t white;
};

// Every code in every channel, up and down, with other values beside it.
Texels everyCode() {
    constexpr int kCodes = 256;
    Texels image(kCodes, 2);
    for (int code = 0; code < kCodes; ++code) {
        auto const up = static_cast<std::uint8_t>(code);
        auto const down = static_cast<std::uint8_t>(kCodes - 1 - code);
        image.set(code, 0, {up, down, up, down});
        image.set(code, 1, {down, up, down, up});
    }
    return image;
}

Pointwise through8(reference::ByteTable const& table) {
    return {Layout::kRgba8, Layout::kRgba8, [=](Texels const& image) { return reference::tableLookup8(image, table); }};
}

// Noise of samples that lie in the table, and some beside it.
Pointwise through16(reference::ByteTable const& table, std::size_t depth) {
    auto const last = static_cast<std::int32_t>(std::min(1U << depth, 32768U)) - 1;
    return {Layout::kThreeChannel16, Layout::kRgba8,
            [=](Texels const& texels) { return reference::tableLookup16(texels, table); },
            [=](int width, int height, std::uint32_t randomStart) {
                return packThreeChannel16(randomPlanes(width / 2, height, randomStart, -100, last));
            }};
}

constexpr int kFewestEqualised = 41; // rows or columns

Texels equalised(Texels const& texels, double clip) {
    int const width = texels.width / 2;
    return reference::packFourChannel16(
        reference::clahe(reference::unpackFourChannel16(texels), width, texels.height, clip, 0, 0), width,
        texels.height);
}

FilterClaheParams clippedAt(double clip) {
    FilterClaheParams params;
    params.value = clip;
    return params;
}

void expectEqualised(Trial& trial, Filter const& filter, Texels const& texels, double clip) {
    trial.expect(filter, {trial.runner().uploaded(texels, Layout::kFourChannel16)}, equalised(texels, clip),
                 Layout::kFourChannel16, clippedAt(clip));
}

// Regions count from the first pixel of the part.
void expectEqualisedPart(Trial& trial, Filter const& filter) {
    constexpr int kWidth = 83;
    constexpr int kHeight = 61;
    constexpr int kX = 7;
    constexpr int kY = 5;
    Texels const texels = greySlope(101, 73, 41);
    FilterRun run;
    run.sources = {{trial.runner().uploaded(texels, Layout::kFourChannel16), kX, kY, false}};
    run.width = kWidth;
    run.height = kHeight;
    run.clipLeft = 3;
    run.clipBottom = 2;
    run.offset = {9, 3};
    Texels const part = equalised(reference::cropped(texels, 2 * kX, kY, 2 * kWidth, kHeight), 3.0);
    trial.expectWithin(filter, run, reference::cropped(part, 2 * 3, 0, 2 * (kWidth - 3), kHeight - 2),
                       Layout::kFourChannel16, clippedAt(3.0));
}

} // namespace

void checkLinear8ToSRGB8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterLinear8ToSRGB8());
    Pointwise const lookup = through8(reference::srgbTable(8));
    expectEach(trial, filter, lookup, {everyCode(), randomColours(5), randomTexels(37, 23, 6)}, AnyKey());
    expectEverywhere(trial, filter, lookup, AnyKey());
}

void checkLinear16ToSRGB8(Trial& trial) {
    for (std::size_t depth = kShallowest; depth <= kDeepest; ++depth) {
        Filter const filter = trial.prepared(description::filterLinear16ToSRGB8(depth));
        Pointwise const lookup = through16(reference::srgbTable(static_cast<unsigned>(depth)), depth);
        expectEach(trial, filter, lookup, {packThreeChannel16(everySampleThrice())}, AnyKey());
        if (depth == kDeepest) expectEverywhere(trial, filter, lookup, AnyKey());
    }
}

void checkLinear16TosRGB8(Trial& trial) {
    Texels const texels = packThreeChannel16(everySampleThrice());
    for (std::size_t depth = kShallowest; depth <= kDeepest; ++depth) {
        Filter const filter = trial.prepared(description::filterLinear16TosRGB8(depth));
        auto const through = [&](Curve const& curve) {
            return through16(reference::gammaTable(static_cast<unsigned>(depth), curve.gamma, curve.black, curve.white),
                             depth);
        };
        std::uint64_t const codes = std::uint64_t{1} << depth;
        Curve const whole = {2.2, 0, codes - 1};
        std::vector<Curve> curves = {whole};
        // Steep ramps tell neighbouring entries apart: one, or the whole range of codes.
        std::uint64_t const ramps = trial.full() ? codes / 250 : 1;
        for (std::uint64_t i = 0; i < ramps; ++i)
            curves.push_back({1.0, 250 * i + 100, 250 * i + 350});
        for (Curve const& curve : curves)
            expectEach(trial, filter, through(curve), {texels},
                       FilterLinear16TosRGB8Params(curve.gamma, curve.black, curve.white));
        if (depth == kDeepest)
            expectEverywhere(trial, filter, through(whole),
                             FilterLinear16TosRGB8Params(whole.gamma, whole.black, whole.white));
    }
}

void checkBlackWhiteGamma8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterBlackWhiteGamma8());
    auto const through = [](Curve const& curve) {
        return through8(reference::blackWhiteGamma8Table(curve.gamma, curve.black, curve.white));
    };
    for (double const gamma : {0.45, 1.0, 1.02, 1.055, 1.8, 2.2, 2.4, 4.0}) {
        for (auto const& [black, white] : {std::pair{0, 3500}, {0, 4095}, {300, 2000}, {900, 100}}) {
            Curve const curve{gamma, static_cast<std::uint64_t>(black), static_cast<std::uint64_t>(white)};
            expectEach(trial, filter, through(curve), {everyCode(), randomTexels(61, 47, 2)},
                       FilterBlackWhiteGamma8Params(curve.gamma, curve.black, curve.white));
        }
    }
    Curve const usual = {2.2, 40, 3300};
    expectEverywhere(trial, filter, through(usual),
                     FilterBlackWhiteGamma8Params(usual.gamma, usual.black, usual.white));
}

void checkCLAHE(Trial& trial) {
    Filter const filter = trial.prepared(description::filterCLAHE());
    std::vector<std::pair<int, int>> sizes = {{40, 40}, {41, 41}, {79, 80}, {121, 43}, {150, 161}, {299, 283}};
    if (trial.full()) sizes.insert(sizes.end(), {{1021, 769}, {1024, 1024}});
    std::uint32_t randomStart = 10;
    for (auto const& [width, height] : sizes) {
        Texels const texels = greySlope(width, height, ++randomStart);
        for (double const clip : {0.5, 1.0, 3.0, 40.0})
            expectEqualised(trial, filter, texels, clip);
    }
    for (int const length : trial.stripLengths()) {
        expectEqualised(trial, filter, greySlope(length / 2, kFewestEqualised, 30), 3.0);
        expectEqualised(trial, filter, greySlope(kFewestEqualised, length, 31), 3.0);
    }
    expectEqualisedPart(trial, filter);
}

} // namespace conformance
