#include "host/filter/OwnedTarget.h"

#include "host/Quietly.h"

#include <utility>

OwnedTarget::OwnedTarget(std::shared_ptr<RenderBackendInstance> instance, size_t id)
    : instance_(std::move(instance)), id_(id) {}

OwnedTarget::OwnedTarget(OwnedTarget&& other) noexcept : instance_(std::move(other.instance_)), id_(other.id_) {}

OwnedTarget& OwnedTarget::operator=(OwnedTarget&& other) noexcept {
    std::swap(instance_, other.instance_);
    std::swap(id_, other.id_);
    return *this;
}

OwnedTarget::~OwnedTarget() {
    if (instance_) quietly([this] { instance_->eraseTarget(id_); });
}
