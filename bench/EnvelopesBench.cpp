// Envelopes of a million cells and of a million rectangles, on the processor alone.
//
// mergeCells: shuffled cells into rectangles. The baseline sorts the cells by row and column and sweeps over them once,
// by the same rule, so that both must find the same rectangles. "blobs" are overlapping discs, "dust" is single cells,
// few of which touch.
//
// coverage: 0, 1 or 2 for a window over a million rectangles. The baseline enumerates the rectangles that intersect the
// window with a bulk-loaded R-tree of Boost.Geometry and adds up their cells.
#include "bench/Benchmarks.h"
#include "renderbackend/DataEnvelopes.h"

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Corner = DataEnvelopes::Corner;
using Rectangle = DataEnvelopes::Rectangle;
using Cells = std::vector<Corner>;
using Rectangles = std::vector<Rectangle>;

constexpr size_t kMillion = 1000000;

std::uint32_t below(std::uint32_t limit, std::mt19937& random) {
    return static_cast<std::uint32_t>(random() % limit);
}

// Merging

class Merger : public DataEnvelopes {
public:
    static Rectangles merged(Cells const& cells) { return mergeCells(cells); }
};

bool rowMajor(Corner const& a, Corner const& b) {
    return a[1] != b[1] ? a[1] < b[1] : a[0] < b[0];
}

// A run with the columns of a run in the row above extends that rectangle.
class Sweep {
public:
    void addRun(std::uint32_t row, std::uint32_t first, std::uint32_t last) {
        if (row != row_) {
            if (row == row_ + 1)
                above_.swap(here_);
            else
                above_.clear();
            here_.clear();
            row_ = row;
        }
        auto const found = std::lower_bound(above_.begin(), above_.end(), first, [this](size_t index, std::uint32_t x) {
            return rectangles[index].min[0] < x;
        });
        bool const longer =
            found != above_.end() && rectangles[*found].min[0] == first && rectangles[*found].max[0] == last;
        if (longer) {
            rectangles[*found].max[1] = row;
            here_.push_back(*found);
        } else {
            here_.push_back(rectangles.size());
            rectangles.push_back({{first, row}, {last, row}});
        }
    }

    Rectangles rectangles;

private:
    std::vector<size_t> above_;
    std::vector<size_t> here_;
    std::uint32_t row_ = 0;
};

Rectangles sortedAndSwept(Cells cells) {
    std::sort(cells.begin(), cells.end(), rowMajor);
    Sweep sweep;
    for (size_t i = 0; i < cells.size();) {
        std::uint32_t const row = cells[i][1];
        std::uint32_t const first = cells[i][0];
        std::uint32_t last = first;
        for (++i; i < cells.size() && cells[i][1] == row && cells[i][0] - last <= 1; ++i)
            last = cells[i][0];
        sweep.addRun(row, first, last);
    }
    return std::move(sweep.rectangles);
}

// The first million cells of overlapping discs, in a grid of 4096 x 4096; some occur twice.
Cells blobs() {
    std::mt19937 random(1);
    Cells cells;
    while (cells.size() < kMillion) {
        int const radius = 10 + static_cast<int>(below(60, random));
        int const x0 = 100 + static_cast<int>(below(3800, random));
        int const y0 = 100 + static_cast<int>(below(3800, random));
        for (int y = -radius; y <= radius; ++y)
            for (int x = -radius; x <= radius; ++x)
                if (x * x + y * y <= radius * radius)
                    cells.push_back({static_cast<std::uint32_t>(x0 + x), static_cast<std::uint32_t>(y0 + y)});
    }
    cells.resize(kMillion);
    std::shuffle(cells.begin(), cells.end(), random);
    return cells;
}

Cells dust() {
    std::mt19937 random(2);
    Cells cells(kMillion);
    for (Corner& cell : cells)
        cell = {below(4096, random), below(4096, random)};
    return cells;
}

bool sameRectangles(Rectangles const& a, Rectangles const& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](Rectangle const& x, Rectangle const& y) { return x.min == y.min && x.max == y.max; });
}

void addMerging(std::string const& caseName, Cells (*makeCells)()) {
    auto const add = [&](std::string const& who, Rectangles (*merge)(Cells const&)) {
        registerGl(Clock::Cpu, "mergeCells/" + who + "/" + caseName, [=](benchmark::State& state) {
            Cells const cells = makeCells();
            if (!sameRectangles(merge(cells), sortedAndSwept(cells)))
                throw std::runtime_error("the rectangles are not those of sorting and sweeping");
            for (auto _ : state)
                benchmark::DoNotOptimize(merge(cells).data());
            state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(cells.size()));
        });
    };
    add("ours", &Merger::merged);
    add("sortAndSweep", [](Cells const& cells) { return sortedAndSwept(cells); });
}

// Coverage

