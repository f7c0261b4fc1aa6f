// Tone tables: every code of every depth, and curves with different neighbouring entries.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "conformance/TableFilter.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::packThreeChannel16;
using reference::Planes3;
using reference::Texels;

using AnyKey = ComparableSingleFilterParameters<unsigned char>;

constexpr size_t kShallowest = 9; // bits of a 16-bit sample
constexpr size_t kDeepest = 16;

struct Curve {
    double gamma;
    std::uint64_t black;
    std::uint64_t white;
};

std::uint64_t codesOf(size_t depth) {
    return std::uint64_t{1} << depth;
}

// A ramp over 250 entries from this one on: so steep that neighbours differ.
Curve rampFrom(std::uint64_t black) {
    return {1.0, black, black + 250};
}

// Every code in every channel, ascending and descending, with other values in the other channels.
Texels everyCode() {
    constexpr int kCodes = 256;
    Texels image(kCodes, 4);
    for (int code = 0; code < kCodes; ++code) {
        auto const up = static_cast<std::uint8_t>(code);
        auto const down = static_cast<std::uint8_t>(kCodes - 1 - code);
        image.set(code, 0, {up, down, up, down});
        image.set(code, 1, {down, up, down, up});
        image.set(code, 2, {up, down, static_cast<std::uint8_t>(code / 2), down});
        image.set(code, 3, {down, up, up, 7});
    }
    return image;
}

Pointwise through8(reference::ByteTable const& table) {
    return {Layout::kRgba8, Layout::kRgba8, [=](Texels const& image) { return reference::tableLookup8(image, table); }};
}

// Noise of samples within the table's range, and some outside.
Pointwise through16(reference::ByteTable const& table, size_t depth) {
    auto const last = static_cast<std::int32_t>(std::min<std::uint64_t>(codesOf(depth), 32768U)) - 1;
    return {Layout::kThreeChannel16, Layout::kRgba8,
            [=](Texels const& texels) { return reference::tableLookup16(texels, table); },
            [=](int width, int height, std::uint32_t randomStart) {
                return packThreeChannel16(randomPlanes(width / 2, height, randomStart, -100, last));
            }};
}

reference::ByteTable srgbTable(size_t depth) {
    return reference::srgbTable(static_cast<unsigned>(depth));
}

void checkLinear8ToSRGB8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterLinear8ToSRGB8());
    Pointwise const lookup = through8(srgbTable(8));
    expectEach(trial, filter, lookup, {everyCode()}, AnyKey());
    expectEverywhere(trial, filter, lookup, AnyKey());
    if (!trial.thorough()) return;
    expectEach(trial, filter, lookup, {randomColours(5), colours(5), randomTexels(37, 23, 6)}, AnyKey());
    // The record's key has no effect.
    for (auto const key : std::vector<unsigned char>{0, 8, 12, 200})
        expectEach(trial, filter, lookup, {randomTexels(32, 8, 4)}, AnyKey(key));
    // Tables with fewer entries are indexed by the top bits of each byte.
    for (size_t depth = 1; depth < 8; ++depth)
        expectEach(trial, trial.prepared(tableFilter("FilterLinear8ToSRGB8", depth)), through8(srgbTable(depth)),
                   {colours(9)}, AnyKey());
}

void checkLinear16ToSRGB8(Trial& trial) {
    constexpr size_t kUsual = 12;
    Filter const usual = trial.prepared(description::filterLinear16ToSRGB8(kUsual));
    expectEach(trial, usual, through16(srgbTable(kUsual), kUsual),
               {packThreeChannel16(randomPlanes(96, 64, 5, -100, (1 << kUsual) + 100))}, AnyKey());
    expectEverywhere(trial, usual, through16(srgbTable(kUsual), kUsual), AnyKey());
    if (!trial.thorough()) return;
    for (size_t depth = kShallowest; depth <= kDeepest; ++depth) {
        Filter const filter = trial.prepared(description::filterLinear16ToSRGB8(depth));
        Pointwise const lookup = through16(srgbTable(depth), depth);
        expectEach(trial, filter, lookup, {packThreeChannel16(everySampleThrice())}, AnyKey());
        if (depth == kDeepest) expectEverywhere(trial, filter, lookup, AnyKey());
    }
}

FilterLinear16TosRGB8Params recordOf(Curve const& curve) {
    return FilterLinear16TosRGB8Params(curve.gamma, curve.black, curve.white);
}

reference::ByteTable tableOf(size_t depth, Curve const& curve) {
    return reference::gammaTable(static_cast<unsigned>(depth), curve.gamma, curve.black, curve.white);
}

// A filter of this name at one depth.
struct Deep {
    Filter filter;
    size_t depth;
};

Deep deep(Trial& trial, size_t depth) {
    return {trial.prepared(description::filterLinear16TosRGB8(depth)), depth};
}

void expectCurve(Trial& trial, Deep const& deep, Texels const& texels, Curve const& curve) {
    expectEach(trial, deep.filter, through16(tableOf(deep.depth, curve), deep.depth), {texels}, recordOf(curve));
}

// A table with different neighbours: codes around and beyond its end in one channel, any sample in another.
void expectSteepRamp(Trial& trial, size_t depth) {
    std::uint64_t const black = codesOf(depth) / 4 - 60;
    auto const last = static_cast<std::int32_t>(black) + 300;
    Planes3 pixels = randomPlanes(96, 64, 3, last - 400, last);
    pixels[0] = randomPlane(96, 64, 4, -32768, 32767);
    expectCurve(trial, deep(trial, depth), packThreeChannel16(pixels), rampFrom(black));
}

