// Which samples of a file's level a sample of a view's level is made of: compared with a search through all of them.
#include "host/pyramid/LevelScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

// A level of a file, and how it was reduced: by a whole number, or by the ratio of the sides.
struct Row {
    std::string name;
    size_t full;
    size_t file;
    size_t factor; // 0: full / file
};

std::vector<Row> const& rows() {
    static std::vector<Row> const all{{"the picture itself", 1001, 1001, 1},
                                      {"half, rounded up", 1001, 501, 2},
                                      {"half, rounded down", 1001, 500, 2},
                                      {"one more than half", 1000, 501, 0},
                                      {"a third", 1001, 334, 3},
                                      {"a quarter, rounded down", 1003, 250, 4},
                                      {"3.99", 1995, 500, 0},
                                      {"2.5", 1000, 400, 0},
                                      {"a power of two, though 63 fits as well", 1000, 16, 64},
                                      {"few", 5, 2, 2},
                                      {"one", 7, 1, 4}};
    return all;
}

// Whether sample f of the file and sample i of the level share a pixel; by whole numbers.
bool share(Row const& row, size_t level, size_t i, size_t f) {
    std::uint64_t const pixels = row.factor > 0 ? row.factor : row.full;
    std::uint64_t const per = row.factor > 0 ? 1 : row.file;
    std::uint64_t const start = std::uint64_t{i} << level;
    std::uint64_t const end = std::uint64_t{i + 1} << level;
    return f * pixels < end * per && (f + 1) * pixels > start * per;
}

} // namespace

TEST(LevelScaleTest, ASampleIsMadeOfThoseThatShareItsPixels) {
    for (Row const& row : rows())
        for (size_t level = 0; level < 12; ++level) {
            LevelScale const scale(row.full, row.file, level);
            if (scale.isEqual()) continue;
            std::vector<size_t> uses(row.file);
            for (size_t i = 0; i < scale.samples(); ++i) {
                SCOPED_TRACE(row.name + ", level " + std::to_string(level) + ", sample " + std::to_string(i));
                Interval const of = scale.of(i);
                ASSERT_GE(of.length, 1u);
                ASSERT_LE(of.start + of.length, row.file);
                size_t shared = 0;
                for (size_t f = 0; f < row.file; ++f)
                    if (share(row, level, i, f)) {
                        ++shared;
                        EXPECT_TRUE(f >= of.start && f < of.start + of.length) << f;
                    }
                // Beyond the end of a level that was rounded down, its last sample counts.
                if (shared > 0)
                    EXPECT_EQ(of.length, shared);
                else
                    EXPECT_EQ(of.start, row.file - 1);
                for (size_t f = of.start; f < of.start + of.length; ++f)
                    ++uses[f];
            }
            for (size_t const count : uses)
                EXPECT_GE(count, 1u) << row.name << ", level " << level << ": a sample does not count";
        }
}

// Of those that fit, a power of two, or else the nearest to the ratio of the sides.
TEST(LevelScaleTest, WhateverWholeNumberFitsIsTaken) {
    for (size_t full = 2; full <= 150; ++full)
        for (size_t file = 1; file <= full; ++file) {
            Row row{"", full, file, 0};
            auto const distance = [&](size_t factor) {
                return std::max(factor * file, full) - std::min(factor * file, full);
            };
            for (size_t factor = full; factor > 0; --factor) {
                bool const fits = full / factor == file || (full + factor - 1) / factor == file;
                if (fits && (row.factor == 0 || distance(factor) < distance(row.factor))) row.factor = factor;
            }
            for (size_t factor = size_t{1} << 8; factor > 0; factor /= 2)
                if (full / factor == file || (full + factor - 1) / factor == file) row.factor = factor;
            for (size_t level = 1; level < 4; ++level) {
                LevelScale const scale(full, file, level);
                if (scale.isEqual()) continue;
                for (size_t i = 0; i < scale.samples(); ++i) {
                    Interval const of = scale.of(i);
                    for (size_t f = 0; f < file; ++f) {
                        ASSERT_TRUE(!share(row, level, i, f) || (f >= of.start && f < of.start + of.length))
                            << full << " to " << file << ", level " << level << ", " << i << " of " << f;
                    }
                    ASSERT_TRUE(of.length == 1 || share(row, level, i, of.start + of.length - 1));
                    ASSERT_TRUE(of.length == 1 || share(row, level, i, of.start));
                }
            }
        }
}

