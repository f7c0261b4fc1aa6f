// An input is a place in the plane, two sets of blocks of cells there, and windows to ask about.
#include "tests/fuzz/Fuzz.h"
#include "tests/renderbackend/EnvelopesGrid.h"

#include <limits>

namespace {

using namespace envelopesgrid;
using fuzz::require;

constexpr std::uint32_t kSide = 24;
constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

std::uint32_t below(fuzz::Input& input, std::uint32_t end) {
    return static_cast<std::uint32_t>(input.below(end));
}

std::uint32_t originOf(fuzz::Input& input) {
    switch (input.below(4)) {
    case 0:
        return 0;
    case 1:
        return kMax - kSide + 1;
    case 2:
        return (1u << 31) - kSide / 2;
    default:
        return below(input, 1u << 20);
    }
}

struct Both {
    explicit Both(Corner origin) : grid(origin, kSide), data(2) {}

    void addBlock(fuzz::Input& input) {
        std::uint32_t const x0 = below(input, kSide);
        std::uint32_t const y0 = below(input, kSide);
        std::uint32_t const width = 1 + below(input, std::min(kSide - x0, 9u));
        std::uint32_t const height = 1 + below(input, std::min(kSide - y0, 9u));
        for (std::uint32_t y = y0; y < y0 + height; ++y)
            for (std::uint32_t x = x0; x < x0 + width; ++x)
                add({grid.origin()[0] + x, grid.origin()[1] + y});
    }

    void add(Corner cell) {
        grid.mark(cell);
        data[(cell[0] + cell[1]) % 2].second.push_back({cell[0], cell[1]});
    }

    Grid grid;
    DataEnvelopes::Data data;
    DataEnvelopes envelopes;
};

Both anyOf(fuzz::Input& input, Corner origin) {
    Both both(origin);
    for (size_t blocks = input.below(12); blocks > 0; --blocks)
        both.addBlock(input);
    both.envelopes.set({1, 2}, both.data);
    return both;
}

void requireCovered(Both const& both) {
    Grid painted(both.grid.origin(), kSide);
    Found const all = both.envelopes.envelopes({0, 0}, {kMax, kMax});
    require(all.size() == both.envelopes.count(), "the plane has all envelopes");
    size_t cells = 0;
    for (std::vector<size_t> const& r : all)
        for (size_t y = r.at(2); y <= r.at(3); ++y)
            for (size_t x = r.at(0); x <= r.at(1); ++x, ++cells)
                painted.mark({static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)});
    require(cells == both.grid.marked() && painted.coverage(both.grid) == (cells == 0 ? 0 : 2) &&
                painted.marked() == cells,
            "every cell lies in one envelope, and no other does");
    require(both.envelopes.total() == cells, "the total is that of all cells");
}

void requireWindow(Both const& both, fuzz::Input& input) {
    Corner const origin = both.grid.origin();
    Corner const min = {origin[0] + below(input, kSide), origin[1] + below(input, kSide)};
    Corner const max = {min[0] + below(input, origin[0] + (kSide - 1) - min[0] + 1),
                        min[1] + below(input, origin[1] + (kSide - 1) - min[1] + 1)};
    require(both.envelopes.coverage(min, max) == both.grid.coverage(min, max), "a window is covered as its cells are");
    Found found = both.envelopes.envelopes(min, max);
    std::sort(found.begin(), found.end());
    require(found == meeting(both.envelopes.envelopes({0, 0}, {kMax, kMax}), min, max),
            "a window meets the envelopes that it overlaps");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    Corner const origin = {originOf(input), originOf(input)};
    Both const a = anyOf(input, origin);
    Both const b = anyOf(input, origin);
    requireCovered(a);
    requireCovered(b);
    int const expected = a.grid.marked() == 0 || b.grid.marked() == 0 ? 0 : a.grid.coverage(b.grid);
    require(a.envelopes.coverage(b.envelopes) == expected && b.envelopes.coverage(a.envelopes) == expected,
            "sets share what their cells share");
    for (size_t windows = 0; input.left() > 0 && windows < 50; ++windows)
        requireWindow(windows % 2 == 0 ? a : b, input);
    return 0;
}
