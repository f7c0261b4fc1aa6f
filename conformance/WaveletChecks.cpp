// The inverse 5/3 steps and what leads from their planes to pixels.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Interleave16.h"
#include "reference/LeGall53Plane.h"

#include <array>

namespace conformance {

namespace {

using reference::packOneChannel16;
using reference::Plane;
using reference::Texels;

using InverseStep = Plane (*)(Plane const& low, Plane const& high);

struct BandPair {
    Plane low;
    Plane high;
};

// Every low and every high sample, sums that leave 16 bits, coefficients of 8-bit pictures at an odd number of rows.
std::vector<BandPair> bandPairs(bool full) {
    std::vector<BandPair> pairs = {{everySample(), randomPlane(256, 256, 3, -600, 600)},
                                   {randomPlane(256, 256, 4, -600, 600), everySample()},
                                   {boundaryPlane(64, 31, 7), boundaryPlane(64, 31, 8)},
                                   {randomPlane(64, 31, 5), randomPlane(64, 31, 6)},
                                   {randomPlane(2048, 9, 9, -255, 255), randomPlane(2048, 9, 10, -510, 510)}};
    for (std::uint32_t i = 0; full && i < 32; ++i)
        pairs.push_back({randomPlane(512, 512, 100 + i), randomPlane(512, 512, 200 + i, -2048, 2047)});
    return pairs;
}

// A part of two bands, as samples; the clips are of the output.
struct Part {
    int x;
    int y;
    int clipLeft;
    int clipTop;
    std::array<std::size_t, 2> offset;
};

void checkPart(Trial& trial, Filter const& filter, InverseStep inverse, Part const& part) {
    constexpr int kWidth = 14;
    constexpr int kHeight = 8;
    Plane const low = randomPlane(24, 12, 1);
    Plane const high = randomPlane(24, 12, 2);
    Plane const whole =
        inverse(cropped(low, part.x, part.y, kWidth, kHeight), cropped(high, part.x, part.y, kWidth, kHeight));
    FilterRunner& runner = trial.runner();
    FilterRun run;
    auto const x = static_cast<std::size_t>(part.x);
    auto const y = static_cast<std::size_t>(part.y);
    run.sources = {{runner.uploaded(low), x, y, false}, {runner.uploaded(high), x, y, false}};
    run.width = kWidth;
    run.height = kHeight;
    run.clipLeft = static_cast<std::size_t>(part.clipLeft);
    run.clipTop = static_cast<std::size_t>(part.clipTop);
    run.offset = part.offset;
    Plane const kept =
        cropped(whole, part.clipLeft, part.clipTop, whole.width - part.clipLeft, whole.height - part.clipTop);
    trial.expectWithin(filter, run, packOneChannel16(kept), Layout::kOneChannel16);
}

// Bands of noise of one size, in samples.
BandPair noisyBands(int width, int height) {
    return {randomPlane(width, height, 13), randomPlane(width, height, 14, -600, 600)};
}

void expectInverse(Trial& trial, Filter const& filter, InverseStep inverse, BandPair const& bands) {
    trial.expect(filter, {trial.runner().uploaded(bands.low), trial.runner().uploaded(bands.high)},
                 packOneChannel16(inverse(bands.low, bands.high)), Layout::kOneChannel16);
}

void checkInverseStep(Trial& trial, Filter const& filter, InverseStep inverse) {
    for (BandPair const& bands : bandPairs(trial.full()))
        expectInverse(trial, filter, inverse, bands);
}

std::array<Texels, 3> noisyPlanes(int widthTexels, int height) {
    return {randomTexels(widthTexels, height, 15), randomTexels(widthTexels, height, 16),
            randomTexels(widthTexels, height, 17)};
}

std::vector<std::size_t> uploadedPlanes(FilterRunner& runner, std::array<Texels, 3> const& planes) {
    return {runner.uploaded(planes[0], Layout::kOneChannel16), runner.uploaded(planes[1], Layout::kOneChannel16),
            runner.uploaded(planes[2], Layout::kOneChannel16)};
}

void expectInterleaved(Trial& trial, Filter const& filter, std::array<Texels, 3> const& planes) {
    trial.expect(filter, uploadedPlanes(trial.runner(), planes),
                 reference::interleave16(planes[0], planes[1], planes[2]), Layout::kThreeChannel16);
}

// From an odd pixel, each plane at a row of its own.
void expectInterleavedPart(Trial& trial, Filter const& filter) {
    constexpr int kX = 5;
    constexpr int kWidth = 13;
    constexpr int kHeight = 6;
    constexpr int kClipLeft = 3;
    std::array<Texels, 3> const planes = noisyPlanes(12, 9);
    FilterRun run;
    std::vector<std::size_t> const sources = uploadedPlanes(trial.runner(), planes);
    run.sources = {{sources[0], kX, 0, false}, {sources[1], kX, 1, false}, {sources[2], kX, 2, false}};
    run.width = kWidth;
    run.height = kHeight;
    run.clipLeft = kClipLeft;
    run.offset = {6, 3};
    auto const rows = [&](std::size_t c) {
        return reference::cropped(planes[c], 0, static_cast<int>(c), planes[c].width, kHeight);
    };
    Texels const whole = reference::interleave16(rows(0), rows(1), rows(2));
    trial.expectWithin(filter, run,
                       reference::cropped(whole, 2 * (kX + kClipLeft), 0, 2 * (kWidth - kClipLeft), kHeight),
                       Layout::kThreeChannel16);
}

} // namespace

// M samples of each band give 2 * M - 4: strips of outputs as long as the trial's strips, from bands of half the length.
void checkFirIH53LeGall16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterFirIH53LeGall16());
    InverseStep const inverse = reference::inverseFilter53Horizontal;
    checkInverseStep(trial, filter, inverse);
    for (int const length : trial.stripLengths()) {
        expectInverse(trial, filter, inverse, noisyBands(length + 2, 1));
        expectInverse(trial, filter, inverse, noisyBands(4, length));
    }
    checkPart(trial, filter, inverse, {3, 3, 0, 1, {5, 5}});
    checkPart(trial, filter, inverse, {2, 2, 2, 1, {4, 4}});
}

void checkFirIV53LeGall16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterFirIV53LeGall16());
    InverseStep const inverse = reference::inverseFilter53Vertical;
    checkInverseStep(trial, filter, inverse);
    for (int const length : trial.stripLengths()) {
        expectInverse(trial, filter, inverse, noisyBands(2 * length, 3));
        expectInverse(trial, filter, inverse, noisyBands(2, length / 2 + 2));
    }
    checkPart(trial, filter, inverse, {4, 3, 2, 1, {5, 4}});
    checkPart(trial, filter, inverse, {6, 2, 0, 2, {3, 2}});
}

void checkInterleave16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterInterleave16());
    for (reference::Planes3 const& planes : {everySampleThrice(), randomPlanes(38, 13, 1), randomPlanes(512, 5, 2)})
        expectInterleaved(trial, filter,
                          {packOneChannel16(planes[0]), packOneChannel16(planes[1]), packOneChannel16(planes[2])});
    for (int const length : trial.stripLengths()) {
        expectInterleaved(trial, filter, noisyPlanes(length / 4, 1));
        expectInterleaved(trial, filter, noisyPlanes(1, length));
    }
    expectInterleavedPart(trial, filter);
}

} // namespace conformance
