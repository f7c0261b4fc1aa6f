#include "host/view/TileRequest.h"

#include "host/view/TileStages.h"

#include <algorithm>
#include <cmath>

namespace {

// In samples of the view's level.
struct Point {
    double x;
    double y;
};

double distance(LevelTile const& tile, size_t level, Point const& middle) {
    double const side = std::ldexp(leveltile::kSide, static_cast<int>(tile.level) - static_cast<int>(level));
    return std::hypot((static_cast<double>(tile.column) + 0.5) * side - middle.x,
                      (static_cast<double>(tile.row) + 0.5) * side - middle.y);
}

std::vector<LevelTile> sorted(std::set<LevelTile> const& tiles, size_t level, Point const& middle) {
    std::vector<LevelTile> result(tiles.begin(), tiles.end());
    std::sort(result.begin(), result.end(), [&](LevelTile const& a, LevelTile const& b) {
        if (a.level != b.level) return a.level > b.level;
        return distance(a, level, middle) < distance(b, level, middle);
    });
    return result;
}

void addParents(std::set<LevelTile>& tiles, size_t coarsest) {
    for (LevelTile tile : std::vector<LevelTile>(tiles.begin(), tiles.end())) {
        while (tile.level < coarsest && tiles.insert(tile = leveltile::parent(tile)).second)
            ;
    }
}

// Coarser tiles of the levels that are shown until finer ones are there.
void addFallbacks(std::set<LevelTile>& tiles, size_t coarsest, TileStages const& stages) {
    for (LevelTile tile : std::vector<LevelTile>(tiles.begin(), tiles.end())) {
        while (tile.level < coarsest) {
            tile = leveltile::parent(tile);
            if (stages.standsIn(tile.level)) tiles.insert(tile);
        }
    }
}

} // namespace

TileRequest requestFor(PictureInfo const& info, View const& view, TileStages& stages, bool withCoarser) {
    Region const samples = view.samplesOf(view.pixelsOf(info));
    size_t const level = view.zoom.level();
    std::vector<LevelTile> const shown = leveltile::over(level, samples);
    std::set<LevelTile> all(shown.begin(), shown.end());
    if (withCoarser) addFallbacks(all, info.levels, stages);

    TileRequest request;
    for (LevelTile const& tile : all) {
        TileSources sources = stages.sourcesOf(tile);
        request.needed.insert(sources.rebuilt.begin(), sources.rebuilt.end());
        request.residuals.insert(sources.residuals.begin(), sources.residuals.end());
        request.sources.emplace(tile, std::move(sources));
    }
    if (stages.needsParents()) addParents(request.needed, info.levels);
    Point const middle = {static_cast<double>(samples.x) + static_cast<double>(samples.width) / 2,
                          static_cast<double>(samples.y) + static_cast<double>(samples.height) / 2};
    request.rebuilt = sorted(request.needed, level, middle);
    for (LevelTile const& tile : sorted(all, level, middle))
        (tile.level == level ? request.shown : request.coarser).push_back(tile);
    request.pinnedShown = std::move(all);
    return request;
}
