// The inverse 5/3 steps, and the filters from their planes to pixels.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Interleave16.h"
#include "reference/LeGall53Plane.h"

#include <array>
#include <vector>

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

// A sharp trial includes sums that overflow 16 bits. Then every low and every high sample, and coefficients of 8-bit
// pictures at an odd number of rows.
std::vector<BandPair> bandPairs(Trial const& trial) {
    std::vector<BandPair> pairs = {{randomPlane(64, 31, 1, -2000, 2000), randomPlane(64, 31, 2, -600, 600)},
                                   {boundaryPlane(64, 31, 7), boundaryPlane(64, 31, 8)}};
    if (trial.thorough()) {
        pairs.push_back({everySample(), randomPlane(256, 256, 3, -600, 600)});
        pairs.push_back({randomPlane(256, 256, 4, -600, 600), everySample()});
        pairs.push_back({randomPlane(64, 31, 5), randomPlane(64, 31, 6)});
        pairs.push_back({randomPlane(2048, 9, 9, -255, 255), randomPlane(2048, 9, 10, -510, 510)});
    }
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        pairs.push_back({randomPlane(512, 512, 100 + i), randomPlane(512, 512, 200 + i, -2048, 2047)});
    return pairs;
}

// Bands of noise of one size, in samples.
BandPair noisyBands(int width, int height) {
    return {randomPlane(width, height, 13), randomPlane(width, height, 14, -600, 600)};
}

void expectInverse(Trial& trial, Filter const& filter, InverseStep inverse, BandPair const& bands) {
    trial.expect(filter, {trial.runner().uploaded(bands.low), trial.runner().uploaded(bands.high)},
                 packOneChannel16(inverse(bands.low, bands.high)), Layout::kOneChannel16);
}

void expectBandPairs(Trial& trial, Filter const& filter, InverseStep inverse) {
    for (BandPair const& bands : bandPairs(trial))
        expectInverse(trial, filter, inverse, bands);
}

// A part of two bands in samples of the bands, the clips in samples of the output; the place of the high band's part.
struct BandPart {
    Part part;
    int highX;
    int highY;
};

// A texture of even width that reaches beyond the part.
Plane bandAround(int x, int y, Part const& part, std::uint32_t randomStart) {
    int const width = x + part.width;
    return randomPlane(width + 2 - width % 2, y + part.height + 1, randomStart);
}

// If the description leaves out a step's first rows, so many more are cut off the top.
void expectBandPart(Trial& trial, Filter const& filter, InverseStep inverse, BandPart const& bands) {
    Part const& part = bands.part;
    Plane const low = bandAround(part.x, part.y, part, 1);
    Plane const high = bandAround(bands.highX, bands.highY, part, 2);
    Plane const whole = inverse(cropped(low, part.x, part.y, part.width, part.height),
                                cropped(high, bands.highX, bands.highY, part.width, part.height));
    int const top = part.clipTop + static_cast<int>(filter.invalidTop());
    Plane const kept = cropped(whole, part.clipLeft, top, whole.width - part.clipLeft - part.clipRight,
                               whole.height - top - part.clipBottom);
    TexelRunner& runner = trial.runner();
    auto const at = [](size_t source, int x, int y) {
        return FilterSource{source, static_cast<size_t>(x), static_cast<size_t>(y), false};
    };
    FilterRun const run =
        runOf(part, {at(runner.uploaded(low), part.x, part.y), at(runner.uploaded(high), bands.highX, bands.highY)});
    trial.expectWithin(filter, run, packOneChannel16(kept), Layout::kOneChannel16);
}

void expectBandParts(Trial& trial, Filter const& filter, InverseStep inverse, std::vector<Part> const& parts) {
    for (Part const& part : parts)
        expectBandPart(trial, filter, inverse, {part, part.x, part.y});
}

