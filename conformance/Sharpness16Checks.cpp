// The two passes of the unsharp mask on 16-bit pixels.
#include "conformance/Checks.h"
#include "conformance/Gain.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Sharpness16.h"
#include "renderbackend/FilterParameters.h"

#include <array>
#include <vector>

namespace conformance {

namespace {

using reference::packThreeChannel16;
using reference::Planes3;
using reference::Texels;

constexpr int kReach = 2; // pixels; reach of the taps to each side, along x or along y

Texels packedBoundaries(int width, int height, std::uint32_t randomStart) {
    return packThreeChannel16({boundaryPlane(width, height, randomStart), boundaryPlane(width, height, randomStart + 1),
                               boundaryPlane(width, height, randomStart + 2)});
}

void expectBlur(Trial& trial, Filter const& filter, Texels const& pixels) {
    Texels const whole = reference::sharpnessH16(pixels);
    trial.expect(filter, {trial.runner().uploaded(pixels, Layout::kThreeChannel16)},
                 reference::cropped(whole, 2 * kReach, 0, whole.width - 4 * kReach, whole.height),
                 Layout::kThreeChannel16);
}

void expectBlurredParts(Trial& trial, Filter const& filter, std::vector<Part> const& parts) {
    Texels const pixels = packThreeChannel16(randomPlanes(31, 13, 9, -50, 1100));
    Texels const whole = reference::sharpnessH16(pixels);
    for (Part const& part : parts) {
        FilterSource const source = {trial.runner().uploaded(pixels, Layout::kThreeChannel16),
                                     static_cast<size_t>(part.x), static_cast<size_t>(part.y), false};
        Texels const kept = reference::cropped(whole, 2 * (part.x + kReach + part.clipLeft), part.y + part.clipTop,
                                               2 * (part.width - 2 * kReach - part.clipLeft - part.clipRight),
                                               part.height - part.clipTop - part.clipBottom);
        trial.expectWithin(filter, runOf(part, {source}), kept, Layout::kThreeChannel16);
    }
}

// Without borders: taps beyond the texture read its edge texels.
void expectBlurUpToTheEdges(Trial& trial) {
    Filter const filter = trial.prepared(withoutBorders("FilterSharpnessH16", 1));
    Pointwise const blur = {Layout::kThreeChannel16, Layout::kThreeChannel16, reference::sharpnessH16,
                            [](int width, int height, std::uint32_t randomStart) {
                                return packThreeChannel16(randomPlanes(width / 2, height, randomStart, -50, 1100));
                            }};
    expectEach(trial, filter, blur, {randomTexels(40, 12, 6)});
    for (int const pixels : {1, 2, 3, 7})
        expectEach(trial, filter, blur, {packThreeChannel16(randomPlanes(pixels, 3, 7, 0, 1023))});
    expectStrips(trial, filter, blur);
    expectHalvesOfPixels(trial, filter, blur);
}

void expectThoroughBlur(Trial& trial, Filter const& filter) {
    for (std::uint32_t channel = 0; channel < 3; ++channel)
        expectBlur(trial, filter, packThreeChannel16(everySampleOfChannel(channel, 3 + channel)));
    expectBlur(trial, filter, packThreeChannel16(randomPlanes(60, 33, 5, -200, 1300)));
    expectBlur(trial, filter, packedBoundaries(45, 20, 1));
    expectBlurredParts(trial, filter,
                       {{0, 1, 15, 9, 0, 0, 0, 0, 0, 0},
                        {5, 1, 15, 9, 1, 0, 0, 2, 2, 3},
                        {8, 1, 15, 9, 0, 3, 5, 1, 6, 1},
                        {11, 1, 15, 9, 3, 2, 2, 2, 4, 5}});
    expectBlurUpToTheEdges(trial);
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        expectBlur(trial, filter, packThreeChannel16(randomPlanes(512, 256, 100 + 3 * i, -200, 1300)));
}

void checkSharpnessH16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpnessH16());
    expectBlur(trial, filter, packThreeChannel16(randomPlanes(61, 33, 4, 0, 1023)));
    expectBlur(trial, filter, packThreeChannel16(boundaryTriples()));
    for (int const length : trial.stripLengths()) {
        expectBlur(trial, filter, packThreeChannel16(randomPlanes(length / 2, 2, 10, -50, 1100)));
        expectBlur(trial, filter, packThreeChannel16(randomPlanes(5, length, 11, -50, 1100)));
    }
    expectBlurredParts(trial, filter, {{5, 3, 20, 9, 1, 0, 2, 0, 6, 5}});
    if (trial.thorough()) expectThoroughBlur(trial, filter);
}

