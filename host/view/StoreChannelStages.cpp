#include "host/view/StoreChannelStages.h"

#include "host/image/PixelBands.h"
#include "host/view/AlphaTexels.h"
#include "host/view/CoarsestSamples.h"

#include <algorithm>
#include <utility>

namespace {

ImageFacts factsOf(StoreInfo const& store) {
    ImageFacts facts;
    facts.layout.width = store.width;
    facts.layout.height = store.height;
    facts.layout.bands = store.bands;
    facts.layout.colours = pixelbands::isGrey(store.bands) ? 1 : 3;
    facts.layout.alpha = pixelbands::hasAlpha(store.bands);
    facts.layout.type = store.bits == 8 ? SampleType::Unsigned8 : SampleType::Unsigned16;
    return facts;
}

// Mixtures have 8 bits.
PictureInfo infoOf(StoreInfo const& store, ChannelOpening const& opening) {
    PictureInfo info = static_cast<PictureInfo const&>(store);
    info.interpretation = store.interpretation + ", " + std::to_string(store.bits) + " bits";
    info.bands = opening.bands;
    info.bits = 8;
    return info;
}

} // namespace

StoreChannelStages::StoreChannelStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                                       std::string const& storePath, DisplayRequest const& request,
                                       Options const& options)
    : StoreTileStages(instance, targets, storePath, options),
      targets_(targets),
      facts_(factsOf(store().info())),
      opening_(facts_, request, coarsestsamples::of(store())),
      info_(infoOf(store().info(), opening_)),
      mixed_(instance, targets, info_),
      enhanced_(instance, targets, mixed_, nullptr, info_) {
    StoreChannelStages::display(opening_.channels);
}

ShownChannels StoreChannelStages::showingOf(TileStore& store, DisplayRequest const& request) {
    ChannelOpening opening(factsOf(store.info()), request, coarsestsamples::of(store));
    PictureInfo info = infoOf(store.info(), opening);
    return {std::move(info), std::move(opening.channels)};
}

// Nothing below the tables throws: codes, tables and channels belong together at any time. No other bands of the store
// are needed.
bool StoreChannelStages::display(std::vector<ChannelDisplay> const& channels) {
    ChannelSet next(facts_, channels, channels_);
    auto tables = next.tables();
    if (!next.hasCodesOf(channels_, facts_.layout.type)) mixed_.forgetCodes();
    mixed_.show(std::move(tables));
    channels_ = std::move(next);
    return false;
}

PictureStages::Usage StoreChannelStages::usage() const {
    Usage usage = StoreTileStages::usage();
    usage.gpuBytes += mixed_.bytes();
    return usage;
}

void StoreChannelStages::putAlpha(std::vector<std::uint8_t>& rgba, View const& view,
                                  std::vector<LevelTile> const& tiles) {
    alphatexels::put(rgba, view, tiles, info_, targets_, mixed_);
}

TileSources StoreChannelStages::sourcesOf(LevelTile const& tile) {
    TileSources sources = enhanced_.sourcesOf(tile);
    if (hasResidualBits(tile.level)) sources.residuals = sources.rebuilt;
    return sources;
}

void StoreChannelStages::enhance(LevelTile const& tile) {
    for (LevelTile const& source : enhanced_.sourcesOf(tile).rebuilt)
        mix(source);
    enhanced_.build(tile);
}

void StoreChannelStages::mix(LevelTile const& tile) {
    if (mixed_.has(tile)) return;
    if (mixed_.hasCodes(tile)) return mixed_.mix(tile);
    LoadedTile codes;
    codes.job.tile = tile;
    codes.pixels = codesOf(tile);
    mixed_.build(codes);
}

std::vector<std::uint8_t> StoreChannelStages::codesOf(LevelTile const& tile) {
    Region const region = leveltile::shownRegion(info_, tile);
    size_t const pixels = region.width * region.height;
    std::vector<std::uint16_t> const samples = this->samples().codes(tile.level, region, facts_.layout.bands);
    std::vector<std::uint8_t> narrow;
    if (facts_.layout.type == SampleType::Unsigned8) narrow.assign(samples.begin(), samples.end());
    auto const* const bytes = narrow.empty() ? reinterpret_cast<std::uint8_t const*>(samples.data()) : narrow.data();
    auto const& shown = channels_.shown();
    std::vector<std::uint8_t> texels = channelset::codeTexels(shown.size(), pixels);
    std::vector<std::uint16_t> codes(pixels);
    for (size_t i = 0; i < shown.size(); ++i) {
        channelset::codesOf(facts_, shown[i]).encode(bytes, facts_.layout, shown[i].band, pixels, codes.data());
        channelset::putCodes(codes, i, texels);
    }
    return texels;
}

// Half of it at most is for codes and mixtures that no view needs.
size_t StoreChannelStages::trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) {
    size_t const gone = mixed_.trim(bytes / 2, needed);
    return gone + StoreTileStages::trimRebuilt(bytes - std::min(bytes, mixed_.bytes()), needed);
}
