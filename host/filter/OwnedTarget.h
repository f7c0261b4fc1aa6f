#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <memory>

/// A target of the backend that is returned when its owner is destroyed.
class OwnedTarget {
public:
    OwnedTarget(std::shared_ptr<RenderBackendInstance> instance, size_t id);
    OwnedTarget(OwnedTarget&& other) noexcept;
    OwnedTarget& operator=(OwnedTarget&& other) noexcept;
    ~OwnedTarget();

    size_t id() const { return id_; }

private:
    std::shared_ptr<RenderBackendInstance> instance_; // empty: moved from
    size_t id_;
};
