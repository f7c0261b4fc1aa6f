#include "host/store/TileRowWriter.h"

#include <algorithm>
#include <utility>

TileRowWriter::TileRowWriter(StoreInfo const& info, size_t level, Band band, size_t plane, RawTileSink sink)
    : info_(info),
      next_{level, band, plane, 0, 0},
      extent_(storegeometry::bandExtent(info, level)),
      sink_(std::move(sink)),
      rows_(extent_.width * std::min(info.tileSize, extent_.height)) {}

void TileRowWriter::push(Sample const* row) {
    std::copy_n(row, extent_.width, &rows_[held_ * extent_.width]);
    ++held_;
    if (held_ == info_.tileSize || next_.row * info_.tileSize + held_ == extent_.height) cut();
}

void TileRowWriter::cut() {
    size_t const side = info_.tileSize;
    for (next_.column = 0; next_.column * side < extent_.width; ++next_.column) {
        RawTile tile{next_, storegeometry::filledPart(info_, next_), std::vector<Sample>(side * side)};
        for (size_t y = 0; y < tile.filled.height; ++y)
            std::copy_n(&rows_[y * extent_.width + next_.column * side], tile.filled.width, &tile.samples[y * side]);
        sink_(std::move(tile));
    }
    ++next_.row;
    held_ = 0;
}
