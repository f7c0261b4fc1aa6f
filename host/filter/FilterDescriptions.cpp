#include "host/filter/FilterDescriptions.h"

#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace {

// How pixels lie in a texture.
struct Layout {
    size_t bitsPerPixel;
    size_t components;
    bool isSigned;
};

constexpr Layout kRgb8{24, 3, false};
constexpr Layout kRgba8{32, 4, false};
constexpr Layout kOneChannel16{16, 1, true};
constexpr Layout kThreeChannel16{48, 3, true};
constexpr Layout kFourChannel16{64, 4, true};

// What sets a filter apart from the copy of one input.
struct Geometry {
    size_t invalidLeft = 0;
    size_t invalidRight = 0;
    size_t invalidTop = 0;
    size_t invalidBottom = 0;
    size_t scaleX = 1;
    size_t scaleY = 1;
};

Filter described(std::string const& name, Layout const& in, Layout const& out, size_t bitDepthIn,
                 Geometry const& geometry = {}, std::vector<bool> const& signedIn = {}) {
    std::vector<bool> const inputs = signedIn.empty() ? std::vector<bool>{in.isSigned} : signedIn;
    return Filter(name, geometry.invalidLeft, geometry.invalidRight, geometry.invalidTop, geometry.invalidBottom, 0, 1,
                  0, 1, geometry.scaleX, 1, geometry.scaleY, 1, inputs.size(), in.bitsPerPixel, out.bitsPerPixel,
                  in.components, out.components, 1, 1, 1, 1, inputs, out.isSigned, bitDepthIn, RenderBackend::NEAREST);
}

template <class Record>
Filter withParameters(Filter filter) {
    filter.setParametersFactory([] { return std::make_shared<Record>(); });
    return filter;
}

constexpr size_t kEightBits = 8;
constexpr size_t kTenBits = 10; // what sharpening on 16-bit samples looks at
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
    geometry.invalidRight = 4;
    geometry.scaleX = 2;
    return described("FilterFirIH53LeGall16", kOneChannel16, kOneChannel16, kSixteenBits, geometry, {true, true});
}

Filter description::filterFirIV53LeGall16() {
    Geometry geometry;
    geometry.invalidBottom = 4;
    geometry.scaleY = 2;
    return described("FilterFirIV53LeGall16", kOneChannel16, kOneChannel16, kSixteenBits, geometry, {true, true});
}

Filter description::blitFilter1x16() {
    return described("BlitFilter1x16", kOneChannel16, kOneChannel16, kSixteenBits);
}

Filter description::blitFilter3x16() {
    return described("BlitFilter3x16", kThreeChannel16, kThreeChannel16, kSixteenBits);
}

Filter description::blitFilter3x8() {
    return described("BlitFilter3x8", kRgb8, kRgb8, kEightBits);
}

Filter description::blitFilter4x8() {
    return described("BlitFilter4x8", kRgba8, kRgba8, kEightBits);
}

Filter description::filter1x16ToRGB8() {
    return described("Filter1x16ToRGB8", kOneChannel16, kRgb8, kSixteenBits);
}

Filter description::filterInterleave16() {
    return described("FilterInterleave16", kOneChannel16, kThreeChannel16, kSixteenBits, {}, {true, true, true});
}

Filter description::filterYCoCg16ToRGBA8() {
    return described("FilterYCoCg16ToRGBA8", kThreeChannel16, kRgba8, kSixteenBits);
}

Filter description::filterYCoCg16ToRGB16() {
    return described("FilterYCoCg16ToRGB16", kThreeChannel16, kThreeChannel16, kSixteenBits);
}

Filter description::filter3x16To4x8() {
    return described("Filter3x16To4x8", kThreeChannel16, kRgba8, kSixteenBits);
}

Filter description::filterSharpness8() {
    Geometry const geometry{2, 2, 2, 2, 1, 1};
    return withParameters<FilterSharpness8Params>(described("FilterSharpness8", kRgba8, kRgba8, kEightBits, geometry));
}

Filter description::filterSharpnessH16() {
    Layout blur = kThreeChannel16;
    blur.isSigned = false; // up to 64 * 1023
    Geometry geometry;
    geometry.invalidLeft = 2;
    geometry.invalidRight = 2;
    return described("FilterSharpnessH16", kThreeChannel16, blur, kTenBits, geometry);
}

Filter description::filterSharpnessV16() {
    Geometry geometry;
    geometry.invalidTop = 2;
    geometry.invalidBottom = 2;
    return withParameters<FilterSharpness16Params>(
        described("FilterSharpnessV16", kThreeChannel16, kThreeChannel16, kTenBits, geometry, {true, false}));
}

Filter description::filterLinear8ToSRGB8() {
    return withParameters<ComparableSingleFilterParameters<unsigned char>>(
        described("FilterLinear8ToSRGB8", kRgba8, kRgba8, kEightBits));
}

Filter description::filterLinear16ToSRGB8(size_t bitDepth) {
    return withParameters<ComparableSingleFilterParameters<unsigned char>>(
        described("FilterLinear16ToSRGB8", kThreeChannel16, kRgba8, bitDepth));
}

Filter description::filterLinear16TosRGB8(size_t bitDepth) {
    return withParameters<FilterLinear16TosRGB8Params>(
        described("FilterLinear16TosRGB8", kThreeChannel16, kRgba8, bitDepth));
}

Filter description::filterBlackWhiteGamma8() {
    return withParameters<FilterBlackWhiteGamma8Params>(
        described("FilterBlackWhiteGamma8", kRgba8, kRgba8, kEightBits));
}

Filter description::maskFilter3x8() {
    return withParameters<MaskFilterParams>(described("MaskFilter3x8", kRgb8, kRgb8, kEightBits));
}

Filter description::maskFilter4x8() {
    return withParameters<MaskFilterParams>(described("MaskFilter4x8", kRgba8, kRgba8, kEightBits));
}

Filter description::maskFilter3x16() {
    return withParameters<MaskFilterParams>(
        described("MaskFilter3x16", kThreeChannel16, kThreeChannel16, kSixteenBits));
}

Filter description::filterTruncate16() {
    return withParameters<FilterTruncate16Params>(
        described("FilterTruncate16", kOneChannel16, kOneChannel16, kSixteenBits));
}

Filter description::filter3x3Matrix8() {
    return withParameters<Filter3x3MatrixParams>(described("Filter3x3Matrix8", kRgba8, kRgba8, kEightBits));
}

Filter description::filter3x3Matrix16() {
    return withParameters<Filter3x3MatrixParams>(
        described("Filter3x3Matrix16", kThreeChannel16, kThreeChannel16, kSixteenBits));
}

Filter description::filterRemoveAlpha8() {
    return described("FilterRemoveAlpha8", kRgba8, kRgb8, kEightBits);
}

Filter description::filterRGBA8ToYCoCg16() {
    return described("FilterRGBA8ToYCoCg16", kRgba8, kThreeChannel16, kEightBits);
}

Filter description::filterCLAHE(Borders const& borders) {
    Geometry const geometry{borders.left, borders.right, borders.top, borders.bottom, 1, 1};
    return withParameters<FilterClaheParams>(
        described("FilterCLAHE", kFourChannel16, kFourChannel16, kSixteenBits, geometry));
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
