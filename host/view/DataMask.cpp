#include "host/view/DataMask.h"

#include "host/filter/FilterDescriptions.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>

namespace {

using Layout = SampleLayout;

constexpr size_t kCell = 4; // pixels of the view along a cell of the mask

size_t cellsAlong(size_t pixels) {
    return (pixels - 1) / kCell + 1;
}

// The cell in which a sample of the view's level begins; up to the last one's end.
unsigned int cellOf(Zoom const& zoom, size_t sample, std::int64_t origin, size_t pixels) {
    std::int64_t const pixel = static_cast<std::int64_t>(zoom.pixelsOf(sample)) - origin;
    return static_cast<unsigned int>(std::clamp<std::int64_t>(pixel / static_cast<std::int64_t>(kCell), 0,
                                                              static_cast<std::int64_t>(cellsAlong(pixels))));
}

} // namespace

DataMask::DataMask(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, EmptyAreas& emptyAreas,
                   StoreInfo const& info)
    : instance_(std::move(instance)), targets_(targets), emptyAreas_(emptyAreas), info_(info) {}

std::vector<std::uint8_t> DataMask::draw(View const& view) {
    Size const size = {cellsAlong(view.width), cellsAlong(view.height)};
    auto const texels = drawn(cellsOf(view), size);
    std::vector<std::uint8_t> mask(view.width * view.height);
    for (size_t y = 0; y < view.height; ++y) {
        for (size_t x = 0; x < view.width; ++x)
            mask[y * view.width + x] = texels[4 * (y / kCell * size.width + x / kCell)];
    }
    return mask;
}

DataMask::Cells DataMask::cellsOf(View const& view) {
    Cells cells;
    Region const samples = view.samplesOf(view.pixelsOf(info_));
    if (samples.width == 0) return cells;
    for (Region const& area : emptyAreas_.withData(view.zoom.level(), samples)) {
        // A mesh goes from the corner of its first cell to that of its last: one more ends it.
        unsigned int const right = cellOf(view.zoom, area.x + area.width, view.x, view.width);
        unsigned int const bottom = cellOf(view.zoom, area.y + area.height, view.y, view.height);
        for (unsigned int y = cellOf(view.zoom, area.y, view.y, view.height); y <= bottom; ++y) {
            for (unsigned int x = cellOf(view.zoom, area.x, view.x, view.width); x <= right; ++x)
                cells.push_back({x, y});
        }
    }
    return cells;
}

std::vector<unsigned char> DataMask::drawn(Cells const& cells, Size const& size) {
    std::vector<unsigned char> const id = {'m'};
    instance_->dataEnvelopes(id, {{{}, cells}});
    MaskFilterParams params;
    params.envelopes = std::const_pointer_cast<DataEnvelopes>(instance_->dataEnvelopes(id));
    OwnedTarget const white = targets_.target(Layout::kRgba8, size);
    OwnedTarget const mask = targets_.target(Layout::kRgba8, size);
    instance_->clear(white.id(), {255, 255, 255, 255});
    instance_->clear(mask.id(), {0, 0, 0, 255});
    instance_->maskRange(white.id(), mask.id(), targets_.prepared(description::maskFilter4x8()),
                         {0, size.width - 1, 0, size.height - 1}, params);
    return targets_.read(mask, Layout::kRgba8, wholeOf(size));
}
