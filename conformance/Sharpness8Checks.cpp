// The unsharp mask on 8-bit pixels.
#include "conformance/Checks.h"
#include "conformance/Gain.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Sharpness8.h"
#include "renderbackend/FilterParameters.h"

#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::Texel;
using reference::Texels;

constexpr int kReach = 2; // texels; reach of the taps to each side

constexpr auto paramsOf = recordOf<FilterSharpness8Params>;

// Differences too small for a clamp to hide a wrong rounding.
Texels gentleSlopes(int width, int height, int range) {
    Texels image = randomTexels(width, height, 2);
    for (auto& byte : image.bytes)
        byte = static_cast<std::uint8_t>(120 + byte % range);
    return image;
}

// Lone pixels, 5 x 5 texels each, on backgrounds of one value: every centre on 16 backgrounds.
Texels lonePixels() {
    Texels image(80, 1280);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            auto const around = static_cast<std::uint8_t>(17 * (x / 5));
            bool const amid = x % 5 == 2 && y % 5 == 2;
            std::uint8_t const value = amid ? static_cast<std::uint8_t>(y / 5) : around;
            image.set(x, y, {value, value, around, value});
        }
    }
    return image;
}

Texels flat(Texel const& texel) {
    Texels texels(9, 7);
    for (int y = 0; y < texels.height; ++y) {
        for (int x = 0; x < texels.width; ++x)
            texels.set(x, y, texel);
    }
    return texels;
}

void expectSharp(Trial& trial, Filter const& filter, Texels const& image, Gain const& gain) {
    Texels const whole = reference::sharpness8(image, gain.gain, gain.shiftBits);
    trial.expect(filter, {trial.runner().uploaded(image, Layout::kRgba8)},
                 reference::cropped(whole, kReach, kReach, image.width - 2 * kReach, image.height - 2 * kReach),
                 Layout::kRgba8, paramsOf(gain));
}

// Borders and clips of a part are left out.
void expectParts(Trial& trial, Filter const& filter, std::vector<Part> const& parts) {
    Gain const gain = {1.25};
    Texels const image = randomTexels(31, 23, 8);
    Texels const whole = reference::sharpness8(image, gain.gain, 0);
    for (Part const& part : parts) {
        FilterSource const source = {trial.runner().uploaded(image, Layout::kRgba8), static_cast<size_t>(part.x),
                                     static_cast<size_t>(part.y), false};
        Texels const kept = reference::cropped(whole, part.x + kReach + part.clipLeft, part.y + kReach + part.clipTop,
                                               part.width - 2 * kReach - part.clipLeft - part.clipRight,
                                               part.height - 2 * kReach - part.clipTop - part.clipBottom);
        trial.expectWithin(filter, runOf(part, {source}), kept, Layout::kRgba8, paramsOf(gain));
    }
}

// Without borders: taps beyond the texture read its edge.
void expectUpToTheEdges(Trial& trial) {
    Filter const filter = trial.prepared(withoutBorders("FilterSharpness8", 1));
    auto const expect = [&](Texels const& image, double gain) {
        trial.expect(filter, {trial.runner().uploaded(image, Layout::kRgba8)}, reference::sharpness8(image, gain, 0),
                     Layout::kRgba8, paramsOf({gain}));
    };
    for (auto const& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 3}, {3, 2}, {17, 13}})
        expect(randomTexels(width, height, 7), 1.5);
    for (double const gain : {0.5, 1.0, 1000.0, 6e7, -6e7}) {
        for (Texel const& texel : {Texel{0, 1, 127, 128}, {254, 255, 3, 77}})
            expect(flat(texel), gain);
    }
    for (double const gain : {1.0 / 32.0, 0.04, 0.031, -1.0 / 32.0, -0.04, -0.031}) // steps of 1/32, towards zero
        expect(randomTexels(23, 19, 5), gain);
    for (int const length : trial.stripLengths())
        expect(randomTexels(length, 3, 9), 1.0);
}

void expectThorough(Trial& trial, Filter const& filter) {
    Texels const noise = randomTexels(253, 137, 1);
    for (double const gain :
         {0.0, 0.04, 0.25, 1.0, 1.7, 3.96875, 7.0, 24.0, 25.3, 700.0, 6e7, -0.04, -0.5, -1.0, -31.0, -6e7})
        expectSharp(trial, filter, noise, {gain});
    for (int steps = -40; steps <= 40; ++steps)
        expectSharp(trial, filter, gentleSlopes(41, 29, 17), {steps / 32.0});
    for (double const gain : {1.0, 0.65})
        expectSharp(trial, filter, lonePixels(), {gain});
    // Each shift bit halves the gain, rounded down.
    for (std::int32_t const bits : {1, 2, 5, 31}) {
        for (double const gain : {1.7, -1.7, 100.0})
            expectSharp(trial, filter, randomTexels(23, 19, 6), {gain, bits});
    }
    expectParts(trial, filter,
                {{0, 0, 20, 14, 0, 0, 0, 0, 1, 1},
                 {3, 5, 20, 14, 1, 0, 0, 2, 0, 3},
                 {8, 2, 20, 14, 0, 3, 5, 1, 7, 0},
                 {11, 9, 20, 14, 4, 5, 2, 2, 2, 5}});
    expectUpToTheEdges(trial);
    for (std::uint32_t i = 0; trial.full() && i < 64; ++i)
        expectSharp(trial, filter, randomTexels(512, 512, 100 + i), {0.125 * i});
}

void checkSharpness8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpness8());
    expectSharp(trial, filter, randomTexels(53, 37, 1), {1.0});
    for (double const gain : {1.25, 79.03125, -2.0})
        expectSharp(trial, filter, gentleSlopes(61, 47, 5), {gain});
    // Five rows or columns give one.
    for (int const length : trial.stripLengths()) {
        expectSharp(trial, filter, randomTexels(length, 5, 3), {1.0});
        expectSharp(trial, filter, randomTexels(5, length, 4), {1.0});
    }
    expectParts(trial, filter, {{5, 3, 20, 14, 1, 0, 0, 2, 7, 5}});
    if (trial.thorough()) expectThorough(trial, filter);
}

} // namespace

Checks sharpness8Checks() {
    return {{"FilterSharpness8", checkSharpness8}};
}

} // namespace conformance
