#include "host/pyramid/UnitCache.h"

UnitCache::Samples UnitCache::find(Key const& key) {
    std::lock_guard<std::mutex> const lock(mutex_);
    Samples const* const found = units_.find(key);
    return found != nullptr ? *found : nullptr;
}

void UnitCache::keep(Key const& key, Samples const& samples) {
    std::lock_guard<std::mutex> const lock(mutex_);
    units_.get(key) = samples;
    units_.setSize(key, samples->size());
}

size_t UnitCache::bytes() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return units_.used();
}
