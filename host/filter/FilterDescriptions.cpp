#include "host/filter/FilterDescriptions.h"

#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace {

// The differences of a filter from a copy of one input.
struct Geometry {
    Insets invalid;
    size_t scaleX = 1;
    size_t scaleY = 1;
};

Filter described(std::string const& name, SampleLayout in, SampleLayout out, size_t bitDepthIn,
                 Geometry const& geometry, std::vector<bool> const& signedIn, bool signedOut) {
    using namespace samplelayout;
    Insets const& invalid = geometry.invalid;
    return Filter(name, invalid.left, invalid.right, invalid.top, invalid.bottom, 0, 1, 0, 1, geometry.scaleX, 1,
                  geometry.scaleY, 1, signedIn.size(), bitsPerPixel(in), bitsPerPixel(out), components(in),
                  components(out), 1, 1, 1, 1, signedIn, signedOut, bitDepthIn, RenderBackend::NEAREST);
}

// 16-bit samples are signed.
Filter described(std::string const& name, SampleLayout in, SampleLayout out, size_t bitDepthIn,
                 Geometry const& geometry = {}, size_t inputs = 1) {
    return described(name, in, out, bitDepthIn, geometry, std::vector<bool>(inputs, samplelayout::isSigned(in)),
                     samplelayout::isSigned(out));
}

template <class Record>
Filter withParameters(Filter filter) {
    filter.setParametersFactory([] { return std::make_shared<Record>(); });
    return filter;
}

using Layout = SampleLayout;

constexpr size_t kEightBits = 8;
constexpr size_t kTenBits = 10; // depth of sharpening on 16-bit samples
constexpr size_t kSixteenBits = 16;

struct NamedDescription {
    char const* name;
    Filter (*make)();
};

// In the order in which hosts list them.
constexpr NamedDescription kDescriptions[] = {
    {"FilterFirIH53LeGall16", description::filterFirIH53LeGall16},
    {"FilterFirIV53LeGall16", description::filterFirIV53LeGall16},
    {"BlitFilter1x16", description::blitFilter1x16},
    {"BlitFilter3x16", description::blitFilter3x16},
    {"BlitFilter3x8", description::blitFilter3x8},
    {"BlitFilter4x8", description::blitFilter4x8},
    {"Filter1x16ToRGB8", description::filter1x16ToRGB8},
    {"FilterInterleave16", description::filterInterleave16},
    {"FilterYCoCg16ToRGBA8", description::filterYCoCg16ToRGBA8},
    {"FilterYCoCg16ToRGB16", description::filterYCoCg16ToRGB16},
    {"Filter3x16To4x8", description::filter3x16To4x8},
    {"FilterSharpness8", description::filterSharpness8},
    {"FilterSharpnessH16", description::filterSharpnessH16},
    {"FilterSharpnessV16", description::filterSharpnessV16},
    {"FilterLinear8ToSRGB8", description::filterLinear8ToSRGB8},
    {"FilterLinear16ToSRGB8", [] { return description::filterLinear16ToSRGB8(); }},
    {"MaskFilter3x8", description::maskFilter3x8},
    {"MaskFilter4x8", description::maskFilter4x8},
    {"MaskFilter3x16", description::maskFilter3x16},
    {"FilterLinear16TosRGB8", [] { return description::filterLinear16TosRGB8(); }},
    {"FilterTruncate16", description::filterTruncate16},
    {"Filter3x3Matrix8", description::filter3x3Matrix8},
    {"Filter3x3Matrix16", description::filter3x3Matrix16},
    {"FilterRemoveAlpha8", description::filterRemoveAlpha8},
    {"FilterBlackWhiteGamma8", description::filterBlackWhiteGamma8},
    {"FilterRGBA8ToYCoCg16", description::filterRGBA8ToYCoCg16},
    {"FilterCLAHE", [] { return description::filterCLAHE(); }},
};

} // namespace

Filter description::filterFirIH53LeGall16() {
    Geometry geometry;
    geometry.invalid.right = 4;
    geometry.scaleX = 2;
    return described("FilterFirIH53LeGall16", Layout::kOneChannel16, Layout::kOneChannel16, kSixteenBits, geometry, 2);
}

Filter description::filterFirIV53LeGall16() {
    Geometry geometry;
    geometry.invalid.bottom = 4;
    geometry.scaleY = 2;
    return described("FilterFirIV53LeGall16", Layout::kOneChannel16, Layout::kOneChannel16, kSixteenBits, geometry, 2);
}

Filter description::blitFilter1x16() {
    return described("BlitFilter1x16", Layout::kOneChannel16, Layout::kOneChannel16, kSixteenBits);
}

Filter description::blitFilter3x16() {
    return described("BlitFilter3x16", Layout::kThreeChannel16, Layout::kThreeChannel16, kSixteenBits);
}

Filter description::blitFilter3x8() {
    return described("BlitFilter3x8", Layout::kRgb8, Layout::kRgb8, kEightBits);
}

Filter description::blitFilter4x8() {
    return described("BlitFilter4x8", Layout::kRgba8, Layout::kRgba8, kEightBits);
}

Filter description::blitFilter(SampleLayout layout) {
    switch (layout) {
    case Layout::kRgb8:
        return blitFilter3x8();
    case Layout::kRgba8:
        return blitFilter4x8();
    case Layout::kOneChannel16:
        return blitFilter1x16();
    case Layout::kThreeChannel16:
    case Layout::kFourChannel16:
        break;
    }
    return blitFilter3x16();
}

