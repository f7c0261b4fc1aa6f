#include "host/store/LevelRebuilder.h"

#include "host/FilterDescriptions.h"

#include <algorithm>

namespace {

using Layout = PictureTargets::Layout;

// Two samples share a texel, and a level's corner is half of the finer one's: that is even only for multiples of 4.
constexpr std::size_t kCorner = 4;
Region fromCorner(Region const& region) {
    std::size_t const x = region.x / kCorner * kCorner;
    std::size_t const y = region.y / kCorner * kCorner;
    return {x, y, region.x + region.width - x, region.y + region.height - y};
}

Region cutTo(Extent const& extent, Region const& region) {
    return {region.x, region.y, std::min(region.width, extent.width - region.x),
            std::min(region.height, extent.height - region.y)};
}

Region common(Region const& a, Region const& b) {
    std::size_t const x = std::max(a.x, b.x);
    std::size_t const y = std::max(a.y, b.y);
    return {x, y, std::min(a.x + a.width, b.x + b.width) - x, std::min(a.y + a.height, b.y + b.height) - y};
}

std::vector<std::int16_t> cutOut(std::vector<std::int16_t> const& samples, Region const& tile, Region const& wanted) {
    std::vector<std::int16_t> out;
    out.reserve(wanted.width * wanted.height);
    for (std::size_t y = wanted.y - tile.y; y < wanted.y - tile.y + wanted.height; ++y) {
        auto const row = samples.begin() + static_cast<std::ptrdiff_t>(y * tile.width + wanted.x - tile.x);
        out.insert(out.end(), row, row + static_cast<std::ptrdiff_t>(wanted.width));
    }
    return out;
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

LevelRebuilder::LevelRebuilder(PictureTargets& targets, TileStore& store) : targets_(targets), store_(store) {}

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
// Each tile is drawn as the part of it that is wanted, and no quad leaves the target: softpipe loses pixels on the
// diagonal of quads that it has to clip.
PlanePart LevelRebuilder::bandPart(std::size_t level, Band band, std::size_t plane, Region const& cells) {
    std::size_t const side = store_.info().tileSize;
    Extent const tiles = storegeometry::tileCount(store_.info(), level);
    PlanePart part = {targets_.target(Layout::kPlane, {cells.width, cells.height}), cells};
    for (std::size_t row = cells.y / side; row < tiles.height && row * side < cells.y + cells.height; ++row) {
        for (std::size_t column = cells.x / side; column < tiles.width && column * side < cells.x + cells.width;
             ++column)
            drawTile({level, band, plane, column, row}, part);
    }
    return part;
}

void LevelRebuilder::drawTile(TileAddress const& address, PlanePart const& part) {
    std::size_t const side = store_.info().tileSize;
    Region const tile = {address.column * side, address.row * side, side, side};
    Region const wanted = common(tile, part.region);
    Region const area = {wanted.x - part.region.x, wanted.y - part.region.y, wanted.width, wanted.height};
    auto const value = store_.uniformValue(address);
    if (!value)
        targets_.draw(part.target, Layout::kPlane, {area.width, area.height},
                      littleEndian(cutOut(store_.tile(address), tile, wanted)), area);
    else if (*value != 0) // one texel of two samples is enough where all are the same
        targets_.draw(part.target, Layout::kPlane, {2, 1}, littleEndian({*value, *value}), area);
    else
        targets_.draw(part.target, Layout::kPlane, {2, 1}, {}, area);
}