TEST(LevelScaleTest, HalvedSidesAreRoundedUp) {
    EXPECT_EQ(LevelScale::halved(1001, 0), 1001u);
    EXPECT_EQ(LevelScale::halved(1001, 1), 501u);
    EXPECT_EQ(LevelScale::halved(1001, 2), 251u);
    EXPECT_EQ(LevelScale::halved(1024, 10), 1u);
    EXPECT_EQ(LevelScale::halved(1025, 10), 2u);
    EXPECT_EQ(LevelScale::halved(1, 31), 1u);
    EXPECT_EQ(LevelScale(1001, 1001, 3).samples(), 126u);
}

TEST(LevelScaleTest, SidesWithinHalfAPercentAreEqual) {
    EXPECT_TRUE(LevelScale(4000, 1000, 2).isEqual());
    EXPECT_TRUE(LevelScale(4000, 995, 2).isEqual());
    EXPECT_TRUE(LevelScale(4000, 1005, 2).isEqual());
    EXPECT_FALSE(LevelScale(4000, 994, 2).isEqual());
    EXPECT_FALSE(LevelScale(4000, 1006, 2).isEqual());
    EXPECT_TRUE(LevelScale(4000, 1006, 2).isFineEnough());
    EXPECT_FALSE(LevelScale(4000, 994, 2).isFineEnough());
    EXPECT_TRUE(LevelScale(4000, 995, 2).isFineEnough());
    // Small sides have no half percent.
    EXPECT_FALSE(LevelScale(11, 2, 2).isEqual());
    EXPECT_TRUE(LevelScale(11, 3, 2).isEqual());
}

TEST(LevelScaleTest, OfAnEqualLevelTheSampleInTheMiddleIsTaken) {
    LevelScale const same(1001, 501, 1);
    for (size_t i = 0; i < 501; ++i) {
        EXPECT_EQ(same.of(i).start, i);
        EXPECT_EQ(same.of(i).length, 1u);
    }
    // Rounded down: the last sample is shown twice.
    LevelScale const fewer(1003, 250, 2);
    ASSERT_TRUE(fewer.isEqual());
    EXPECT_EQ(fewer.of(249).start, 249u);
    EXPECT_EQ(fewer.of(250).start, 249u);
    // Of 1003 samples for 1000, those whose pixels hold the middle of sample i's.
    LevelScale const more(4000, 1003, 2);
    ASSERT_TRUE(more.isEqual());
    for (size_t i = 0; i < 1000; ++i) {
        std::uint64_t const f = more.of(i).start;
        EXPECT_LE(f * 4000, (4 * i + 2) * 1003);
        EXPECT_GT((f + 1) * 4000, (4 * i + 2) * 1003);
    }
}

TEST(LevelScaleTest, ARangeIsMadeOfAllThatItsSamplesAreMadeOf) {
    LevelScale const scale(1197, 300, 3);
    Interval const range = scale.of(Interval{5, 7});
    EXPECT_EQ(range.start, scale.of(5).start);
    EXPECT_EQ(range.start + range.length, scale.of(11).start + scale.of(11).length);
}

TEST(LevelScaleTest, TheLargestSidesDoNotOverflow) {
    constexpr size_t kMost = (size_t{1} << 31) - 1;
    for (size_t const level : {0u, 1u, 15u, 31u})
        for (size_t const file : {kMost, kMost - 1, kMost / 2 + 1, size_t{1} << 20}) {
            LevelScale const scale(kMost, file, level);
            Interval const last = scale.of(scale.samples() - 1);
            EXPECT_EQ(last.start + last.length, file) << level << " " << file;
            EXPECT_EQ(scale.of(0).start, 0u);
        }
}
