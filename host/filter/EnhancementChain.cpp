#include "host/filter/EnhancementChain.h"

#include "host/HostError.h"
#include "host/filter/DeepTexels.h"
#include "host/filter/FilterDescriptions.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace {

using namespace enhancement;
using Layout = PictureTargets::Layout;
using Size = PictureTargets::Size;

constexpr std::size_t kSharpenReach = 2;
constexpr unsigned kFileDepth = 16;
constexpr unsigned kPlaneDepth = 15; // samples have a sign
constexpr unsigned kSharpenDepth = 10;
constexpr unsigned kMatrixDepth = 12;
constexpr unsigned kMatrixResultBits = 14; // results of the 16-bit matrix are exact below 2^14
constexpr unsigned kShownDepth = 8;
constexpr double kOne = 1024.0; // 1.0 in the matrix filters

Size sizeOf(Region const& region) {
    return {region.width, region.height};
}

Size evenSizeOf(Region const& region) {
    return {region.width + region.width % 2, region.height};
}

Layout layoutOf(unsigned depth) {
    return depth == kShownDepth ? Layout::kRgba8 : Layout::kDeep;
}

// A picture has at most 2^16 codes per sample; of fewer bits the lower ones are gone.
std::uint64_t codeAt(std::uint64_t code, unsigned depth) {
    return code >> (kFileDepth - depth);
}

struct Interval {
    std::size_t start;
    std::size_t length;
};

Interval widened(Interval const& wanted, std::size_t reach, std::size_t end) {
    std::size_t const start = wanted.start - std::min(reach, wanted.start);
    return {start, std::min(wanted.start + wanted.length + reach, end) - start};
}

Interval onGrid(Interval const& wanted, std::size_t end) {
    std::size_t const start = wanted.start / EnhancementChain::kGrid * EnhancementChain::kGrid;
    std::size_t const blocks =
        (wanted.start + wanted.length - start + EnhancementChain::kGrid - 1) / EnhancementChain::kGrid;
    return {start, std::min(blocks * EnhancementChain::kGrid, end - start)};
}

Interval read(Interval const& wanted, Step const& step, std::size_t end) {
    if (std::holds_alternative<Sharpen>(step)) return widened(wanted, kSharpenReach, end);
    if (std::holds_alternative<Equalise>(step)) return widened(onGrid(wanted, end), EnhancementChain::kGrid, end);
    return wanted;
}

Filter3x3MatrixParams matrixParams(ColourMatrix const& matrix) {
    Filter3x3MatrixParams params;
    // The record goes column by column.
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column)
            params.matrix[3 * column + row] =
                static_cast<std::int32_t>(std::lround(kOne * matrix.rows[3 * row + column]));
    }
    params.scale = matrix.strength;
    return params;
}

// The deepest samples whose sums stay within the filter's domain.
unsigned roomFor(ColourMatrix const& matrix) {
    double largest = 1.0;
    for (std::size_t row = 0; row < 3; ++row)
        largest = std::max(largest, std::abs(matrix.strength) *
                                        (std::abs(matrix.rows[3 * row]) + std::abs(matrix.rows[3 * row + 1]) +
                                         std::abs(matrix.rows[3 * row + 2])));
    return std::min(kMatrixDepth, kMatrixResultBits - static_cast<unsigned>(std::ceil(std::log2(largest))));
}

} // namespace

EnhancementChain::EnhancementChain(std::shared_ptr<RenderBackendInstance> instance, std::vector<Step> steps,
                                   Size const& picture)
    : instance_(std::move(instance)), targets_(instance_), steps_(std::move(steps)), picture_(picture) {}

Region EnhancementChain::around(Region const& output, Step const& step) const {
    Interval const x = read({output.x, output.width}, step, picture_.width);
    Interval const y = read({output.y, output.height}, step, picture_.height);
    return {x.start, y.start, x.length, y.length};
}

// What each step starts from, and the output last.
std::vector<Region> EnhancementChain::regionsUpTo(Region const& output) const {
    std::vector<Region> regions(steps_.size() + 1, output);
    for (std::size_t i = steps_.size(); i-- > 0;)
        regions[i] = around(regions[i + 1], steps_[i]);
    return regions;
}

