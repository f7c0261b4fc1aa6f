#include "host/view/PictureView.h"

#include "host/HostError.h"
#include "host/filter/FilterDescriptions.h"
#include "host/image/PixelBands.h"
#include "host/view/AlphaPlane.h"

#include <stdexcept>

PictureView::PictureView(std::shared_ptr<RenderBackendInstance> const& instance, std::string const& storePath,
                         Options const& options)
    : instance_(instance),
      background_(options.background),
      targets_(instance),
      stages_(instance, targets_, storePath, {options.threads, options.hostBytes, options.interruption}),
      damages_(info(), options.showHoles),
      pipeline_(info(), {options.gpuBytes, options.enhanceCoarserLevels, options.forCodes}, stages_, damages_),
      composer_(instance, targets_, stages_.enhanced(), info()),
      mask_(instance, targets_, stages_.emptyAreas(), info()) {}

Size PictureView::sizeAt(Zoom const& zoom) const {
    return leveltile::pixelExtent(info(), zoom);
}

void PictureView::enhance(std::vector<enhancement::Step> const& steps) {
    stages_.enhanced().enhance(steps);
    pipeline_.renew();
}

size_t PictureView::frame() {
    if (view().isEmpty()) throw std::logic_error("a view without pixels has no frame");
    frame_.reset();
    frame_ = composer_.draw(view(), background_, holes());
    return frame_->id();
}

// In pixels of the picture at the view's zoom.
std::vector<Region> PictureView::holes() const {
    std::vector<Region> holes;
    for (LevelTile const& tile : pipeline_.holes())
        holes.push_back(leveltile::pixelRegion(info(), view().zoom, tile));
    return holes;
}

std::vector<std::uint8_t> PictureView::pixels() {
    if (view().isEmpty()) return {};
    frame();
    auto rgba = targets_.read(*frame_, SampleLayout::kRgba8, {0, 0, view().width, view().height});
    if (pixelbands::hasAlpha(info().bands) && complete())
        AlphaPlane(targets_, stages_.rebuilt(), info()).put(rgba, view(), pipeline_.sound());
    return rgba;
}

std::vector<std::uint16_t> PictureView::codes() {
    Region const pixels = view().pixelsOf(info());
    if (!complete() || hasHoles() || pixels.width != view().width || pixels.height != view().height)
        throw std::logic_error("codes are those of a complete view within the picture");
    return stages_.samples().codes(view());
}

void PictureView::present() {
    if (!frame_ || view().isEmpty()) return;
    instance_->executeFilter(targets_.prepared(description::blitFilter4x8()), {{frame_->id(), 0, 0, false}},
                             view().width, view().height, 0, 0, 0, 0, 0, {}, {0, 0});
}

std::vector<std::uint8_t> PictureView::dataMask() {
    if (view().isEmpty()) return {};
    try {
        return mask_.draw(view());
    } catch (HostError const&) {
        damages_.noteOfAreas(std::current_exception());
        return std::vector<std::uint8_t>(view().width * view().height, 0);
    }
}

PictureView::Statistics PictureView::statistics() const {
    LevelTiles const& rebuilt = stages_.rebuilt();
    return {rebuilt.count(), rebuilt.bytes() + stages_.enhancedBytes(), stages_.hostBytes(), pipeline_.waiting()};
}
