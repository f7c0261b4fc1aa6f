#pragma once

#include "host/view/BandReader.h"

#include <utility>
#include <vector>

/// What a reader reads for a tile.
inline std::vector<BandPart> partsOf(BandReader& reader, LevelTile const& tile,
                                     TileJob::What what = TileJob::What::Bands) {
    LoadedTile loaded;
    loaded.job = {tile, what};
    reader.read(loaded);
    return std::move(loaded.parts);
}
