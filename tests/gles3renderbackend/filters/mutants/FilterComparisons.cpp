#include "tests/gles3renderbackend/filters/mutants/FilterComparisons.h"

#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/ColourMatrix.h"
#include "reference/Interleave16.h"
#include "reference/LeGall53Plane.h"
#include "reference/Sharpness16.h"
#include "reference/Sharpness8.h"
#include "reference/SixteenToEight.h"
#include "reference/Truncate16.h"
#include "reference/YCoCgR.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/SurfaceScenes.h"
#include "tests/gles3renderbackend/filters/mutants/TableComparisons.h"

#include <map>

namespace {

using namespace filtertest;
using filtertest::cropped;
using reference::cropped;
using reference::packOneChannel16;
using reference::packThreeChannel16;
using reference::Plane;
using reference::Planes3;
using ::testing::AssertionResult;
using Comparisons = std::vector<FilterComparison>;

// Wider than the 2048 columns that a float of 16 bits tells apart.
constexpr int kWideTexels = 4112;

// --- the two wavelet steps

FilterComparison horizontal(Plane const& low, Plane const& high) {
    return [=](FilterRig& rig) {
        return rig.gives(description::filterFirIH53LeGall16(), {rig.uploaded(low), rig.uploaded(high)},
                         packOneChannel16(reference::inverseFilter53Horizontal(low, high)), Layout::kOneChannel16);
    };
}

// From an odd column of bands that lie apart in textures of different sizes.
AssertionResult horizontalPart(FilterRig& rig) {
    Plane const low = randomPlane(30, 9, 1);
    Plane const high = randomPlane(48, 12, 2);
    FilterRun run{{{rig.uploaded(low), 3, 2, false}, {rig.uploaded(high), 21, 5, false}}, 14, 6};
    run.clipLeft = 2;
    run.offset = {5, 3};
    Plane const whole = reference::inverseFilter53Horizontal(cropped(low, 3, 2, 14, 6), cropped(high, 21, 5, 14, 6));
    return rig.givesWithin(description::filterFirIH53LeGall16(), run,
                           packOneChannel16(cropped(whole, 2, 0, whole.width - 2, 6)), Layout::kOneChannel16);
}

FilterComparison vertical(Plane const& low, Plane const& high) {
    return [=](FilterRig& rig) {
        return rig.gives(description::filterFirIV53LeGall16(), {rig.uploaded(low), rig.uploaded(high)},
                         packOneChannel16(reference::inverseFilter53Vertical(low, high)), Layout::kOneChannel16);
    };
}

AssertionResult verticalPart(FilterRig& rig) {
    Plane const low = randomPlane(30, 19, 3);
    Plane const high = randomPlane(48, 26, 4);
    FilterRun run{{{rig.uploaded(low), 4, 3, false}, {rig.uploaded(high), 10, 8, false}}, 14, 12};
    run.clipTop = 3;
    run.offset = {1, 4};
    Plane const whole = reference::inverseFilter53Vertical(cropped(low, 4, 3, 14, 12), cropped(high, 10, 8, 14, 12));
    return rig.givesWithin(description::filterFirIV53LeGall16(), run,
                           packOneChannel16(cropped(whole, 0, 3, 14, whole.height - 3)), Layout::kOneChannel16);
}

// --- filters of one input without parameters

using Model = Texels (*)(Texels const&);

// The whole texture, and a part of it that lands at an even texel.
Comparisons oneInput(Filter (*description)(), Layout in, Layout out, Model model, std::vector<Texels> const& inputs) {
    Comparisons comparisons;
    for (Texels const& input : inputs) {
        comparisons.emplace_back(
            [=](FilterRig& rig) { return rig.gives(description(), {rig.uploaded(input, in)}, model(input), out); });
    }
    comparisons.emplace_back([=](FilterRig& rig) {
        Texels const texels = randomTexels(36, 11, 5);
        FilterRun run{
            {{rig.uploaded(texels, in), FilterRig::logicalWidth(in, 6), 2, false}}, FilterRig::logicalWidth(in, 20), 7};
        run.offset = {4, 3};
        Texels const part = model(cropped(texels, 6, 2, 20, 7));
        return rig.givesWithin(description(), run, part, out);
    });
    return comparisons;
}

Texels same(Texels const& texels) {
    return texels;
}

std::vector<Texels> pixelsOf16Bits() {
    std::vector<Texels> inputs = {packThreeChannel16(boundaryTriples()), randomTexels(64, 40, 6),
                                  packThreeChannel16(randomPlanes(64, 40, 7, -300, 300))};
    for (size_t channel = 0; channel < 3; ++channel) {
        Planes3 planes = randomPlanes(256, 256, 8, -300, 300);
        planes[channel] = everySample();
        inputs.push_back(packThreeChannel16(planes));
    }
    inputs.push_back(packThreeChannel16(randomPlanes(kWideTexels / 2, 2, 9, -300, 300)));
    return inputs;
}

// Large coefficients whose sums lie in the range of a byte, where every unit shows.
Texels cancellingCoefficients() {
    Planes3 planes = randomPlanes(128, 64, 10, -16000, 16000);
    Plane const green = randomPlane(128, 64, 11, -20, 275);
    for (size_t i = 0; i < green.samples.size(); ++i) {
        std::int32_t const cg = planes[2].samples[i];
        planes[0].samples[i] = green.samples[i] - cg + (cg + 32768) / 2 - 16384;
    }
    return packThreeChannel16(planes);
}

Comparisons yCoCgToRgba8() {
    std::vector<Texels> inputs = pixelsOf16Bits();
    inputs.push_back(cancellingCoefficients());
    return oneInput(description::filterYCoCg16ToRGBA8, Layout::kThreeChannel16, Layout::kRgba8,
                    reference::yCoCg16ToRgba8, inputs);
}

// Onto a target that the part inside of the borders fills.
AssertionResult maskInsideBorders(FilterRig& rig) {
    Filter const bordered("MaskFilter4x8", 5, 2, 3, 4, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    Texels const texels = randomTexels(30, 21, 7);
    return rig.gives(bordered, {rig.uploaded(texels, Layout::kRgba8)}, cropped(texels, 5, 3, 23, 14), Layout::kRgba8);
}

// --- interleaving

AssertionResult interleaved(FilterRig& rig, std::array<Texels, 3> const& planes) {
    std::vector<size_t> sources;
    sources.reserve(planes.size());
    for (Texels const& plane : planes)
        sources.push_back(rig.uploaded(plane, Layout::kOneChannel16));
    return rig.gives(description::filterInterleave16(), sources,
                     reference::interleave16(planes[0], planes[1], planes[2]), Layout::kThreeChannel16);
}

FilterComparison interleaving(int widthTexels, int rows) {
    return [=](FilterRig& rig) {
        return interleaved(rig, {randomTexels(widthTexels, rows, 1), randomTexels(widthTexels, rows, 2),
                                 randomTexels(widthTexels, rows, 3)});
    };
}

// From an odd pixel of planes in textures of different sizes.
AssertionResult interleavedPart(FilterRig& rig) {
    std::array<Texels, 3> const planes = {randomTexels(10, 7, 4), randomTexels(12, 8, 5), randomTexels(15, 9, 6)};
    FilterRun run;
    for (size_t c = 0; c < planes.size(); ++c)
        run.sources.push_back({rig.uploaded(planes[c], Layout::kOneChannel16), 5, c, false});
    run.width = 13;
    run.height = 6;
    run.clipLeft = 3;
    run.offset = {6, 2};
    Texels const whole = reference::interleave16(cropped(planes[0], 0, 0, 10, 6), cropped(planes[1], 0, 1, 10, 6),
                                                 cropped(planes[2], 0, 2, 10, 6));
    return rig.givesWithin(description::filterInterleave16(), run, cropped(whole, 16, 0, 20, 6),
                           Layout::kThreeChannel16);
}

// --- sharpening

FilterComparison sharpness8(Texels const& image, double gain) {
    return [=](FilterRig& rig) {
        FilterSharpness8Params params;
        params.gain = gain;
        Texels const whole = reference::sharpness8(image, gain, 0);
        return rig.gives(description::filterSharpness8(), {rig.uploaded(image, Layout::kRgba8)},
                         cropped(whole, 2, 2, image.width - 4, image.height - 4), Layout::kRgba8, params);
    };
}

// Differences too small for the clamp to hide a wrong rounding.
Texels gentleSlopes() {
    Texels image = randomTexels(61, 47, 2);
    for (auto& byte : image.bytes)
        byte = static_cast<std::uint8_t>(120 + byte % 5);
    return image;
}

FilterComparison sharpnessH(Planes3 const& pixels) {
    return [=](FilterRig& rig) {
        Texels const whole = reference::sharpnessH16(packThreeChannel16(pixels));
        return rig.gives(description::filterSharpnessH16(), {rig.uploaded(pixels)},
                         cropped(whole, 4, 0, whole.width - 8, whole.height), Layout::kThreeChannel16);
    };
}

// The blur lies elsewhere in a texture of another size.
FilterComparison sharpnessV(Planes3 const& pixels, Planes3 const& blurred, double gain) {
    return [=](FilterRig& rig) {
        FilterSharpness16Params params;
        params.gain = gain;
        int const width = pixels[0].width - 6;
        int const height = pixels[0].height;
        FilterRun const run{{{rig.uploaded(pixels), 5, 0, false}, {rig.uploaded(blurred), 2, 3, false}},
                            static_cast<size_t>(width),
                            static_cast<size_t>(height)};
        Texels const whole =
            reference::sharpnessV16(packThreeChannel16(cropped(pixels, 5, 0, width, height)),
                                    packThreeChannel16(cropped(blurred, 2, 3, width, height)), gain, 0);
        // Rows around the part are read as well, so the two outermost ones are borders.
        return rig.givesWithin(description::filterSharpnessV16(), run, cropped(whole, 0, 2, 2 * width, height - 4),
                               Layout::kThreeChannel16, params);
    };
}

Comparisons sharpnessVAll() {
    Comparisons all;
    for (double const gain : {1.0, 3.0, -2.0}) {
        all.push_back(sharpnessV(randomPlanes(48, 24, 3, 500, 503), randomPlanes(51, 31, 4, 31980, 32220), gain));
        all.push_back(sharpnessV(randomPlanes(33, 21, 5, -100, 1100), randomPlanes(40, 26, 6), gain));
    }
    return all;
}

// --- colour matrices

Filter3x3MatrixParams times(reference::Matrix3 const& matrix) {
    Filter3x3MatrixParams params;
    params.matrix = matrix;
    return params;
}

constexpr reference::Matrix3 kWarm = {1300, 20, -60, -200, 1050, 90, -76, -46, 994};
// Coefficients that 11 bits do not hold.
constexpr reference::Matrix3 kStrong = {4097, -2051, 0, -3073, 3077, 7, 3, -2, 1023};

Comparisons matrix8() {
    Comparisons all;
    for (auto const& matrix : {kWarm, kStrong}) {
        all.emplace_back([matrix](FilterRig& rig) {
            Texels const image = randomColours(1);
            return rig.gives(description::filter3x3Matrix8(), {rig.uploaded(image, Layout::kRgba8)},
                             reference::matrix8(image, matrix, 1.0), Layout::kRgba8, times(matrix));
        });
    }
    all.emplace_back([](FilterRig& rig) {
        Texels const image = randomTexels(20, 12, 2);
        FilterRun const run{{{rig.uploaded(image, Layout::kRgba8), 3, 5, false}}, 9, 6};
        return rig.givesWithin(description::filter3x3Matrix8(), run,
                               reference::matrix8(cropped(image, 3, 5, 9, 6), kWarm, 1.0), Layout::kRgba8,
                               times(kWarm));
    });
    return all;
}

FilterComparison matrix16(Planes3 const& pixels, reference::Matrix3 const& matrix) {
    return [=](FilterRig& rig) {
        return rig.gives(description::filter3x3Matrix16(), {rig.uploaded(pixels)},
                         reference::matrix16(packThreeChannel16(pixels), matrix, 1.0), Layout::kThreeChannel16,
                         times(matrix));
    };
}

// --- truncation

Comparisons truncations() {
    Comparisons all;
    for (size_t const bits : {0U, 1U, 4U, 11U, 15U, 16U}) {
        for (bool const rounding : {false, true}) {
            all.emplace_back([=](FilterRig& rig) {
                FilterTruncate16Params params;
                params.shift = bits;
                params.rounding = rounding;
                return rig.gives(description::filterTruncate16(), {rig.uploaded(everySample())},
                                 reference::truncate16(packOneChannel16(everySample()), bits, rounding),
                                 Layout::kOneChannel16, params);
            });
        }
    }
    return all;
}

Comparisons copies(Filter (*description)(), Layout layout) {
    return oneInput(description, layout, layout, same,
                    {packOneChannel16(everySample()), randomTexels(kWideTexels, 2, 3)});
}

std::map<std::string, Comparisons> makeAll() {
    Plane const smooth = randomPlane(64, 31, 1, -2000, 2000);
    Plane const detail = randomPlane(64, 31, 2, -600, 600);
    Comparisons const h = {horizontal(smooth, detail), horizontal(boundaryPlane(64, 31, 7), boundaryPlane(64, 31, 8)),
                           horizontalPart,
                           horizontal(randomPlane(kWideTexels + 2, 2, 3), randomPlane(kWideTexels + 2, 2, 4))};
    Comparisons const v = {vertical(smooth, detail), vertical(boundaryPlane(64, 31, 7), boundaryPlane(64, 31, 8)),
                           verticalPart,
                           vertical(randomPlane(4, kWideTexels / 2 + 2, 3), randomPlane(4, kWideTexels / 2 + 2, 4))};
    std::map<std::string, Comparisons> all = tableComparisons();
    all["FilterFirIH53LeGall16"] = h;
    all["FilterFirIV53LeGall16"] = v;
    all["FilterInterleave16"] = {interleaving(16, 9), interleavedPart, interleaving(kWideTexels / 4, 2)};
    all["BlitFilter1x16"] = copies(description::blitFilter1x16, Layout::kOneChannel16);
    all["BlitFilter3x16"] = copies(description::blitFilter3x16, Layout::kThreeChannel16);
    all["BlitFilter4x8"] = copies(description::blitFilter4x8, Layout::kRgba8);
    all["MaskFilter4x8"] = copies(description::maskFilter4x8, Layout::kRgba8);
    all["MaskFilter4x8"].pop_back(); // a mask shows what lies underneath: there are no parts that land elsewhere
    all["MaskFilter4x8"].emplace_back(maskInsideBorders);
    all["Filter1x16ToRGB8"] =
        oneInput(description::filter1x16ToRGB8, Layout::kOneChannel16, Layout::kRgba8, reference::oneChannel16ToRgb8,
                 {packOneChannel16(everySample()), packOneChannel16(randomPlane(kWideTexels, 2, 3, -300, 600))});
    all["Filter3x16To4x8"] = oneInput(description::filter3x16To4x8, Layout::kThreeChannel16, Layout::kRgba8,
                                      reference::threeChannel16ToRgba8, pixelsOf16Bits());
    all["FilterYCoCg16ToRGBA8"] = yCoCgToRgba8();
    all["FilterYCoCg16ToRGB16"] = oneInput(description::filterYCoCg16ToRGB16, Layout::kThreeChannel16,
                                           Layout::kThreeChannel16, reference::yCoCg16ToRgb16, pixelsOf16Bits());
    all["FilterRGBA8ToYCoCg16"] =
        oneInput(description::filterRGBA8ToYCoCg16, Layout::kRgba8, Layout::kThreeChannel16, reference::rgba8ToYCoCg16,
                 {randomColours(1), randomTexels(kWideTexels / 2, 2, 2)});
    all["FilterSharpness8"] = {sharpness8(randomTexels(53, 37, 1), 1.0), sharpness8(gentleSlopes(), 1.25),
                               sharpness8(gentleSlopes(), 79.03125), sharpness8(gentleSlopes(), -2.0)};
    all["FilterSharpnessH16"] = {sharpnessH(randomPlanes(61, 33, 4, 0, 1023)), sharpnessH(boundaryTriples()),
                                 sharpnessH(randomPlanes(kWideTexels / 2, 2, 5, -50, 1100))};
    all["FilterSharpnessV16"] = sharpnessVAll();
    all["Filter3x3Matrix8"] = matrix8();
    all["Filter3x3Matrix16"] = {matrix16(randomPlanes(128, 64, 1, -9000, 9000), kWarm),
                                matrix16(randomPlanes(128, 64, 2, -2, 2), kStrong),
                                matrix16(randomPlanes(kWideTexels / 2, 2, 3, -9000, 9000), kWarm)};
    all["FilterTruncate16"] = truncations();
    for (std::string const& name : description::names())
        if (all.count(name) != 0) all[name].emplace_back([=](FilterRig& rig) { return appearsOnSurface(rig, name); });
    return all;
}

} // namespace

std::vector<FilterComparison> const& comparisonsOf(std::string const& filter) {
    static std::map<std::string, Comparisons> const all = makeAll();
    return all.at(filter);
}
