#include "host/display/ChannelTable.h"

#include <algorithm>
#include <atomic>
#include <cstddef>

namespace {

constexpr size_t kEntryBytes = 4;
constexpr size_t kAlpha = 3;
constexpr std::uint8_t kOpaque = 255;

std::uint64_t nextKey() {
    static std::atomic<std::uint64_t> next{0};
    return next++;
}

} // namespace

ChannelTable::ChannelTable(Role role) : entries_(SampleCodes::kCodes * kEntryBytes), role_(role), key_(nextKey()) {}

ChannelTable::ChannelTable(SampleCodes const& codes, ColourMap const& colours) : ChannelTable(Role::Added) {
    for (size_t code = 0; code < SampleCodes::kCodes; ++code) {
        auto const brightness = codes.brightness(static_cast<std::uint16_t>(code));
        if (!brightness) continue;
        std::uint8_t* const entry = &entries_[code * kEntryBytes];
        std::copy(colours[*brightness].begin(), colours[*brightness].end(), entry);
        entry[kAlpha] = kOpaque;
    }
}

ChannelTable ChannelTable::alpha(SampleCodes const& codes) {
    ChannelTable table(Role::Alpha);
    for (size_t code = 0; code < SampleCodes::kCodes; ++code)
        table.entries_[code * kEntryBytes + kAlpha] = codes.brightness(static_cast<std::uint16_t>(code)).value_or(0);
    return table;
}

ChannelTable ChannelTable::nothing() {
    return ChannelTable(Role::Added);
}
