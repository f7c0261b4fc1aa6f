#include "renderbackend/Filter.h"

#include "tests/renderbackend/FilterDescription.h"
#include "tests/renderbackend/ThrownMessage.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using Range = std::vector<size_t>;

constexpr size_t kTwoTo63 = size_t{1} << 63;
constexpr size_t kMax = std::numeric_limits<size_t>::max();
constexpr char const* kInputOutOfBounds =
    "#Name:Input out of bounds#Location:std::vector<size_t> Filter::inputRange(std::vector<size_t> const& "
    "outputRange) const";
constexpr char const* kOutputOutOfBounds =
    "#Name:Input out of bounds#Location:std::vector<size_t> Filter::outputRange(std::vector<size_t> const& "
    "inputRange) const";

std::string refusedInput(FilterDescription const& d, Range const& out) {
    return thrownMessage([&] { d.filter().inputRange(out); });
}

std::string refusedOutput(FilterDescription const& d, Range const& in) {
    return thrownMessage([&] { d.filter().outputRange(in); });
}

TEST(FilterRangeTest, TheIdentityMapsAnyRangeToItself) {
    Filter const identity = FilterDescription().filter();
    for (Range const& range :
         {Range{0, 0, 0, 0}, Range{3, 9, 4, 7}, Range{0, 1u << 20, 77, 1u << 30}, Range{5, 4, 2, 1}}) {
        EXPECT_EQ(identity.inputRange(range), range);
        EXPECT_EQ(identity.outputRange(range), range);
    }
}

// Otherwise values that the constructor accepts would end the program: integer division by 0 traps.
TEST(FilterRangeTest, ScaleOfZeroHasNoInputRange) {
    std::string const refused = "#Name:a scale of 0 has no input range#Location:std::vector<size_t> "
                                "Filter::inputRange(std::vector<size_t> const& outputRange) const";
    FilterDescription d;
    d.scaleXNum = 0;
    EXPECT_EQ(refusedInput(d, {0, 9, 0, 9}), refused);
    EXPECT_EQ(d.filter().outputRange({0, 9, 0, 9}), (Range{0, 0, 0, 9})) << "nothing of the width is left";
    d = FilterDescription();
    d.scaleYNum = 0;
    EXPECT_EQ(refusedInput(d, {0, 9, 0, 9}), refused);
}

TEST(FilterRangeTest, OutputAlignmentOfZeroHasNoOutputRange) {
    std::string const refused = "#Name:an output alignment of 0 has no output range#Location:std::vector<size_t> "
                                "Filter::outputRange(std::vector<size_t> const& inputRange) const";
    Filter x = FilterDescription().filter();
    x.setAlignXOut(0);
    Filter y = FilterDescription().filter();
    y.setAlignYOut(0);
    for (Filter const& filter : {x, y}) {
        EXPECT_EQ(thrownMessage([&] { filter.outputRange({0, 9, 0, 9}); }), refused);
        EXPECT_EQ(filter.inputRange({0, 9, 0, 9}), (Range{0, 9, 0, 9})) << "which output alignments have no part in";
    }
}

// Setting one back to 0 leaves the stride, which a description always has.
TEST(FilterRangeTest, InputAlignmentOfZeroCountsAsNone) {
    Filter filter = FilterDescription().filter();
    filter.setAlignXIn(0);
    filter.setAlignYIn(0);
    EXPECT_EQ(filter.inputRange({3, 4, 0, 0}), (Range{3, 4, 0, 0}));
}

TEST(FilterRangeTest, ScaleOneHalfOnStrideTwoDoublesTheInput) {
    FilterDescription d;
    d.inputPosXStride = 2;
    d.scaleXDen = 2;
    // Column 9 needs column 18; the grid of step 2 rounds the end up to the last column of its step.
    EXPECT_EQ(d.filter().inputRange({0, 9, 0, 9}), (Range{0, 19, 0, 9}));
    EXPECT_EQ(d.filter().outputRange({0, 18, 0, 9}), (Range{0, 9, 0, 9}));
    EXPECT_EQ(d.filter().outputRange({0, 19, 0, 9}), (Range{0, 9, 0, 9}));
}

