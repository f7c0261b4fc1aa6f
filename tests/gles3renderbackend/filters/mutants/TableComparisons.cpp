#include "tests/gles3renderbackend/filters/mutants/TableComparisons.h"

#include "host/FilterDescriptions.h"
#include "reference/TableLookup.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/TableFilter.h"

namespace {

using namespace filtertest;
using reference::packThreeChannel16;
using reference::Planes3;
using ::testing::AssertionResult;

Texels everyCode() {
    Texels image(256, 2);
    for (int code = 0; code < 256; ++code) {
        auto const up = static_cast<std::uint8_t>(code);
        auto const down = static_cast<std::uint8_t>(255 - code);
        image.set(code, 0, {up, down, static_cast<std::uint8_t>(code / 2), down});
        image.set(code, 1, {down, up, up, 7});
    }
    return image;
}

// Through 2^bitDepth entries that are a straight ramp.
FilterComparison ramp8(size_t bitDepth) {
    return [=](FilterRig& rig) {
        std::uint64_t const white = (std::uint64_t{1} << bitDepth) - 1;
        auto const table = reference::gammaTable(static_cast<unsigned>(bitDepth), 1.0, 0, white);
        return rig.gives(tableFilter("FilterLinear16TosRGB8", bitDepth), {rig.uploaded(everyCode(), Layout::kRgba8)},
                         reference::tableLookup8(everyCode(), table), Layout::kRgba8,
                         FilterLinear16TosRGB8Params(1.0, 0, white));
    };
}

// Through 2^bitDepth entries of which 250 rise, in the middle of the range: there all neighbours differ.
FilterComparison ramp16(size_t bitDepth) {
    return [=](FilterRig& rig) {
        std::uint64_t const black = (std::uint64_t{1} << bitDepth) / 4 - 60;
        auto const last = static_cast<std::int32_t>(black) + 300;
        Planes3 pixels = randomPlanes(96, 64, 3, last - 400, last);
        pixels[0] = randomPlane(96, 64, 4, -32768, 32767);
        Texels const texels = packThreeChannel16(pixels);
        auto const table = reference::gammaTable(static_cast<unsigned>(bitDepth), 1.0, black, black + 250);
        return rig.gives(description::filterLinear16TosRGB8(bitDepth), {rig.uploaded(pixels)},
                         reference::tableLookup16(texels, table), Layout::kRgba8,
                         FilterLinear16TosRGB8Params(1.0, black, black + 250));
    };
}

AssertionResult blackWhiteGamma(FilterRig& rig) {
    return rig.gives(description::filterBlackWhiteGamma8(), {rig.uploaded(everyCode(), Layout::kRgba8)},
                     reference::tableLookup8(everyCode(), reference::blackWhiteGamma8Table(2.2, 40, 3300)),
                     Layout::kRgba8, FilterBlackWhiteGamma8Params(2.2, 40, 3300));
}

FilterComparison sRgb(size_t bitDepth) {
    return [=](FilterRig& rig) {
        auto const table = reference::srgbTable(static_cast<unsigned>(bitDepth));
        ComparableSingleFilterParameters<unsigned char> const params;
        if (bitDepth == 8) {
            return rig.gives(description::filterLinear8ToSRGB8(), {rig.uploaded(everyCode(), Layout::kRgba8)},
                             reference::tableLookup8(everyCode(), table), Layout::kRgba8, params);
        }
        Texels const texels = packThreeChannel16(randomPlanes(96, 64, 5, -100, (1 << bitDepth) + 100));
        return rig.gives(description::filterLinear16ToSRGB8(bitDepth), {rig.uploaded(texels, Layout::kThreeChannel16)},
                         reference::tableLookup16(texels, table), Layout::kRgba8, params);
    };
}

} // namespace

std::map<std::string, std::vector<FilterComparison>> tableComparisons() {
    std::map<std::string, std::vector<FilterComparison>> all;
    all["FilterLinear8ToSRGB8"] = {sRgb(8)};
    all["FilterLinear16ToSRGB8"] = {sRgb(12)};
    all["FilterLinear16TosRGB8"] = {ramp16(10), ramp16(12), ramp16(16)};
    all["FilterLinear16TosRGB8Of8Bits"] = {ramp8(8), ramp8(3)}; // other stages than with deeper inputs
    all["FilterBlackWhiteGamma8"] = {blackWhiteGamma};
    return all;
}
