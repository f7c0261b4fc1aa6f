#include "host/view/StoreTileStages.h"

#include "host/view/AlphaPlane.h"
#include "host/view/BandReader.h"

StoreTileStages::StoreTileStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                                 std::string const& storePath, Options const& options)
    : instance_(instance),
      targets_(targets),
      store_(storePath, options.interruption),
      cache_(std::make_shared<SampleCache>(options.hostBytes)),
      rebuilt_(instance, targets, store_.info()),
      samples_(targets, rebuilt_, store_.info()),
      enhanced_(instance, targets, rebuilt_, &samples_, store_.info()),
      emptyAreas_(instance, store_),
      mask_(instance, targets, emptyAreas_, store_.info()),
      loader_(bandReaders(storePath, options.threads, cache_)) {}

void StoreTileStages::putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) {
    AlphaPlane(targets_, rebuilt_, store_.info()).put(rgba, view, tiles);
}

std::optional<std::vector<std::uint16_t>> StoreTileStages::samplesAt(PicturePixel const& pixel) {
    LevelTile const tile = {0, pixel.x / leveltile::kSide, pixel.y / leveltile::kSide};
    if (!rebuilt_.has(tile) || (hasResidualBits(0) && !samples_.hasResiduals(tile))) return std::nullopt;
    return samples_.codes(0, {pixel.x, pixel.y, 1, 1}, store_.info().bands);
}
