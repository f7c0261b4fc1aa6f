#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// 0 for 0, else the position of the highest set bit, counted from 1.
inline unsigned significantBits(std::uint32_t value) {
    unsigned bits = 0;
    while (bits < 32 && value >> bits != 0)
        ++bits;
    return bits;
}

/// Sorts by an unsigned 64-bit key of which only the low `bits` bits may be set: a comparison sort for few items, else
/// LSD radix sort, with one pass over the items per 11 bits. Internal to this library.
template <class Item, class KeyOf>
void radixSort(std::vector<Item>& items, unsigned bits, KeyOf const& keyOf) {
    constexpr unsigned kMaxDigitBits = 11; // 2048 counters fit in the L1 cache
    constexpr unsigned kMaxDigits = (64 + kMaxDigitBits - 1) / kMaxDigitBits;
    constexpr size_t kFewItems = 1024; // below this the counters cost more than the comparisons

    auto const before = [&keyOf](Item const& a, Item const& b) { return keyOf(a) < keyOf(b); };
    if (std::is_sorted(items.begin(), items.end(), before)) return;
    if (items.size() < kFewItems) {
        std::sort(items.begin(), items.end(), before);
        return;
    }
    // At least one, because different keys have a bit set.
    unsigned const digits = std::max(1U, (bits + kMaxDigitBits - 1) / kMaxDigitBits);
    unsigned const digitBits = (bits + digits - 1) / digits;
    std::uint64_t const digitMask = (std::uint64_t{1} << digitBits) - 1;

    std::array<std::vector<size_t>, kMaxDigits> positions; // first the number of items with a digit, then its position
    for (unsigned digit = 0; digit < digits; ++digit)
        positions[digit].assign(digitMask + 1, 0);
    for (Item const& item : items) {
        std::uint64_t key = keyOf(item);
        for (unsigned digit = 0; digit < digits; ++digit, key >>= digitBits)
            ++positions[digit][key & digitMask];
    }
    std::vector<Item> scattered(items.size());
    for (unsigned digit = 0; digit < digits; ++digit) {
        size_t start = 0;
        for (size_t& position : positions[digit]) {
            size_t const count = position;
            position = start;
            start += count;
        }
        for (Item const& item : items)
            scattered[positions[digit][keyOf(item) >> digit * digitBits & digitMask]++] = item;
        items.swap(scattered);
    }
}