namespace geometry = boost::geometry;
using Point = geometry::model::point<std::uint32_t, 2, geometry::cs::cartesian>;
using Box = geometry::model::box<Point>;
using RTree = geometry::index::rtree<Box, geometry::index::rstar<16>>;

constexpr std::uint32_t kSide = 3000; // cells

Box boxOf(Rectangle const& r) {
    return {Point(r.min[0], r.min[1]), Point(r.max[0], r.max[1])};
}

// One rectangle of 1 x 1 to 2 x 2 cells per square of 3 x 3, so that none touches another.
Rectangles apart() {
    std::mt19937 random(3);
    Rectangles rectangles;
    for (std::uint32_t y = 0; y < kSide; y += 3)
        for (std::uint32_t x = 0; x < kSide; x += 3)
            rectangles.push_back({{x, y}, {x + below(2, random), y + below(2, random)}});
    return rectangles;
}

DataEnvelopes::Data cellsOf(Rectangles const& rectangles) {
    DataEnvelopes::Data data(1);
    for (Rectangle const& r : rectangles)
        for (std::uint32_t y = r.min[1]; y <= r.max[1]; ++y)
            for (std::uint32_t x = r.min[0]; x <= r.max[0]; ++x)
                data.front().second.push_back({x, y});
    return data;
}

class OurIndex {
public:
    explicit OurIndex(Rectangles const& rectangles) {
        envelopes_.set({1}, cellsOf(rectangles));
        if (envelopes_.count() != rectangles.size()) throw std::runtime_error("rectangles were joined");
    }
    int coverage(Rectangle const& window) const { return envelopes_.coverage(window.min, window.max); }

private:
    DataEnvelopes envelopes_;
};

class PeerIndex {
public:
    explicit PeerIndex(Rectangles const& rectangles) : tree_(boxes(rectangles)) {}

    int coverage(Rectangle const& window) const {
        size_t covered = 0;
        auto const addCells = [&](Box const& box) { covered += inside<0>(box, window) * inside<1>(box, window); };
        tree_.query(geometry::index::intersects(boxOf(window)), boost::make_function_output_iterator(addCells));
        if (covered == 0) return 0;
        size_t const cells = (size_t{window.max[0]} - window.min[0] + 1) * (size_t{window.max[1]} - window.min[1] + 1);
        return covered == cells ? 2 : 1;
    }

private:
    static std::vector<Box> boxes(Rectangles const& rectangles) {
        std::vector<Box> result;
        std::transform(rectangles.begin(), rectangles.end(), std::back_inserter(result), boxOf);
        return result;
    }
    template <size_t Axis>
    static size_t inside(Box const& box, Rectangle const& window) {
        return size_t{std::min(box.max_corner().get<Axis>(), window.max[Axis])} -
               std::max(box.min_corner().get<Axis>(), window.min[Axis]) + 1;
    }

    RTree tree_;
};

// Built once for all windows: building takes longer than all the measuring.
template <class Index>
Index const& millionRectangles() {
    static Index const index(apart());
    return index;
}

// Square windows at random places.
Rectangles windows(std::uint32_t side, size_t count) {
    std::mt19937 random(4);
    Rectangles result;
    for (size_t i = 0; i < count; ++i) {
        std::uint32_t const x = below(kSide - side + 1, random);
        std::uint32_t const y = below(kSide - side + 1, random);
        result.push_back({{x, y}, {x + side - 1, y + side - 1}});
    }
    return result;
}

void requireSameAnswers(Rectangles const& asked) {
    for (Rectangle const& window : asked)
        if (millionRectangles<OurIndex>().coverage(window) != millionRectangles<PeerIndex>().coverage(window))
            throw std::runtime_error("the two disagree on a window");
}

template <class Index>
void addCoverage(std::string const& who, std::string const& caseName, std::uint32_t side, size_t count) {
    registerGl(Clock::Cpu, "coverage/" + who + "/" + caseName, [=](benchmark::State& state) {
        Rectangles const asked = windows(side, count);
        requireSameAnswers(asked);
        auto const& index = millionRectangles<Index>();
        size_t next = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(index.coverage(asked[next]));
            if (++next == asked.size()) next = 0;
        }
        state.SetItemsProcessed(state.iterations());
    });
}

} // namespace

void registerEnvelopes() {
    addMerging("blobs", blobs);
    addMerging("dust", dust);
    struct {
        char const* name;
        std::uint32_t side;
        size_t count;
    } const cases[] = {{"wholeArea", kSide, 1}, {"halfSide", kSide / 2, 16}, {"2x2", 2, 65536}};
    for (auto const& row : cases) {
        addCoverage<OurIndex>("ours", row.name, row.side, row.count);
        addCoverage<PeerIndex>("rtree", row.name, row.side, row.count);
    }
}
