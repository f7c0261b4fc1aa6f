#include "host/store/PlaneTransform.h"

PlaneTransform::PlaneTransform(StoreInfo const& info, size_t plane, RawTileSink const& sink) {
    // From the coarsest level: each level hands its low rows to the level before, which must exist.
    for (size_t level = info.levels; level > 0; --level)
        addLevel(info, level, plane, sink);
}

void PlaneTransform::push(Sample const* row) {
    levels_.back().push(row);
}

size_t PlaneTransform::bufferedSamples() const {
    size_t samples = 0;
    for (LevelTransform const& level : levels_)
        samples += level.bufferedSamples();
    for (TileRowWriter const& cutter : cutters_)
        samples += cutter.bufferedSamples();
    return samples;
}

void PlaneTransform::addLevel(StoreInfo const& info, size_t level, size_t plane, RawTileSink const& sink) {
    auto const cutterOf = [&](Band band) { return &cutters_.emplace_back(info, level, band, plane, sink); };
    TileRowWriter* const hl = cutterOf(Band::HL);
    TileRowWriter* const lh = cutterOf(Band::LH);
    TileRowWriter* const hh = cutterOf(Band::HH);
    std::function<void(Sample const*)> pushLow;
    if (level == info.levels)
        pushLow = [ll = cutterOf(Band::LL)](Sample const* row) { ll->push(row); };
    else
        pushLow = [coarser = &levels_.back()](Sample const* row) { coarser->push(row); };
    Size const extent = storegeometry::bandExtent(info, level - 1);
    levels_.emplace_back(
        extent.width, extent.height,
        [pushLow, hl](Sample const* low, Sample const* high) {
            pushLow(low);
            hl->push(high);
        },
        [lh, hh](Sample const* low, Sample const* high) {
            lh->push(low);
            hh->push(high);
        });
}