// M samples of each band give 2 * M - 4: outputs as long as the trial's strips need bands of half the length.
void checkHorizontalStep(Trial& trial) {
    Filter const filter = trial.prepared(description::filterFirIH53LeGall16());
    InverseStep const inverse = reference::inverseFilter53Horizontal;
    expectBandPairs(trial, filter, inverse);
    for (int const length : trial.stripLengths()) {
        expectInverse(trial, filter, inverse, noisyBands(length + 2, 2));
        expectInverse(trial, filter, inverse, noisyBands(4, length));
    }
    expectBandPart(trial, filter, inverse, {{3, 2, 14, 6, 2, 0, 0, 0, 5, 3}, 21, 5});
    if (!trial.thorough()) return;
    expectBandPart(trial, filter, inverse, {{2, 1, 12, 4, 0, 0, 0, 0, 0, 0}, 50, 3});
    // An odd source column needs an odd offset; clips are of whole texels, odd numbers of them too.
    expectBandParts(trial, filter, inverse,
                    {{3, 3, 14, 8, 0, 0, 1, 0, 5, 5},
                     {2, 2, 14, 8, 2, 0, 1, 0, 4, 4},
                     {0, 2, 24, 6, 0, 0, 0, 0, 0, 0},
                     {1, 2, 22, 6, 0, 0, 0, 0, 1, 0},
                     {3, 2, 14, 6, 0, 0, 0, 0, 5, 3},
                     {2, 2, 14, 6, 0, 0, 0, 0, 4, 1},
                     {0, 2, 17, 6, 0, 0, 0, 0, 2, 0},
                     {5, 2, 11, 6, 0, 0, 0, 0, 7, 2},
                     {0, 2, 20, 6, 2, 0, 0, 0, 0, 0},
                     {0, 2, 20, 6, 2, 4, 1, 3, 2, 1},
                     {3, 2, 20, 6, 6, 2, 3, 0, 1, 5},
                     {3, 2, 20, 6, 4, 6, 0, 1, 3, 0}});
}

// The step with its first rows declared invalid, for a host that reads these elsewhere.
Filter verticalStepWithout(size_t firstRows) {
    return Filter("FilterFirIV53LeGall16", 0, 0, firstRows, 4, 0, 1, 0, 1, 1, 1, 2, 1, 2, 16, 16, 1, 1, 1, 1, 1, 1,
                  {true, true}, true, 16, RenderBackend::NEAREST);
}

void expectVerticalParts(Trial& trial, Filter const& filter, InverseStep inverse) {
    expectBandPart(trial, filter, inverse, {{2, 3, 6, 9, 0, 0, 0, 0, 0, 0}, 8, 41});
    expectBandPart(trial, filter, inverse, {{0, 3, 8, 9, 0, 0, 0, 0, 0, 0}, 0, 2}); // one row up, like the high band
    // Outputs start at an even row whatever the source row; clips of an odd number of rows keep them in place.
    expectBandParts(trial, filter, inverse,
                    {{4, 3, 14, 8, 2, 0, 1, 0, 5, 4},
                     {6, 2, 14, 8, 0, 0, 2, 0, 3, 2},
                     {4, 0, 14, 19, 0, 0, 0, 0, 0, 0},
                     {4, 1, 14, 18, 0, 0, 0, 0, 3, 2},
                     {4, 6, 14, 9, 0, 0, 0, 0, 0, 4},
                     {4, 0, 14, 12, 0, 0, 1, 0, 0, 0},
                     {4, 2, 14, 12, 2, 4, 3, 1, 1, 2}});
    // An odd border at the top needs an odd offset.
    expectBandParts(trial, trial.prepared(verticalStepWithout(1)), inverse,
                    {{4, 0, 14, 12, 0, 0, 0, 0, 0, 1}, {4, 2, 14, 12, 4, 2, 1, 2, 0, 3}});
    expectBandParts(trial, trial.prepared(verticalStepWithout(2)), inverse, {{4, 3, 14, 12, 0, 0, 0, 0, 1, 0}});
    expectBandParts(trial, trial.prepared(verticalStepWithout(3)), inverse, {{4, 3, 14, 12, 0, 0, 0, 0, 1, 5}});
}

void checkVerticalStep(Trial& trial) {
    Filter const filter = trial.prepared(description::filterFirIV53LeGall16());
    InverseStep const inverse = reference::inverseFilter53Vertical;
    expectBandPairs(trial, filter, inverse);
    for (int const length : trial.stripLengths()) {
        expectInverse(trial, filter, inverse, noisyBands(2 * length, 3));
        expectInverse(trial, filter, inverse, noisyBands(4, length / 2 + 2));
    }
    expectBandPart(trial, filter, inverse, {{4, 3, 14, 12, 0, 0, 3, 0, 1, 4}, 10, 8});
    if (trial.thorough()) expectVerticalParts(trial, filter, inverse);
}

using ThreePlanes = std::array<Texels, 3>;

ThreePlanes noisyPlanes(int widthTexels, int height) {
    return {randomTexels(widthTexels, height, 15), randomTexels(widthTexels, height, 16),
            randomTexels(widthTexels, height, 17)};
}

