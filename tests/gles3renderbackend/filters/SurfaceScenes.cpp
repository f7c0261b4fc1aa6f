#include "tests/gles3renderbackend/filters/SurfaceScenes.h"

#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/ColourMatrix.h"
#include "reference/Interleave16.h"
#include "reference/LeGall53Plane.h"
#include "reference/Sharpness16.h"
#include "reference/Sharpness8.h"
#include "reference/SixteenToEight.h"
#include "reference/TableLookup.h"
#include "reference/Truncate16.h"
#include "reference/YCoCgR.h"
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

using Model = std::function<Texels(Texels const&)>;

template <class Record, class Field, class Value>
std::shared_ptr<SingleFilterParameters> with(Field Record::*field, Value const& value) {
    auto params = std::make_shared<Record>();
    (*params).*field = value;
    return params;
}

Texels noise(int width, int height, std::uint32_t randomStart) {
    return randomTexels(width, height, randomStart);
}

Scene pointwise(Texels const& input, Layout layout, Model const& model,
                std::shared_ptr<SingleFilterParameters> params = std::make_shared<SingleFilterParameters>()) {
    return {{{input, layout}}, kWidth, kHeight, model(input), std::move(params)};
}

Texels same(Texels const& texels) {
    return texels;
}

Scene copy(Layout layout) {
    return pointwise(noise(kWidth, kHeight, 1), layout, same);
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

// Twice as wide as what is shown of it.
Scene shown(Model const& model) {
    return pointwise(packThreeChannel16(randomPlanes(kWidth, kHeight, 9, -60, 320)), Layout::kThreeChannel16, model);
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

constexpr reference::Matrix3 kWarm = {1300, 20, -60, -200, 1050, 90, -76, -46, 994};

std::shared_ptr<SingleFilterParameters> warm() {
    return with(&Filter3x3MatrixParams::matrix, kWarm);
}

Scene looked8(reference::ByteTable const& table, std::shared_ptr<SingleFilterParameters> params) {
    return pointwise(
        noise(kWidth, kHeight, 12), Layout::kRgba8,
        [&](Texels const& image) { return reference::tableLookup8(image, table); }, std::move(params));
}

Scene looked16(reference::ByteTable const& table, std::shared_ptr<SingleFilterParameters> params) {
    return pointwise(
        packThreeChannel16(randomPlanes(kWidth, kHeight, 13, 0, 32767)), Layout::kThreeChannel16,
        [&](Texels const& pixels) { return reference::tableLookup16(pixels, table); }, std::move(params));
}

std::map<std::string, std::function<Scene()>> const& scenes() {
    using Key = ComparableSingleFilterParameters<unsigned char>;
    static std::map<std::string, std::function<Scene()>> const all = {
        {"FilterFirIH53LeGall16", horizontalStep},
        {"FilterFirIV53LeGall16", verticalStep},
        {"BlitFilter1x16", [] { return copy(Layout::kOneChannel16); }},
        {"BlitFilter3x16", [] { return copy(Layout::kThreeChannel16); }},
        {"BlitFilter3x8", [] { return copy(Layout::kRgba8); }},
        {"BlitFilter4x8", [] { return copy(Layout::kRgba8); }},
        {"FilterRemoveAlpha8", [] { return copy(Layout::kRgba8); }},
        {"Filter1x16ToRGB8",
         [] {
             return pointwise(packOneChannel16(randomPlane(kWidth, kHeight, 14, -60, 320)), Layout::kOneChannel16,
                              reference::oneChannel16ToRgb8);
         }},
        {"FilterInterleave16", interleaving},
        {"FilterYCoCg16ToRGBA8", [] { return shown(reference::yCoCg16ToRgba8); }},
        {"FilterYCoCg16ToRGB16",
         [] { return pointwise(pixelsOf16Bits(-300, 300), Layout::kThreeChannel16, reference::yCoCg16ToRgb16); }},
        {"Filter3x16To4x8", [] { return shown(reference::threeChannel16ToRgba8); }},
        {"FilterSharpness8", sharpened8},
        {"FilterSharpnessH16", blurred},
        {"FilterSharpnessV16", sharpened16},
        {"FilterLinear8ToSRGB8", [] { return looked8(reference::srgbTable(8), std::make_shared<Key>()); }},
        {"FilterLinear16ToSRGB8", [] { return looked16(reference::srgbTable(16), std::make_shared<Key>()); }},
        {"FilterLinear16TosRGB8",
         [] {
             return looked16(reference::gammaTable(16, 2.2, 40, 33000),
                             std::make_shared<FilterLinear16TosRGB8Params>(2.2, 40, 33000));
         }},
        {"FilterBlackWhiteGamma8",
         [] {
             return looked8(reference::blackWhiteGamma8Table(2.2, 40, 3300),
                            std::make_shared<FilterBlackWhiteGamma8Params>(2.2, 40, 3300));
         }},
        {"FilterTruncate16",
         [] {
             return pointwise(
                 noise(kWidth, kHeight, 15), Layout::kOneChannel16,
                 [](Texels const& samples) { return reference::truncate16(samples, 4, false); },
                 with(&FilterTruncate16Params::shift, size_t{4}));
         }},
        {"Filter3x3Matrix8",
         [] {
             return pointwise(
                 noise(kWidth, kHeight, 16), Layout::kRgba8,
                 [](Texels const& image) { return reference::matrix8(image, kWarm, 1.0); }, warm());
         }},
        {"Filter3x3Matrix16",
         [] {
             return pointwise(
                 pixelsOf16Bits(-8192, 8191), Layout::kThreeChannel16,
                 [](Texels const& pixels) { return reference::matrix16(pixels, kWarm, 1.0); }, warm());
         }},
        {"FilterRGBA8ToYCoCg16",
         [] { return pointwise(noise(kWidth / 2, kHeight, 17), Layout::kRgba8, reference::rgba8ToYCoCg16); }},
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
    if (found == scenes().end()) {
        return ::testing::AssertionFailure()
               << filter << " has no scene on the host's surface: add it to scenes() of SurfaceScenes.cpp, and to "
               << "orientationOf() where its rows stay in GL's order";
    }
    Scene const scene = found->second();
    FilterRun run;
    for (Input const& input : scene.inputs)
        run.sources.push_back({rig.uploaded(input.texels, input.layout), 0, 0, true});
    run.input.width = scene.inputW;
    run.input.height = scene.inputH;
    run.offset = {kX, kY};
    colourSurface(*rig.instance());
    rig.run(rig.instantiated(description::byName(filter)), run, 0, *scene.params);
    return surfaceIs(*rig.instance(), surfaceWith(scene.expected, kX, kY, orientationOf(filter)));
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
