#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <memory>

/// A tile that has come through the upload ring: the backend keeps it locked and counts no bytes for it, so it is
/// unlocked and erased when this object goes. GL thread only.
class StagedTile {
public:
    StagedTile(std::shared_ptr<RenderBackendInstance> instance, size_t number);
    ~StagedTile();
    StagedTile(StagedTile const&) = delete;
    StagedTile& operator=(StagedTile const&) = delete;

    size_t id() const { return number_; }

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    size_t number_;
};
