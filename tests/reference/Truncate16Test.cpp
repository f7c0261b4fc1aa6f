#include "reference/Truncate16.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

struct Row {
    char const* name;
    std::int32_t value;
    std::uint64_t bits;
    bool rounding;
    std::int32_t result;
};

TEST(Truncate16Test, WorkedValues) {
    Row const rows[] = {
        {"rounding adds 7 to 32", 37, 4, true, 39},
        {"negative values mirror", -37, 4, true, -39},
        {"zero gets no constant", 5, 4, true, 0},
        {"negative zero gets no constant", -5, 4, true, 0},
        {"no flag, no constant", 37, 4, false, 32},
        {"negative goes towards zero", -37, 4, false, -32},
        {"one bit has constant 0", 7, 1, true, 6},
        {"15 bits of the smallest", -32768, 15, false, -32768},
        {"15 bits with rounding leave 16 bits", -32768, 15, true, -49151},
        {"15 bits of the largest", 32767, 15, true, 0},
        {"16 bits clear everything", -32768, 16, true, 0},
        {"63 bits clear everything", 32767, 63, true, 0},
        {"64 bits count as 0", 12345, 64, true, 12345},
        {"68 bits count as 4", 37, 68, true, 39},
    };
    for (Row const& row : rows)
        EXPECT_EQ(truncate16(row.value, row.bits, row.rounding), row.result) << row.name;
}

TEST(Truncate16Test, ZeroBitsLeaveEveryValue) {
    for (std::int32_t value = -32768; value <= 32767; ++value) {
        ASSERT_EQ(truncate16(value, 0, true), value);
        ASSERT_EQ(truncate16(value, 0, false), value);
    }
}

TEST(Truncate16Test, MagnitudesLoseTheirLowBitsAndSignsMirror) {
    for (std::uint64_t bits = 0; bits <= 15; ++bits) {
        for (std::int32_t value = 0; value <= 32767; ++value) {
            auto const kept = static_cast<std::int32_t>((static_cast<std::uint32_t>(value) >> bits) << bits);
            ASSERT_EQ(truncate16(value, bits, false), kept) << bits;
            ASSERT_EQ(truncate16(-value, bits, false), -kept) << bits;
            std::int32_t const half = bits == 0 ? 0 : (1 << (bits - 1)) - 1;
            ASSERT_EQ(truncate16(-value, bits, true), kept == 0 ? 0 : -(kept + half)) << bits;
        }
    }
}

TEST(Truncate16Test, ResultBeyondSixteenBitsLeavesModulo65536) {
    Texels const out = truncate16(packOneChannel16(Plane(2, 1, {-32768, 37})), 15, true);
    EXPECT_EQ(out, Texels(1, 1, {1, 64, 0, 0})); // 65536 - 49151 = 16385 = 0x4001
}

} // namespace
