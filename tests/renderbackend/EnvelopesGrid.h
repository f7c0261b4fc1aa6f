#pragma once

#include "renderbackend/DataEnvelopes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Envelopes as a plain grid of flags that is looked at cell by cell.
namespace envelopesgrid {

using Corner = DataEnvelopes::Corner;
using Found = std::vector<std::vector<size_t>>;

/// A window of the plane with a flag for each cell; everything outside is empty.
class Grid {
public:
    Grid(Corner origin, std::uint32_t side) : origin_(origin), side_(side), cells_(size_t{side} * side, 0) {}

    void mark(Corner cell) { ++at(cell); }
    bool marked(Corner cell) const { return const_cast<Grid&>(*this).at(cell) != 0; }
    Corner origin() const { return origin_; }
    std::uint32_t side() const { return side_; }

    size_t marked() const {
        return static_cast<size_t>(std::count_if(cells_.begin(), cells_.end(), [](int n) { return n != 0; }));
    }
    /// Corners inside this grid.
    int coverage(Corner min, Corner max) const {
        bool some = false;
        bool all = true;
        for (std::uint32_t y = min[1] - origin_[1]; y <= max[1] - origin_[1]; ++y) {
            for (std::uint32_t x = min[0] - origin_[0]; x <= max[0] - origin_[0]; ++x) {
                bool const here = cells_[size_t{y} * side_ + x] != 0;
                some = some || here;
                all = all && here;
            }
        }
        return all ? 2 : some ? 1 : 0;
    }
    int coverage(Grid const& other) const {
        bool common = false;
        bool hasMore = false;
        bool otherHasMore = false;
        for (size_t i = 0; i < cells_.size(); ++i) {
            bool const a = cells_[i] != 0;
            bool const b = other.cells_[i] != 0;
            common = common || (a && b);
            hasMore = hasMore || (a && !b);
            otherHasMore = otherHasMore || (b && !a);
        }
        if (!common) return 0;
        return hasMore && otherHasMore ? 1 : 2;
    }
    std::vector<int> const& counts() const { return cells_; }

private:
    int& at(Corner cell) { return cells_[size_t{cell[1] - origin_[1]} * side_ + (cell[0] - origin_[0])]; }

    Corner origin_;
    std::uint32_t side_;
    std::vector<int> cells_;
};

/// Those of all rectangles that meet a window, sorted.
inline Found meeting(Found const& all, Corner min, Corner max) {
    Found found;
    for (std::vector<size_t> const& r : all) {
        if (r[0] <= max[0] && min[0] <= r[1] && r[2] <= max[1] && min[1] <= r[3]) found.push_back(r);
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace envelopesgrid
