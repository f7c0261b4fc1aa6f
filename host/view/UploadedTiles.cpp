#include "host/view/UploadedTiles.h"

#include "host/image/PixelBands.h"

namespace {

using Layout = SampleLayout;

constexpr size_t kRingComponents = 3;

} // namespace

UploadedTiles::UploadedTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets,
                             PictureInfo const& info)
    : instance_(std::move(instance)), targets_(targets), info_(info), numbers_(instance_) {}

bool UploadedTiles::usesRing() const {
    return !ringFailed_ && pixelbands::components(info_.bands) == kRingComponents;
}

bool UploadedTiles::reserve(LoadedTile& tile) {
    Size const size = sizeOf(leveltile::shownRegion(info_, tile.job.tile));
    try {
        tile.room = instance_->concurrentStagingBuffer(numbers_.id(next_++ % (size_t{1} << TileNumbers::kBits)),
                                                       RenderBackend::TILE, {size.width, size.height, kRingComponents});
    } catch (VelmoraException const&) {
        ringFailed_ = true;
    }
    return tile.room != nullptr;
}

void UploadedTiles::upload(LoadedTile& tile) {
    size_t const number = tile.room->targetOrTileId();
    instance_->synchronizeConcurrentStagingBuffer(std::move(tile.room));
    tile.staged = std::make_unique<StagedTile>(instance_, number);
}

void UploadedTiles::build(LoadedTile const& loaded) {
    LevelTile const& tile = loaded.job.tile;
    Size const size = sizeOf(leveltile::shownRegion(info_, tile));
    OwnedTarget target = targets_.target(Layout::kRgba8, size);
    if (loaded.staged)
        targets_.drawStored(target, Layout::kRgb8, loaded.staged->id(), wholeOf(size));
    else
        targets_.draw(target, pixelbands::hasAlpha(info_.bands) ? Layout::kRgba8 : Layout::kRgb8, size, loaded.pixels,
                      wholeOf(size));
    tiles_.keep(tile, std::move(target), size.width * size.height * pixelbands::kTexelBytes);
}
