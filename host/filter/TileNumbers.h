#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <memory>

/// Numbers for tiles in an instance's cache that are one user's alone, for as long as it lives:
///
///     63      44 43           0
///     [ owner  ] [  number    ]      owner 0 stays free for programs that number tiles themselves
///
/// Two users of one instance would else draw each other's samples: the cache knows tiles by their numbers only. The
/// tiles go with their owner. Made and destroyed on the GL thread.
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
