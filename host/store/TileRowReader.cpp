#include "host/store/TileRowReader.h"

#include <algorithm>

TileRowReader::TileRowReader(TileStore& store, size_t level, Band band, size_t plane)
    : store_(store), next_{level, band, plane, 0, 0}, extent_(storegeometry::bandExtent(store.info(), level)) {}

void TileRowReader::next(Sample* row) {
    if (given_ == held_) read();
    std::copy_n(&rows_[given_ * extent_.width], extent_.width, row);
    ++given_;
}

void TileRowReader::read() {
    size_t const side = store_.info().tileSize;
    for (next_.column = 0; next_.column * side < extent_.width; ++next_.column) {
        Extent const filled = storegeometry::filledPart(store_.info(), next_);
        rows_.resize(filled.height * extent_.width);
        std::vector<Sample> const samples = store_.tile(next_);
        for (size_t y = 0; y < filled.height; ++y)
            std::copy_n(&samples[y * side], filled.width, &rows_[y * extent_.width + next_.column * side]);
        held_ = filled.height;
    }
    ++next_.row;
    given_ = 0;
}
