#include "host/store/SampleCache.h"

SampleCache::Key SampleCache::keyOf(TileAddress const& address) {
    return {address.level, address.row, address.column, static_cast<size_t>(address.band), address.plane};
}

SampleCache::Samples SampleCache::find(TileAddress const& address) {
    std::lock_guard<std::mutex> const lock(mutex_);
    Samples const* const found = tiles_.find(keyOf(address));
    return found != nullptr ? *found : nullptr;
}

void SampleCache::keep(TileAddress const& address, Samples const& samples) {
    std::lock_guard<std::mutex> const lock(mutex_);
    Key const key = keyOf(address);
    tiles_.get(key) = samples;
    tiles_.setSize(key, samples->size() * sizeof(std::int16_t));
}

size_t SampleCache::bytes() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return tiles_.used();
}
