#pragma once

#include "gles3renderbackend/Gles3DataEnvelopes.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/LruMap.h"
#include "gles3renderbackend/resources/Gles3Texture.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

// Classes of their own, not aliases, so that the public headers can name them without including all of this.

/// Tile textures by {instance id, tile id}: a cache that outlives an instance never serves a later one.
class Gles3RenderBackend::TextureCache final : public LruMap<std::pair<size_t, size_t>, Gles3Texture> {
public:
    using LruMap::LruMap;
};

/// Envelope sets by {instance id, envelope id}.
class Gles3RenderBackend::EnvelopeCache final
    : public LruMap<std::pair<size_t, std::vector<unsigned char>>, std::shared_ptr<Gles3DataEnvelopes>> {
public:
    using LruMap::LruMap;
};
