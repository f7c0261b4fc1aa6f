#pragma once

#include "tests/gles3renderbackend/BackendGLTest.h"

#include <cstddef>
#include <map>
#include <ostream>
#include <vector>

namespace backendtest {

struct Block {
    Sizes cell;
    size_t tile;
};

/// What a host asks drawTiles for, and where it lands. Tiles fill the target unless a word says otherwise:
/// Scene("...").through("BlitFilter4x8").target({41, 29}, kRgba8).tiles({7, 5}).grid(6, 6)
struct Scene {
    char const* name;
    char const* filter = nullptr;
    TargetLayout layout = kRgba8;
    size_t tileComponents = 4; // of setTile; 1: 16-bit samples
    Sizes targetSize;          // logical
    Sizes tileSize;
    Sizes range;
    Sizes gridOrigin = {0, 0};
    Sizes offset = {0, 0};
    std::vector<Block> blocks;
    std::vector<size_t> missing; // tiles of blocks that were never set

    explicit Scene(char const* sceneName) : name(sceneName) {}

    Scene& through(char const* filterName) {
        filter = filterName;
        return *this;
    }
    Scene& target(Sizes const& size, TargetLayout const& targetLayout) {
        targetSize = size;
        layout = targetLayout;
        range = {0, size[0] - 1, 0, size[1] - 1};
        tileComponents = layout.pixelsPerTexel == 2 ? 1 : layout.format == RenderBackend::RGB24 ? 3 : 4;
        return *this;
    }
    Scene& tiles(Sizes const& size) {
        tileSize = size;
        return *this;
    }
    /// Other than the target's.
    Scene& components(size_t count) {
        tileComponents = count;
        return *this;
    }
    /// The visible part of the canvas, {x0, x1, y0, y1}, and the grid's origin on the canvas.
    Scene& region(Sizes const& shown, Sizes const& origin) {
        range = shown;
        gridOrigin = origin;
        return *this;
    }
    /// In the target.
    Scene& at(Sizes const& place) {
        offset = place;
        return *this;
    }
    /// Tiles in columns x rows cells from a cell on, numbered as they come.
    Scene& grid(size_t columns, size_t rows, Sizes const& firstCell = {0, 0}) {
        for (size_t y = 0; y < rows; ++y)
            for (size_t x = 0; x < columns; ++x)
                blocks.push_back({{firstCell[0] + x, firstCell[1] + y}, blocks.size()});
        return *this;
    }
    Scene& put(std::vector<Block> const& tilesInCells) {
        blocks = tilesInCells;
        return *this;
    }
    Scene& without(std::vector<size_t> const& neverSet) {
        missing = neverSet;
        return *this;
    }
};

inline void PrintTo(Scene const& scene, std::ostream* stream) {
    *stream << scene.name;
}

inline Picture tilePicture(Scene const& scene, size_t tile) {
    // A 16-bit tile arrives as two bytes per sample, two samples per texel.
    size_t const texelBytes = scene.tileComponents == 3 ? 3 : 4;
    return noise(scene.layout.texels(scene.tileSize[0]), scene.tileSize[1], texelBytes,
                 static_cast<std::uint32_t>(tile) + 1);
}

/// Walks over every texel of every tile and keeps those inside the region.
inline void drawnByHand(Scene const& scene, std::map<size_t, Picture> const& tiles, Picture& target) {
    auto const regionWidth = static_cast<long>(scene.layout.texels(scene.range[1] - scene.range[0] + 1));
    auto const regionHeight = static_cast<long>(scene.range[3] - scene.range[2] + 1);
    Picture const nothing(scene.layout.texels(scene.tileSize[0]), scene.tileSize[1], 4, 0);
    for (auto const& block : scene.blocks) {
        auto const found = tiles.find(block.tile);
        Picture const& tile = found == tiles.end() ? nothing : found->second;
        auto const gridX = static_cast<long>(scene.gridOrigin[0] + block.cell[0] * scene.tileSize[0]);
        auto const gridY = static_cast<long>(scene.gridOrigin[1] + block.cell[1] * scene.tileSize[1]);
        long const left = (gridX - static_cast<long>(scene.range[0])) * static_cast<long>(scene.layout.texelsPerPixel) /
                          static_cast<long>(scene.layout.pixelsPerTexel);
        long const top = gridY - static_cast<long>(scene.range[2]);
        for (size_t y = 0; y < tile.height; ++y)
            for (size_t x = 0; x < tile.width; ++x) {
                long const column = left + static_cast<long>(x);
                long const row = top + static_cast<long>(y);
                if (column < 0 || row < 0 || column >= regionWidth || row >= regionHeight) continue;
                copyTexel(tile, x, y, target, scene.layout.texels(scene.offset[0]) + static_cast<size_t>(column),
                          scene.offset[1] + static_cast<size_t>(row));
            }
    }
}

} // namespace backendtest