Region EnhancementChain::inputFor(Region const& output) const {
    return regionsUpTo(output).front();
}

std::size_t EnhancementChain::partSide(std::vector<Step> const& steps) {
    std::size_t around = 0;
    for (Step const& step : steps) {
        if (std::holds_alternative<Sharpen>(step)) around += 2 * kSharpenReach;
        // A step before it may have left the grid at both sides.
        if (std::holds_alternative<Equalise>(step)) around += 4 * kGrid;
    }
    return around >= kMaxSide ? 0 : (kMaxSide - around) / kGrid * kGrid;
}

std::size_t EnhancementChain::requiredPartSide(std::vector<Step> const& steps) {
    std::size_t const side = partSide(steps);
    if (side == 0)
        throw HostError(HostError::Kind::Usage,
                        std::to_string(steps.size()) +
                            " enhancements read too many pixels around each one; give fewer --clahe and --sharpen");
    return side;
}

OwnedTarget EnhancementChain::draw(OwnedTarget input, unsigned depth, Region const& output) {
    return finish({std::move(input), inputFor(output), depth}, output);
}

std::vector<unsigned char> EnhancementChain::run8(std::vector<unsigned char> const& rgba, Region const& output) {
    Region const region = inputFor(output);
    return texels(draw(targets_.uploaded(Layout::kRgba8, sizeOf(region), rgba), kShownDepth, output), output);
}

std::vector<unsigned char> EnhancementChain::run15(Planes const& planes, Region const& output) {
    return texels(draw15(planes, output), output);
}

OwnedTarget EnhancementChain::draw15(Planes const& planes, Region const& output) {
    return draw(interleaved(planes, evenSizeOf(inputFor(output)), nullptr), kPlaneDepth, output);
}

OwnedTarget EnhancementChain::finish(Part part, Region const& output) {
    std::vector<Region> const regions = regionsUpTo(output);
    for (std::size_t i = 0; i < steps_.size(); ++i)
        part = apply(std::move(part), steps_[i], regions[i + 1]);
    return std::move(shownAs8(std::move(part)).target);
}

std::vector<unsigned char> EnhancementChain::texels(OwnedTarget const& target, Region const& output) const {
    return targets_.read(target, Layout::kRgba8, {0, 0, output.width, output.height});
}

EnhancementChain::Part EnhancementChain::apply(Part part, Step const& step, Region const& output) {
    return std::visit(
        [&](auto const& one) {
            using Kind = std::decay_t<decltype(one)>;
            if constexpr (std::is_same_v<Kind, Sharpen>)
                return sharpened(std::move(part), one, output);
            else if constexpr (std::is_same_v<Kind, ColourMatrix>)
                return multiplied(std::move(part), one);
            else if constexpr (std::is_same_v<Kind, Gamma>)
                return gammaMapped(std::move(part), one);
            else if constexpr (std::is_same_v<Kind, LinearToSrgb>)
                return toSrgb(std::move(part));
            else if constexpr (std::is_same_v<Kind, Equalise>)
                return equalised(std::move(part), one, output);
            else
                return truncated(std::move(part), one);
        },
        step);
}

EnhancementChain::Part EnhancementChain::sharpened(Part part, Sharpen const& sharpen, Region const& output) {
    if (part.depth != kShownDepth) part = atDepth(std::move(part), kSharpenDepth);
    // Where the picture ends the filter would find nothing: its edge pixels go on.
    PictureTargets::Sides const beyond = {kSharpenReach - (output.x - part.region.x),
                                          kSharpenReach - (part.region.x + part.region.width - output.x - output.width),
                                          kSharpenReach - (output.y - part.region.y),
                                          kSharpenReach -
                                              (part.region.y + part.region.height - output.y - output.height)};
    OwnedTarget const source =
        targets_.extended(std::move(part.target), layoutOf(part.depth), sizeOf(part.region), beyond);
    Size const read = {output.width + 2 * kSharpenReach, output.height + 2 * kSharpenReach};
    return part.depth == kShownDepth ? sharpened8(source, read, output, sharpen.gain)
                                     : sharpened16(source, read, output, sharpen.gain);
}

