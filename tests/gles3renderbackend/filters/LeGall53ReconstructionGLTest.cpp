#include "host/filter/FilterDescriptions.h"
#include "reference/LeGall53Plane.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/gles3renderbackend/filters/LeGall53Steps.h"

#include <algorithm>

namespace {

using namespace filtertest;
using reference::Plane;
using reference::PlaneBands;

// Index of sample i of a band that is extended beyond an image of `length` samples.
int bandIndex(bool high, int i, int length) {
    auto const at = static_cast<int>(reference::reflected(high ? 2 * i + 1 : 2 * i, length));
    return high ? (at - 1) / 2 : at / 2;
}

// A band as the host hands it out: cut to the stretches, continued beyond the image, H one sample earlier.
Plane cut(Plane const& band, bool highX, bool highY, Plane const& image, Stretch const& x, Stretch const& y) {
    Plane out(x.count, y.count);
    if (band.samples.empty()) return out; // an image of one column or row has no high band: zeros
    for (int row = 0; row < y.count; ++row) {
        int const fromRow = bandIndex(highY, y.start + row - (highY ? 1 : 0), image.height);
        for (int column = 0; column < x.count; ++column)
            out.at(column, row) = band.at(bandIndex(highX, x.start + column - (highX ? 1 : 0), image.width), fromRow);
    }
    return out;
}

class LeGall53ReconstructionGLTest : public FilterGLTest {
protected:
    size_t level(FilterSource const& ll, PlaneBands const& bands, Plane const& image, Stretch const& x,
                 Stretch const& y) {
        return steps_.level(ll,
                            {cut(bands.hl, true, false, image, x, y), cut(bands.lh, false, true, image, x, y),
                             cut(bands.hh, true, true, image, x, y)},
                            x, y);
    }

    Plane samples(size_t target) { return unpackOneChannel16(rig.read(target)); }

    // Columns and rows from 2 * startX, 2 * startY on, up to endX, endY, come back through one level.
    void expectLevel(Plane const& image, int startX, int endX, int startY, int endY) {
        Stretch const x = stretchFor(startX, endX);
        Stretch const y = stretchFor(startY, endY);
        PlaneBands const bands = forward53Plane(image);
        size_t const ll = rig.uploaded(cut(bands.ll, false, false, image, x, y));
        Plane const read = samples(level({ll, 0, 0, false}, bands, image, x, y));
        int const width = endX - 2 * startX;
        int const height = endY - 2 * startY;
        EXPECT_EQ(cropped(read, 0, 0, width, height).samples,
                  cropped(image, 2 * startX, 2 * startY, width, height).samples)
            << image.width << " x " << image.height;
    }

    // Low bands of every level as images, the finest first.
    static std::vector<Plane> lowBands(Plane const& image, size_t levels) {
        std::vector<Plane> images{image};
        while (images.size() <= levels)
            images.push_back(forward53Plane(images.back()).ll);
        return images;
    }

    LeGall53Steps steps_{rig};
};

TEST_F(LeGall53ReconstructionGLTest, OneLevelOfAWholeImageIsLossless) {
    for (int const width : {1, 2, 3, 4, 5, 16, 29}) {
        for (int const height : {1, 2, 3, 7, 12})
            expectLevel(randomPlane(width, height, static_cast<std::uint32_t>(31 * width + height), -2000, 2000), 0,
                        width, 0, height);
    }
}

TEST_F(LeGall53ReconstructionGLTest, OneLevelOfATileIsLossless) {
    Plane const image = randomPlane(61, 47, 5, -255, 255);
    expectLevel(image, 3, 40, 2, 30);
    expectLevel(image, 4, 33, 5, 31);
    expectLevel(image, 0, 17, 7, 47);
    expectLevel(image, 13, 61, 0, 9);
}

// Every level goes back to the host, which continues it beyond the image before the next one.
TEST_F(LeGall53ReconstructionGLTest, SeveralLevelsAreLosslessWithBandsContinuedBetweenThem) {
    for (auto const& [width, height] : {std::pair{37, 22}, {24, 31}, {16, 16}, {7, 5}}) {
        std::vector<Plane> const images = lowBands(randomPlane(width, height, 77, -255, 255), 3);
        Plane known = images.back();
        for (size_t n = images.size() - 1; n-- > 0;) {
            Plane const& image = images[n];
            Stretch const x = stretchFor(0, image.width);
            Stretch const y = stretchFor(0, image.height);
            size_t const ll = rig.uploaded(cut(known, false, false, image, x, y));
            known = cropped(samples(level({ll, 0, 0, false}, forward53Plane(image), image, x, y)), 0, 0, image.width,
                            image.height);
        }
        EXPECT_EQ(known.samples, images.front().samples) << width << " x " << height;
    }
}

// A tile amid the image stays on the GPU from level to level: the output of one is the low band of the next.
TEST_F(LeGall53ReconstructionGLTest, SeveralLevelsOfATileAreLosslessWithoutLeavingTheGpu) {
    constexpr size_t kLevels = 3;
    std::vector<Plane> const images = lowBands(randomPlane(211, 189, 8, -255, 255), kLevels);
    // Each level's input starts at the start of the next coarser level's output.
    std::vector<Stretch> x(kLevels);
    std::vector<Stretch> y(kLevels);
    int endX = 104;
    int endY = 91;
    for (size_t n = 0; n < kLevels; ++n) {
        int const start = 1 << (kLevels - 1 - n);
        x[n] = stretchFor(3 * start, endX);
        y[n] = stretchFor(2 * start, endY);
        endX = x[n].start + x[n].count;
        endY = y[n].start + y[n].count;
    }
    size_t current = rig.uploaded(cut(images.back(), false, false, images[kLevels - 1], x.back(), y.back()));
    for (size_t n = kLevels; n-- > 0;)
        current = level({current, 0, 0, false}, forward53Plane(images[n]), images[n], x[n], y[n]);
    EXPECT_EQ(samples(current).samples,
              cropped(images.front(), 2 * x[0].start, 2 * y[0].start, x[0].outputs(), y[0].outputs()).samples);
}

// Three planes of a colour image through wavelet, interleaving and colour transform.
TEST_F(LeGall53ReconstructionGLTest, ThreePlanesAreInterleavedIntoTheirPixels) {
    reference::Planes3 const planes = randomPlanes(15, 9, 21, -255, 255);
    Stretch const x = stretchFor(0, 15);
    Stretch const y = stretchFor(0, 9);
    FilterRun run;
    for (Plane const& plane : planes) {
        PlaneBands const bands = forward53Plane(plane);
        size_t const ll = rig.uploaded(cut(bands.ll, false, false, plane, x, y));
        run.sources.push_back({level({ll, 0, 0, false}, bands, plane, x, y), 0, 0, false});
    }
    run.input.width = 15;
    run.input.height = 9;
    EXPECT_TRUE(
        rig.givesWithin(description::filterInterleave16(), run, packThreeChannel16(planes), Layout::kThreeChannel16));
}

} // namespace
