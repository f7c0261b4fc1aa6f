#include "host/filter/TileNumbers.h"

#include "host/Quietly.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace {

static_assert(std::numeric_limits<size_t>::digits == 64, "an owner and 44 bits fit in a number");

// One owner fewer than fit: no operation of the backend erases the last number of all.
constexpr size_t kOwners = (size_t{1} << (64U - TileNumbers::kBits)) - 1;

// Shared by all instances of the process, because instances may share a cache.
class Owners {
public:
    size_t take() {
        std::lock_guard<std::mutex> const lock(mutex_);
        auto const free = std::find(taken_.begin(), taken_.end(), false);
        auto const owner = static_cast<size_t>(free - taken_.begin());
        if (owner == kOwners) throw std::length_error("too many users of tile caches");
        if (free == taken_.end())
            taken_.push_back(true);
        else
            *free = true;
        return owner;
    }

    void giveBack(size_t owner) {
        std::lock_guard<std::mutex> const lock(mutex_);
        taken_[owner] = false;
    }

private:
    std::mutex mutex_;
    std::vector<bool> taken_ = {true}; // 0 is reserved
};

Owners& owners() {
    static Owners instance;
    return instance;
}

} // namespace

TileNumbers::TileNumbers(std::shared_ptr<RenderBackendInstance> instance)
    : instance_(std::move(instance)), owner_(owners().take()), first_(owner_ << kBits) {}

TileNumbers::~TileNumbers() {
    quietly([this] { instance_->eraseTiles(first_, first_ + (size_t{1} << kBits)); });
    quietly([this] { owners().giveBack(owner_); });
}
