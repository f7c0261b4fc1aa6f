#include "host/view/MixedTiles.h"

#include "host/channels/ChannelMixFilter.h"
#include "host/image/PixelBands.h"

#include <utility>

namespace {

using Layout = SampleLayout;

std::vector<size_t> const kTransparent = {0, 0, 0, 0};

} // namespace

MixedTiles::MixedTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, PictureInfo const& info)
    : instance_(std::move(instance)),
      targets_(targets),
      info_(info),
      nothing_(std::make_shared<ChannelTable const>(ChannelTable::nothing())) {}

void MixedTiles::show(Tables tables) {
    tables_ = std::move(tables);
    mixtures_.clear();
}

void MixedTiles::build(LoadedTile const& loaded) {
    LevelTile const& tile = loaded.job.tile;
    Size const size = sizeOf(leveltile::shownRegion(info_, tile));
    size_t const pairBytes = size.width * size.height * pixelbands::kTexelBytes;
    Codes codes;
    for (size_t offset = 0; offset < loaded.pixels.size(); offset += pairBytes) {
        auto const first = loaded.pixels.begin() + static_cast<std::ptrdiff_t>(offset);
        codes.push_back(targets_.upload(Layout::kRgba8, size, {first, first + static_cast<std::ptrdiff_t>(pairBytes)}));
    }
    OwnedTarget mixture = mixed(codes, size);
    // Codes that were there before are the same.
    if (!codes_.has(tile) && !codes.empty()) codes_.keep(tile, std::move(codes), loaded.pixels.size());
    mixtures_.keep(tile, std::move(mixture), pairBytes);
}

void MixedTiles::mix(LevelTile const& tile) {
    Size const size = sizeOf(leveltile::shownRegion(info_, tile));
    OwnedTarget mixture = mixed(*codes_.find(tile), size);
    mixtures_.keep(tile, std::move(mixture), size.width * size.height * pixelbands::kTexelBytes);
}

// That of a pair's second channel may be missing.
std::shared_ptr<ChannelTable const> MixedTiles::table(size_t channel) const {
    return channel < tables_.size() ? tables_[channel] : nothing_;
}

OwnedTarget MixedTiles::mixed(Codes const& codes, Size const& size) {
    OwnedTarget mixture = targets_.target(Layout::kRgba8, size);
    instance_->clear(mixture.id(), kTransparent);
    Filter const& filter = targets_.prepared(ChannelMixFilter::description());
    for (size_t pair = 0; pair < codes.size(); ++pair) {
        ChannelMixParams params;
        params.first = table(2 * pair);
        params.second = table(2 * pair + 1);
        OwnedTarget next = targets_.target(Layout::kRgba8, size);
        targets_.run(filter, {{codes[pair].id(), 0, 0, false}, {mixture.id(), 0, 0, false}}, size, next, params);
        mixture = std::move(next);
    }
    return mixture;
}

size_t MixedTiles::trim(size_t bytes, std::set<LevelTile> const& needed) {
    // Codes can be read once more; what is shown cannot wait for that.
    size_t const forCodes = bytes - std::min(bytes, mixtures_.bytes());
    size_t const gone = codes_.trim(forCodes, {});
    return gone + mixtures_.trim(bytes, needed);
}
