// The inverse 5/3 steps and what leads from their planes to pixels.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "host/FilterDescriptions.h"
#include "reference/Interleave16.h"
#include "reference/LeGall53Plane.h"

#include <utility>

namespace conformance {

namespace {

using reference::packOneChannel16;
using reference::Plane;

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

// Parts of two bands that start at sample (x, 2), clipped, at a place of the destination.
void checkPart(Trial& trial, Filter const& filter, InverseStep inverse, int x, int left, std::size_t offsetX) {
    constexpr int kY = 2;
    constexpr int kWidth = 14;
    constexpr int kHeight = 8;
    constexpr int kClipTop = 1;
    Plane const low = randomPlane(24, 12, 1);
    Plane const high = randomPlane(24, 12, 2);
    Plane const whole = inverse(cropped(low, x, kY, kWidth, kHeight), cropped(high, x, kY, kWidth, kHeight));
    FilterRunner& runner = trial.runner();
    FilterRun run;
    auto const column = static_cast<std::size_t>(x);
    run.sources = {{runner.uploaded(low), column, kY, false}, {runner.uploaded(high), column, kY, false}};
    run.width = kWidth;
    run.height = kHeight;
    run.clipLeft = static_cast<std::size_t>(left);
    run.clipTop = kClipTop;
    run.offset = {offsetX, 4};
    Plane const kept = cropped(whole, left, kClipTop, whole.width - left, whole.height - kClipTop);
    trial.expectWithin(filter, run, packOneChannel16(kept), Layout::kOneChannel16);
}

void checkInverseStep(Trial& trial, Filter const& filter, InverseStep inverse) {
    for (BandPair const& bands : bandPairs(trial.full()))
        trial.expect(filter, {trial.runner().uploaded(bands.low), trial.runner().uploaded(bands.high)},
                     packOneChannel16(inverse(bands.low, bands.high)), Layout::kOneChannel16);
}

} // namespace

void checkFirIH53LeGall16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterFirIH53LeGall16());
    checkInverseStep(trial, filter, reference::inverseFilter53Horizontal);
    checkPart(trial, filter, reference::inverseFilter53Horizontal, 3, 0, 5);
    checkPart(trial, filter, reference::inverseFilter53Horizontal, 2, 2, 4);
}

void checkFirIV53LeGall16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterFirIV53LeGall16());
    checkInverseStep(trial, filter, reference::inverseFilter53Vertical);
}

void checkInterleave16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterInterleave16());
    FilterRunner& runner = trial.runner();
    for (reference::Planes3 const& planes : {everySampleThrice(), randomPlanes(38, 13, 1), randomPlanes(512, 5, 2)}) {
        reference::Texels const expected = reference::interleave16(
            packOneChannel16(planes[0]), packOneChannel16(planes[1]), packOneChannel16(planes[2]));
        trial.expect(filter, {runner.uploaded(planes[0]), runner.uploaded(planes[1]), runner.uploaded(planes[2])},
                     expected, Layout::kThreeChannel16);
    }
}

} // namespace conformance
