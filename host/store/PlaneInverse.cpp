#include "host/store/PlaneInverse.h"

PlaneInverse::PlaneInverse(TileStore& store, size_t plane) {
    // From the coarsest level: each level takes its low rows from the level before, which must exist.
    for (size_t level = store.info().levels; level > 0; --level)
        addLevel(store, level, plane);
}

void PlaneInverse::addLevel(TileStore& store, size_t level, size_t plane) {
    auto const readerOf = [&](Band band) { return &readers_.emplace_back(store, level, band, plane); };
    TileRowReader* const hl = readerOf(Band::HL);
    TileRowReader* const lh = readerOf(Band::LH);
    TileRowReader* const hh = readerOf(Band::HH);
    std::function<void(Sample*)> nextLow;
    if (level == store.info().levels)
        nextLow = [ll = readerOf(Band::LL)](Sample* row) { ll->next(row); };
    else
        nextLow = [coarser = &levels_.back()](Sample* row) { coarser->next(row); };
    levels_.emplace_back(
        storegeometry::bandExtent(store.info(), level - 1).width,
        [nextLow, hl](Sample* low, Sample* high) {
            nextLow(low);
            hl->next(high);
        },
        [lh, hh](Sample* low, Sample* high) {
            lh->next(low);
            hh->next(high);
        });
}
