#include "tests/renderbackend/EnvelopesGrid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <random>

// Random sets of cells against a plain grid of flags that is looked at cell by cell.

namespace {

using namespace envelopesgrid;

constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

class Random {
public:
    explicit Random(std::uint32_t randomStart) : engine_(randomStart) {}
    /// 0 <= result < bound
    std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_() % bound); }

private:
    std::mt19937_64 engine_;
};

struct Sample {
    Grid grid;
    DataEnvelopes::Data data;
    DataEnvelopes envelopes;
};

void addCell(Sample& sample, size_t element, std::uint32_t x, std::uint32_t y) {
    Corner const origin = sample.grid.origin();
    Corner const cell = {origin[0] + x, origin[1] + y};
    sample.grid.mark(cell);
    sample.data[element].second.push_back({cell[0], cell[1]});
}

// Blocks that overlap, single cells and repeated cells, spread over several elements in random order.
Sample randomSample(Random& random, Corner origin, std::uint32_t side, std::uint32_t blocks, std::uint32_t singles) {
    Sample sample{Grid(origin, side), DataEnvelopes::Data(1 + random.below(4)), {}};
    auto const elements = static_cast<std::uint32_t>(sample.data.size());
    for (std::uint32_t i = 0; i < blocks; ++i) {
        std::uint32_t const x0 = random.below(side);
        std::uint32_t const y0 = random.below(side);
        std::uint32_t const width = std::min(side - x0, 1 + random.below(side / 3 + 1));
        std::uint32_t const height = std::min(side - y0, 1 + random.below(side / 3 + 1));
        size_t const element = random.below(elements);
        for (std::uint32_t y = y0; y < y0 + height; ++y) {
            for (std::uint32_t x = x0; x < x0 + width; ++x)
                addCell(sample, element, x, y);
        }
    }
    for (std::uint32_t i = 0; i < singles; ++i)
        addCell(sample, random.below(elements), random.below(side), random.below(side));
    for (auto& element : sample.data) {
        for (size_t i = element.second.size(); i > 1; --i)
            std::swap(element.second[i - 1], element.second[random.below(static_cast<std::uint32_t>(i))]);
    }
    sample.envelopes.set({42}, sample.data);
    return sample;
}

// Every covered cell lies in exactly one envelope, every other cell in none.
void expectPartition(Sample const& sample) {
    Grid painted(sample.grid.origin(), sample.grid.side());
    Found const all = sample.envelopes.envelopes({0, 0}, {kMax, kMax});
    EXPECT_EQ(all.size(), sample.envelopes.count());
    for (std::vector<size_t> const& r : all) {
        ASSERT_EQ(r.size(), 4u);
        for (size_t y = r[2]; y <= r[3]; ++y) {
            for (size_t x = r[0]; x <= r[1]; ++x)
                painted.mark({static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)});
        }
    }
    size_t wrong = 0;
    for (size_t i = 0; i < painted.counts().size(); ++i)
        wrong += painted.counts()[i] != (sample.grid.counts()[i] != 0 ? 1 : 0) ? 1u : 0u;
    EXPECT_EQ(wrong, 0u) << "cells missing, too many or in two envelopes";
    EXPECT_EQ(sample.envelopes.total(), sample.grid.marked());
}

void expectWindowsAgree(Sample const& sample, Random& random, int windows) {
    Found const all = sample.envelopes.envelopes({0, 0}, {kMax, kMax});
    Corner const origin = sample.grid.origin();
    std::uint32_t const side = sample.grid.side();
    for (int i = 0; i < windows; ++i) {
        std::uint32_t const x0 = random.below(side);
        std::uint32_t const y0 = random.below(side);
        std::uint32_t const reach = i % 2 == 0 ? side : 3; // large windows and small ones
        Corner const min = {origin[0] + x0, origin[1] + y0};
        Corner const max = {min[0] + random.below(std::min(reach, side - x0)),
                            min[1] + random.below(std::min(reach, side - y0))};
        ASSERT_EQ(sample.envelopes.coverage(min, max), sample.grid.coverage(min, max))
            << min[0] << ',' << min[1] << " to " << max[0] << ',' << max[1];
        Found found = sample.envelopes.envelopes(min, max);
        std::sort(found.begin(), found.end());
        ASSERT_EQ(found, meeting(all, min, max));
    }
}

