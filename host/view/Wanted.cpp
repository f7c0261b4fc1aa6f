#include "host/view/Wanted.h"

#include "host/view/FrameComposer.h"

#include <algorithm>
#include <cmath>

namespace {

// In samples of the view's level.
struct Point {
    double x;
    double y;
};

double distance(PictureTile const& tile, std::size_t level, Point const& middle) {
    double const side = std::ldexp(picturetile::kSide, static_cast<int>(tile.level) - static_cast<int>(level));
    return std::hypot((static_cast<double>(tile.column) + 0.5) * side - middle.x,
                      (static_cast<double>(tile.row) + 0.5) * side - middle.y);
}

std::vector<PictureTile> sorted(std::set<PictureTile> const& tiles, std::size_t level, Point const& middle) {
    std::vector<PictureTile> result(tiles.begin(), tiles.end());
    std::sort(result.begin(), result.end(), [&](PictureTile const& a, PictureTile const& b) {
        if (a.level != b.level) return a.level > b.level;
        return distance(a, level, middle) < distance(b, level, middle);
    });
    return result;
}

void addParents(std::set<PictureTile>& tiles, std::size_t coarsest) {
    for (PictureTile tile : std::vector<PictureTile>(tiles.begin(), tiles.end())) {
        while (tile.level < coarsest && tiles.insert(tile = picturetile::parent(tile)).second)
            ;
    }
}

} // namespace

Wanted wantedFor(StoreInfo const& info, View const& view, ShownTiles& tiles, bool coarserFirst) {
    Region const samples = FrameComposer::samplesOf(view.zoom, FrameComposer::shownPart(info, view));
    std::size_t const level = view.zoom.level();
    std::vector<PictureTile> const shown = picturetile::over(level, samples);
    std::set<PictureTile> all(shown.begin(), shown.end());
    if (coarserFirst) addParents(all, info.levels);

    Wanted wanted;
    for (PictureTile const& tile : all) {
        auto const sources = tiles.sources(tile);
        wanted.needed.insert(sources.begin(), sources.end());
        auto const residuals = tiles.residualSources(tile);
        wanted.residuals.insert(residuals.begin(), residuals.end());
    }
    addParents(wanted.needed, info.levels);
    Point const middle = {static_cast<double>(samples.x) + static_cast<double>(samples.width) / 2,
                          static_cast<double>(samples.y) + static_cast<double>(samples.height) / 2};
    wanted.rebuilt = sorted(wanted.needed, level, middle);
    for (PictureTile const& tile : sorted(all, level, middle))
        (tile.level == level ? wanted.shown : wanted.coarser).push_back(tile);
    wanted.neededShown = std::move(all);
    return wanted;
}