constexpr auto paramsOf = recordOf<FilterSharpness16Params>;

// The picture, and a possible output of the first pass.
struct Passes {
    Texels source;
    Texels blurred;
};

// A picture and, as its blur, noise in which every sample of a blur is possible.
Passes noisy(int width, int height, std::uint32_t randomStart, std::int32_t first, std::int32_t last) {
    return {packThreeChannel16(randomPlanes(width, height, randomStart, first, last)),
            randomTexels(2 * width, height, randomStart + 1)};
}

std::vector<size_t> uploaded(TexelRunner& runner, Passes const& passes, Layout layout) {
    return {runner.uploaded(passes.source, layout), runner.uploaded(passes.blurred, layout)};
}

void expectSharp(Trial& trial, Filter const& filter, Passes const& passes, Gain const& gain) {
    Texels const whole = reference::sharpnessV16(passes.source, passes.blurred, gain.gain, gain.shiftBits);
    trial.expect(filter, uploaded(trial.runner(), passes, Layout::kThreeChannel16),
                 reference::cropped(whole, 0, kReach, whole.width, whole.height - 2 * kReach), Layout::kThreeChannel16,
                 paramsOf(gain));
}

// The part starts at its own place in the source, and at this one in the blur.
void expectPart(Trial& trial, Filter const& filter, Passes const& passes, Part const& part,
                std::array<int, 2> const& inBlur, double gain) {
    TexelRunner& runner = trial.runner();
    std::vector<size_t> const targets = uploaded(runner, passes, Layout::kThreeChannel16);
    FilterRun const run =
        runOf(part, {{targets[0], static_cast<size_t>(part.x), static_cast<size_t>(part.y), false},
                     {targets[1], static_cast<size_t>(inBlur[0]), static_cast<size_t>(inBlur[1]), false}});
    Texels const whole = reference::sharpnessV16(
        reference::cropped(passes.source, 2 * part.x, part.y, 2 * part.width, part.height),
        reference::cropped(passes.blurred, 2 * inBlur[0], inBlur[1], 2 * part.width, part.height), gain, 0);
    Texels const kept = reference::cropped(whole, 2 * part.clipLeft, kReach + part.clipTop,
                                           2 * (part.width - part.clipLeft - part.clipRight),
                                           part.height - 2 * kReach - part.clipTop - part.clipBottom);
    trial.expectWithin(filter, run, kept, Layout::kThreeChannel16, paramsOf({gain}));
}

// Source and blur lie at different places of textures of different sizes. A blur close to the source leaves small
// differences, which show the rounding.
void expectPointed(Trial& trial, Filter const& filter) {
    for (double const gain : {1.0, 3.0, -2.0}) {
        expectPart(trial, filter,
                   {packThreeChannel16(randomPlanes(48, 24, 3, 500, 503)),
                    packThreeChannel16(randomPlanes(51, 31, 4, 31980, 32220))},
                   {5, 0, 42, 24, 0, 0, 0, 0, 0, 0}, {2, 3}, gain);
        expectPart(
            trial, filter,
            {packThreeChannel16(randomPlanes(33, 21, 5, -100, 1100)), packThreeChannel16(randomPlanes(40, 26, 6))},
            {5, 0, 27, 21, 0, 0, 0, 0, 0, 0}, {2, 3}, gain);
    }
}

void expectParts(Trial& trial, Filter const& filter) {
    Passes const passes = {packThreeChannel16(randomPlanes(29, 17, 20, -100, 1100)), randomTexels(2 * 25, 19, 21)};
    expectPart(trial, filter, passes, {5, 1, 15, 13, 1, 0, 2, 0, 4, 5}, {3, 4}, 2.0);
    for (Part const& part : {Part{3, 0, 15, 13, 0, 0, 0, 0, 0, 0},
                             {6, 1, 15, 13, 1, 0, 0, 2, 2, 3},
                             {9, 3, 15, 13, 0, 3, 4, 1, 6, 1},
                             {12, 2, 15, 13, 2, 5, 1, 2, 4, 5}})
        expectPart(trial, filter, passes, part, {part.x - 3, part.y}, 2.0);
}

