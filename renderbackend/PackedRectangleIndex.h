#pragma once

#include "renderbackend/DataEnvelopes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Disjoint rectangles of grid cells, packed for one query: how many of their cells lie in a window? Built once, then
/// only read. Internal to this library.
///
/// A tree without pointers. The rectangles are sorted along a Hilbert curve through their centres, 16 per leaf; 16
/// neighbouring nodes make a node of the next level, up to a single root:
///
///     level 2   [ 2 boxes, 2 sums, 14 blanks ]
///     level 1   [ 16 boxes, 16 sums ] [ 3 boxes, 3 sums, 13 blanks ]
///     level 0   [ 16 rectangles ] [ 16 rectangles ] ... [ 5 rectangles, 11 blanks ]
///
/// Invariants: the box of slot k in node n is the hull of node 16 n + k one level below, its sum the number of cells
/// covered there; a blank holds a box that no window but the whole plane intersects. So a node that lies wholly in the
/// window is answered by its sum, and only nodes on the window's border are opened.
class PackedRectangleIndex {
public:
    using Rectangle = DataEnvelopes::Rectangle;

    /// Needs at least one rectangle.
    explicit PackedRectangleIndex(std::vector<Rectangle> const& rectangles);

    size_t count() const { return count_; }
    /// Number of cells of all rectangles.
    size_t total() const { return total_; }
    /// Rectangle i < count(), in the order of the tree.
    Rectangle rectangle(size_t i) const;

    /// Number of covered cells in a window; 0 if its corners are swapped.
    size_t cellsInside(Rectangle const& window) const;
    /// The indices of the rectangles that share a cell with a window.
    std::vector<size_t> meeting(Rectangle const& window) const;

private:
    static constexpr size_t kFanOut = 16;

    struct Node {
        std::array<std::uint32_t, kFanOut> minX{};
        std::array<std::uint32_t, kFanOut> maxX{};
        std::array<std::uint32_t, kFanOut> minY{};
        std::array<std::uint32_t, kFanOut> maxY{};

        Node();
        void put(size_t slot, Rectangle const& box);
        Rectangle box(size_t slot) const { return {{minX[slot], minY[slot]}, {maxX[slot], maxY[slot]}}; }
        std::uint32_t slotsMeeting(Rectangle const& window) const;
        Rectangle hull() const;
    };
    struct Level {
        std::vector<Node> nodes;
        std::vector<size_t> sums; ///< cells below each slot, 0 for blanks; empty in level 0, whose slots are rectangles
    };

    void addLeaves(std::vector<Rectangle> const& rectangles);
    Level levelAbove(Level const& below) const;
    size_t cellsOfNode(Level const& level, size_t node) const;
    size_t cellsBelow(size_t level, size_t node, Rectangle const& window) const;
    void collectBelow(size_t level, size_t node, Rectangle const& window, std::vector<size_t>& found) const;

    size_t count_;
    size_t total_ = 0;
    Rectangle bounds_;
    std::vector<Level> levels_; ///< leaves first, root last
};
