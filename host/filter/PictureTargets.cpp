#include "host/filter/PictureTargets.h"

#include "host/Quietly.h"
#include "host/filter/FilterDescriptions.h"
#include "host/filter/ScratchTile.h"

#include <stdexcept>

namespace {

using Layout = PictureTargets::Layout;

constexpr std::size_t kScaledCopies = 8; // that are kept
constexpr std::size_t kRgbaBits = 32;
constexpr std::size_t kPlaneBits = 16;
constexpr std::size_t kDeepBits = 48;

std::size_t bitsOf(Layout layout) {
    if (layout == Layout::kPlane) return kPlaneBits;
    return layout == Layout::kDeep ? kDeepBits : kRgbaBits;
}

std::size_t bytesOfPixel(Layout layout) {
    if (layout == Layout::kPlane) return 2;
    return layout == Layout::kDeep ? 8 : 4;
}

} // namespace

PictureTargets::PictureTargets(std::shared_ptr<RenderBackendInstance> instance)
    : instance_(std::move(instance)), numbers_(instance_) {}

PictureTargets::~PictureTargets() {
    quietly([this] { instance_->clearTargets(); });
}

OwnedTarget PictureTargets::target(Layout layout, Size const& size, RenderBackend::ImageFiltering filtering) const {
    return {instance_, instance_->createTarget({size.width, size.height}, bitsOf(layout), false, filtering,
                                               RenderBackend::RGBA32)};
}

OwnedTarget PictureTargets::uploaded(Layout layout, Size const& size, std::vector<unsigned char> const& pixels) {
    OwnedTarget result = target(layout, size);
    draw(result, layout, size, pixels, {0, 0, size.width, size.height});
    return result;
}

void PictureTargets::draw(OwnedTarget const& target, Layout layout, Size const& tile,
                          std::vector<unsigned char> const& pixels, Region const& area) {
    std::size_t const components = layout == Layout::kPlane ? 1 : 4;
    ScratchTile const stored(*instance_, numbers_.id(0), pixels, {tile.width, tile.height, components});
    drawStored(target, layout, stored.id(), area);
}

void PictureTargets::drawStored(OwnedTarget const& target, Layout layout, std::size_t tile, Region const& area) {
    std::vector<std::size_t> const range = {0, area.width - 1, 0, area.height - 1};
    instance_->drawTiles(target.id(), copyOf(layout), range, range, {area.width, area.height}, {{0, 0}}, {tile},
                         {area.x, area.y});
}

std::vector<unsigned char> PictureTargets::read(OwnedTarget const& target, Layout layout, Region const& part) const {
    std::vector<unsigned char> texels(part.width * part.height * bytesOfPixel(layout));
    std::size_t const firstTexel = layout == Layout::kPlane ? part.x / 2 : part.x * (layout == Layout::kDeep ? 2 : 1);
    std::size_t const written =
        instance_->getPixels(texels.data(), texels.size(), target.id(), {firstTexel, part.width, part.y, part.height});
    if (written != texels.size()) throw std::logic_error("the backend returned a picture of another size");
    return texels;
}

Filter const& PictureTargets::prepared(Filter const& description) {
    auto const key = std::make_pair(description.name(), description.bitDepthIn());
    return filters_.try_emplace(key, instance_, description).first->second.filter();
}

void PictureTargets::run(Filter const& filter, std::vector<FilterSource> const& sources, Size const& input,
                         OwnedTarget const& destination, SingleFilterParameters const& params) const {
    instance_->executeFilter(filter, sources, input.width, input.height, destination.id(), 0, 0, 0, 0, params, {0, 0});
}

Filter const& PictureTargets::copyOf(Layout layout) {
    if (layout == Layout::kPlane) return prepared(description::blitFilter1x16());
    return prepared(layout == Layout::kDeep ? description::blitFilter3x16() : description::blitFilter4x8());
}

void PictureTargets::copy(Layout layout, OwnedTarget const& from, Region const& part, OwnedTarget const& to,
                          std::size_t x, std::size_t y) {
    std::size_t const texelsPerPixel = layout == Layout::kDeep ? 2 : 1;
    instance_->executeFilter(copyOf(layout), {{from.id(), part.x, part.y, false}}, part.width, part.height, to.id(), 0,
                             0, 0, 0, {}, {texelsPerPixel * x, y});
}

// A program reads its texture at the scale that it was made with, so each scale has one of its own.
Filter const& PictureTargets::scaledCopy(std::size_t pixels, std::size_t samples) {
    auto const found = scaled_.find({pixels, samples});
    if (found != scaled_.end()) return found->second.filter();
    if (scaled_.size() == kScaledCopies) scaled_.clear();
    // The input grid has a stride of so many samples that a step of it is a whole number of pixels.
    Filter const filter(description::blitFilter4x8().name(), 0, 0, 0, 0, 0, samples, 0, samples, pixels, samples,
                        pixels, samples, 1, RenderBackend::NEAREST);
    return scaled_.try_emplace(std::pair(pixels, samples), instance_, filter).first->second.filter();
}

void PictureTargets::drawScaled(OwnedTarget const& from, Scaling const& scaling, OwnedTarget const& to) {
    std::size_t const n = scaling.pixels;
    std::size_t const d = scaling.samples;
    // More than there is: where a pixel's middle lies in the last sample's first half, the quotient leaves that pixel
    // out.
    std::size_t const inputWidth = scaling.part.width + d;
    std::size_t const inputHeight = scaling.part.height + d;
    Region const& area = scaling.area;
    instance_->executeFilter(scaledCopy(n, d), {{from.id(), scaling.part.x, scaling.part.y, false}}, inputWidth,
                             inputHeight, to.id(), scaling.skipX, inputWidth * n / d - scaling.skipX - area.width,
                             scaling.skipY, inputHeight * n / d - scaling.skipY - area.height, {}, {area.x, area.y});
}

OwnedTarget PictureTargets::widened(OwnedTarget const& target, Layout layout, Size const& size, Sides const& sides) {
    OwnedTarget result = this->target(layout, {size.width + sides.left + sides.right, size.height});
    copy(layout, target, {0, 0, size.width, size.height}, result, sides.left, 0);
    for (std::size_t i = 0; i < sides.left; ++i)
        copy(layout, target, {0, 0, 1, size.height}, result, i, 0);
    for (std::size_t i = 0; i < sides.right; ++i)
        copy(layout, target, {size.width - 1, 0, 1, size.height}, result, sides.left + size.width + i, 0);
    return result;
}

OwnedTarget PictureTargets::heightened(OwnedTarget const& target, Layout layout, Size const& size, Sides const& sides) {
    OwnedTarget result = this->target(layout, {size.width, size.height + sides.top + sides.bottom});
    copy(layout, target, {0, 0, size.width, size.height}, result, 0, sides.top);
    for (std::size_t i = 0; i < sides.top; ++i)
        copy(layout, target, {0, 0, size.width, 1}, result, 0, i);
    for (std::size_t i = 0; i < sides.bottom; ++i)
        copy(layout, target, {0, size.height - 1, size.width, 1}, result, 0, sides.top + size.height + i);
    return result;
}

OwnedTarget PictureTargets::extended(OwnedTarget target, Layout layout, Size const& size, Sides const& sides) {
    Size wide = size;
    if (sides.left + sides.right > 0) {
        target = widened(target, layout, size, sides);
        wide.width += sides.left + sides.right;
    }
    if (sides.top + sides.bottom > 0) target = heightened(target, layout, wide, sides);
    return target;
}
