#include "host/filter/EnhancementChain.h"

#include "host/HostError.h"
#include "host/filter/FilterDescriptions.h"
#include "host/filter/SampleLayout.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace {

using namespace enhancement;
using Layout = SampleLayout;

constexpr size_t kSharpenReach = 2;
constexpr unsigned kFileDepth = 16;
constexpr unsigned kPlaneDepth = 15; // samples are signed
constexpr unsigned kSharpenDepth = 10;
constexpr unsigned kMatrixDepth = 12;
constexpr unsigned kMatrixResultBits = 14; // results of the 16-bit matrix are exact below 2^14
constexpr unsigned kShownDepth = EnhancementChain::kShownDepth;
constexpr double kOne = 1024.0; // 1.0 in the matrix filters

Size evenSizeOf(Region const& region) {
    return {region.width + region.width % 2, region.height};
}

Layout layoutOf(unsigned depth) {
    return depth == kShownDepth ? Layout::kRgba8 : Layout::kThreeChannel16;
}

// The code of a sample of `depth` bits for a 16-bit code of the file: lower bits are lost.
std::uint64_t codeAt(std::uint64_t code, unsigned depth) {
    return code >> (kFileDepth - depth);
}

Interval widened(Interval const& wanted, size_t reach, size_t end) {
    size_t const start = wanted.start - std::min(reach, wanted.start);
    return {start, std::min(wanted.start + wanted.length + reach, end) - start};
}

Interval onGrid(Interval const& wanted, size_t end) {
    size_t const start = wanted.start / EnhancementChain::kGrid * EnhancementChain::kGrid;
    size_t const blocks =
        (wanted.start + wanted.length - start + EnhancementChain::kGrid - 1) / EnhancementChain::kGrid;
    return {start, std::min(blocks * EnhancementChain::kGrid, end - start)};
}

// Along one axis that ends at `end`: the interval that a step reads for the wanted interval.
template <class Step>
Interval read(Step const& /*step*/, Interval const& wanted, size_t /*end*/) {
    static_assert(Step::kIsPointwise, "say what the step reads around its output");
    return wanted;
}

Interval read(Sharpen const& /*step*/, Interval const& wanted, size_t end) {
    return widened(wanted, kSharpenReach, end);
}

Interval read(Equalise const& /*step*/, Interval const& wanted, size_t end) {
    return widened(onGrid(wanted, end), EnhancementChain::kGrid, end);
}

// Upper bound of the samples that read() adds at both sides together.
template <class Step>
size_t mostRead(Step const& /*step*/) {
    static_assert(Step::kIsPointwise, "say how much the step reads around its output");
    return 0;
}

size_t mostRead(Sharpen const& /*step*/) {
    return 2 * kSharpenReach;
}

// Both ends may be off the grid, moved by a preceding step.
size_t mostRead(Equalise const& /*step*/) {
    return 4 * EnhancementChain::kGrid;
}

Filter3x3MatrixParams matrixParams(ColourMatrix const& matrix) {
    Filter3x3MatrixParams params;
    // The record is column-major.
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column)
            params.matrix[3 * column + row] =
                static_cast<std::int32_t>(std::lround(kOne * matrix.rows[3 * row + column]));
    }
    params.scale = matrix.strength;
    return params;
}

// The largest depth at which the matrix' sums stay within the filter's domain.
unsigned roomFor(ColourMatrix const& matrix) {
    double largest = 1.0;
    for (size_t row = 0; row < 3; ++row)
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
    return std::visit(
        [&](auto const& one) {
            return regionOf(read(one, {output.x, output.width}, picture_.width),
                            read(one, {output.y, output.height}, picture_.height));
        },
        step);
}

// The input region of each step, and the output region last.
std::vector<Region> EnhancementChain::regionsUpTo(Region const& output) const {
    std::vector<Region> regions(steps_.size() + 1, output);
    for (size_t i = steps_.size(); i-- > 0;)
        regions[i] = around(regions[i + 1], steps_[i]);
    return regions;
}

Region EnhancementChain::inputFor(Region const& output) const {
    return regionsUpTo(output).front();
}

size_t EnhancementChain::partSide(std::vector<Step> const& steps) {
    size_t around = 0;
    for (Step const& step : steps)
        around += std::visit([](auto const& one) { return mostRead(one); }, step);
    return around >= kMaxSide ? 0 : (kMaxSide - around) / kGrid * kGrid;
}

size_t EnhancementChain::requiredPartSide(std::vector<Step> const& steps) {
    size_t const side = partSide(steps);
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
    return texels(draw(targets_.upload(Layout::kRgba8, sizeOf(region), rgba), kShownDepth, output), output);
}

std::vector<unsigned char> EnhancementChain::run15(Planes const& planes, Region const& output) {
    return texels(draw15(planes, output), output);
}

OwnedTarget EnhancementChain::draw15(Planes const& planes, Region const& output) {
    return draw(interleave(planes, evenSizeOf(inputFor(output)), nullptr), kPlaneDepth, output);
}

