#include "renderbackend/RadixSort.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

namespace {

struct Item {
    std::uint64_t key;
    size_t index;
};

// Many items of keys that repeat; the first two are not in order.
std::vector<Item> shuffled(unsigned bits) {
    constexpr size_t kItems = 5000;
    std::mt19937_64 random(bits);
    std::uint64_t const most = bits == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
    std::vector<Item> items = {{most, 0}, {0, 1}};
    while (items.size() < kItems)
        items.push_back({random() % 5 == 0 ? items.back().key : random() & most, items.size()});
    return items;
}

TEST(RadixSortTest, SignificantBitsAreCountedFromTheHighestThatIsSet) {
    EXPECT_EQ(significantBits(0), 0U);
    for (unsigned bits = 1; bits <= 32; ++bits) {
        auto const most = static_cast<std::uint32_t>((std::uint64_t{1} << bits) - 1);
        EXPECT_EQ(significantBits(most), bits);
        EXPECT_EQ(significantBits(most / 2 + 1), bits);
    }
}

TEST(RadixSortTest, ItemsOfOneKeyKeepTheirOrder) {
    for (unsigned bits = 1; bits <= 64; ++bits) {
        std::vector<Item> sorted = shuffled(bits);
        radixSort(sorted, bits, [](Item const& item) { return item.key; });
        for (size_t i = 1; i < sorted.size(); ++i) {
            Item const& before = sorted[i - 1];
            Item const& after = sorted[i];
            ASSERT_TRUE(before.key < after.key || (before.key == after.key && before.index < after.index))
                << bits << " bits, item " << i;
        }
    }
}

// Each pass asks once for the key of each item, and so does the counting before them; the two first items show that
// sorting is needed.
TEST(RadixSortTest, APassOverTheItemsSortsElevenBits) {
    for (auto const& [bits, passes] : {std::pair{1U, 1U}, {11U, 1U}, {12U, 2U}, {22U, 2U}, {23U, 3U}, {64U, 6U}}) {
        std::vector<Item> items = shuffled(bits);
        size_t asked = 0;
        radixSort(items, bits, [&asked](Item const& item) {
            ++asked;
            return item.key;
        });
        EXPECT_EQ(asked, 2 + (passes + 1) * items.size()) << bits << " bits";
    }
}

} // namespace