Filter description::filter1x16ToRGB8() {
    return described("Filter1x16ToRGB8", Layout::kOneChannel16, Layout::kRgb8, kSixteenBits);
}

Filter description::filterInterleave16() {
    return described("FilterInterleave16", Layout::kOneChannel16, Layout::kThreeChannel16, kSixteenBits, {}, 3);
}

Filter description::filterYCoCg16ToRGBA8() {
    return described("FilterYCoCg16ToRGBA8", Layout::kThreeChannel16, Layout::kRgba8, kSixteenBits);
}

Filter description::filterYCoCg16ToRGB16() {
    return described("FilterYCoCg16ToRGB16", Layout::kThreeChannel16, Layout::kThreeChannel16, kSixteenBits);
}

Filter description::filter3x16To4x8() {
    return described("Filter3x16To4x8", Layout::kThreeChannel16, Layout::kRgba8, kSixteenBits);
}

Filter description::filterSharpness8() {
    Geometry const geometry{{2, 2, 2, 2}, 1, 1};
    return withParameters<FilterSharpness8Params>(
        described("FilterSharpness8", Layout::kRgba8, Layout::kRgba8, kEightBits, geometry));
}

// The blur is unsigned: up to 64 * 1023.
Filter description::filterSharpnessH16() {
    return described("FilterSharpnessH16", Layout::kThreeChannel16, Layout::kThreeChannel16, kTenBits,
                     {{2, 2, 0, 0}, 1, 1}, {true}, false);
}

Filter description::filterSharpnessV16() {
    return withParameters<FilterSharpness16Params>(described("FilterSharpnessV16", Layout::kThreeChannel16,
                                                             Layout::kThreeChannel16, kTenBits, {{0, 0, 2, 2}, 1, 1},
                                                             {true, false}, true));
}

Filter description::filterLinear8ToSRGB8() {
    return withParameters<ComparableSingleFilterParameters<unsigned char>>(
        described("FilterLinear8ToSRGB8", Layout::kRgba8, Layout::kRgba8, kEightBits));
}

Filter description::filterLinear16ToSRGB8(size_t bitDepth) {
    return withParameters<ComparableSingleFilterParameters<unsigned char>>(
        described("FilterLinear16ToSRGB8", Layout::kThreeChannel16, Layout::kRgba8, bitDepth));
}

Filter description::filterLinear16TosRGB8(size_t bitDepth) {
    return withParameters<FilterLinear16TosRGB8Params>(
        described("FilterLinear16TosRGB8", Layout::kThreeChannel16, Layout::kRgba8, bitDepth));
}

Filter description::filterBlackWhiteGamma8() {
    return withParameters<FilterBlackWhiteGamma8Params>(
        described("FilterBlackWhiteGamma8", Layout::kRgba8, Layout::kRgba8, kEightBits));
}

Filter description::maskFilter3x8() {
    return withParameters<MaskFilterParams>(described("MaskFilter3x8", Layout::kRgb8, Layout::kRgb8, kEightBits));
}

Filter description::maskFilter4x8() {
    return withParameters<MaskFilterParams>(described("MaskFilter4x8", Layout::kRgba8, Layout::kRgba8, kEightBits));
}

Filter description::maskFilter3x16() {
    return withParameters<MaskFilterParams>(
        described("MaskFilter3x16", Layout::kThreeChannel16, Layout::kThreeChannel16, kSixteenBits));
}

Filter description::filterTruncate16() {
    return withParameters<FilterTruncate16Params>(
        described("FilterTruncate16", Layout::kOneChannel16, Layout::kOneChannel16, kSixteenBits));
}

Filter description::filter3x3Matrix8() {
    return withParameters<Filter3x3MatrixParams>(
        described("Filter3x3Matrix8", Layout::kRgba8, Layout::kRgba8, kEightBits));
}

Filter description::filter3x3Matrix16() {
    return withParameters<Filter3x3MatrixParams>(
        described("Filter3x3Matrix16", Layout::kThreeChannel16, Layout::kThreeChannel16, kSixteenBits));
}

Filter description::filterRemoveAlpha8() {
    return described("FilterRemoveAlpha8", Layout::kRgba8, Layout::kRgb8, kEightBits);
}

Filter description::filterRGBA8ToYCoCg16() {
    return described("FilterRGBA8ToYCoCg16", Layout::kRgba8, Layout::kThreeChannel16, kEightBits);
}

Filter description::filterCLAHE(Insets const& borders) {
    return withParameters<FilterClaheParams>(
        described("FilterCLAHE", Layout::kFourChannel16, Layout::kFourChannel16, kSixteenBits, {borders, 1, 1}));
}

std::vector<std::string> const& description::names() {
    static std::vector<std::string> const all = [] {
        std::vector<std::string> list;
        list.reserve(std::size(kDescriptions));
        for (auto const& entry : kDescriptions)
            list.emplace_back(entry.name);
        return list;
    }();
    return all;
}

Filter description::byName(std::string const& name) {
    auto const found = std::find_if(std::begin(kDescriptions), std::end(kDescriptions),
                                    [&](NamedDescription const& entry) { return entry.name == name; });
    if (found == std::end(kDescriptions)) throw std::out_of_range("no built-in filter has the name " + name);
    return found->make();
}
