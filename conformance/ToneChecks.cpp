// Tables, and the equalisation that makes its own.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "host/FilterDescriptions.h"
#include "reference/Clahe.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"

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

} // namespace

void checkLinear8ToSRGB8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterLinear8ToSRGB8());
    for (Texels const& image : {everyCode(), randomColours(5), randomTexels(37, 23, 6)})
        trial.expect(filter, {trial.runner().uploaded(image, Layout::kRgba8)},
                     reference::tableLookup8(image, reference::srgbTable(8)), Layout::kRgba8, AnyKey());
}

void checkLinear16ToSRGB8(Trial& trial) {
    Texels const texels = packThreeChannel16(everySampleThrice());
    for (std::size_t depth = kShallowest; depth <= kDeepest; ++depth)
        trial.expect(trial.prepared(description::filterLinear16ToSRGB8(depth)),
                     {trial.runner().uploaded(texels, Layout::kThreeChannel16)},
                     reference::tableLookup16(texels, reference::srgbTable(static_cast<unsigned>(depth))),
                     Layout::kRgba8, AnyKey());
}

void checkLinear16TosRGB8(Trial& trial) {
    Texels const texels = packThreeChannel16(everySampleThrice());
    for (std::size_t depth = kShallowest; depth <= kDeepest; ++depth) {
        Filter const filter = trial.prepared(description::filterLinear16TosRGB8(depth));
        std::uint64_t const codes = std::uint64_t{1} << depth;
        std::vector<Curve> curves = {{2.2, 0, codes - 1}};
        // Steep ramps tell neighbouring entries apart: one, or the whole range of codes.
        std::uint64_t const ramps = trial.full() ? codes / 250 : 1;
        for (std::uint64_t i = 0; i < ramps; ++i)
            curves.push_back({1.0, 250 * i + 100, 250 * i + 350});
        for (Curve const& curve : curves)
            trial.expect(filter, {trial.runner().uploaded(texels, Layout::kThreeChannel16)},
                         reference::tableLookup16(texels, reference::gammaTable(static_cast<unsigned>(depth),
                                                                                curve.gamma, curve.black, curve.white)),
                         Layout::kRgba8, FilterLinear16TosRGB8Params(curve.gamma, curve.black, curve.white));
    }
}

void checkBlackWhiteGamma8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterBlackWhiteGamma8());
    for (double const gamma : {0.45, 1.0, 1.02, 1.055, 1.8, 2.2, 2.4, 4.0}) {
        for (auto const& [black, white] : {std::pair{0, 3500}, {0, 4095}, {300, 2000}, {900, 100}}) {
            Curve const curve{gamma, static_cast<std::uint64_t>(black), static_cast<std::uint64_t>(white)};
            for (Texels const& image : {everyCode(), randomTexels(61, 47, 2)})
                trial.expect(filter, {trial.runner().uploaded(image, Layout::kRgba8)},
                             reference::tableLookup8(
                                 image, reference::blackWhiteGamma8Table(curve.gamma, curve.black, curve.white)),
                             Layout::kRgba8, FilterBlackWhiteGamma8Params(curve.gamma, curve.black, curve.white));
        }
    }
}

void checkCLAHE(Trial& trial) {
    Filter const filter = trial.prepared(description::filterCLAHE());
    std::vector<std::pair<int, int>> sizes = {{40, 40}, {41, 41}, {79, 80}, {121, 43}, {150, 161}, {299, 283}};
    if (trial.full()) sizes.insert(sizes.end(), {{1021, 769}, {1024, 1024}});
    std::uint32_t randomStart = 10;
    for (auto const& [width, height] : sizes) {
        Texels const texels = greySlope(width, height, ++randomStart);
        for (double const clip : {0.5, 1.0, 3.0, 40.0}) {
            FilterClaheParams params;
            params.value = clip;
            auto const equalised = reference::clahe(reference::unpackFourChannel16(texels), width, height, clip, 0, 0);
            trial.expect(filter, {trial.runner().uploaded(texels, Layout::kFourChannel16)},
                         reference::packFourChannel16(equalised, width, height), Layout::kFourChannel16, params);
        }
    }
}

} // namespace conformance