TEST(FilterRangeTest, EffectiveAlignmentTwoWidensColumnsThreeToFour) {
    FilterDescription d;
    d.alignXIn = 2;
    EXPECT_EQ(d.filter().inputRange({3, 4, 0, 0}), (Range{2, 5, 0, 0}));
    d = FilterDescription();
    d.inputPosXStride = 2;
    EXPECT_EQ(d.filter().inputRange({3, 4, 0, 0}), (Range{2, 5, 0, 0}));
    Filter later = FilterDescription().filter();
    later.setAlignXIn(2);
    EXPECT_EQ(later.inputRange({3, 4, 0, 0}), (Range{2, 5, 0, 0}));
}

TEST(FilterRangeTest, EffectiveAlignmentTwoWidensRowsThreeToFour) {
    FilterDescription d;
    d.alignYIn = 2;
    EXPECT_EQ(d.filter().inputRange({0, 0, 3, 4}), (Range{0, 0, 2, 5}));
}

TEST(FilterRangeTest, AnOutputAlignmentThatLeavesNothingIsReturnedAsComputed) {
    FilterDescription d;
    d.alignXOut = 4;
    EXPECT_EQ(d.filter().outputRange({1, 6, 0, 0}), (Range{4, 3, 0, 0}));
    d = FilterDescription();
    d.alignYOut = 4;
    EXPECT_EQ(d.filter().outputRange({0, 0, 1, 6}), (Range{0, 0, 4, 3}));
}

TEST(FilterRangeTest, AnOutputAlignmentDoesNotTouchTheInputRange) {
    FilterDescription d;
    d.alignXOut = 4;
    d.alignYOut = 4;
    EXPECT_EQ(d.filter().inputRange({1, 6, 1, 6}), (Range{1, 6, 1, 6}));
}

TEST(FilterRangeTest, InvalidBordersWidenTheInputAndNarrowTheOutput) {
    FilterDescription d;
    d.invalidLeft = 1;
    d.invalidRight = 2;
    d.invalidTop = 3;
    d.invalidBottom = 4;
    EXPECT_EQ(d.filter().inputRange({1, 10, 3, 10}), (Range{0, 12, 0, 14}));
    EXPECT_EQ(d.filter().outputRange({0, 12, 0, 14}), (Range{1, 10, 3, 10}));
}

TEST(FilterRangeTest, AnOutputThatStartsInsideTheInvalidBorderThrows) {
    FilterDescription d;
    d.invalidLeft = 2;
    d.invalidTop = 3;
    EXPECT_EQ(refusedInput(d, {1, 9, 3, 9}), kInputOutOfBounds);
    EXPECT_EQ(refusedInput(d, {2, 9, 2, 9}), kInputOutOfBounds);
    EXPECT_EQ(d.filter().inputRange({2, 9, 3, 9}), (Range{0, 9, 0, 9}));
}

TEST(FilterRangeTest, AnOutputThatStartsAtTwoTo63CountsAsNegativeAndThrows) {
    FilterDescription const d;
    EXPECT_EQ(refusedInput(d, {kTwoTo63, kTwoTo63, 0, 0}), kInputOutOfBounds);
    EXPECT_EQ(refusedInput(d, {0, 0, kTwoTo63, kTwoTo63}), kInputOutOfBounds);
    EXPECT_EQ(refusedInput(d, {kMax, 0, 0, 0}), kInputOutOfBounds);
    EXPECT_EQ(d.filter().inputRange({kTwoTo63 - 1, kTwoTo63 - 1, 0, 0}), (Range{kTwoTo63 - 1, kTwoTo63 - 1, 0, 0}));
}

