#include "tests/gles3renderbackend/filters/SurfaceScenes.h"

#include "conformance/Pointwise.h"
#include "conformance/Verification.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Interleave16.h"
#include "reference/LeGall53Plane.h"
#include "reference/Sharpness16.h"
#include "reference/Sharpness8.h"
#include "reference/SixteenToEight.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/support/PixelMatchers.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <utility>

namespace filtertest {

namespace {

using reference::packOneChannel16;
using reference::packThreeChannel16;
using reference::Plane;

constexpr int kSide = 16; // texels of the surface, both ways
// Where the output starts. The row is odd, as the surface's last one is: mirrored, even rows of the vertical wavelet
// step lie in even rows again.
constexpr int kX = 4;
constexpr int kY = 3;
// The output's texels.
constexpr int kWidth = 8;
constexpr int kHeight = 6;
constexpr std::uint8_t kColour = 70;

struct Input {
    Texels texels;
    Layout layout;
};

// One run. Borders and scales make the output's extent of the input's.
struct Scene {
    std::vector<Input> inputs;
    size_t inputW;
    size_t inputH;
    Texels expected;
    std::shared_ptr<SingleFilterParameters> params = std::make_shared<SingleFilterParameters>();
};

template <class Record, class Field, class Value>
std::shared_ptr<SingleFilterParameters> with(Field Record::*field, Value const& value) {
    auto params = std::make_shared<Record>();
    (*params).*field = value;
    return params;
}

Texels noise(int width, int height, std::uint32_t randomStart) {
    return randomTexels(width, height, randomStart);
}

// Noise through a filter that makes each output pixel of the input pixel at its place.
Scene pointwise(conformance::Pointwise const& filter) {
    int const columns = kWidth * conformance::texelsOf(filter.in, 2) / conformance::texelsOf(filter.out, 2);
    Texels const input = conformance::noiseFor(filter, columns, kHeight, 1);
    return {{{input, filter.in}}, kWidth, kHeight, filter.model(input)};
}

// The surface has an alpha, which the copy to a target without one leaves alone.
Scene removedAlpha() {
    return pointwise({Layout::kRgba8, Layout::kRgba8, [](Texels const& texels) { return texels; }});
}

// Rows and columns beyond the texture read its edge, two samples per texel.
Plane continued(Plane const& plane, int columns, int rows) {
    Plane out(plane.width + columns, plane.height + rows);
    for (int y = 0; y < out.height; ++y) {
        for (int x = 0; x < out.width; ++x)
            out.at(x, y) = plane.clampedAt(x < plane.width ? x : x - columns, y);
    }
    return out;
}

Scene horizontalStep() {
    Plane const low = randomPlane(kWidth, kHeight, 1);
    Plane const high = randomPlane(kWidth, kHeight, 2, -600, 600);
    Plane const whole = reference::inverseFilter53Horizontal(continued(low, 2, 0), continued(high, 2, 0));
    return {{{packOneChannel16(low), Layout::kOneChannel16}, {packOneChannel16(high), Layout::kOneChannel16}},
            kWidth / 2 + 2,
            kHeight,
            packOneChannel16(whole)};
}

Scene verticalStep() {
    Plane const low = randomPlane(2 * kWidth, kHeight / 2, 3);
    Plane const high = randomPlane(2 * kWidth, kHeight / 2, 4, -600, 600);
    Plane const whole = reference::inverseFilter53Vertical(continued(low, 0, 2), continued(high, 0, 2));
    return {{{packOneChannel16(low), Layout::kOneChannel16}, {packOneChannel16(high), Layout::kOneChannel16}},
            kWidth,
            kHeight / 2 + 2,
            packOneChannel16(whole)};
}

Scene interleaving() {
    std::vector<Input> planes;
    for (std::uint32_t c = 0; c < 3; ++c)
        planes.push_back({noise(kWidth / 4, kHeight, 5 + c), Layout::kOneChannel16});
    return {planes, kWidth, kHeight, reference::interleave16(planes[0].texels, planes[1].texels, planes[2].texels)};
}

Texels pixelsOf16Bits(std::int32_t first, std::int32_t last) {
    return packThreeChannel16(randomPlanes(kWidth / 2, kHeight, 8, first, last));
}

Scene sharpened8() {
    Texels const image = noise(kWidth, kHeight, 10);
    return {{{image, Layout::kRgba8}},
            kWidth + 4,
            kHeight + 4,
            reference::sharpness8(image, 1.25, 0),
            with(&FilterSharpness8Params::gain, 1.25)};
}

Scene blurred() {
    Texels const pixels = pixelsOf16Bits(0, 1023);
    return {{{pixels, Layout::kThreeChannel16}}, kWidth + 4, kHeight, reference::sharpnessH16(pixels)};
}

Scene sharpened16() {
    Texels const pixels = pixelsOf16Bits(0, 1023);
    Texels const blur = noise(kWidth, kHeight, 11);
    return {{{pixels, Layout::kThreeChannel16}, {blur, Layout::kThreeChannel16}},
            kWidth,
            kHeight + 4,
            reference::sharpnessV16(pixels, blur, 2.0, 0),
            with(&FilterSharpness16Params::gain, 2.0)};
}

// Scenes of the filters that are not pointwise.
std::map<std::string, std::function<Scene()>> const& scenes() {
    static std::map<std::string, std::function<Scene()>> const all = {
        {"FilterFirIH53LeGall16", horizontalStep}, {"FilterFirIV53LeGall16", verticalStep},
        {"FilterInterleave16", interleaving},      {"FilterRemoveAlpha8", removedAlpha},
        {"FilterSharpness8", sharpened8},          {"FilterSharpnessH16", blurred},
        {"FilterSharpnessV16", sharpened16},
    };
    return all;
}

// The surface in one colour, with texels at (x, y) counted from its first row, which is GL's first or its last one.
Texels surfaceWith(Texels const& texels, int x, int y, OnSurface orientation) {
    Texels surface(kSide, kSide);
    std::fill(surface.bytes.begin(), surface.bytes.end(), kColour);
    for (int row = 0; row < texels.height; ++row)
        blit(texels, 0, row, texels.width, 1, surface, x,
             orientation == OnSurface::kMirrored ? kSide - 1 - (y + row) : y + row);
    return surface;
}

void colourSurface(RenderBackendInstance& instance) {
    instance.clear(0, {kColour, kColour, kColour, kColour});
}

::testing::AssertionResult surfaceIs(RenderBackendInstance& instance, Texels const& expected) {
    return pixelsEqual(instance.getPixels(0, {0, kSide, 0, kSide}), expected.bytes, kSide);
}

bool isMask(std::string const& name) {
    Filter const filter = description::byName(name);
    return filter.supportsParameters() &&
           std::dynamic_pointer_cast<MaskFilterParams>(filter.getParametersObject()) != nullptr;
}

struct Drawing {
    Filter const& filter;
    OnSurface orientation;
    SingleFilterParameters const& params;
};

::testing::AssertionResult sceneAppearsOnSurface(FilterRig& rig, Drawing const& drawing, Scene const& scene) {
    FilterRun run;
    for (Input const& input : scene.inputs)
        run.sources.push_back({rig.uploaded(input.texels, input.layout), 0, 0, true});
    run.input.width = scene.inputW;
    run.input.height = scene.inputH;
    run.offset = {kX, kY};
    colourSurface(*rig.instance());
    rig.run(drawing.filter, run, 0, drawing.params);
    return surfaceIs(*rig.instance(), surfaceWith(scene.expected, kX, kY, drawing.orientation));
}

// The mask's shape covers texels (2, 1) to (8, 4) of a source as large as the surface.
::testing::AssertionResult maskAppearsOnSurface(FilterRig& rig, std::string const& name) {
    Texels const source = noise(kSide, kSide, 18);
    size_t const from = rig.uploaded(source, Layout::kRgba8);
    RenderBackendInstance& instance = *rig.instance();
    std::vector<std::vector<unsigned int>> cells;
    for (unsigned int y = 1; y <= 5; ++y) {
        for (unsigned int x = 2; x <= 9; ++x)
            cells.push_back({x, y});
    }
    std::vector<unsigned char> const id = {1};
    instance.dataEnvelopes(id, {{{}, cells}});
    MaskFilterParams params;
    params.envelopes = std::const_pointer_cast<DataEnvelopes>(instance.dataEnvelopes(id));
    colourSurface(instance);
    // Last: its program is current then, and takes the sampler's value.
    Filter const filter = rig.instantiated(description::byName(name));
    instance.maskRange(from, 0, filter, {0, kSide - 1, 0, kSide - 1}, params);
    return surfaceIs(instance, surfaceWith(cropped(source, 2, 1, 7, 4), 2, 1, orientationOf(name)));
}

} // namespace

OnSurface orientationOf(std::string const& filter) {
    static std::set<std::string> const upright = {"FilterRGBA8ToYCoCg16", "Filter3x3Matrix8", "Filter3x3Matrix16",
                                                  "FilterSharpnessH16", "FilterSharpnessV16"};
    if (filter == "FilterCLAHE") return OnSurface::kRefused;
    return upright.count(filter) != 0 ? OnSurface::kUpright : OnSurface::kMirrored;
}

::testing::AssertionResult appearsOnSurface(FilterRig& rig, std::string const& filter) {
    if (isMask(filter)) return maskAppearsOnSurface(rig, filter);
    auto const found = scenes().find(filter);
    if (found != scenes().end()) {
        Scene const scene = found->second();
        Filter const prepared = rig.instantiated(description::byName(filter));
        Drawing const drawing = {prepared, orientationOf(filter), *scene.params};
        return sceneAppearsOnSurface(rig, drawing, scene);
    }
    ::testing::AssertionResult appears = ::testing::AssertionFailure()
                                         << filter
                                         << " is not pointwise and has no scene on the host's surface: add it to "
                                         << "scenes() of SurfaceScenes.cpp";
    bool isFirst = true;
    conformance::visitPointwise(
        filter, rig,
        [&](Filter const& prepared, conformance::Pointwise const& runs, SingleFilterParameters const& params) {
            if (!isFirst && !appears) return;
            isFirst = false;
            Drawing const drawing = {prepared, orientationOf(filter), params};
            appears = sceneAppearsOnSurface(rig, drawing, pointwise(runs));
        });
    return appears;
}

::testing::AssertionResult tileAppearsOnSurface(FilterRig& rig, std::string const& filter) {
    constexpr size_t kTile = 3;
    Texels const texels = noise(kWidth, kHeight, 19);
    RenderBackendInstance& instance = *rig.instance();
    Filter const blit = rig.instantiated(description::byName(filter));
    colourSurface(instance);
    instance.setTile(kTile, texels.bytes, {kWidth, kHeight, 4}, 0);
    instance.drawTiles(0, blit, {0, kWidth - 1, 0, kHeight - 1}, {0, kWidth - 1, 0, kHeight - 1}, {kWidth, kHeight},
                       {{0, 0}}, {kTile}, {kX, kY});
    return surfaceIs(instance, surfaceWith(texels, kX, kY, OnSurface::kUpright));
}

} // namespace filtertest
