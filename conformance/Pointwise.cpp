#include "conformance/Pointwise.h"

#include "conformance/Inputs.h"
#include "reference/Blit.h"

#include <algorithm>
#include <utility>

namespace conformance {

namespace {

using reference::Texels;

constexpr std::uint32_t kStripStart = 31;
constexpr std::uint32_t kPartStart = 37;
constexpr std::uint32_t kRandomParts = 4;
constexpr int kStripRows = 2;
constexpr int kPictureWidth = 40; // pixels, of the picture that parts are cut from
constexpr int kPictureHeight = 17;

// A sharp trial runs the first of each list.
using Parts = std::vector<Part>;

// Any odd place, but with equal parities of columns: 16-bit samples share a texel with their neighbours.
Parts partsOfBytes() {
    return {{5, 3, 22, 9, 2, 4, 1, 2, 7, 5},   {0, 2, 13, 6, 0, 0, 0, 0, 0, 0},  {7, 2, 13, 6, 0, 0, 0, 0, 1, 1},
            {3, 2, 13, 6, 0, 0, 0, 0, 5, 0},   {4, 2, 13, 6, 0, 0, 0, 0, 6, 3},  {0, 2, 13, 6, 1, 0, 0, 0, 0, 0},
            {5, 2, 13, 6, 3, 2, 1, 1, 3, 2},   {4, 2, 13, 6, 2, 5, 0, 3, 2, 1},  {4, 2, 11, 6, 3, 2, 1, 1, 6, 3},
            {5, 2, 11, 6, 1, 0, 0, 3, 5, 2},   {5, 2, 15, 13, 1, 0, 0, 2, 3, 0}, {12, 10, 1, 1, 0, 0, 0, 0, 6, 5},
            {14, 2, 15, 13, 4, 3, 5, 1, 2, 5}, {0, 10, 13, 1, 0, 0, 0, 0, 4, 0}, {7, 0, 1, 11, 0, 0, 0, 0, 1, 8}};
}

// Pixels with texels of their own need no equal parities.
Parts partsAtOtherParities() {
    return {{0, 2, 15, 13, 0, 0, 0, 0, 1, 1}, {0, 2, 15, 13, 0, 0, 0, 0, 1, 0},  {5, 2, 15, 13, 1, 0, 0, 2, 2, 3},
            {0, 10, 13, 1, 0, 0, 0, 0, 3, 0}, {12, 2, 15, 13, 4, 3, 5, 1, 5, 1}, {7, 0, 1, 11, 0, 0, 0, 0, 0, 8},
            {3, 3, 6, 7, 0, 0, 0, 0, 14, 10}, {2, 1, 10, 9, 1, 2, 3, 4, 1, 2},   {2, 1, 10, 9, 1, 0, 0, 0, 1, 2},
            {2, 1, 10, 9, 0, 2, 0, 0, 1, 2},  {2, 1, 10, 9, 0, 0, 3, 0, 1, 2},   {2, 1, 10, 9, 0, 0, 0, 4, 1, 2}};
}

// The two texels of a pixel start at an even one.
Parts partsOfWholePixels() {
    return {{5, 3, 22, 9, 2, 4, 1, 2, 6, 5},  {0, 2, 11, 6, 0, 0, 0, 0, 0, 0},   {7, 2, 11, 6, 0, 0, 0, 0, 2, 1},
            {4, 2, 11, 6, 3, 2, 1, 1, 6, 3},  {5, 2, 11, 6, 1, 0, 0, 3, 4, 2},   {0, 2, 15, 13, 0, 0, 0, 0, 0, 0},
            {5, 2, 15, 13, 1, 0, 0, 2, 2, 3}, {12, 2, 15, 13, 4, 3, 5, 1, 6, 1}, {12, 10, 1, 1, 0, 0, 0, 0, 6, 5},
            {0, 10, 13, 1, 0, 0, 0, 0, 4, 0}, {7, 0, 1, 11, 0, 0, 0, 0, 0, 8}};
}

// The two samples of a texel are moved together, to any texel.
Parts partsOfPairs() {
    return {{10, 3, 22, 9, 2, 4, 1, 2, 7, 5}, {0, 2, 14, 6, 0, 0, 0, 0, 1, 1},  {6, 2, 14, 6, 0, 0, 0, 0, 3, 0},
            {2, 2, 14, 6, 2, 4, 1, 2, 0, 3},  {10, 2, 14, 6, 6, 0, 0, 1, 5, 2}, {12, 10, 2, 1, 0, 0, 0, 0, 6, 5},
            {0, 10, 14, 1, 0, 0, 0, 0, 3, 0}, {8, 0, 2, 11, 0, 0, 0, 0, 0, 8}};
}

Parts partsFor(Pointwise const& pointwise) {
    if (pointwise.out == Layout::kOneChannel16) return partsOfPairs();
    if (pointwise.out == Layout::kThreeChannel16 || pointwise.out == Layout::kFourChannel16)
        return partsOfWholePixels();
    Parts all = partsOfBytes();
    if (pointwise.in == Layout::kOneChannel16) return all;
    Parts const others = partsAtOtherParities();
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

} // namespace

Texels noiseFor(Pointwise const& pointwise, int width, int height, std::uint32_t randomStart) {
    return pointwise.noise ? pointwise.noise(width, height, randomStart) : randomTexels(width, height, randomStart);
}

Filter withoutBorders(std::string const& name, size_t inputs) {
    return {name, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, inputs, RenderBackend::NEAREST};
}

FilterRun runOf(Part const& part, std::vector<FilterSource> sources) {
    FilterRun run;
    run.sources = std::move(sources);
    run.input.width = static_cast<size_t>(part.width);
    run.input.height = static_cast<size_t>(part.height);
    run.clip = {static_cast<size_t>(part.clipLeft), static_cast<size_t>(part.clipRight),
                static_cast<size_t>(part.clipTop), static_cast<size_t>(part.clipBottom)};
    run.offset = {part.toX, part.toY};
    return run;
}

void expectEach(Trial& trial, Filter const& filter, Pointwise const& pointwise, std::vector<Texels> const& inputs,
                SingleFilterParameters const& params) {
    if (trial.visitor()) return;
    for (Texels const& input : inputs)
        trial.expect(filter, {trial.runner().uploaded(input, pointwise.in)}, pointwise.model(input), pointwise.out,
                     params);
}

void expectParts(Trial& trial, Filter const& filter, Pointwise const& pointwise, Texels const& input,
                 std::vector<Part> const& parts, SingleFilterParameters const& params) {
    if (trial.visitor()) return;
    Texels const whole = pointwise.model(input);
    auto const out = [&](int pixels) { return texelsOf(pointwise.out, pixels); };
    for (Part const& part : parts) {
        size_t const source = trial.runner().uploaded(input, pointwise.in);
        Texels const kept = reference::cropped(whole, out(part.x + part.clipLeft), part.y + part.clipTop,
                                               out(part.width - part.clipLeft - part.clipRight),
                                               part.height - part.clipTop - part.clipBottom);
        FilterSource const from = {source, static_cast<size_t>(part.x), static_cast<size_t>(part.y), false};
        trial.expectWithin(filter, runOf(part, {from}), kept, pointwise.out, params);
    }
}

void expectStrips(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                  SingleFilterParameters const& params) {
    int const in = texelsOf(pointwise.in, 2);
    int const widest = std::max(in, texelsOf(pointwise.out, 2));
    for (int const length : trial.stripLengths()) {
        expectEach(trial, filter, pointwise,
                   {noiseFor(pointwise, length * in / widest, kStripRows, kStripStart),
                    noiseFor(pointwise, std::max(1, in / 2), length, kStripStart)},
                   params);
    }
}

void expectEverywhere(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                      SingleFilterParameters const& params) {
    if (trial.visitor()) return trial.visitor()(filter, pointwise, params);
    expectStrips(trial, filter, pointwise, params);
    std::vector<Part> parts = partsFor(pointwise);
    if (!trial.thorough()) parts.resize(1);
    expectParts(trial, filter, pointwise,
                noiseFor(pointwise, texelsOf(pointwise.in, kPictureWidth), kPictureHeight, kPartStart), parts, params);
}

void expectColours(Trial& trial, Filter const& filter, Pointwise const& pointwise, SingleFilterParameters const& params,
                   std::function<Texels(Texels const&)> const& before) {
    std::uint32_t const parts = trial.full() ? kColourParts : kRandomParts;
    for (std::uint32_t part = 0; part < parts; ++part) {
        Texels const picture = trial.full() ? colours(part) : randomColours(part);
        expectEach(trial, filter, pointwise, {before ? before(picture) : picture}, params);
    }
}

void expectHalvesOfPixels(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                          SingleFilterParameters const& params) {
    Pointwise const texelwise = {Layout::kRgba8, Layout::kRgba8, pointwise.model};
    expectParts(trial, filter, texelwise, noiseFor(pointwise, 18, 5, kPartStart),
                {{0, 0, 18, 5, 1, 0, 0, 0, 0, 0}, {0, 0, 18, 5, 3, 2, 1, 0, 2, 1}}, params);
}

} // namespace conformance
