#pragma once

#include "host/store/StoreInfo.h"

#include <cstddef>

/// Of the store that an import without options makes of an RGB picture of such a size.
inline StoreInfo storeInfoOf(size_t width, size_t height) {
    StoreInfo info;
    info.width = width;
    info.height = height;
    info.bands = 3;
    info.levels = storegeometry::autoLevels(width, height, info.tileSize);
    return info;
}