TEST(FilterRangeTest, AnInputThatStartsBeforeTheGridOriginThrows) {
    FilterDescription d;
    d.inputPosX0 = 2;
    d.inputPosY0 = 3;
    EXPECT_EQ(refusedOutput(d, {1, 9, 3, 9}), kOutputOutOfBounds);
    EXPECT_EQ(refusedOutput(d, {2, 9, 2, 9}), kOutputOutOfBounds);
    EXPECT_EQ(d.filter().outputRange({2, 9, 3, 9}), (Range{2, 9, 3, 9}));
}

TEST(FilterRangeTest, TheOutputRangeComparesUnsignedUnlikeTheInputRange) {
    FilterDescription d;
    d.inputPosX0 = 2;
    d.inputPosY0 = 3;
    EXPECT_EQ(d.filter().outputRange({kTwoTo63, kTwoTo63 + 5, kTwoTo63, kTwoTo63 + 6}),
              (Range{kTwoTo63, kTwoTo63 + 5, kTwoTo63, kTwoTo63 + 6}));
}

TEST(FilterRangeTest, TheInputGridStartsAtItsOrigin) {
    FilterDescription d;
    d.inputPosX0 = 2;
    d.inputPosXStride = 5;
    // Grid cells: 2..6, 7..11, 12..16.
    EXPECT_EQ(d.filter().inputRange({2, 2, 0, 0}), (Range{2, 6, 0, 0}));
    EXPECT_EQ(d.filter().inputRange({6, 7, 0, 0}), (Range{2, 11, 0, 0}));
    EXPECT_EQ(d.filter().inputRange({8, 12, 0, 0}), (Range{7, 16, 0, 0}));
}

TEST(FilterRangeTest, AnInputStartLeftOfTheGridOriginWrapsAsUnsigned) {
    FilterDescription d;
    d.inputPosX0 = 2;
    d.inputPosXStride = 3;
    d.inputPosY0 = 2;
    d.inputPosYStride = 3;
    // 0 - 2 is 2^64 - 2, two past a multiple of 3: 2^64 - 4, plus the origin. A signed grid would give -1.
    EXPECT_EQ(d.filter().inputRange({0, 0, 0, 0}), (Range{kMax - 1, 1, kMax - 1, 1}));
}

TEST(FilterRangeTest, ABorderWiderThanTheInputWrapsTheOutputEnd) {
    FilterDescription d;
    d.invalidRight = 3;
    EXPECT_EQ(d.filter().outputRange({0, 1, 0, 0}), (Range{0, kMax - 1, 0, 0}));
}

TEST(FilterRangeTest, ARangeOfFewerThanFourValuesThrows) {
    FilterDescription const d;
    EXPECT_THROW(d.filter().inputRange({0, 0, 0}), VelmoraException);
    EXPECT_THROW(d.filter().outputRange({0, 0, 0}), VelmoraException);
    EXPECT_EQ(d.filter().inputRange({1, 2, 3, 4, 5}), (Range{1, 2, 3, 4})) << "more values are left alone";
}

// The reference walks in steps of one and uses no division: it follows the definition, not the computation.
struct AxisCase {
    size_t before, after, origin, stride, alignIn, alignOut, num, den;
};

size_t firstWhere(size_t from, bool (*holds)(size_t, AxisCase const&, size_t), AxisCase const& a, size_t bound) {
    while (!holds(from, a, bound))
        ++from;
    return from;
}

Range referenceInput(AxisCase const& a, size_t start, size_t end) {
    size_t const grid = a.stride > a.alignIn ? a.stride : a.alignIn;
    // The last input column that output column start reaches down to, the first that covers output column end.
    size_t lowest = 0;
    while ((lowest + 1) * a.num <= (start - a.before) * a.den)
        ++lowest;
    size_t const highest = firstWhere(
        0, [](size_t x, AxisCase const& c, size_t bound) { return x * c.num >= bound * c.den; }, a, end + a.after);
    size_t cellStart = a.origin;
    while (cellStart + grid <= lowest)
        cellStart += grid;
    size_t cellEnd = a.origin + grid - 1;
    while (cellEnd < highest)
        cellEnd += grid;
    return {cellStart, cellEnd};
}

