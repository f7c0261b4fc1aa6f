#include "conformance/FilterRunner.h"

#include "conformance/Inputs.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"

#include <stdexcept>
#include <utility>

namespace conformance {

namespace {

constexpr size_t kTile = 7;
constexpr std::uint32_t kNoiseStart = 20240607;
constexpr int kMargin = 3;

size_t bitsPerPixel(Layout layout) {
    switch (layout) {
    case Layout::kRgb8:
        return 24;
    case Layout::kRgba8:
        return 32;
    case Layout::kOneChannel16:
        return 16;
    case Layout::kThreeChannel16:
        return 48;
    case Layout::kFourChannel16:
        return 64;
    }
    throw std::invalid_argument("no such layout");
}

Filter blitOf(Layout layout) {
    switch (layout) {
    case Layout::kRgb8:
        return description::blitFilter3x8();
    case Layout::kRgba8:
        return description::blitFilter4x8();
    case Layout::kOneChannel16:
        return description::blitFilter1x16();
    case Layout::kThreeChannel16:
    case Layout::kFourChannel16: // the copy of whole texels again
        return description::blitFilter3x16();
    }
    throw std::invalid_argument("no such layout");
}

reference::Texels opaque(std::vector<std::uint8_t> const& rgb, int width, int height) {
    reference::Texels texels(width, height);
    for (size_t i = 0; i < rgb.size() / 3; ++i) {
        for (size_t c = 0; c < 3; ++c)
            texels.bytes[4 * i + c] = rgb[3 * i + c];
        texels.bytes[4 * i + 3] = 255;
    }
    return texels;
}

} // namespace

size_t logicalWidth(Layout layout, int widthTexels) {
    auto const texels = static_cast<size_t>(widthTexels);
    if (layout == Layout::kOneChannel16) return 2 * texels;
    if (layout == Layout::kThreeChannel16 || layout == Layout::kFourChannel16) return texels / 2;
    return texels;
}

int texelsOf(Layout layout, int widthPixels) {
    if (layout == Layout::kOneChannel16) return widthPixels / 2;
    if (layout == Layout::kThreeChannel16 || layout == Layout::kFourChannel16) return 2 * widthPixels;
    return widthPixels;
}

reference::Texels shown(reference::Texels texels, Layout layout) {
    for (std::size_t i = 3; layout == Layout::kRgb8 && i < texels.bytes.size(); i += 4)
        texels.bytes[i] = 255;
    return texels;
}

FilterRunner::FilterRunner(std::shared_ptr<RenderBackendInstance> instance) : instance_(std::move(instance)) {}

FilterRunner::~FilterRunner() {
    eraseTargets();
    for (auto& blit : blits_)
        instance_->destroyFilterInstance(blit.second);
}

size_t FilterRunner::target(Layout layout, int widthTexels, int heightTexels) {
    auto const format = layout == Layout::kRgb8 ? RenderBackend::RGB24 : RenderBackend::RGBA32;
    size_t const id = instance_->createTarget({logicalWidth(layout, widthTexels), static_cast<size_t>(heightTexels)},
                                              bitsPerPixel(layout), false, RenderBackend::NEAREST, format);
    shapes_[id] = {layout, widthTexels, heightTexels};
    return id;
}

void FilterRunner::drawTile(size_t target, reference::Texels const& texels, Layout layout) {
    auto blit = blits_.find(layout);
    if (blit == blits_.end()) blit = blits_.emplace(layout, instantiated(blitOf(layout))).first;
    size_t const width = logicalWidth(layout, texels.width);
    auto const height = static_cast<size_t>(texels.height);
    instance_->setTile(kTile, texels.bytes, {static_cast<size_t>(texels.width), height, 4}, 0);
    instance_->drawTiles(target, blit->second, {0, width - 1, 0, height - 1}, {0, width - 1, 0, height - 1},
                         {width, height}, {{0, 0}}, {kTile}, {0, 0});
    instance_->eraseTile(kTile);
}

size_t FilterRunner::uploaded(reference::Texels const& texels, Layout layout) {
    size_t const id = target(layout, texels.width, texels.height);
    drawTile(id, texels, layout);
    return id;
}

size_t FilterRunner::uploaded(reference::Plane const& samples) {
    return uploaded(packOneChannel16(samples), Layout::kOneChannel16);
}

size_t FilterRunner::uploaded(reference::Planes3 const& pixels) {
    return uploaded(packThreeChannel16(pixels), Layout::kThreeChannel16);
}

reference::Texels FilterRunner::read(size_t target) const {
    Shape const& shape = shapes_.at(target);
    std::vector<std::uint8_t> const bytes = instance_->getPixels(
        target, {0, logicalWidth(shape.layout, shape.width), 0, static_cast<size_t>(shape.height)});
    if (shape.layout == Layout::kRgb8) return opaque(bytes, shape.width, shape.height);
    return reference::Texels(shape.width, shape.height, bytes);
}

Filter FilterRunner::instantiated(Filter const& description) const {
    Filter filter = description;
    instance_->createFilterInstance(filter);
    return filter;
}

void FilterRunner::run(Filter const& filter, FilterRun const& run, size_t destination,
                       SingleFilterParameters const& params) const {
    instance_->executeFilter(filter, run.sources, run.width, run.height, destination, run.clipLeft, run.clipRight,
                             run.clipTop, run.clipBottom, params, {run.offset[0], run.offset[1]});
}

FilterRun FilterRunner::wholeRun(std::vector<size_t> const& sources) const {
    FilterRun whole;
    for (size_t const source : sources)
        whole.sources.push_back({source, 0, 0, false});
    Shape const& input = shapes_.at(sources.front());
    whole.width = logicalWidth(input.layout, input.width);
    whole.height = static_cast<size_t>(input.height);
    return whole;
}

Comparison FilterRunner::compare(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                                 Layout layout, SingleFilterParameters const& params) {
    size_t const destination = target(layout, expected.width, expected.height);
    this->run(filter, run, destination, params);
    return {read(destination), expected};
}

Comparison FilterRunner::compareWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                                       Layout layout, SingleFilterParameters const& params) {
    auto const x = static_cast<int>(run.offset[0]);
    auto const y = static_cast<int>(run.offset[1]);
    int const width = x + expected.width + kMargin;
    // A pixel of three channels takes two texels.
    reference::Texels whole = randomTexels(width + width % 2, y + expected.height + kMargin, kNoiseStart);
    size_t const destination = uploaded(whole, layout);
    this->run(filter, run, destination, params);
    blit(expected, 0, 0, expected.width, expected.height, whole, x, y);
    return {read(destination), shown(whole, layout)};
}

void FilterRunner::eraseTargets() {
    if (shapes_.empty()) return;
    for (auto const& shape : shapes_)
        instance_->eraseTarget(shape.first);
    shapes_.clear();
    // A target that was erased may come back larger than it was asked for, and with it other coordinates.
    instance_->clearTargets();
}

} // namespace conformance