EnhancementChain::Part EnhancementChain::sharpened8(OwnedTarget const& source, Size const& read, Region const& output,
                                                    double gain) {
    FilterSharpness8Params params;
    params.gain = gain;
    OwnedTarget result = targets_.target(Layout::kRgba8, sizeOf(output));
    targets_.run(targets_.prepared(description::filterSharpness8()), {{source.id(), 0, 0, false}}, read, result,
                 params);
    return {std::move(result), output, kShownDepth};
}

EnhancementChain::Part EnhancementChain::sharpened16(OwnedTarget const& source, Size const& read, Region const& output,
                                                     double gain) {
    // The filter drops a fraction before it multiplies by 32: so the gain comes 32 times as large, and five bits go
    // again.
    constexpr int kFractionBits = 5;
    FilterSharpness16Params params;
    params.gain = std::trunc(std::ldexp(gain, kFractionBits));
    params.shiftBits = kFractionBits;
    OwnedTarget const blur = targets_.target(Layout::kDeep, {output.width, read.height});
    targets_.run(targets_.prepared(description::filterSharpnessH16()), {{source.id(), 0, 0, false}}, read, blur);
    OwnedTarget result = targets_.target(Layout::kDeep, sizeOf(output));
    targets_.run(targets_.prepared(description::filterSharpnessV16()),
                 {{source.id(), kSharpenReach, 0, false}, {blur.id(), 0, 0, false}}, {output.width, read.height},
                 result, params);
    return {std::move(result), output, kSharpenDepth};
}

EnhancementChain::Part EnhancementChain::multiplied(Part part, ColourMatrix const& matrix) {
    if (part.depth == kShownDepth)
        return mapped(part, description::filter3x3Matrix8(), kShownDepth, matrixParams(matrix));
    unsigned const depth = std::min(part.depth, roomFor(matrix));
    part = atDepth(std::move(part), depth);
    return mapped(part, description::filter3x3Matrix16(), depth, matrixParams(matrix));
}

EnhancementChain::Part EnhancementChain::gammaMapped(Part part, Gamma const& gamma) {
    if (part.depth == kShownDepth)
        return mapped(part, description::filterBlackWhiteGamma8(), kShownDepth,
                      FilterBlackWhiteGamma8Params(gamma.gamma, gamma.black, gamma.white));
    return mapped(
        part, description::filterLinear16TosRGB8(part.depth), kShownDepth,
        FilterLinear16TosRGB8Params(gamma.gamma, codeAt(gamma.black, part.depth), codeAt(gamma.white, part.depth)));
}

EnhancementChain::Part EnhancementChain::toSrgb(Part part) {
    ComparableSingleFilterParameters<unsigned char> const anyKey;
    return part.depth == kShownDepth
               ? mapped(part, description::filterLinear8ToSRGB8(), kShownDepth, anyKey)
               : mapped(part, description::filterLinear16ToSRGB8(part.depth), kShownDepth, anyKey);
}

// The luma alone: it is the first channel of YCoCg, and the filter leaves the others as they are.
EnhancementChain::Part EnhancementChain::equalised(Part part, Equalise const& equalise, Region const& output) {
    part = mapped(shownAs8(std::move(part)), description::filterRGBA8ToYCoCg16(), kFileDepth);
    FilterClaheParams params;
    params.value = equalise.clipLimit;
    Region const& in = part.region;
    // No program belongs to it, and its borders are others for each part.
    OwnedFilter const clahe(instance_,
                            description::filterCLAHE({output.x - in.x, in.x + in.width - output.x - output.width,
                                                      output.y - in.y, in.y + in.height - output.y - output.height}));
    OwnedTarget result = targets_.target(Layout::kDeep, sizeOf(output));
    targets_.run(clahe.filter(), {{part.target.id(), 0, 0, false}}, sizeOf(in), result, params);
    return mapped({std::move(result), output, kFileDepth}, description::filterYCoCg16ToRGBA8(), kShownDepth);
}

