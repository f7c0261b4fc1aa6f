#include "host/view/UploadedTiles.h"

#include "host/Quietly.h"
#include "host/image/PixelBands.h"

#include <algorithm>
#include <cstdint>

namespace {

using Layout = SampleLayout;

constexpr size_t kRingComponents = 3;

} // namespace

UploadedTiles::UploadedTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets,
                             PictureInfo const& info)
    : instance_(std::move(instance)), targets_(targets), info_(info), numbers_(instance_) {}

UploadedTiles::~UploadedTiles() {
    quietly([this] { flush(); });
}

bool UploadedTiles::usesRing() const {
    return !ringFailed_ && pixelbands::components(info_.bands) == kRingComponents;
}

size_t UploadedTiles::nextNumber() {
    return numbers_.id(next_++ % (size_t{1} << TileNumbers::kBits));
}

bool UploadedTiles::reserve(LoadedTile& tile) {
    if (ringFailed_) return false;
    eraseLate();
    late_.reserve(late_.size() + rooms_ + 1);
    Size const size = sizeOf(leveltile::shownRegion(info_, tile.job.tile));
    try {
        tile.room = instance_->concurrentStagingBuffer(nextNumber(), RenderBackend::TILE,
                                                       {size.width, size.height, kRingComponents});
    } catch (VelmoraException const&) {
        ringFailed_ = true;
    }
    if (tile.room) ++rooms_;
    return tile.room != nullptr;
}

void UploadedTiles::upload(LoadedTile& tile) {
    size_t const number = tile.room->targetOrTileId();
    --rooms_;
    instance_->synchronizeConcurrentStagingBuffer(std::move(tile.room));
    if (instance_->tileSet(number))
        tile.staged = std::make_unique<StagedTile>(instance_, number);
    else
        late_.push_back(number);
}

void UploadedTiles::abandon(size_t number) {
    --rooms_;
    late_.push_back(number);
}

void UploadedTiles::eraseLate() {
    auto const isThere = [this](size_t number) {
        if (!instance_->tileSet(number)) return false;
        instance_->unlockTile(number);
        instance_->eraseTile(number);
        return true;
    };
    late_.erase(std::remove_if(late_.begin(), late_.end(), isThere), late_.end());
}

// Otherwise tiles would come into the backend's cache under numbers that others have by then. Each turn closes a buffer
// of the ring, which waits for its writers.
void UploadedTiles::flush() {
    eraseLate();
    while (!late_.empty()) {
        size_t const number = nextNumber();
        auto room = instance_->concurrentStagingBuffer(number, RenderBackend::TILE, {1, 1, kRingComponents});
        room->write(std::vector<std::uint8_t>(kRingComponents), 0);
        instance_->synchronizeConcurrentStagingBuffer(std::move(room));
        late_.push_back(number);
        eraseLate();
    }
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
