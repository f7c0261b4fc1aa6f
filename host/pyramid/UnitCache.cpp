#include "host/pyramid/UnitCache.h"

UnitCache::Samples UnitCache::find(size_t level, size_t unit) {
    std::lock_guard<std::mutex> const lock(mutex_);
    Samples const* const found = units_.find({level, unit});
    return found != nullptr ? *found : nullptr;
}

void UnitCache::keep(size_t level, size_t unit, Samples const& samples) {
    std::lock_guard<std::mutex> const lock(mutex_);
    Key const key{level, unit};
    units_.get(key) = samples;
    units_.setSize(key, samples->size());
}

size_t UnitCache::bytes() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return units_.used();
}