Range referenceOutput(AxisCase const& a, size_t start, size_t end) {
    size_t const first = firstWhere(
        0, [](size_t x, AxisCase const& c, size_t bound) { return x * c.den >= bound * c.num; }, a, start);
    size_t last = 0;
    while ((last + 1) * a.den <= end * a.num)
        ++last;
    size_t alignedStart = 0;
    while (alignedStart < first + a.before)
        alignedStart += a.alignOut;
    size_t pastEnd = 0;
    while (pastEnd + a.alignOut <= last - a.after + 1)
        pastEnd += a.alignOut;
    return {alignedStart, pastEnd - 1};
}

FilterDescription along(bool x, AxisCase const& a) {
    FilterDescription d;
    (x ? d.invalidLeft : d.invalidTop) = a.before;
    (x ? d.invalidRight : d.invalidBottom) = a.after;
    (x ? d.inputPosX0 : d.inputPosY0) = a.origin;
    (x ? d.inputPosXStride : d.inputPosYStride) = a.stride;
    (x ? d.alignXIn : d.alignYIn) = a.alignIn;
    (x ? d.alignXOut : d.alignYOut) = a.alignOut;
    (x ? d.scaleXNum : d.scaleYNum) = a.num;
    (x ? d.scaleXDen : d.scaleYDen) = a.den;
    return d;
}

void compareOnAxis(bool x, AxisCase const& a) {
    Filter const filter = along(x, a).filter();
    SCOPED_TRACE(testing::Message() << (x ? "x" : "y") << " borders " << a.before << ' ' << a.after << " origin "
                                    << a.origin << " stride " << a.stride << " align " << a.alignIn << ' ' << a.alignOut
                                    << " scale " << a.num << '/' << a.den);
    size_t const i = x ? 0 : 2;
    for (size_t start = a.before + a.origin * a.num; start < a.before + a.origin * a.num + 24; ++start) {
        for (size_t end = start; end < start + 24; ++end) {
            Range range(4, a.before + a.origin * a.num);
            range[2 - i] = range[3 - i] = 0;
            range[i] = start;
            range[i + 1] = end;
            Range const in = filter.inputRange(range);
            ASSERT_EQ((Range{in[i], in[i + 1]}), referenceInput(a, start, end)) << start << " to " << end;
            if (end * a.num < a.after * a.den) continue; // an end that wraps is another test
            Range const out = filter.outputRange(range);
            ASSERT_EQ((Range{out[i], out[i + 1]}), referenceOutput(a, start, end)) << start << " to " << end;
        }
    }
}

TEST(FilterRangeTest, BothRangesEqualAWalkInStepsOfOne) {
    AxisCase const cases[] = {
        {0, 0, 0, 1, 1, 1, 1, 1}, {2, 3, 0, 1, 1, 1, 1, 1}, {0, 0, 0, 2, 1, 1, 1, 2}, {1, 1, 0, 2, 2, 2, 1, 2},
        {0, 0, 0, 1, 1, 1, 2, 1}, {3, 1, 0, 1, 1, 4, 2, 1}, {1, 2, 4, 2, 4, 1, 1, 2}, {0, 1, 6, 3, 3, 5, 2, 3},
        {2, 0, 3, 3, 1, 2, 5, 3}, {1, 1, 2, 2, 8, 3, 3, 2}, {0, 0, 5, 5, 5, 7, 7, 5}, {4, 4, 1, 4, 1, 2, 3, 4},
    };
    for (AxisCase const& a : cases) {
        compareOnAxis(true, a);
        compareOnAxis(false, a);
    }
}

} // namespace
