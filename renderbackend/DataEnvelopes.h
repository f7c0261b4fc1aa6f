#pragma once

#include "renderbackend/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class PackedRectangleIndex;

/// The part of an image's grid that has data: a set of disjoint rectangles of whole grid cells.
///
/// Built once from a list of cells by set(), then only read. Coordinates are {column, row}; corners are inclusive, so
/// a rectangle covers (max x - min x + 1) * (max y - min y + 1) cells. Copies share the index.
///
/// Hosts have millions of rectangles, the tissue on a slide or a satellite scene without its clouds, and query each
/// tile of each frame: hence the packed index, in which coverage() visits only the nodes on a window's border.
class VELMORA_EXPORT DataEnvelopes {
public:
    using Corner = std::array<std::uint32_t, 2>;
    /// Per element: 16-bit values, which are ignored, and a list of cells, each {column, row}.
    using Data = std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>>;
    struct Rectangle {
        Corner min;
        Corner max; ///< inclusive, as min
    };

    DataEnvelopes();
    DataEnvelopes(DataEnvelopes const&) = default;
    DataEnvelopes& operator=(DataEnvelopes const&) = default;
    DataEnvelopes(DataEnvelopes&&) = default;
    DataEnvelopes& operator=(DataEnvelopes&&) = default;
    virtual ~DataEnvelopes();

    /// Replaces the contents: merges the cells of all elements into rectangles and builds the index over them. Cells
    /// may repeat. Throws VelmoraException if a cell has fewer than two coordinates; the old contents stay then, and
    /// also if memory runs out.
    virtual void set(std::vector<std::uint8_t> const& id, Data const& data);

    /// Number of grid cells covered.
    size_t total() const { return total_; }
    /// Number of rectangles.
    size_t count() const;
    /// The id that the set was stored under.
    std::vector<std::uint8_t> const& id() const { return id_; }

    /// 0: no cell of the rectangle is covered, 2: all are, 1: some are. Corners are inclusive; swapped ones make an
    /// empty rectangle.
    int coverage(Corner min, Corner max) const;
    /// 0: the sets share no cell, 2: one of them contains the other, 1: neither.
    int coverage(DataEnvelopes const& other) const;
    /// The rectangles that intersect the given one, each {min x, max x, min y, max y}, in no particular order.
    std::vector<std::vector<size_t>> envelopes(Corner min, Corner max) const;

protected:
    /// Cells as disjoint rectangles: runs of adjacent cells in a row, equal runs in consecutive rows joined; in the
    /// order of their upper left corners, row before column.
    static std::vector<Rectangle> mergeCells(std::vector<Corner> const& cells);

private:
    size_t total_ = 0;
    std::shared_ptr<PackedRectangleIndex const> index_; ///< empty: nothing is stored
    std::vector<std::uint8_t> id_;
};
