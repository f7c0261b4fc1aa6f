#include "host/filter/StagedTile.h"

#include "host/Quietly.h"

#include <utility>

StagedTile::StagedTile(std::shared_ptr<RenderBackendInstance> instance, size_t number)
    : instance_(std::move(instance)), number_(number) {}

StagedTile::~StagedTile() {
    quietly([this] {
        instance_->unlockTile(number_);
        instance_->eraseTile(number_);
    });
}
