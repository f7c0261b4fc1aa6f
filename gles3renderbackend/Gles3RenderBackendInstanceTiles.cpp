#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/Caches.h"
#include "gles3renderbackend/ExpectedState.h"
#include "renderbackend/VelmoraException.h"

#include <limits>

namespace {

// Deliberate: staging a tile reports setTile's location, as both refuse the same sizes.
constexpr char const* kSetTile =
    "void Gles3RenderBackendInstance::setTile(size_t tile, std::vector<unsigned char> const& pixels, "
    "std::vector<size_t> const& size, size_t offset)";

} // namespace

// The size of a tile's texture. A one-component tile holds 16-bit samples, two per RGBA texel.
std::vector<size_t> Gles3RenderBackendInstance::textureSizeOfTile(std::vector<size_t> const& size,
                                                                  bool rgbaAccepted) const {
    size_t const components = size.size() < 3 ? 0 : size[2];
    if (components == 1 && format_ == RenderBackend::RGBA32) return {size[0] / 2, size[1], 4};
    if (components == 3 || (components == 4 && rgbaAccepted)) return size;
    throw VelmoraException("Can't set tile pixels with this size", kSetTile);
}

void Gles3RenderBackendInstance::setTile(size_t tile, std::vector<unsigned char> const& pixels,
                                         std::vector<size_t> const& size, size_t offset) {
    expectedState::forUploading();
    std::pair<size_t, size_t> const key(id(), tile);
    // The entry is made first, and stays, empty, if the size is refused.
    Gles3Texture& texture = textureCache_->get(key);
    texture.setPixels(pixels, textureSizeOfTile(size, true), offset);
    // Deliberate: the cost is computed from the given size, so a 16-bit tile costs one byte per pixel.
    textureCache_->setSize(key, size[0] * size[1] * size[2]);
}

bool Gles3RenderBackendInstance::tileSet(size_t tile) const {
    return textureCache_->count({id(), tile}) != 0;
}

void Gles3RenderBackendInstance::lockTile(size_t tile) {
    textureCache_->lock({id(), tile});
}

void Gles3RenderBackendInstance::unlockTile(size_t tile) {
    textureCache_->unlock({id(), tile});
}

size_t Gles3RenderBackendInstance::eraseTile(size_t tile) {
    return textureCache_->erase({id(), tile});
}

size_t Gles3RenderBackendInstance::eraseTiles(size_t first, size_t last) {
    return textureCache_->eraseRange({id(), first}, {id(), last});
}

// A half-open range: the tile with the largest of all ids stays.
size_t Gles3RenderBackendInstance::clearTiles() {
    return eraseTiles(0, std::numeric_limits<size_t>::max());
}
