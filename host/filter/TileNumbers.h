#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <memory>

/// A range of tile numbers in an instance's cache that belongs to one user as long as the object lives:
///     63      44 43           0
///     [ owner  ] [  number    ]      owner 0 stays free for programs that number tiles themselves
///
/// Without ranges two users of one instance would draw each other's samples: the cache knows tiles by their numbers
/// only. The tiles are erased with their owner. Made and destroyed on the GL thread.
class TileNumbers {
public:
    static constexpr unsigned kBits = 44;

    explicit TileNumbers(std::shared_ptr<RenderBackendInstance> instance);
    ~TileNumbers();
    TileNumbers(TileNumbers const&) = delete;
    TileNumbers& operator=(TileNumbers const&) = delete;

    /// number: below 2^kBits.
    size_t id(size_t number) const { return first_ + number; }

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    size_t owner_;
    size_t first_;
};
