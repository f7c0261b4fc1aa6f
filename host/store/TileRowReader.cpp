#include "host/store/TileRowReader.h"

#include <algorithm>

TileRowReader::TileRowReader(TileStore& store, size_t level, Band band, size_t plane)
    : store_(store), next_{level, band, plane, 0, 0}, extent_(storegeometry::bandExtent(store.info(), level)) {}

void TileRowReader::next(Sample* row) {
    if (given_ == held_) read();
    size_t const side = store_.info().tileSize;
    size_t left = extent_.width;
    for (Tile const& tile : tiles_) {
        size_t const width = std::min(side, left);
        if (tile.value)
            std::fill_n(row, width, *tile.value);
        else
            std::copy_n(&tile.samples[given_ * side], width, row);
        row += width;
        left -= width;
    }
    ++given_;
}

void TileRowReader::read() {
    tiles_.clear();
    for (next_.column = 0; next_.column * store_.info().tileSize < extent_.width; ++next_.column)
        tiles_.push_back(tile());
    held_ = std::min(store_.info().tileSize, extent_.height - next_.row * store_.info().tileSize);
    ++next_.row;
    given_ = 0;
}

TileRowReader::Tile TileRowReader::tile() {
    auto const value = store_.uniformValue(next_);
    if (value) return {value, {}};
    Tile tile{std::nullopt, store_.tile(next_)};
    // Only the filled part: a flat picture's tiles lie mostly beyond its lower end.
    tile.samples.resize(storegeometry::filledPart(store_.info(), next_).height * store_.info().tileSize);
    tile.samples.shrink_to_fit();
    return tile;
}