struct Placement {
    char const* name;
    Corner origin;
    std::uint32_t side;
};

class DataEnvelopesGridTest : public testing::TestWithParam<Placement> {};

TEST_P(DataEnvelopesGridTest, RandomCellsAreCoveredExactly) {
    Random random(1);
    for (std::uint32_t round = 0; round < 40; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        Sample const sample = randomSample(random, GetParam().origin, GetParam().side, round % 6, random.below(200));
        expectPartition(sample);
        expectWindowsAgree(sample, random, 200);
    }
}

TEST_P(DataEnvelopesGridTest, SetsAreComparedExactly) {
    Random random(2);
    std::array<int, 3> seen{};
    for (int round = 0; round < 150; ++round) {
        Sample const a = randomSample(random, GetParam().origin, GetParam().side, random.below(2), random.below(4));
        Sample b = randomSample(random, GetParam().origin, GetParam().side, random.below(3), random.below(9));
        if (round % 3 == 0) { // make b contain a
            for (auto const& element : a.data) {
                for (auto const& cell : element.second)
                    b.grid.mark({cell[0], cell[1]});
                b.data.push_back(element);
            }
            b.envelopes.set({1}, b.data);
        }
        int const expected = a.grid.marked() == 0 || b.grid.marked() == 0 ? 0 : a.grid.coverage(b.grid);
        ASSERT_EQ(a.envelopes.coverage(b.envelopes), expected) << "round " << round;
        ASSERT_EQ(b.envelopes.coverage(a.envelopes), expected) << "round " << round;
        ++seen[static_cast<size_t>(expected)];
    }
    EXPECT_TRUE(seen[0] > 0 && seen[1] > 0 && seen[2] > 0) << "the rounds must show all three answers";
}

// More cells than the comparing sort takes, and envelopes enough for four levels of the tree.
TEST_P(DataEnvelopesGridTest, ThousandsOfEnvelopesAreCoveredExactly) {
    Random random(3);
    std::uint32_t const side = 150;
    Corner origin = GetParam().origin;
    for (std::uint32_t& start : origin)
        start = start < side ? 0 : start - side + GetParam().side; // same far corner
    Sample const sample = randomSample(random, origin, side, 0, 9000);
    EXPECT_GT(sample.envelopes.count(), 4096u);
    expectPartition(sample);
    expectWindowsAgree(sample, random, 1500);
}

INSTANTIATE_TEST_SUITE_P(Places, DataEnvelopesGridTest,
                         testing::Values(Placement{"Origin", {0, 0}, 40},
                                         Placement{"Middle", {(1u << 31) - 15, (1u << 16) - 15}, 33},
                                         Placement{"LastColumnsAndRows", {kMax - 31, kMax - 31}, 32},
                                         Placement{"LastColumns", {kMax - 24, 0}, 25}),
                         [](auto const& place) { return std::string(place.param.name); });

