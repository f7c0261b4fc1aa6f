#include "renderbackend/PackedRectangleIndex.h"

#include "renderbackend/RadixSort.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

using Rectangle = DataEnvelopes::Rectangle;

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
constexpr Rectangle kBlank{{kLargest, kLargest}, {0, 0}}; // changes no hull

Rectangle hullOf(Rectangle const& a, Rectangle const& b) {
    return {{std::min(a.min[0], b.min[0]), std::min(a.min[1], b.min[1])},
            {std::max(a.max[0], b.max[0]), std::max(a.max[1], b.max[1])}};
}

Rectangle intersection(Rectangle const& a, Rectangle const& b) {
    return {{std::max(a.min[0], b.min[0]), std::max(a.min[1], b.min[1])},
            {std::min(a.max[0], b.max[0]), std::min(a.max[1], b.max[1])}};
}

bool isEmpty(Rectangle const& a) {
    return a.max[0] < a.min[0] || a.max[1] < a.min[1];
}

bool contains(Rectangle const& outer, Rectangle const& inner) {
    return outer.min[0] <= inner.min[0] && inner.max[0] <= outer.max[0] && outer.min[1] <= inner.min[1] &&
           inner.max[1] <= outer.max[1];
}

// For a rectangle that is neither empty nor the whole plane, whose 2^64 cells overflow.
size_t cellsOf(Rectangle const& a) {
    return (size_t{a.max[0]} - a.min[0] + 1) * (size_t{a.max[1]} - a.min[1] + 1);
}

// Position of (x, y) on the Hilbert curve through a square of side 2^bits. From the top bit down: the quadrant is the
// next digit, then the curve of that quadrant is turned into the standard position, by masks instead of branches.
std::uint64_t hilbertPosition(std::uint32_t x, std::uint32_t y, unsigned bits) {
    std::uint64_t position = 0;
    for (unsigned bit = bits; bit-- > 0;) {
        std::uint32_t const right = x >> bit & 1;
        std::uint32_t const lower = y >> bit & 1;
        position = position << 2 | ((3 * right) ^ lower);
        std::uint32_t const swapMask = lower - 1;              // all ones in the upper half
        std::uint32_t const flipMask = (0 - right) & swapMask; // all ones in its right quadrant
        x ^= flipMask;
        y ^= flipMask;
        std::uint32_t const difference = (x ^ y) & swapMask;
        x ^= difference;
        y ^= difference;
    }
    return position;
}

struct Placed {
    std::uint64_t position;
    size_t rectangle;
};

std::vector<Placed> alongHilbertCurve(std::vector<Rectangle> const& rectangles, Rectangle const& bounds) {
    unsigned const bits = significantBits(std::max(bounds.max[0] - bounds.min[0], bounds.max[1] - bounds.min[1]));
    std::vector<Placed> placed;
    placed.reserve(rectangles.size());
    for (Rectangle const& r : rectangles) {
        std::uint32_t const x = r.min[0] - bounds.min[0] + (r.max[0] - r.min[0]) / 2;
        std::uint32_t const y = r.min[1] - bounds.min[1] + (r.max[1] - r.min[1]) / 2;
        placed.push_back({hilbertPosition(x, y, bits), placed.size()});
    }
    radixSort(placed, 2 * bits, [](Placed const& p) { return p.position; });
    return placed;
}

} // namespace

PackedRectangleIndex::Node::Node() {
    for (size_t slot = 0; slot < kFanOut; ++slot)
        put(slot, kBlank);
}

void PackedRectangleIndex::Node::put(size_t slot, Rectangle const& box) {
    minX[slot] = box.min[0];
    maxX[slot] = box.max[0];
    minY[slot] = box.min[1];
    maxY[slot] = box.max[1];
}

// One bit per slot. All slots are compared without a branch, so that the compiler vectorises the loop.
std::uint32_t PackedRectangleIndex::Node::slotsMeeting(Rectangle const& window) const {
    std::uint32_t slots = 0;
    for (unsigned slot = 0; slot < kFanOut; ++slot) {
        std::uint32_t const meets =
            std::uint32_t{minX[slot] <= window.max[0]} & std::uint32_t{maxX[slot] >= window.min[0]} &
            std::uint32_t{minY[slot] <= window.max[1]} & std::uint32_t{maxY[slot] >= window.min[1]};
        slots |= meets << slot;
    }
    return slots;
}

