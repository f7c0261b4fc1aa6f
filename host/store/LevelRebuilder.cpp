#include "host/store/LevelRebuilder.h"

#include "host/FilterDescriptions.h"

#include <algorithm>

namespace {

using Layout = PictureTargets::Layout;

// Two samples share a texel, and a level's corner is half of the finer one's: that is even only for multiples of 4.
constexpr std::size_t kCorner = 4;
constexpr std::size_t kFirstTile = 1;
// An id that nothing is ever stored under draws zeros.
constexpr std::size_t kZeroTile = ~std::size_t{0};

Region fromCorner(Region const& region) {
    std::size_t const x = region.x / kCorner * kCorner;
    std::size_t const y = region.y / kCorner * kCorner;
    return {x, y, region.x + region.width - x, region.y + region.height - y};
}

Region cutTo(Extent const& extent, Region const& region) {
    return {region.x, region.y, std::min(region.width, extent.width - region.x),
            std::min(region.height, extent.height - region.y)};
}

std::vector<unsigned char> littleEndian(std::vector<std::int16_t> const& samples) {
    std::vector<unsigned char> bytes(2 * samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        auto const sample = static_cast<std::uint16_t>(samples[i]);
        bytes[2 * i] = static_cast<unsigned char>(sample & 0xFFU);
        bytes[2 * i + 1] = static_cast<unsigned char>(sample >> 8U);
    }
    return bytes;
}

} // namespace

LevelRebuilder::LevelRebuilder(std::shared_ptr<RenderBackendInstance> instance, PictureTargets& targets,
                               TileStore& store)
    : instance_(std::move(instance)), targets_(targets), store_(store), nextTile_(kFirstTile) {}

Extent LevelRebuilder::levelExtent(StoreInfo const& info, std::size_t level) {
    auto const halved = [level](std::size_t length) { return ((length - 1) >> level) + 1; };
    return {halved(info.width), halved(info.height)};
}

PlanePart LevelRebuilder::rebuild(std::size_t level, std::size_t plane, Region const& region) {
    Region const wanted = fromCorner(region);
    if (level == store_.info().levels)
        return bandPart(level, Band::LL, plane, {wanted.x, wanted.y, wanted.width + wanted.width % 2, wanted.height});

    Region const bands = {wanted.x / 2, wanted.y / 2, wavelet53::bandSamples(wanted.width),
                          wavelet53::bandSamples(wanted.height)};
    std::size_t const coarser = level + 1;
    PlanePart const ll = rebuild(coarser, plane, cutTo(storegeometry::bandExtent(store_.info(), coarser), bands));
    PictureTargets::Size const half = {bands.width, 2 * bands.height - 4};
    PictureTargets::Size const whole = {2 * bands.width - 4, half.height};
    Filter const vertical = description::filterFirIV53LeGall16();
    Region const rows = {0, 0, half.width, half.height};
    PlanePart const low = {step(vertical, ll, bandPart(coarser, Band::LH, plane, bands), bands, half), rows};
    PlanePart const high = {step(vertical, bandPart(coarser, Band::HL, plane, bands),
                                 bandPart(coarser, Band::HH, plane, bands), bands, half),
                            rows};
    return {step(description::filterFirIH53LeGall16(), low, high, rows, whole),
            {wanted.x, wanted.y, whole.width, whole.height}};
}

// `bands` counts as the regions of the parts do.
OwnedTarget LevelRebuilder::step(Filter const& description, PlanePart const& low, PlanePart const& high,
                                 Region const& bands, PictureTargets::Size const& output) {
    OwnedTarget result = targets_.target(Layout::kPlane, output);
    targets_.run(targets_.prepared(description),
                 {{low.target.id(), bands.x - low.region.x, bands.y - low.region.y, false},
                  {high.target.id(), bands.x - high.region.x, bands.y - high.region.y, false}},
                 {bands.width, bands.height}, result);
    return result;
}

// Cells of the tile grid: high bands start one sample earlier, and their tiles with them, so one region serves all four.
PlanePart LevelRebuilder::bandPart(std::size_t level, Band band, std::size_t plane, Region const& cells) {
    std::size_t const side = store_.info().tileSize;
    Extent const tiles = storegeometry::tileCount(store_.info(), level);
    std::vector<std::vector<std::size_t>> coordinates;
    std::vector<std::size_t> ids;
    for (std::size_t row = cells.y / side; row < tiles.height && row * side < cells.y + cells.height; ++row) {
        for (std::size_t column = cells.x / side; column < tiles.width && column * side < cells.x + cells.width;
             ++column) {
            coordinates.push_back({column, row});
            ids.push_back(storedTile({level, band, plane, column, row}));
        }
    }
    PlanePart part = {targets_.target(Layout::kPlane, {cells.width, cells.height}), cells};
    instance_->drawTiles(part.target.id(), targets_.prepared(description::blitFilter1x16()),
                         {cells.x, cells.x + cells.width - 1, cells.y, cells.y + cells.height - 1}, {0, 0, 0, 0},
                         {side, side}, coordinates, ids, {0, 0});
    instance_->eraseTiles(kFirstTile, nextTile_);
    nextTile_ = kFirstTile;
    return part;
}

std::size_t LevelRebuilder::storedTile(TileAddress const& address) {
    auto const value = store_.uniformValue(address);
    if (value == std::int16_t{0}) return kZeroTile;
    std::size_t const id = nextTile_++;
    std::size_t const side = store_.info().tileSize;
    // One texel of two samples is enough where all are the same.
    if (value)
        instance_->setTile(id, littleEndian({*value, *value}), {2, 1, 1}, 0);
    else
        instance_->setTile(id, littleEndian(store_.tile(address)), {side, side, 1}, 0);
    // A tile that was evicted before it is drawn would be drawn black.
    instance_->lockTile(id);
    return id;
}
