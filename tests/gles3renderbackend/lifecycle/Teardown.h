#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace lifecycle {

using Bytes = std::vector<unsigned char>;

/// How many GL objects of each kind live.
using Living = std::map<std::string, size_t>;

/// The context of a test, and what it looks at.
struct World {
    std::function<Living()> living; ///< counts what was deleted as gone, with or without a context
    std::function<void()> endContext;
    /// A context is current again, one that was ended or another.
    std::function<void()> goOn;
};

/// What a host destroys, in whatever order. The instance is also held by the bound filter and by the target.
enum class Part { Backend, Instance, StagingBuffers, BoundFilter, Target, Envelopes, Context };
constexpr size_t kParts = 7;
using Order = std::vector<Part>;

/// Orders in the sequence of std::next_permutation: all 5040, or without VELMORA_LONG the first of each `step`.
std::vector<Order> orders(size_t step);
std::string textOf(Order const& order);

/// What a new instance of a new backend draws: a tile that came through the ring, one that did not, and a mask.
Bytes drawn();

/// Makes a host of all parts and destroys them in this order. While the context is there, each GL object is deleted
/// with its last owner; afterwards nothing is called but deletions. The backend makes another instance as soon as none
/// lives. In the end everything is deleted, and a new backend draws what is expected.
void tearDown(Order const& order, World const& world, Bytes const& expected);

} // namespace lifecycle