OwnedTarget EnhancementChain::finish(Part part, Region const& output) {
    std::vector<Region> const regions = regionsUpTo(output);
    for (size_t i = 0; i < steps_.size(); ++i)
        part = std::visit([&](auto const& step) { return apply(std::move(part), step, regions[i + 1]); }, steps_[i]);
    return std::move(toShown(std::move(part)).target);
}

std::vector<unsigned char> EnhancementChain::texels(OwnedTarget const& target, Region const& output) const {
    return targets_.read(target, Layout::kRgba8, wholeOf(sizeOf(output)));
}

EnhancementChain::Part EnhancementChain::apply(Part part, Sharpen const& sharpen, Region const& output) {
    if (part.depth != kShownDepth) part = toDepth(std::move(part), kSharpenDepth);
    // The filter needs an apron: beyond the picture its edge pixels are repeated.
    Insets const inside = insetsOf(part.region, output);
    Insets const beyond = {kSharpenReach - inside.left, kSharpenReach - inside.right, kSharpenReach - inside.top,
                           kSharpenReach - inside.bottom};
    OwnedTarget const source =
        targets_.padEdges(std::move(part.target), layoutOf(part.depth), sizeOf(part.region), beyond);
    Size const read = {output.width + 2 * kSharpenReach, output.height + 2 * kSharpenReach};
    return part.depth == kShownDepth ? sharpen8(source, read, output, sharpen.gain)
                                     : sharpen16(source, read, output, sharpen.gain);
}

EnhancementChain::Part EnhancementChain::sharpen8(OwnedTarget const& source, Size const& read, Region const& output,
                                                  double gain) {
    FilterSharpness8Params params;
    params.gain = gain;
    OwnedTarget result = targets_.target(Layout::kRgba8, sizeOf(output));
    targets_.run(targets_.prepared(description::filterSharpness8()), {{source.id(), 0, 0, false}}, read, result,
                 params);
    return {std::move(result), output, kShownDepth};
}

EnhancementChain::Part EnhancementChain::sharpen16(OwnedTarget const& source, Size const& read, Region const& output,
                                                   double gain) {
    // The filter truncates the gain to whole numbers before it multiplies by 32. So the gain is passed times 32, with a
    // shift of five bits.
    constexpr int kFractionBits = 5;
    FilterSharpness16Params params;
    params.gain = std::trunc(std::ldexp(gain, kFractionBits));
    params.shiftBits = kFractionBits;
    OwnedTarget const blur = targets_.target(Layout::kThreeChannel16, {output.width, read.height});
    targets_.run(targets_.prepared(description::filterSharpnessH16()), {{source.id(), 0, 0, false}}, read, blur);
    OwnedTarget result = targets_.target(Layout::kThreeChannel16, sizeOf(output));
    targets_.run(targets_.prepared(description::filterSharpnessV16()),
                 {{source.id(), kSharpenReach, 0, false}, {blur.id(), 0, 0, false}}, {output.width, read.height},
                 result, params);
    return {std::move(result), output, kSharpenDepth};
}

EnhancementChain::Part EnhancementChain::apply(Part part, ColourMatrix const& matrix, Region const& /*output*/) {
    if (part.depth == kShownDepth) return map(part, description::filter3x3Matrix8(), kShownDepth, matrixParams(matrix));
    unsigned const depth = std::min(part.depth, roomFor(matrix));
    part = toDepth(std::move(part), depth);
    return map(part, description::filter3x3Matrix16(), depth, matrixParams(matrix));
}

EnhancementChain::Part EnhancementChain::apply(Part part, Gamma const& gamma, Region const& /*output*/) {
    if (part.depth == kShownDepth)
        return map(part, description::filterBlackWhiteGamma8(), kShownDepth,
                   FilterBlackWhiteGamma8Params(gamma.gamma, gamma.black, gamma.white));
    return map(
        part, description::filterLinear16TosRGB8(part.depth), kShownDepth,
        FilterLinear16TosRGB8Params(gamma.gamma, codeAt(gamma.black, part.depth), codeAt(gamma.white, part.depth)));
}

EnhancementChain::Part EnhancementChain::apply(Part part, LinearToSrgb const& /*step*/, Region const& /*output*/) {
    ComparableSingleFilterParameters<unsigned char> const anyKey;
    return part.depth == kShownDepth ? map(part, description::filterLinear8ToSRGB8(), kShownDepth, anyKey)
                                     : map(part, description::filterLinear16ToSRGB8(part.depth), kShownDepth, anyKey);
}

