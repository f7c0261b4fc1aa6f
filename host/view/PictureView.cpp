#include "host/view/PictureView.h"

#include "host/HostError.h"
#include "host/channels/BackdropFilter.h"
#include "host/filter/FilterDescriptions.h"
#include "host/image/PixelBands.h"
#include "host/view/ChannelStages.h"
#include "host/view/PyramidStages.h"
#include "host/view/StoreChannelStages.h"
#include "host/view/StoreTileStages.h"

#include <stdexcept>

namespace {

std::unique_ptr<PictureStages> stagesOf(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                                        PictureSource const& source, PictureView::Options const& options) {
    if (source.pyramid && source.display)
        return std::make_unique<ChannelStages>(instance, targets, *source.pyramid, *source.display, options.threads);
    if (source.pyramid) return std::make_unique<PyramidStages>(instance, targets, *source.pyramid, options.threads);
    StoreTileStages::Options const ofStore = {options.threads, options.hostBytes, options.interruption};
    if (source.display)
        return std::make_unique<StoreChannelStages>(instance, targets, source.store, *source.display, ofStore);
    return std::make_unique<StoreTileStages>(instance, targets, source.store, ofStore);
}

} // namespace

PictureView::PictureView(std::shared_ptr<RenderBackendInstance> const& instance, PictureSource const& source,
                         Options const& options)
    : instance_(instance),
      background_(options.background),
      targets_(instance),
      stages_(stagesOf(instance, targets_, source, options)),
      damages_(stages_->needsParents() ? info().levels : 0, options.showHoles),
      pipeline_(info(), {options.gpuBytes, options.enhanceCoarserLevels, options.forCodes}, *stages_, damages_),
      composer_(instance, targets_, stages_->shown(), info()) {}

Size PictureView::sizeAt(Zoom const& zoom) const {
    return leveltile::pixelExtent(info(), zoom);
}

void PictureView::enhance(std::vector<enhancement::Step> const& steps) {
    stages_->shown().enhance(steps);
    pipeline_.renew();
}

void PictureView::display(std::vector<ChannelDisplay> const& channels) {
    renew(stages_->display(channels));
}

void PictureView::moveTo(StackPosition const& position) {
    if (position == stages_->position()) return;
    renew(stages_->moveTo(position));
}

// Tiles that were made of other samples or colours go.
void PictureView::renew(bool loadsAgain) {
    if (loadsAgain) pipeline_.forgetLoaded();
    stages_->shown().renew();
    pipeline_.renew();
}

size_t PictureView::frame() {
    if (view().isEmpty()) throw std::logic_error("a view without pixels has no frame");
    frame_.reset();
    frame_ = drawn();
    if (pixelbands::hasAlpha(info().bands)) {
        BackdropParams backdrop;
        backdrop.colour = background_;
        Size const size = {view().width, view().height};
        OwnedTarget opaque = targets_.target(SampleLayout::kRgba8, size);
        targets_.run(targets_.prepared(BackdropFilter::description()), {{frame_->id(), 0, 0, false}}, size, opaque,
                     backdrop);
        frame_ = std::move(opaque);
    }
    return frame_->id();
}

// What is transparent is so.
OwnedTarget PictureView::drawn() {
    return composer_.draw(view(), background_, holes());
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
    auto rgba = targets_.read(drawn(), SampleLayout::kRgba8, {0, 0, view().width, view().height});
    if (pixelbands::hasAlpha(info().bands) && complete()) stages_->putAlpha(rgba, view(), pipeline_.sound());
    return rgba;
}

std::vector<std::uint16_t> PictureView::codes() {
    Region const pixels = view().pixelsOf(info());
    if (!complete() || hasHoles() || pixels.width != view().width || pixels.height != view().height)
        throw std::logic_error("codes are those of a complete view within the picture");
    return stages_->codes(view());
}

void PictureView::present() {
    if (!frame_ || view().isEmpty()) return;
    instance_->executeFilter(targets_.prepared(description::blitFilter4x8()), {{frame_->id(), 0, 0, false}},
                             view().width, view().height, 0, 0, 0, 0, 0, {}, {0, 0});
}

std::vector<std::uint8_t> PictureView::dataMask() {
    if (view().isEmpty()) return {};
    try {
        return stages_->dataMask(view());
    } catch (HostError const&) {
        damages_.noteOfAreas(std::current_exception());
        return std::vector<std::uint8_t>(view().width * view().height, 0);
    }
}

PictureView::Statistics PictureView::statistics() const {
    PictureStages::Usage const usage = stages_->usage();
    return {usage.tiles, usage.gpuBytes + stages_->enhancedBytes(), usage.hostBytes, pipeline_.waiting()};
}
