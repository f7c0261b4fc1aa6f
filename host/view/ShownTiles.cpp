#include "host/view/ShownTiles.h"

#include <algorithm>

using Layout = SampleLayout;

ShownTiles::ShownTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, RebuiltTiles& tiles,
                       LevelSamples* samples, PictureInfo const& info)
    : instance_(std::move(instance)),
      targets_(targets),
      rebuilt_(tiles),
      samples_(samples),
      info_(info),
      pieceSide_(EnhancementChain::requiredPartSide({})) {}

void ShownTiles::enhance(std::vector<enhancement::Step> const& steps) {
    size_t const side = EnhancementChain::requiredPartSide(steps);
    auto kept = steps;
    // Nothing below throws: the tiles are those of the steps at any time.
    pieceSide_ = side;
    steps_ = std::move(kept);
    tiles_.clear();
    chains_.clear();
}

// 8 bits, not enhanced.
bool ShownTiles::asRebuilt() const {
    return steps_.empty() && rebuilt_.layout() == Layout::kRgba8;
}

EnhancementChain& ShownTiles::chain(size_t level) {
    auto& chain = chains_[level];
    Size const extent = leveltile::levelExtent(info_, level);
    if (!chain) chain = std::make_unique<EnhancementChain>(instance_, steps_, Size{extent.width, extent.height});
    return *chain;
}

// The tile, or where steps read much around a pixel as many parts of it as a chain takes.
std::vector<Region> ShownTiles::pieces(LevelTile const& tile) const {
    std::vector<Region> result;
    Region const all = leveltile::shownRegion(info_, tile);
    for (size_t y = 0; y < all.height; y += pieceSide_) {
        for (size_t x = 0; x < all.width; x += pieceSide_)
            result.push_back(
                {all.x + x, all.y + y, std::min(pieceSide_, all.width - x), std::min(pieceSide_, all.height - y)});
    }
    return result;
}

TileSources ShownTiles::sourcesOf(LevelTile const& tile) {
    if (asRebuilt()) return {{tile}, {}};
    TileSources sources = {leveltile::over(tile.level, chain(tile.level).inputFor(leveltile::shownRegion(info_, tile))),
                           {}};
    // Enhancements of 16 bits look at 15.
    bool const deep = samples_ != nullptr && samples_->hasResidualBits(tile.level);
    if (deep && !steps_.empty()) sources.residuals = sources.rebuilt;
    return sources;
}

bool ShownTiles::has(LevelTile const& tile) const {
    return asRebuilt() ? rebuilt_.has(tile) : tiles_.has(tile);
}

OwnedTarget const* ShownTiles::texels(LevelTile const& tile) {
    return asRebuilt() ? rebuilt_.pixels(tile) : tiles_.find(tile);
}

void ShownTiles::build(LevelTile const& tile) {
    if (asRebuilt()) return;
    Region const all = leveltile::shownRegion(info_, tile);
    OwnedTarget result = targets_.target(Layout::kRgba8, {all.width, all.height});
    for (Region const& piece : pieces(tile)) {
        targets_.copy(Layout::kRgba8, drawn(tile, piece), wholeOf(sizeOf(piece)), result, piece.x - all.x,
                      piece.y - all.y);
    }
    tiles_.keep(tile, std::move(result), all.width * all.height * 4);
}

OwnedTarget ShownTiles::drawn(LevelTile const& tile, Region const& piece) {
    EnhancementChain& steps = chain(tile.level);
    Region const region = steps.inputFor(piece);
    bool const deep = rebuilt_.layout() == Layout::kThreeChannel16;
    // Shown as they are, 16 bits need no more than their upper ones.
    if (deep && !steps_.empty()) return steps.draw15(samples_->planes(tile.level, region), piece);
    return steps.draw(input(tile.level, region), rebuilt_.depth(), piece);
}

// The pixels of a level's region, out of its rebuilt tiles.
OwnedTarget ShownTiles::input(size_t level, Region const& region) {
    OwnedTarget result = targets_.target(rebuilt_.layout(), {region.width, region.height});
    for (LevelTile const& tile : leveltile::over(level, region)) {
        Region const shown = leveltile::shownRegion(info_, tile);
        Region const part = common(shown, region);
        targets_.copy(rebuilt_.layout(), *rebuilt_.pixels(tile),
                      {part.x - shown.x, part.y - shown.y, part.width, part.height}, result, part.x - region.x,
                      part.y - region.y);
    }
    return result;
}
