#include "host/filter/FilterRunner.h"

#include "host/Quietly.h"
#include "host/filter/FilterDescriptions.h"
#include "host/filter/ScratchTile.h"

#include <stdexcept>

namespace {

constexpr size_t kScaledCopies = 8; // kept at most

} // namespace

FilterRunner::FilterRunner(std::shared_ptr<RenderBackendInstance> instance)
    : instance_(std::move(instance)), numbers_(instance_) {}

FilterRunner::~FilterRunner() {
    quietly([this] { instance_->clearTargets(); });
}

OwnedTarget FilterRunner::target(SampleLayout layout, Size const& size, RenderBackend::ImageFiltering filtering) const {
    return {instance_, instance_->createTarget({size.width, size.height}, samplelayout::bitsPerPixel(layout), false,
                                               filtering, samplelayout::format(layout))};
}

OwnedTarget FilterRunner::upload(SampleLayout layout, Size const& size, std::vector<unsigned char> const& pixels) {
    OwnedTarget result = target(layout, size);
    draw(result, layout, size, pixels, wholeOf(size));
    return result;
}

// A tile of the cache has one 16-bit sample or 3 or 4 bytes per pixel: pixels of two texels are passed as texels.
void FilterRunner::draw(OwnedTarget const& target, SampleLayout layout, Size const& tile,
                        std::vector<unsigned char> const& pixels, Region const& area) {
    bool const isOfTwoTexels = samplelayout::texels(layout, 1) == 2;
    std::vector<size_t> const size = {isOfTwoTexels ? 2 * tile.width : tile.width, tile.height,
                                      isOfTwoTexels ? 4 : samplelayout::components(layout)};
    ScratchTile const stored(*instance_, numbers_.id(0), pixels, size);
    drawStored(target, layout, stored.id(), area);
}

void FilterRunner::drawStored(OwnedTarget const& target, SampleLayout layout, size_t tile, Region const& area) {
    std::vector<size_t> const range = {0, area.width - 1, 0, area.height - 1};
    instance_->drawTiles(target.id(), copyOf(layout), range, range, {area.width, area.height}, {{0, 0}}, {tile},
                         {area.x, area.y});
}

std::vector<unsigned char> FilterRunner::read(OwnedTarget const& target, SampleLayout layout,
                                              Region const& part) const {
    std::vector<unsigned char> pixels;
    read(target, layout, part, pixels);
    return pixels;
}

void FilterRunner::read(OwnedTarget const& target, SampleLayout layout, Region const& part,
                        std::vector<unsigned char>& pixels) const {
    pixels.resize(part.width * part.height * samplelayout::bytesPerPixel(layout));
    size_t const written =
        instance_->getPixels(pixels.data(), pixels.size(), target.id(),
                             {samplelayout::texels(layout, part.x), part.width, part.y, part.height});
    if (written != pixels.size()) throw std::logic_error("the backend returned a picture of another size");
}

Filter const& FilterRunner::prepared(Filter const& description) {
    auto const key = std::make_pair(description.name(), description.bitDepthIn());
    return filters_.try_emplace(key, instance_, description).first->second.filter();
}

void FilterRunner::run(Filter const& filter, FilterRun const& run, size_t destination,
                       SingleFilterParameters const& params) const {
    instance_->executeFilter(filter, run.sources, run.input.width, run.input.height, destination, run.clip.left,
                             run.clip.right, run.clip.top, run.clip.bottom, params, {run.offset[0], run.offset[1]});
}

void FilterRunner::run(Filter const& filter, std::vector<FilterSource> const& sources, Size const& input,
                       OwnedTarget const& destination, SingleFilterParameters const& params) const {
    run(filter, {sources, input, {}, {}}, destination.id(), params);
}

Filter const& FilterRunner::copyOf(SampleLayout layout) {
    // Asked for with every tile: a description is made at the first use only.
    auto const found = copies_.find(layout);
    if (found != copies_.end()) return *found->second;
    return *copies_.emplace(layout, &prepared(description::blitFilter(layout))).first->second;
}

void FilterRunner::copy(SampleLayout layout, OwnedTarget const& from, Region const& part, OwnedTarget const& to,
                        size_t x, size_t y) {
    run(copyOf(layout), {{{from.id(), part.x, part.y, false}}, sizeOf(part), {}, {samplelayout::texels(layout, x), y}},
        to.id());
}

// A program reads its texture at the scale that it was made with, so each scale has a program of its own.
Filter const& FilterRunner::scaledCopy(size_t pixels, size_t samples) {
    auto const found = scaled_.find({pixels, samples});
    if (found != scaled_.end()) return found->second.filter();
    if (scaled_.size() == kScaledCopies) scaled_.clear();
    // The input grid has a stride of `samples`, so that a step of it is a whole number of pixels.
    Filter const filter(description::blitFilter4x8().name(), 0, 0, 0, 0, 0, samples, 0, samples, pixels, samples,
                        pixels, samples, 1, RenderBackend::NEAREST);
    return scaled_.try_emplace(std::pair(pixels, samples), instance_, filter).first->second.filter();
}

void FilterRunner::drawScaled(OwnedTarget const& from, Scaling const& scaling, OwnedTarget const& to) {
    size_t const n = scaling.pixels;
    size_t const d = scaling.samples;
    // One scale step more than the part: floor(width * n / d) would drop a last pixel whose centre lies in the first
    // half of the last sample. The clips cut the surplus off.
    Size const input = {scaling.part.width + d, scaling.part.height + d};
    Region const& area = scaling.area;
    Insets const clip = {scaling.skipX, input.width * n / d - scaling.skipX - area.width, scaling.skipY,
                         input.height * n / d - scaling.skipY - area.height};
    run(scaledCopy(n, d), {{{from.id(), scaling.part.x, scaling.part.y, false}}, input, clip, {area.x, area.y}},
        to.id());
}

OwnedTarget FilterRunner::padColumns(OwnedTarget const& target, SampleLayout layout, Size const& size,
                                     Insets const& sides) {
    OwnedTarget result = this->target(layout, {size.width + sides.left + sides.right, size.height});
    copy(layout, target, wholeOf(size), result, sides.left, 0);
    for (size_t i = 0; i < sides.left; ++i)
        copy(layout, target, {0, 0, 1, size.height}, result, i, 0);
    for (size_t i = 0; i < sides.right; ++i)
        copy(layout, target, {size.width - 1, 0, 1, size.height}, result, sides.left + size.width + i, 0);
    return result;
}

OwnedTarget FilterRunner::padRows(OwnedTarget const& target, SampleLayout layout, Size const& size,
                                  Insets const& sides) {
    OwnedTarget result = this->target(layout, {size.width, size.height + sides.top + sides.bottom});
    copy(layout, target, wholeOf(size), result, 0, sides.top);
    for (size_t i = 0; i < sides.top; ++i)
        copy(layout, target, {0, 0, size.width, 1}, result, 0, i);
    for (size_t i = 0; i < sides.bottom; ++i)
        copy(layout, target, {0, size.height - 1, size.width, 1}, result, 0, sides.top + size.height + i);
    return result;
}

OwnedTarget FilterRunner::padEdges(OwnedTarget target, SampleLayout layout, Size const& size, Insets const& sides) {
    Size wide = size;
    if (sides.left + sides.right > 0) {
        target = padColumns(target, layout, size, sides);
        wide.width += sides.left + sides.right;
    }
    if (sides.top + sides.bottom > 0) target = padRows(target, layout, wide, sides);
    return target;
}
