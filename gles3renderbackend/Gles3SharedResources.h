#pragma once

#include "gles3renderbackend/resources/Gles3Buffer.h"
#include "gles3renderbackend/resources/Gles3Texture.h"

/// Resources shared by all tiles: the unit quad, and a placeholder texture for missing tiles. GL thread only.
class Gles3SharedResources {
public:
    /// Leaves no buffer bound.
    Gles3SharedResources();

    Gles3Buffer const& indexBuffer() const { return indexBuffer_; }
    Gles3Buffer const& vertexBuffer() const { return vertexBuffer_; }
    /// One texel of transparent black.
    Gles3Texture const& transparentBlack() const { return transparentBlack_; }

private:
    Gles3Buffer indexBuffer_;
    Gles3Buffer vertexBuffer_;
    Gles3Texture transparentBlack_;
};