std::vector<size_t> uploadedPlanes(TexelRunner& runner, ThreePlanes const& planes) {
    return {runner.uploaded(planes[0], Layout::kOneChannel16), runner.uploaded(planes[1], Layout::kOneChannel16),
            runner.uploaded(planes[2], Layout::kOneChannel16)};
}

void expectInterleaved(Trial& trial, Filter const& filter, ThreePlanes const& planes) {
    trial.expect(filter, uploadedPlanes(trial.runner(), planes),
                 reference::interleave16(planes[0], planes[1], planes[2]), Layout::kThreeChannel16);
}

// Start of the three planes' parts, in pixels.
using Places = std::array<std::array<int, 2>, 3>;

// The part's own place has no effect. Columns of the planes have equal parity.
void expectInterleavedPart(Trial& trial, Filter const& filter, ThreePlanes const& planes, Places const& places,
                           Part const& part) {
    std::vector<size_t> const uploaded = uploadedPlanes(trial.runner(), planes);
    std::vector<FilterSource> sources;
    ThreePlanes read;
    int const first = places[0][0] % 2; // position of the part in its first texel
    for (size_t c = 0; c < planes.size(); ++c) {
        auto const [x, y] = places[c];
        sources.push_back({uploaded[c], static_cast<size_t>(x), static_cast<size_t>(y), false});
        read[c] = reference::cropped(planes[c], x / 2, y, (first + part.width + 1) / 2, part.height);
    }
    Texels const whole = reference::interleave16(read[0], read[1], read[2]);
    Texels const kept = reference::cropped(whole, 2 * (first + part.clipLeft), part.clipTop,
                                           2 * (part.width - part.clipLeft - part.clipRight),
                                           part.height - part.clipTop - part.clipBottom);
    trial.expectWithin(filter, runOf(part, sources), kept, Layout::kThreeChannel16);
}

// Twice the source column equals the offset modulo four; clips of odd pixels keep the pixels whole.
void expectInterleavedParts(Trial& trial, Filter const& filter) {
    ThreePlanes const planes = noisyPlanes(12, 9);
    for (Part const& part : {Part{0, 1, 13, 5, 0, 0, 0, 0, 0, 0},
                             {1, 1, 13, 5, 0, 0, 0, 0, 2, 1},
                             {2, 1, 13, 5, 0, 0, 0, 0, 4, 3},
                             {5, 1, 13, 5, 0, 0, 0, 0, 6, 0},
                             {0, 1, 13, 5, 1, 0, 0, 0, 0, 0},
                             {3, 1, 13, 5, 3, 2, 1, 1, 2, 1},
                             {4, 1, 13, 5, 2, 5, 0, 3, 8, 2}}) {
        std::array<int, 2> const place = {part.x, part.y};
        expectInterleavedPart(trial, filter, planes, {place, place, place}, part);
    }
    expectInterleavedPart(trial, filter, planes, {{{5, 0}, {5, 1}, {5, 2}}}, {5, 0, 13, 6, 3, 0, 0, 0, 6, 3});
    expectInterleavedPart(trial, filter, {randomTexels(6, 3, 1), randomTexels(40, 5, 2), randomTexels(31, 4, 3)},
                          {{{0, 0}, {60, 2}, {20, 1}}}, {0, 0, 12, 3, 0, 0, 0, 0, 0, 0});
}

void checkInterleave16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterInterleave16());
    expectInterleaved(trial, filter, noisyPlanes(16, 9));
    for (int const length : trial.stripLengths()) {
        expectInterleaved(trial, filter, noisyPlanes(length / 4, 2));
        expectInterleaved(trial, filter, noisyPlanes(1, length));
    }
    expectInterleavedPart(trial, filter, {randomTexels(10, 7, 4), randomTexels(12, 8, 5), randomTexels(15, 9, 6)},
                          {{{5, 0}, {5, 1}, {5, 2}}}, {5, 0, 13, 6, 3, 0, 0, 0, 6, 2});
    if (!trial.thorough()) return;
    for (reference::Planes3 const& planes : {everySampleThrice(), randomPlanes(38, 13, 1), randomPlanes(512, 5, 2)})
        expectInterleaved(trial, filter,
                          {packOneChannel16(planes[0]), packOneChannel16(planes[1]), packOneChannel16(planes[2])});
    expectInterleavedParts(trial, filter);
}

} // namespace

Checks waveletChecks() {
    return {{"FilterFirIH53LeGall16", checkHorizontalStep},
            {"FilterFirIV53LeGall16", checkVerticalStep},
            {"FilterInterleave16", checkInterleave16}};
}

} // namespace conformance
