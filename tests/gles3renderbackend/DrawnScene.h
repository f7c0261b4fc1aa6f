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

/// What a host asks drawTiles for, and where it lands.
struct Scene {
    char const* name;
    char const* filter;
    RenderBackend::ImageFormatType format;
    size_t bits;           // a logical pixel
    size_t pixelsPerTexel; // one of these two is 1
    size_t texelsPerPixel;
    size_t tileComponents; // of setTile; 1: 16-bit samples
    Sizes targetSize;      // logical
    Sizes tileSize;
    Sizes range;
    Sizes grid; // origin
    Sizes offsets;
    std::vector<Block> blocks;
    std::vector<size_t> missing; // tiles of blocks that were never set
};

inline void PrintTo(Scene const& scene, std::ostream* stream) {
    *stream << scene.name;
}

inline size_t texels(Scene const& scene, size_t pixels) {
    return pixels * scene.texelsPerPixel / scene.pixelsPerTexel;
}

inline Picture tilePicture(Scene const& scene, size_t tile) {
    // A 16-bit tile arrives as two bytes per sample, two samples per texel.
    size_t const texelBytes = scene.tileComponents == 3 ? 3 : 4;
    return noise(texels(scene, scene.tileSize[0]), scene.tileSize[1], texelBytes, static_cast<std::uint32_t>(tile) + 1);
}

/// Walks over every texel of every tile and keeps those inside the region.
inline void drawnByHand(Scene const& scene, std::map<size_t, Picture> const& tiles, Picture& target) {
    auto const regionWidth = static_cast<long>(texels(scene, scene.range[1] - scene.range[0] + 1));
    auto const regionHeight = static_cast<long>(scene.range[3] - scene.range[2] + 1);
    Picture const nothing(texels(scene, scene.tileSize[0]), scene.tileSize[1], 4, 0);
    for (auto const& block : scene.blocks) {
        auto const found = tiles.find(block.tile);
        Picture const& tile = found == tiles.end() ? nothing : found->second;
        auto const gridX = static_cast<long>(scene.grid[0] + block.cell[0] * scene.tileSize[0]);
        auto const gridY = static_cast<long>(scene.grid[1] + block.cell[1] * scene.tileSize[1]);
        long const left = (gridX - static_cast<long>(scene.range[0])) * static_cast<long>(scene.texelsPerPixel) /
                          static_cast<long>(scene.pixelsPerTexel);
        long const top = gridY - static_cast<long>(scene.range[2]);
        for (size_t y = 0; y < tile.height; ++y)
            for (size_t x = 0; x < tile.width; ++x) {
                long const column = left + static_cast<long>(x);
                long const row = top + static_cast<long>(y);
                if (column < 0 || row < 0 || column >= regionWidth || row >= regionHeight) continue;
                copyTexel(tile, x, y, target, texels(scene, scene.offsets[0]) + static_cast<size_t>(column),
                          scene.offsets[1] + static_cast<size_t>(row));
            }
    }
}

} // namespace backendtest