// Equalises the luma alone: it is the first channel of YCoCg, and the filter leaves the others unchanged.
EnhancementChain::Part EnhancementChain::apply(Part part, Equalise const& equalise, Region const& output) {
    part = map(toShown(std::move(part)), description::filterRGBA8ToYCoCg16(), kFileDepth);
    FilterClaheParams params;
    params.value = equalise.clipLimit;
    Region const& in = part.region;
    // CLAHE has no GL program, and its borders differ for each part, so a new instance is made each time.
    OwnedFilter const clahe(instance_, description::filterCLAHE(insetsOf(in, output)));
    OwnedTarget result = targets_.target(Layout::kThreeChannel16, sizeOf(output));
    targets_.run(clahe.filter(), {{part.target.id(), 0, 0, false}}, sizeOf(in), result, params);
    return map({std::move(result), output, kFileDepth}, description::filterYCoCg16ToRGBA8(), kShownDepth);
}

EnhancementChain::Part EnhancementChain::apply(Part part, Truncate const& truncate, Region const& /*output*/) {
    Truncate atDepth = truncate;
    if (part.depth != kShownDepth) atDepth.bits -= std::min(atDepth.bits, kFileDepth - part.depth);
    // No filter splits three channels into planes: they go through the host.
    OwnedTarget deep = interleave(planesOf(part), evenSizeOf(part.region), &atDepth);
    Part result = {std::move(deep), part.region, part.depth == kShownDepth ? kFileDepth : part.depth};
    if (part.depth != kShownDepth) return result;
    return map(result, description::filter3x16To4x8(), kShownDepth);
}

EnhancementChain::Part EnhancementChain::map(Part const& part, Filter const& description, unsigned depth,
                                             SingleFilterParameters const& params) {
    OwnedTarget result = targets_.target(layoutOf(depth), sizeOf(part.region));
    targets_.run(targets_.prepared(description), {{part.target.id(), 0, 0, false}}, sizeOf(part.region), result,
                 params);
    return {std::move(result), part.region, depth};
}

// A power of two is exact in the matrix; the dropped bits are rounded.
EnhancementChain::Part EnhancementChain::toDepth(Part part, unsigned depth) {
    if (part.depth <= depth) return part;
    double const factor = std::ldexp(1.0, static_cast<int>(depth) - static_cast<int>(part.depth));
    ColourMatrix const scaling = {{factor, 0, 0, 0, factor, 0, 0, 0, factor}, 1.0};
    return map(part, description::filter3x3Matrix16(), depth, matrixParams(scaling));
}

// The upper byte, by a table that rounds (code - black) * 255 / (white - black). With s codes per byte and the points
// below, byte b starts at code b * s - 1 + (b - 0.5) / 255; the first whole number from there on is b * s.
EnhancementChain::Part EnhancementChain::toShown(Part part) {
    if (part.depth == kShownDepth) return part;
    std::uint64_t const codesPerByte = std::uint64_t{1} << (part.depth - kShownDepth);
    std::uint64_t const black = codesPerByte / 2 - 1;
    return map(part, description::filterLinear16TosRGB8(part.depth), kShownDepth,
               FilterLinear16TosRGB8Params(1.0, black, black + 255 * codesPerByte + 1));
}

OwnedTarget EnhancementChain::interleave(Planes const& planes, Size const& size, Truncate const* truncate) {
    std::vector<OwnedTarget> targets;
    std::vector<FilterSource> sources;
    for (auto const& plane : planes) {
        targets.push_back(targets_.upload(Layout::kOneChannel16, size, plane));
        if (truncate != nullptr) {
            FilterTruncate16Params params;
            params.shift = truncate->bits;
            params.rounding = truncate->rounding;
            OwnedTarget cut = targets_.target(Layout::kOneChannel16, size);
            targets_.run(targets_.prepared(description::filterTruncate16()), {{targets.back().id(), 0, 0, false}}, size,
                         cut, params);
            targets.back() = std::move(cut);
        }
        sources.push_back({targets.back().id(), 0, 0, false});
    }
    OwnedTarget result = targets_.target(Layout::kThreeChannel16, size);
    targets_.run(targets_.prepared(description::filterInterleave16()), sources, size, result);
    return result;
}

EnhancementChain::Planes EnhancementChain::planesOf(Part const& part) const {
    bool const deep = part.depth != kShownDepth;
    size_t const pixelBytes = deep ? samplelayout::bytesPerPixel(SampleLayout::kThreeChannel16) : 4;
    std::vector<unsigned char> const texels =
        targets_.read(part.target, layoutOf(part.depth), wholeOf(sizeOf(part.region)));
    Size const size = evenSizeOf(part.region);
    Planes planes;
    for (size_t channel = 0; channel < planes.size(); ++channel) {
        auto& plane = planes[channel];
        plane.resize(2 * size.width * size.height);
        for (size_t y = 0; y < size.height; ++y) {
            for (size_t x = 0; x < part.region.width; ++x) {
                unsigned char const* const pixel = &texels[(y * part.region.width + x) * pixelBytes];
                unsigned char* const sample = &plane[2 * (y * size.width + x)];
                sample[0] = pixel[deep ? samplelayout::kThreeChannels[channel].low : channel];
                if (deep) sample[1] = pixel[samplelayout::kThreeChannels[channel].high];
            }
        }
    }
    return planes;
}