PackedRectangleIndex::Rectangle PackedRectangleIndex::Node::hull() const {
    Rectangle all = kBlank;
    for (size_t slot = 0; slot < kFanOut; ++slot)
        all = hullOf(all, box(slot));
    return all;
}

PackedRectangleIndex::PackedRectangleIndex(std::vector<Rectangle> const& rectangles)
    : count_(rectangles.size()),
      bounds_(std::accumulate(rectangles.begin(), rectangles.end(), rectangles.front(), hullOf)) {
    addLeaves(rectangles);
    while (levels_.back().nodes.size() > 1)
        levels_.push_back(levelAbove(levels_.back()));
}

void PackedRectangleIndex::addLeaves(std::vector<Rectangle> const& rectangles) {
    Level leaves;
    leaves.nodes.resize((count_ + kFanOut - 1) / kFanOut);
    size_t slot = 0;
    for (Placed const& placed : alongHilbertCurve(rectangles, bounds_)) {
        Rectangle const& r = rectangles[placed.rectangle];
        leaves.nodes[slot / kFanOut].put(slot % kFanOut, r);
        total_ += cellsOf(r);
        ++slot;
    }
    levels_.push_back(std::move(leaves));
}

PackedRectangleIndex::Level PackedRectangleIndex::levelAbove(Level const& below) const {
    Level level;
    size_t const slots = below.nodes.size();
    level.nodes.resize((slots + kFanOut - 1) / kFanOut);
    level.sums.resize(level.nodes.size() * kFanOut);
    for (size_t slot = 0; slot < slots; ++slot) {
        level.nodes[slot / kFanOut].put(slot % kFanOut, below.nodes[slot].hull());
        level.sums[slot] = cellsOfNode(below, slot);
    }
    return level;
}

size_t PackedRectangleIndex::cellsOfNode(Level const& level, size_t node) const {
    size_t const first = node * kFanOut;
    size_t cells = 0;
    if (level.sums.empty())
        for (size_t i = first; i < std::min(first + kFanOut, count_); ++i)
            cells += cellsOf(rectangle(i));
    else
        for (size_t slot = 0; slot < kFanOut; ++slot)
            cells += level.sums[first + slot];
    return cells;
}

PackedRectangleIndex::Rectangle PackedRectangleIndex::rectangle(size_t i) const {
    return levels_.front().nodes[i / kFanOut].box(i % kFanOut);
}

// A window is clipped to the bounds first, and one that covers them is answered without the tree. So no window in the
// tree is the whole plane, the only window that would intersect a blank.
size_t PackedRectangleIndex::cellsInside(Rectangle const& window) const {
    if (contains(window, bounds_)) return total_;
    Rectangle const inBounds = intersection(window, bounds_);
    if (isEmpty(inBounds)) return 0;
    return cellsBelow(levels_.size() - 1, 0, inBounds);
}

size_t PackedRectangleIndex::cellsBelow(size_t level, size_t node, Rectangle const& window) const {
    Node const& here = levels_[level].nodes[node];
    size_t cells = 0;
    for (std::uint32_t slots = here.slotsMeeting(window); slots != 0; slots &= slots - 1) {
        auto const slot = static_cast<size_t>(__builtin_ctz(slots));
        Rectangle const box = here.box(slot);
        size_t const below = node * kFanOut + slot;
        if (level == 0)
            cells += cellsOf(intersection(box, window));
        else if (contains(window, box))
            cells += levels_[level].sums[below];
        else
            cells += cellsBelow(level - 1, below, window);
    }
    return cells;
}

std::vector<size_t> PackedRectangleIndex::meeting(Rectangle const& window) const {
    if (contains(window, bounds_)) {
        std::vector<size_t> all(count_);
        std::iota(all.begin(), all.end(), size_t{0});
        return all;
    }
    std::vector<size_t> found;
    Rectangle const inBounds = intersection(window, bounds_);
    if (!isEmpty(inBounds)) collectBelow(levels_.size() - 1, 0, inBounds, found);
    return found;
}

void PackedRectangleIndex::collectBelow(size_t level, size_t node, Rectangle const& window,
                                        std::vector<size_t>& found) const {
    for (std::uint32_t slots = levels_[level].nodes[node].slotsMeeting(window); slots != 0; slots &= slots - 1) {
        size_t const below = node * kFanOut + static_cast<size_t>(__builtin_ctz(slots));
        if (level == 0)
            found.push_back(below);
        else
            collectBelow(level - 1, below, window, found);
    }
}