// Without borders: rows beyond the texture read its edge. Then targets of one texel per pixel, whose clip of one is
// half a pixel.
void expectUpToTheEdges(Trial& trial) {
    Filter const filter = trial.prepared(withoutBorders("FilterSharpnessV16", 2));
    auto const expect = [&](Passes const& passes, double gain) {
        trial.expect(filter, uploaded(trial.runner(), passes, Layout::kThreeChannel16),
                     reference::sharpnessV16(passes.source, passes.blurred, gain, 0), Layout::kThreeChannel16,
                     paramsOf({gain}));
    };
    for (int const rows : {1, 2, 3, 6})
        expect(noisy(5, rows, 18, -32768, 32767), 2.0);
    for (int const length : trial.stripLengths())
        expect(noisy(length / 2, 2, 24, -50, 1100), 2.0);
    Passes const passes = noisy(10, 4, 22, 0, 1023);
    std::vector<size_t> const targets = uploaded(trial.runner(), passes, Layout::kRgba8);
    trial.expectWithin(filter,
                       runOf({0, 0, 20, 4, 1, 0, 0, 0, 0, 0}, {{targets[0], 0, 0, false}, {targets[1], 0, 0, false}}),
                       reference::cropped(reference::sharpnessV16(passes.source, passes.blurred, 1.0, 0), 1, 0, 19, 4),
                       Layout::kRgba8, paramsOf({1.0}));
}

void expectGains(Trial& trial, Filter const& filter) {
    Passes const any = noisy(133, 81, 1, -100, 1100);
    for (double const gain : {0.0, 1.0, 2.0, 3.0, 7.0, 15.0, 16.0, 31.0, -1.0, -2.0, -15.0, -31.0})
        expectSharp(trial, filter, any, {gain});
    Passes const near = {packThreeChannel16(randomPlanes(48, 24, 3, 500, 503)),
                         packThreeChannel16(randomPlanes(48, 24, 4, 64 * 500 - 20, 64 * 500 + 220))};
    for (double const gain : {1.0, 2.0, 5.0, -1.0, -4.0})
        expectSharp(trial, filter, near, {gain});
    // The fraction of a gain is dropped: a gain below 1 leaves the source, clamped to ten bits.
    for (double const gain : {1.9, 0.9, -0.9, 0.0})
        expectSharp(trial, filter, noisy(14, 9, 11, -2000, 3000), {gain});
    // Each shift bit halves the gain, rounded down.
    for (std::int32_t const bits : {1, 3, 5, 6, 31}) {
        for (double const gain : {3.0, 20.0, -3.0})
            expectSharp(trial, filter, noisy(20, 12, 13, 0, 1023), {gain, bits});
    }
}

void expectEverySample(Trial& trial, Filter const& filter) {
    for (size_t channel = 0; channel < 3; ++channel) {
        expectSharp(trial, filter, {packThreeChannel16(everySampleOfChannel(channel, 6)), randomTexels(512, 256, 5)},
                    {1.0});
        expectSharp(trial, filter,
                    {packThreeChannel16(randomPlanes(256, 256, 7, 0, 1023)),
                     packThreeChannel16(everySampleOfChannel(channel, 8))},
                    {3.0});
    }
    expectSharp(trial, filter, {packedBoundaries(45, 20, 1), packedBoundaries(45, 20, 4)}, {2.0});
    // Random bytes in the unused places.
    expectSharp(trial, filter, {randomTexels(26, 9, 16), randomTexels(26, 9, 17)}, {1.0});
}

void checkSharpnessV16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpnessV16());
    expectPointed(trial, filter);
    for (int const length : trial.stripLengths()) {
        expectSharp(trial, filter, noisy(length / 2, 5, 12, -50, 1100), {2.0});
        expectSharp(trial, filter, noisy(1, length, 14, -50, 1100), {2.0});
    }
    if (!trial.thorough()) return;
    expectGains(trial, filter);
    expectEverySample(trial, filter);
    expectParts(trial, filter);
    expectUpToTheEdges(trial);
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        expectSharp(trial, filter, noisy(256, 256, 900 + 3 * i, 0, 1023), {static_cast<double>(i) - 15.0});
}

} // namespace

Checks sharpness16Checks() {
    return {{"FilterSharpnessH16", checkSharpnessH16}, {"FilterSharpnessV16", checkSharpnessV16}};
}

} // namespace conformance
