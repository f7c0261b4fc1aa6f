#include "renderbackend/DataEnvelopes.h"

#include "tests/renderbackend/ThrownMessage.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace {

using Corner = DataEnvelopes::Corner;
using Cells = std::vector<std::vector<unsigned int>>;
using Found = std::vector<std::vector<size_t>>;

constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();
constexpr Corner kPlaneMin = {0, 0};
constexpr Corner kPlaneMax = {kMax, kMax};

DataEnvelopes of(Cells const& cells) {
    DataEnvelopes envelopes;
    envelopes.set({1}, {{{}, cells}});
    return envelopes;
}

Cells block(unsigned int x0, unsigned int y0, unsigned int width, unsigned int height) {
    Cells cells;
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x)
            cells.push_back({x0 + x, y0 + y});
    }
    return cells;
}

Cells operator+(Cells a, Cells const& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Each {min x, max x, min y, max y}, sorted.
Found rectangles(DataEnvelopes const& envelopes, Corner min = kPlaneMin, Corner max = kPlaneMax) {
    Found found = envelopes.envelopes(min, max);
    std::sort(found.begin(), found.end());
    return found;
}

struct Merged : DataEnvelopes {
    static Found of(std::vector<Corner> const& cells) {
        Found list;
        for (Rectangle const& r : mergeCells(cells))
            list.push_back({r.min[0], r.max[0], r.min[1], r.max[1]});
        return list;
    }
};

TEST(DataEnvelopesTest, ANewSetIsEmpty) {
    DataEnvelopes const envelopes;
    EXPECT_EQ(envelopes.total(), 0u);
    EXPECT_EQ(envelopes.count(), 0u);
    EXPECT_TRUE(envelopes.id().empty());
    EXPECT_EQ(envelopes.coverage(kPlaneMin, kPlaneMax), 0);
    EXPECT_TRUE(envelopes.envelopes(kPlaneMin, kPlaneMax).empty());
}

TEST(DataEnvelopesTest, EmptyDataGivesTotalZeroAndNoCoverageAnywhere) {
    DataEnvelopes envelopes;
    envelopes.set({1, 2}, {});
    EXPECT_EQ(envelopes.total(), 0u);
    EXPECT_EQ(envelopes.count(), 0u);
    EXPECT_EQ(envelopes.id(), (std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(envelopes.coverage({0, 0}, {0, 0}), 0);
    EXPECT_EQ(envelopes.coverage(kPlaneMin, kPlaneMax), 0);
    EXPECT_EQ(envelopes.coverage({kMax, kMax}, {kMax, kMax}), 0);
}

TEST(DataEnvelopesTest, ElementsWithoutCellsGiveTotalZero) {
    DataEnvelopes envelopes;
    envelopes.set({}, {{{1, 2, 3}, {}}, {{}, {}}});
    EXPECT_EQ(envelopes.total(), 0u);
    EXPECT_EQ(envelopes.coverage(kPlaneMin, kPlaneMax), 0);
}

TEST(DataEnvelopesTest, ARectangleEqualToAnEnvelopeIsFullyCovered) {
    DataEnvelopes const envelopes = of(block(10, 20, 5, 3));
    ASSERT_EQ(rectangles(envelopes), (Found{{10, 14, 20, 22}}));
    EXPECT_EQ(envelopes.total(), 15u);
    EXPECT_EQ(envelopes.coverage({10, 20}, {14, 22}), 2);
}

TEST(DataEnvelopesTest, ARectangleThatSticksOutByOneCellIsPartlyCovered) {
    DataEnvelopes const envelopes = of(block(10, 20, 5, 3));
    EXPECT_EQ(envelopes.coverage({9, 20}, {14, 22}), 1);
    EXPECT_EQ(envelopes.coverage({10, 19}, {14, 22}), 1);
    EXPECT_EQ(envelopes.coverage({10, 20}, {15, 22}), 1);
    EXPECT_EQ(envelopes.coverage({10, 20}, {14, 23}), 1);
}

TEST(DataEnvelopesTest, ARectangleInsideAnEnvelopeIsFullyCovered) {
    EXPECT_EQ(of(block(10, 20, 5, 3)).coverage({12, 21}, {12, 21}), 2);
    EXPECT_EQ(of(block(10, 20, 5, 3)).coverage({11, 20}, {13, 22}), 2);
}

TEST(DataEnvelopesTest, ARectangleBesideAnEnvelopeIsNotCovered) {
    DataEnvelopes const envelopes = of(block(10, 20, 5, 3));
    EXPECT_EQ(envelopes.coverage({5, 20}, {9, 22}), 0);
    EXPECT_EQ(envelopes.coverage({15, 20}, {19, 22}), 0);
    EXPECT_EQ(envelopes.coverage({10, 0}, {14, 19}), 0);
    EXPECT_EQ(envelopes.coverage({10, 23}, {14, 30}), 0);
    EXPECT_TRUE(envelopes.envelopes({10, 23}, {14, 30}).empty());
}

TEST(DataEnvelopesTest, ARectangleAcrossSeveralEnvelopesIsFullyCoveredWhereTheyMeet) {
    // A full block below a wider one: two envelopes, no gap between them.
    DataEnvelopes const envelopes = of(block(0, 0, 4, 2) + block(0, 2, 6, 2));
    ASSERT_EQ(envelopes.count(), 2u);
    EXPECT_EQ(envelopes.coverage({0, 0}, {3, 3}), 2);
    EXPECT_EQ(envelopes.coverage({0, 0}, {4, 3}), 1);
    EXPECT_EQ(envelopes.coverage({4, 0}, {5, 1}), 0);
}

TEST(DataEnvelopesTest, ARectangleWhoseCornersAreSwappedHoldsNothing) {
    DataEnvelopes const envelopes = of(block(0, 0, 9, 9));
    EXPECT_EQ(envelopes.coverage({5, 0}, {4, 8}), 0);
    EXPECT_EQ(envelopes.coverage({0, 5}, {8, 4}), 0);
    EXPECT_TRUE(envelopes.envelopes({5, 0}, {4, 8}).empty());
    EXPECT_TRUE(envelopes.envelopes({0, 5}, {8, 4}).empty());
}

TEST(DataEnvelopesTest, EnvelopesAreListedAsMinXMaxXMinYMaxY) {
    DataEnvelopes const envelopes = of(block(1, 2, 3, 4) + block(100, 200, 1, 1));
    EXPECT_EQ(rectangles(envelopes), (Found{{1, 3, 2, 5}, {100, 100, 200, 200}}));
    EXPECT_EQ(rectangles(envelopes, {3, 5}, {50, 50}), (Found{{1, 3, 2, 5}})) << "whole, not cut to the window";
}

TEST(DataEnvelopesTest, RepeatedCellsCountOnce) {
    DataEnvelopes const envelopes = of(block(0, 0, 3, 3) + block(1, 1, 3, 3) + block(0, 0, 3, 3));
    EXPECT_EQ(envelopes.total(), 14u);
    EXPECT_EQ(envelopes.coverage({0, 0}, {3, 3}), 1);
    EXPECT_EQ(envelopes.coverage({1, 1}, {2, 2}), 2);
}

TEST(DataEnvelopesTest, CellsOfAllElementsAreMergedTogether) {
    DataEnvelopes envelopes;
    envelopes.set({9}, {{{7}, block(0, 0, 2, 2)}, {{}, block(2, 0, 2, 2)}, {{1, 2}, block(1, 0, 2, 2)}});
    EXPECT_EQ(rectangles(envelopes), (Found{{0, 3, 0, 1}}));
}

TEST(DataEnvelopesTest, CoordinatesBeyondTheSecondAreIgnored) {
    EXPECT_EQ(rectangles(of({{4, 5, 6}, {5, 5, 99, 1}})), (Found{{4, 5, 5, 5}}));
}

TEST(DataEnvelopesTest, SetReplacesTheContentsAndTheId) {
    DataEnvelopes envelopes = of(block(0, 0, 4, 4));
    envelopes.set({8, 9}, {{{}, block(50, 50, 1, 2)}});
    EXPECT_EQ(envelopes.id(), (std::vector<std::uint8_t>{8, 9}));
    EXPECT_EQ(envelopes.total(), 2u);
    EXPECT_EQ(rectangles(envelopes), (Found{{50, 50, 50, 51}}));
    envelopes.set({}, {});
    EXPECT_EQ(envelopes.total(), 0u);
    EXPECT_EQ(envelopes.count(), 0u);
    EXPECT_TRUE(envelopes.id().empty());
}

TEST(DataEnvelopesTest, SetMayBeGivenItsOwnId) {
    DataEnvelopes envelopes = of(block(0, 0, 1, 1));
    envelopes.set(envelopes.id(), {{{}, block(5, 5, 1, 1)}});
    EXPECT_EQ(envelopes.id(), (std::vector<std::uint8_t>{1}));
}

TEST(DataEnvelopesTest, CopiesKeepTheirContentsWhenTheOriginalChanges) {
    DataEnvelopes original = of(block(0, 0, 4, 4));
    DataEnvelopes const copy = original;
    original.set({2}, {});
    EXPECT_EQ(copy.total(), 16u);
    EXPECT_EQ(copy.coverage({0, 0}, {3, 3}), 2);
    EXPECT_EQ(copy.id(), (std::vector<std::uint8_t>{1}));
}

TEST(DataEnvelopesTest, ACellWithFewerThanTwoCoordinatesThrowsAndTheOldContentsStay) {
    std::string const expected = "#Name:a cell needs two coordinates: column and row#Location:void "
                                 "DataEnvelopes::set(std::vector<uint8_t> const& id, Data const& data)";
    DataEnvelopes envelopes = of(block(0, 0, 4, 4));
    EXPECT_EQ(thrownMessage([&] { envelopes.set({2}, {{{}, block(9, 9, 2, 2)}, {{}, {{7}}}}); }), expected);
    EXPECT_EQ(thrownMessage([&] { envelopes.set({2}, {{{}, {{1, 1}, {}}}}); }), expected);
    EXPECT_EQ(envelopes.id(), (std::vector<std::uint8_t>{1}));
    EXPECT_EQ(envelopes.total(), 16u);
    EXPECT_EQ(rectangles(envelopes), (Found{{0, 3, 0, 3}}));
}

TEST(DataEnvelopesMergeTest, NoCellsMakeNoRectangles) {
    EXPECT_EQ(Merged::of({}), Found{});
}

TEST(DataEnvelopesMergeTest, ARunInARowIsOneRectangle) {
    EXPECT_EQ(Merged::of({{3, 7}, {1, 7}, {2, 7}}), (Found{{1, 3, 7, 7}}));
}

TEST(DataEnvelopesMergeTest, AGapSplitsARun) {
    EXPECT_EQ(Merged::of({{1, 0}, {2, 0}, {4, 0}}), (Found{{1, 2, 0, 0}, {4, 4, 0, 0}}));
}

TEST(DataEnvelopesMergeTest, EqualRunsInConsecutiveRowsAreJoined) {
    EXPECT_EQ(Merged::of({{1, 0}, {2, 0}, {1, 1}, {2, 1}, {1, 2}, {2, 2}}), (Found{{1, 2, 0, 2}}));
}

TEST(DataEnvelopesMergeTest, EqualRunsWithARowBetweenThemStayApart) {
    EXPECT_EQ(Merged::of({{1, 0}, {1, 2}}), (Found{{1, 1, 0, 0}, {1, 1, 2, 2}}));
}

TEST(DataEnvelopesMergeTest, ALongerRunBelowStartsANewRectangle) {
    EXPECT_EQ(Merged::of({{1, 0}, {1, 1}, {2, 1}, {1, 2}, {2, 2}}), (Found{{1, 1, 0, 0}, {1, 2, 1, 2}}));
}

TEST(DataEnvelopesMergeTest, EachRunOfARowIsJoinedWithItsOwnRunAbove) {
    // Row 0: 0..1 3..3 5..6, row 1: 0..1 2..3 (runs into one) 5..6, row 2: 5..6.
    EXPECT_EQ(Merged::of({{0, 0}, {1, 0}, {3, 0}, {5, 0}, {6, 0}, {0, 1}, {1, 1}, {3, 1}, {5, 1}, {5, 2}, {6, 2}}),
              (Found{{0, 1, 0, 1}, {3, 3, 0, 1}, {5, 6, 0, 0}, {5, 5, 1, 1}, {5, 6, 2, 2}}));
}

TEST(DataEnvelopesMergeTest, ARunAtTheLastColumnDoesNotGoOnInTheNextRow) {
    EXPECT_EQ(Merged::of({{kMax, 0}, {0, 1}}), (Found{{kMax, kMax, 0, 0}, {0, 0, 1, 1}}));
    EXPECT_EQ(Merged::of({{7, 0}, {0, 1}}), (Found{{7, 7, 0, 0}, {0, 0, 1, 1}}));
}

TEST(DataEnvelopesMergeTest, ASingleColumnIsOneRectangle) {
    EXPECT_EQ(Merged::of({{5, 2}, {5, 0}, {5, 1}}), (Found{{5, 5, 0, 2}}));
}

TEST(DataEnvelopesMergeTest, CellsAtTheLastRowAndColumnAreJoined) {
    EXPECT_EQ(Merged::of({{kMax, kMax}, {kMax - 1, kMax}, {kMax, kMax - 1}, {kMax - 1, kMax - 1}}),
              (Found{{kMax - 1, kMax, kMax - 1, kMax}}));
}

TEST(DataEnvelopesMergeTest, TheFirstRowDoesNotFollowTheLast) {
    EXPECT_EQ(Merged::of({{3, kMax}, {3, 0}}), (Found{{3, 3, 0, 0}, {3, 3, kMax, kMax}}));
}

TEST(DataEnvelopesPlaneTest, TheWholePlaneIsPartlyCoveredThoughItsCellCountDoesNotFit) {
    DataEnvelopes const oneCell = of({{0, 0}});
    EXPECT_EQ(oneCell.coverage(kPlaneMin, kPlaneMax), 1);
    DataEnvelopes const corners = of({{0, 0}, {kMax, 0}, {0, kMax}, {kMax, kMax}});
    EXPECT_EQ(corners.coverage(kPlaneMin, kPlaneMax), 1);
    EXPECT_EQ(corners.total(), 4u);
}

TEST(DataEnvelopesPlaneTest, WindowsThatReachTheEdgesOfThePlaneListExactlyWhatTheyMeet) {
    DataEnvelopes const corners = of({{0, 0}, {kMax, 0}, {0, kMax}, {kMax, kMax}, {70, 90}});
    EXPECT_EQ(corners.envelopes(kPlaneMin, kPlaneMax).size(), 5u);
    EXPECT_EQ(rectangles(corners, {1, 0}, {kMax, kMax}),
              (Found{{70, 70, 90, 90}, {kMax, kMax, 0, 0}, {kMax, kMax, kMax, kMax}}));
    EXPECT_EQ(rectangles(corners, {0, 0}, {kMax, kMax - 1}),
              (Found{{0, 0, 0, 0}, {70, 70, 90, 90}, {kMax, kMax, 0, 0}}));
    EXPECT_EQ(corners.coverage({1, 1}, {kMax - 1, kMax - 1}), 1);
    EXPECT_EQ(corners.coverage({71, 1}, {kMax - 1, kMax}), 0);
}

TEST(DataEnvelopesPlaneTest, CoverageIsExactAtTheLastCells) {
    DataEnvelopes const envelopes = of(block(kMax - 2, kMax - 1, 3, 2));
    EXPECT_EQ(rectangles(envelopes), (Found{{kMax - 2, kMax, kMax - 1, kMax}}));
    EXPECT_EQ(envelopes.coverage({kMax - 2, kMax - 1}, {kMax, kMax}), 2);
    EXPECT_EQ(envelopes.coverage({kMax, kMax}, {kMax, kMax}), 2);
    EXPECT_EQ(envelopes.coverage({kMax - 3, kMax - 1}, {kMax, kMax}), 1);
    EXPECT_EQ(envelopes.coverage({0, kMax}, {kMax, kMax}), 1);
}

TEST(DataEnvelopesPlaneTest, ACountThatEqualsTheWindowsModuloTwoTo32IsStillPartly) {
    // 2^16 by 2^17 cells of window are 2^33; one covered row of 2^17 cells is 2^17: no truncation makes them equal.
    DataEnvelopes const row = of(block(0, 0, 1u << 17, 1));
    EXPECT_EQ(row.coverage({0, 0}, {(1u << 17) - 1, (1u << 16) - 1}), 1);
    // A window of 2^32 + 2^17 cells, whose lower half is exactly the number that is covered.
    EXPECT_EQ(row.coverage({0, 0}, {(1u << 17) - 1, 1u << 15}), 1);
    EXPECT_EQ(row.coverage({0, 0}, {(1u << 17) - 1, 0}), 2);
}

TEST(DataEnvelopesSetCoverageTest, SetsWithoutACommonCellGiveZero) {
    EXPECT_EQ(of(block(0, 0, 3, 3)).coverage(of(block(3, 0, 3, 3))), 0);
}

TEST(DataEnvelopesSetCoverageTest, AnEmptySetSharesNothing) {
    EXPECT_EQ(DataEnvelopes().coverage(DataEnvelopes()), 0);
    EXPECT_EQ(DataEnvelopes().coverage(of({{0, 0}})), 0);
    EXPECT_EQ(of({{0, 0}}).coverage(DataEnvelopes()), 0);
}

TEST(DataEnvelopesSetCoverageTest, ASetThatContainsTheOtherGivesTwoFromEitherSide) {
    DataEnvelopes const large = of(block(0, 0, 9, 9));
    DataEnvelopes const small = of(block(2, 2, 3, 3) + block(7, 7, 1, 1));
    EXPECT_EQ(large.coverage(small), 2);
    EXPECT_EQ(small.coverage(large), 2);
    EXPECT_EQ(large.coverage(large), 2);
}

TEST(DataEnvelopesSetCoverageTest, SetsThatOverlapGiveOne) {
    DataEnvelopes const a = of(block(0, 0, 4, 4));
    DataEnvelopes const b = of(block(3, 3, 4, 4) + block(20, 20, 2, 2));
    EXPECT_EQ(a.coverage(b), 1);
    EXPECT_EQ(b.coverage(a), 1);
}

TEST(DataEnvelopesSetCoverageTest, TheSameCellsInOtherEnvelopesAreTheSameSet) {
    DataEnvelopes const whole = of(block(0, 0, 4, 4) + block(5, 0, 1, 4));
    DataEnvelopes const asWell = of(block(5, 0, 1, 4) + block(0, 0, 2, 4) + block(2, 0, 2, 4));
    EXPECT_EQ(whole.coverage(asWell), 2);
    EXPECT_EQ(asWell.coverage(whole), 2);
}

} // namespace