EnhancementChain::Part EnhancementChain::truncated(Part part, Truncate const& truncate) {
    Truncate atDepth = truncate;
    if (part.depth != kShownDepth) atDepth.bits -= std::min(atDepth.bits, kFileDepth - part.depth);
    // No filter takes three channels apart: the planes go through the host.
    OwnedTarget deep = interleaved(planesOf(part), evenSizeOf(part.region), &atDepth);
    Part result = {std::move(deep), part.region, part.depth == kShownDepth ? kFileDepth : part.depth};
    if (part.depth != kShownDepth) return result;
    return mapped(result, description::filter3x16To4x8(), kShownDepth);
}

EnhancementChain::Part EnhancementChain::mapped(Part const& part, Filter const& description, unsigned depth,
                                                SingleFilterParameters const& params) {
    OwnedTarget result = targets_.target(layoutOf(depth), sizeOf(part.region));
    targets_.run(targets_.prepared(description), {{part.target.id(), 0, 0, false}}, sizeOf(part.region), result,
                 params);
    return {std::move(result), part.region, depth};
}

// A power of two is exact in the matrix; the bits that go are rounded.
EnhancementChain::Part EnhancementChain::atDepth(Part part, unsigned depth) {
    if (part.depth <= depth) return part;
    double const factor = std::ldexp(1.0, static_cast<int>(depth) - static_cast<int>(part.depth));
    ColourMatrix const scaling = {{factor, 0, 0, 0, factor, 0, 0, 0, factor}, 1.0};
    return mapped(part, description::filter3x3Matrix16(), depth, matrixParams(scaling));
}

// The upper byte, by a table that rounds (code - black) * 255 / (white - black). With s codes to a byte and the points
// below, that is byte b from code b * s - 1 + (b - 0.5) / 255 on: b * s is the first whole one.
EnhancementChain::Part EnhancementChain::shownAs8(Part part) {
    if (part.depth == kShownDepth) return part;
    std::uint64_t const codesPerByte = std::uint64_t{1} << (part.depth - kShownDepth);
    std::uint64_t const black = codesPerByte / 2 - 1;
    return mapped(part, description::filterLinear16TosRGB8(part.depth), kShownDepth,
                  FilterLinear16TosRGB8Params(1.0, black, black + 255 * codesPerByte + 1));
}

OwnedTarget EnhancementChain::interleaved(Planes const& planes, Size const& size, Truncate const* truncate) {
    std::vector<OwnedTarget> targets;
    std::vector<FilterSource> sources;
    for (auto const& plane : planes) {
        targets.push_back(targets_.uploaded(Layout::kPlane, size, plane));
        if (truncate != nullptr) {
            FilterTruncate16Params params;
            params.shift = truncate->bits;
            params.rounding = truncate->rounding;
            OwnedTarget cut = targets_.target(Layout::kPlane, size);
            targets_.run(targets_.prepared(description::filterTruncate16()), {{targets.back().id(), 0, 0, false}}, size,
                         cut, params);
            targets.back() = std::move(cut);
        }
        sources.push_back({targets.back().id(), 0, 0, false});
    }
    OwnedTarget result = targets_.target(Layout::kDeep, size);
    targets_.run(targets_.prepared(description::filterInterleave16()), sources, size, result);
    return result;
}

EnhancementChain::Planes EnhancementChain::planesOf(Part const& part) const {
    bool const deep = part.depth != kShownDepth;
    std::size_t const pixelBytes = deep ? deeptexels::kPixelBytes : 4;
    std::vector<unsigned char> const texels =
        targets_.read(part.target, layoutOf(part.depth), {0, 0, part.region.width, part.region.height});
    Size const size = evenSizeOf(part.region);
    Planes planes;
    for (std::size_t channel = 0; channel < planes.size(); ++channel) {
        auto& plane = planes[channel];
        plane.resize(2 * size.width * size.height);
        for (std::size_t y = 0; y < size.height; ++y) {
            for (std::size_t x = 0; x < part.region.width; ++x) {
                unsigned char const* const pixel = &texels[(y * part.region.width + x) * pixelBytes];
                unsigned char* const sample = &plane[2 * (y * size.width + x)];
                sample[0] = pixel[deep ? deeptexels::kPlaces[channel].low : channel];
                if (deep) sample[1] = pixel[deeptexels::kPlaces[channel].high];
            }
        }
    }
    return planes;
}
