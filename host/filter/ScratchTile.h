#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <vector>

/// A tile that is stored for a moment, to be drawn. Pixels of a smaller tile would be written into a corner of a larger
/// one's texture, and what is left under the number would be drawn in place of a tile that is not stored: so nothing is
/// there before, and nothing after, whatever fails.
class ScratchTile {
public:
    /// The number is the caller's alone. pixels, size: as RenderBackendInstance::setTile takes them; without pixels
    /// nothing is stored, and the tile is drawn as zeros.
    ScratchTile(RenderBackendInstance& instance, size_t number, std::vector<unsigned char> const& pixels,
                std::vector<size_t> const& size);
    ~ScratchTile();
    ScratchTile(ScratchTile const&) = delete;
    ScratchTile& operator=(ScratchTile const&) = delete;

    size_t id() const { return number_; }

private:
    ScratchTile(RenderBackendInstance& instance, size_t number);

    RenderBackendInstance& instance_;
    size_t number_;
};
