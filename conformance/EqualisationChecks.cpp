// The equalisation, which computes tables of its own.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Clahe.h"
#include "renderbackend/FilterParameters.h"

#include <cmath>
#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::Texels;

constexpr int kFewestEqualised = reference::kClaheRegion + 1; // rows or columns

// Pixels left of x0 and above y0 keep their values.
Texels equalised(Texels const& texels, double clip, int x0 = 0, int y0 = 0) {
    int const width = texels.width / 2;
    return reference::packFourChannel16(
        reference::clahe(reference::unpackFourChannel16(texels), width, texels.height, clip, x0, y0), width,
        texels.height);
}

FilterClaheParams clippedAt(double clip) {
    FilterClaheParams params;
    params.value = clip;
    return params;
}

// In targets of 48 and of 64 bits per pixel, which hold the same texels.
void expectEqualised(Trial& trial, Filter const& filter, Texels const& texels, double clip) {
    Texels const expected = equalised(texels, clip);
    for (Layout const layout : {Layout::kFourChannel16, Layout::kThreeChannel16})
        trial.expect(filter, {trial.runner().uploaded(texels, layout)}, expected, layout, clippedAt(clip));
}

// Regions start at the first pixel of the part.
void expectPart(Trial& trial, Filter const& filter, Part const& part) {
    Texels const texels = greySlope(101, 73, 41);
    FilterSource const source = {trial.runner().uploaded(texels, Layout::kFourChannel16), static_cast<size_t>(part.x),
                                 static_cast<size_t>(part.y), false};
    Texels const whole = equalised(reference::cropped(texels, 2 * part.x, part.y, 2 * part.width, part.height), 3.0);
    Texels const kept =
        reference::cropped(whole, 2 * part.clipLeft, part.clipTop, 2 * (part.width - part.clipLeft - part.clipRight),
                           part.height - part.clipTop - part.clipBottom);
    trial.expectWithin(filter, runOf(part, {source}), kept, Layout::kFourChannel16, clippedAt(3.0));
}

// Pixels in the borders are read and counted. A border below the side of a region is equalised as well.
void expectBorders(Trial& trial, Insets const& borders) {
    constexpr int kWidth = 170;
    constexpr int kHeight = 130;
    Texels const texels = greySlope(kWidth, kHeight, 8);
    auto const startAfter = [](size_t border) {
        return border >= reference::kClaheRegion ? reference::kClaheRegion : 0;
    };
    Texels const whole = equalised(texels, 3.0, startAfter(borders.left), startAfter(borders.top));
    auto const left = static_cast<int>(borders.left);
    auto const top = static_cast<int>(borders.top);
    Texels const kept = reference::cropped(whole, 2 * left, top, 2 * (kWidth - left - static_cast<int>(borders.right)),
                                           kHeight - top - static_cast<int>(borders.bottom));
    FilterSource const source = {trial.runner().uploaded(texels, Layout::kFourChannel16), 0, 0, false};
    trial.expectWithin(trial.prepared(description::filterCLAHE(borders)),
                       runOf({0, 0, kWidth, kHeight, 0, 0, 0, 0, 0, 0}, {source}), kept, Layout::kFourChannel16,
                       clippedAt(3.0));
}

void expectManySizes(Trial& trial, Filter const& filter) {
    std::vector<std::pair<int, int>> sizes = {{40, 40},   {41, 41},   {79, 80}, {121, 43},
                                              {150, 161}, {299, 283}, {41, 97}};
    if (trial.full()) sizes.insert(sizes.end(), {{1021, 769}, {1024, 1024}});
    std::uint32_t randomStart = 10;
    for (auto const& [width, height] : sizes) {
        Texels const texels = greySlope(width, height, ++randomStart);
        for (double const clip : {0.5, 1.0, 3.0, 40.0})
            expectEqualised(trial, filter, texels, clip);
    }
    // Pictures with too few pixels in either direction pass through.
    for (auto const& [width, height] : {std::pair{40, 200}, {90, 40}, {1, 1}, {41, 39}})
        expectEqualised(trial, filter, greySlope(width, height, 2), 3.0);
}

void expectThorough(Trial& trial, Filter const& filter) {
    expectManySizes(trial, filter);
    // Rounded to single precision the clip limit is 4.
    expectEqualised(trial, filter, greySlope(80, 60, 5), std::nextafter(4.0, 0.0));
    expectEqualised(trial, filter, randomTexels(2 * 83, 91, 6), 3.0); // samples beyond the grey values
    for (auto const grey : std::vector<std::int16_t>{-7, 0, 100, 255, 1000}) {
        std::vector<std::int16_t> const uniform(size_t{50} * 45 * 4, grey);
        expectEqualised(trial, filter, reference::packFourChannel16(uniform, 50, 45), 1.0);
    }
    for (Insets const& borders : {Insets{40, 0, 0, 0}, {0, 0, 40, 0}, {40, 40, 40, 40}, {80, 5, 47, 9}, {39, 0, 39, 0}})
        expectBorders(trial, borders);
    for (Part const& part : {Part{0, 0, 66, 54, 0, 0, 0, 0, 2, 1},
                             {7, 3, 66, 54, 0, 0, 0, 0, 1, 0},
                             {20, 11, 66, 54, 3, 4, 5, 6, 4, 7},
                             {1, 0, 66, 54, 0, 50, 0, 0, 3, 3}})
        expectPart(trial, filter, part);
    for (int const length : trial.stripLengths()) {
        expectEqualised(trial, filter, greySlope(length / 2, kFewestEqualised, 30), 3.0);
        expectEqualised(trial, filter, greySlope(kFewestEqualised, length, 31), 3.0);
    }
}

void checkCLAHE(Trial& trial) {
    Filter const filter = trial.prepared(description::filterCLAHE());
    expectEqualised(trial, filter, greySlope(121, 43, 4), 3.0);
    expectPart(trial, filter, {7, 5, 83, 61, 3, 0, 0, 2, 9, 3});
    if (trial.thorough()) expectThorough(trial, filter);
}

} // namespace

Checks equalisationChecks() {
    return {{"FilterCLAHE", checkCLAHE}};
}

} // namespace conformance