TEST(DataEnvelopesScatterTest, CellsScatteredOverTheWholePlaneAreCountedExactly) {
    Random random(4);
    std::map<Corner, int> cells;
    DataEnvelopes::Data data(1);
    for (int i = 0; i < 4000; ++i) {
        // Far apart, and in one dense cluster.
        Corner const cell = i % 2 == 0 ? Corner{random.below(kMax), random.below(kMax)}
                                       : Corner{kMax - random.below(100), 1000 + random.below(100)};
        cells[cell] = 1;
        data[0].second.push_back({cell[0], cell[1]});
    }
    DataEnvelopes envelopes;
    envelopes.set({}, data);
    EXPECT_EQ(envelopes.total(), cells.size());
    for (int i = 0; i < 300; ++i) {
        Corner const a = {random.below(kMax), random.below(kMax)};
        Corner const b = i % 2 == 0 ? Corner{random.below(kMax), random.below(kMax)} : Corner{kMax, 1050};
        Corner const min = {std::min(a[0], b[0]), std::min(a[1], b[1])};
        Corner const max = {std::max(a[0], b[0]), std::max(a[1], b[1])};
        bool const some = std::any_of(cells.begin(), cells.end(), [&](auto const& entry) {
            Corner const& c = entry.first;
            return min[0] <= c[0] && c[0] <= max[0] && min[1] <= c[1] && c[1] <= max[1];
        });
        ASSERT_EQ(envelopes.coverage(min, max), some ? 1 : 0) << "window " << i;
    }
}

// A set in a few blocks is walked block by block and the other set's tree is asked for each: the answer 2 needs the
// exact number of cells in every one of them, so that a wrong sum anywhere in the tree shows.
TEST(DataEnvelopesScatterTest, CellsInsideBlocksOfAnySizeAreSummedExactly) {
    Random random(6);
    for (int round = 0; round < 20; ++round) {
        DataEnvelopes::Data blocks(1);
        DataEnvelopes::Data checkerboard(1);
        for (std::uint32_t i = 0; i < 9; ++i) {
            std::uint32_t const x0 = i % 3 * 100 + random.below(20);
            std::uint32_t const y0 = i / 3 * 100 + random.below(20);
            std::uint32_t const width = 1 + random.below(79);
            std::uint32_t const height = 1 + random.below(79);
            for (std::uint32_t y = y0; y < y0 + height; ++y) {
                for (std::uint32_t x = x0; x < x0 + width; ++x) {
                    blocks[0].second.push_back({x, y});
                    if ((x + y) % 2 == 0 || random.below(9) == 0) checkerboard[0].second.push_back({x, y});
                }
            }
        }
        DataEnvelopes few;
        DataEnvelopes many;
        few.set({}, blocks);
        many.set({}, checkerboard);
        ASSERT_EQ(few.count(), 9u);
        ASSERT_GT(many.count(), 256u);
        EXPECT_EQ(many.coverage(few), 2);
        EXPECT_EQ(few.coverage(many), 2);
        checkerboard[0].second.push_back({500, 500});
        many.set({}, checkerboard);
        EXPECT_EQ(many.coverage(few), 1) << "one cell outside all blocks";
        EXPECT_EQ(few.coverage(many), 1);
    }
}

// Windows that cut one long envelope among thousands of small ones.
TEST(DataEnvelopesScatterTest, EveryStripOfALongRowIsFullyCovered) {
    Random random(5);
    std::uint32_t const length = 20000;
    DataEnvelopes::Data data(1);
    for (std::uint32_t x = 0; x < length; ++x) {
        data[0].second.push_back({x, 0});
        if (x % 2 == 0) data[0].second.push_back({x, 1}); // and thousands of envelopes below it
    }
    DataEnvelopes envelopes;
    envelopes.set({}, data);
    EXPECT_EQ(envelopes.count(), 1u + length / 2);
    for (int i = 0; i < 2000; ++i) {
        std::uint32_t const x0 = random.below(length);
        std::uint32_t const x1 = x0 + random.below(length - x0);
        ASSERT_EQ(envelopes.coverage({x0, 0}, {x1, 0}), 2);
        ASSERT_EQ(envelopes.coverage({x0, 0}, {x1, 1}), x0 == x1 && x0 % 2 == 0 ? 2 : 1);
        ASSERT_EQ(envelopes.coverage({x0, 1}, {x0, 1}), x0 % 2 == 0 ? 2 : 0);
        ASSERT_EQ(envelopes.coverage({x0, 0}, {length, 0}), 1);
    }
}

} // namespace
