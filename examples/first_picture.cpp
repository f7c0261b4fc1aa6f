// The shortest path from pixels to a picture: store a tile, draw it into a target, read it back.
#include "GlContext.h" // any current OpenGL ES 3 context works

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "renderbackend/Filter.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/RenderContext.h"
#include "renderbackend/VelmoraException.h"

#include <iostream>

namespace {

// The host's surface, target 0. This program draws into a target of its own and has no surface.
class NoSurface : public RenderContext {
public:
    size_t width() const override { return 0; }
    size_t height() const override { return 0; }
};

std::vector<unsigned char> drawOneTile(std::vector<unsigned char> const& rgba, size_t width, size_t height) {
    NoSurface const surface;
    Gles3RenderBackend backend;
    auto const gl = backend.createInstance(surface);

    Filter blit("BlitFilter4x8", 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    gl->createFilterInstance(blit);
    size_t const target = gl->createTarget({width, height}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);

    gl->setTile(7, rgba, {width, height, 4}, 0);
    gl->drawTiles(target, blit, {0, width - 1, 0, height - 1}, {0, width - 1, 0, height - 1}, {width, height}, {{0, 0}},
                  {7}, {});
    return gl->getPixels(target, {0, width, 0, height});
}

} // namespace

int main() {
    try {
        GlContext const context;
        std::vector<unsigned char> tile(256 * 256 * 4);
        for (size_t i = 0; i < tile.size(); ++i)
            tile[i] = static_cast<unsigned char>(i * 7 + i / 1024);
        bool const same = drawOneTile(tile, 256, 256) == tile;
        std::cout << (same ? "the picture is the tile, byte for byte\n" : "the picture differs from the tile\n");
        return same ? 0 : 1;
    } catch (std::exception const& failure) {
        std::cerr << formatExceptionMessage(failure) << '\n';
        return 1;
    }
}
