#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <vector>

/// A tile that is stored for one drawing only. Pixels of a smaller tile would be written into a corner of a larger
/// one's texture, and a tile left under the number would be drawn in place of one that is not stored. So the number is
/// erased before and after, whatever fails.
class ScratchTile {
public:
    /// Nobody else uses the number. pixels, size: as RenderBackendInstance::setTile takes them; without pixels nothing
    /// is stored, and the tile is drawn as zeros.
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
