#include "conformance/Pointwise.h"

#include "conformance/Inputs.h"
#include "reference/Blit.h"

#include <algorithm>

namespace conformance {

namespace {

using reference::Texels;

constexpr std::uint32_t kStripStart = 31;
constexpr std::uint32_t kPartStart = 37;

Texels noiseFor(Pointwise const& pointwise, int width, int height, std::uint32_t randomStart) {
    return pointwise.noise ? pointwise.noise(width, height, randomStart) : randomTexels(width, height, randomStart);
}

void expectStrips(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                  SingleFilterParameters const& params) {
    int const in = texelsOf(pointwise.in, 2);
    int const widest = std::max(in, texelsOf(pointwise.out, 2));
    for (int const length : trial.stripLengths()) {
        expectEach(trial, filter, pointwise,
                   {noiseFor(pointwise, length * in / widest, 1, kStripStart),
                    noiseFor(pointwise, std::max(1, in / 2), length, kStripStart)},
                   params);
    }
}

// Odd places where the layouts allow them: samples that share a texel are moved in pairs, and the two texels of a pixel
// start at an even one.
void expectPart(Trial& trial, Filter const& filter, Pointwise const& pointwise, SingleFilterParameters const& params) {
    constexpr int kY = 3;
    constexpr int kWidth = 22;
    constexpr int kHeight = 9;
    int const x = pointwise.out == Layout::kOneChannel16 ? 10 : 5;
    Texels const input = noiseFor(pointwise, texelsOf(pointwise.in, 40), 17, kPartStart);
    FilterRun run;
    run.sources = {{trial.runner().uploaded(input, pointwise.in), static_cast<std::size_t>(x), kY, false}};
    run.width = kWidth;
    run.height = kHeight;
    run.clipLeft = 2;
    run.clipRight = 4;
    run.clipTop = 1;
    run.clipBottom = 2;
    run.offset = {pointwise.out == Layout::kThreeChannel16 ? std::size_t{6} : 7, 5};
    auto const out = [&](std::size_t pixels) { return texelsOf(pointwise.out, static_cast<int>(pixels)); };
    Texels const kept = reference::cropped(
        pointwise.model(input), out(static_cast<std::size_t>(x) + run.clipLeft), kY + static_cast<int>(run.clipTop),
        out(kWidth - run.clipLeft - run.clipRight), static_cast<int>(kHeight - run.clipTop - run.clipBottom));
    trial.expectWithin(filter, run, kept, pointwise.out, params);
}

} // namespace

void expectEach(Trial& trial, Filter const& filter, Pointwise const& pointwise, std::vector<Texels> const& inputs,
                SingleFilterParameters const& params) {
    for (Texels const& input : inputs)
        trial.expect(filter, {trial.runner().uploaded(input, pointwise.in)}, pointwise.model(input), pointwise.out,
                     params);
}

void expectEverywhere(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                      SingleFilterParameters const& params) {
    expectStrips(trial, filter, pointwise, params);
    expectPart(trial, filter, pointwise, params);
}

} // namespace conformance
