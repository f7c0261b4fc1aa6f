#include "renderbackend/DataEnvelopes.h"

#include "renderbackend/PackedRectangleIndex.h"
#include "renderbackend/RadixSort.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>

namespace {

using Corner = DataEnvelopes::Corner;
using Rectangle = DataEnvelopes::Rectangle;

// Cells as one number each, row before column, counted from the least row and column: in as few bits as possible,
// because every bit costs sorting time.
struct CellKeys {
    Corner origin;
    unsigned columnBits;
    unsigned bits;
    std::vector<std::uint64_t> keys;

    std::uint64_t columnMask() const { return (std::uint64_t{1} << columnBits) - 1; }
    std::uint32_t column(std::uint64_t key) const { return origin[0] + static_cast<std::uint32_t>(key & columnMask()); }
    std::uint32_t row(std::uint64_t key) const { return origin[1] + static_cast<std::uint32_t>(key >> columnBits); }
};

CellKeys sortedKeys(std::vector<Corner> const& cells) {
    Corner least = cells.front();
    Corner largest = cells.front();
    for (Corner const& cell : cells) {
        least = {std::min(least[0], cell[0]), std::min(least[1], cell[1])};
        largest = {std::max(largest[0], cell[0]), std::max(largest[1], cell[1])};
    }
    unsigned const columnBits = significantBits(largest[0] - least[0]);
    CellKeys sorted{least, columnBits, columnBits + significantBits(largest[1] - least[1]), {}};
    sorted.keys.reserve(cells.size());
    for (Corner const& cell : cells)
        sorted.keys.push_back(std::uint64_t{cell[1] - least[1]} << columnBits | (cell[0] - least[0]));
    radixSort(sorted.keys, sorted.bits, [](std::uint64_t key) { return key; });
    return sorted;
}

// Takes the runs of covered cells in row-major order, and lets a rectangle grow as long as the next row repeats its
// run. Rectangles come out in the order of their upper left corners.
class RunJoiner {
public:
    explicit RunJoiner(size_t runs) { rectangles_.reserve(runs); }

    void add(std::uint32_t row, std::uint32_t first, std::uint32_t last) {
        if (rectangles_.empty() || row != row_) startRow(row);
        while (candidate_ < above_.size() && rectangles_[above_[candidate_]].min[0] < first)
            ++candidate_;
        if (candidate_ < above_.size()) {
            size_t const index = above_[candidate_];
            if (rectangles_[index].min[0] == first && rectangles_[index].max[0] == last) {
                rectangles_[index].max[1] = row;
                here_.push_back(index);
                return;
            }
        }
        here_.push_back(rectangles_.size());
        rectangles_.push_back({{first, row}, {last, row}});
    }

    std::vector<Rectangle> take() { return std::move(rectangles_); }

private:
    void startRow(std::uint32_t row) {
        above_.clear();
        if (row - row_ == 1) above_.swap(here_);
        here_.clear();
        candidate_ = 0;
        row_ = row;
    }

    std::vector<Rectangle> rectangles_;
    std::vector<size_t> above_; // rectangles that end in the row above, from left to right
    std::vector<size_t> here_;  // rectangles that reach into this row, from left to right
    size_t candidate_ = 0;      // the first of above_ that the next run could continue
    std::uint32_t row_ = 0;
};

std::vector<Corner> gatherCells(DataEnvelopes::Data const& data) {
    size_t count = 0;
    for (auto const& element : data)
        count += element.second.size();
    std::vector<Corner> cells;
    cells.reserve(count);
    for (auto const& element : data) {
        for (std::vector<unsigned int> const& cell : element.second) {
            if (cell.size() < 2)
                throw VelmoraException("a cell needs two coordinates: column and row",
                                       "void DataEnvelopes::set(std::vector<uint8_t> const& id, Data const& data)");
            cells.push_back({cell[0], cell[1]});
        }
    }
    return cells;
}

} // namespace

DataEnvelopes::DataEnvelopes() = default;

DataEnvelopes::~DataEnvelopes() = default;

void DataEnvelopes::set(std::vector<std::uint8_t> const& id, Data const& data) {
    std::vector<Rectangle> const rectangles = mergeCells(gatherCells(data));
    std::shared_ptr<PackedRectangleIndex const> index;
    if (!rectangles.empty()) index = std::make_shared<PackedRectangleIndex const>(rectangles);
    std::vector<std::uint8_t> idCopy = id;
    // Nothing below throws: a set that fails leaves the old contents.
    total_ = index ? index->total() : 0;
    index_ = std::move(index);
    id_ = std::move(idCopy);
}

size_t DataEnvelopes::count() const {
    return index_ ? index_->count() : 0;
}

int DataEnvelopes::coverage(Corner min, Corner max) const {
    if (!index_) return 0;
    size_t const covered = index_->cellsInside({min, max});
    if (covered == 0) return 0;
    // By division, because the whole plane has 2^64 cells, one more than a count can hold. The quotient reaches the
    // height only if all cells of the window are covered.
    size_t const width = size_t{max[0]} - min[0] + 1;
    size_t const height = size_t{max[1]} - min[1] + 1;
    return covered / width == height ? 2 : 1;
}

int DataEnvelopes::coverage(DataEnvelopes const& other) const {
    if (!index_ || !other.index_) return 0;
    // The shared cells are the same from either side: iterate over the shorter list and query the longer one's tree.
    bool const otherIsShorter = other.count() < count();
    PackedRectangleIndex const& walked = otherIsShorter ? *other.index_ : *index_;
    PackedRectangleIndex const& asked = otherIsShorter ? *index_ : *other.index_;
    size_t shared = 0;
    for (size_t i = 0; i < walked.count(); ++i)
        shared += asked.cellsInside(walked.rectangle(i));
    if (shared == 0) return 0;
    return shared == total_ || shared == other.total_ ? 2 : 1;
}

std::vector<std::vector<size_t>> DataEnvelopes::envelopes(Corner min, Corner max) const {
    if (!index_) return {};
    std::vector<size_t> const found = index_->meeting({min, max});
    std::vector<std::vector<size_t>> result;
    result.reserve(found.size());
    for (size_t const i : found) {
        Rectangle const r = index_->rectangle(i);
        result.push_back({r.min[0], r.max[0], r.min[1], r.max[1]});
    }
    return result;
}

std::vector<DataEnvelopes::Rectangle> DataEnvelopes::mergeCells(std::vector<Corner> const& cells) {
    if (cells.empty()) return {};
    CellKeys const sorted = sortedKeys(cells);
    std::vector<std::uint64_t> const& keys = sorted.keys;
    // The column test keeps a run from going on in the next row.
    auto const startsRun = [mask = sorted.columnMask()](std::uint64_t last, std::uint64_t key) {
        return key != last && (key != last + 1 || (key & mask) == 0);
    };
    size_t runs = 1;
    for (size_t i = 1; i < keys.size(); ++i)
        runs += startsRun(keys[i - 1], keys[i]) ? 1u : 0u;
    RunJoiner joiner(runs);
    size_t first = 0;
    for (size_t i = 1; i <= keys.size(); ++i) {
        if (i < keys.size() && !startsRun(keys[i - 1], keys[i])) continue;
        joiner.add(sorted.row(keys[first]), sorted.column(keys[first]), sorted.column(keys[i - 1]));
        first = i;
    }
    return joiner.take();
}