// Depths of 8 bits and less have stages of their own.
void expectShallow(Trial& trial, size_t depth, Texels const& image, Curve const& curve) {
    expectEach(trial, trial.prepared(tableFilter("FilterLinear16TosRGB8", depth)), through8(tableOf(depth, curve)),
               {image}, recordOf(curve));
}

void expectShallowDepths(Trial& trial) {
    for (Curve const& curve : {Curve{1.0, 0, 255}, {2.2, 0, 255}, {0.5, 20, 200}, {2.4, 30, 10}})
        expectShallow(trial, 8, colours(77), curve);
    for (size_t depth = 1; depth < 8; ++depth)
        expectShallow(trial, depth, colours(78), {1.0, 0, codesOf(depth) - 1});
}

// Ramps around each place where rows of the table meet or halves of the range end.
std::vector<Curve> rampsThroughTheTable(size_t depth) {
    std::uint64_t const last = std::min<std::uint64_t>(codesOf(depth) - 1, 32767);
    std::vector<Curve> curves;
    for (std::uint64_t const middle : {last / 2, last - last / 5, last - 127})
        curves.push_back(rampFrom(middle - 125));
    return curves;
}

void expectEveryDepth(Trial& trial) {
    Texels const texels = packThreeChannel16(everySampleThrice());
    for (size_t depth = kShallowest; depth <= kDeepest; ++depth) {
        Deep const table = deep(trial, depth);
        std::uint64_t const codes = codesOf(depth);
        std::vector<Curve> curves = {{2.2, 0, codes - 1}, rampFrom(codes / 4 - 60)};
        if (depth > 10) {
            std::vector<Curve> const more = rampsThroughTheTable(depth);
            curves.insert(curves.end(), more.begin(), more.end());
        }
        // Together they distinguish all entries.
        std::uint64_t const ramps = trial.full() ? codes / 250 : 1;
        for (std::uint64_t i = 0; i < ramps; ++i)
            curves.push_back(rampFrom(250 * i + 100));
        for (Curve const& curve : curves)
            expectCurve(trial, table, texels, curve);
    }
}

void expectCurvesOfEveryKind(Trial& trial) {
    Texels const texels = packThreeChannel16(randomPlanes(128, 128, 1, -500, 5000));
    Deep const table = deep(trial, 12);
    for (Curve const& curve : {Curve{0.45, 0, 4095},
                               {1.0, 0, 4095},
                               {1.02, 10, 4000},
                               {1.055, 0, 4095},
                               {2.4, 5, 4095},
                               {2.4, 12, 4095},
                               {2.4, 1000, 3000},
                               {2.2, 3000, 1000},
                               {2.2, 0, 0},
                               {1.8, 70000, 70000},
                               {5.0, 1, 90000}})
        expectCurve(trial, table, texels, curve);
    expectCurve(trial, deep(trial, 10), packThreeChannel16(boundaryTriples()), {1.0, 0, 1023});
    expectCurve(trial, deep(trial, 16), packThreeChannel16(boundaryTriples()), {0.3, 0, 65535});
}

void expectCurveEverywhere(Trial& trial, size_t depth, Curve const& curve) {
    expectEverywhere(trial, deep(trial, depth).filter, through16(tableOf(depth, curve), depth), recordOf(curve));
}

void checkLinear16TosRGB8(Trial& trial) {
    for (size_t const depth : {10U, 12U, 16U})
        expectSteepRamp(trial, depth);
    for (size_t const depth : {8U, 3U})
        expectShallow(trial, depth, everyCode(), {1.0, 0, codesOf(depth) - 1});
    expectCurveEverywhere(trial, 12, {1.0, 100, 4000});
    if (!trial.thorough()) return;
    expectCurveEverywhere(trial, 16, {2.2, 0, 65535});
    expectCurveEverywhere(trial, 10, {2.2, 5, 1000});
    expectEveryDepth(trial);
    expectCurvesOfEveryKind(trial);
    expectShallowDepths(trial);
}

void checkBlackWhiteGamma8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterBlackWhiteGamma8());
    auto const through = [](Curve const& curve) {
        return through8(reference::blackWhiteGamma8Table(curve.gamma, curve.black, curve.white));
    };
    auto const keyOf = [](Curve const& curve) {
        return FilterBlackWhiteGamma8Params(curve.gamma, curve.black, curve.white);
    };
    Curve const usual = {2.2, 40, 3300};
    expectEach(trial, filter, through(usual), {everyCode()}, keyOf(usual));
    expectEverywhere(trial, filter, through(usual), keyOf(usual));
    if (!trial.thorough()) return;
    expectEach(trial, filter, through(usual), {randomColours(2)}, keyOf(usual));
    for (double const gamma : {0.45, 1.0, 1.02, 1.055, 1.8, 2.2, 2.4, 4.0}) {
        for (auto const& [black, white] : {std::pair{0, 3500}, {0, 4095}, {300, 2000}, {900, 100}}) {
            Curve const curve{gamma, static_cast<std::uint64_t>(black), static_cast<std::uint64_t>(white)};
            expectEach(trial, filter, through(curve), {everyCode(), randomTexels(61, 47, 2)}, keyOf(curve));
        }
    }
}

} // namespace

Checks toneChecks() {
    return {{"FilterLinear8ToSRGB8", checkLinear8ToSRGB8},
            {"FilterLinear16ToSRGB8", checkLinear16ToSRGB8},
            {"FilterLinear16TosRGB8", checkLinear16TosRGB8},
            {"FilterBlackWhiteGamma8", checkBlackWhiteGamma8}};
}

} // namespace conformance
