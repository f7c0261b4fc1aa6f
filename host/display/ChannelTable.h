#pragma once

#include "host/display/ColourMap.h"
#include "host/display/SampleCodes.h"

#include <cstdint>
#include <vector>

/// What each code of a channel shows: 65536 RGBA entries. Where a code shows nothing, all four bytes are 0.
class ChannelTable {
public:
    enum class Role {
        Added, ///< its colours are added to other channels'
        Alpha  ///< limits their alpha
    };

    /// A channel of colours: each code has that of its brightness, and alpha 255.
    ChannelTable(SampleCodes const& codes, ColourMap const& colours);
    /// The alpha of other channels: the brightness, and no colour.
    static ChannelTable alpha(SampleCodes const& codes);
    /// Of a channel that is not there: nothing is added.
    static ChannelTable nothing();

    std::vector<std::uint8_t> const& entries() const { return entries_; }
    Role role() const { return role_; }
    /// Unequal for tables that were made by different calls.
    std::uint64_t key() const { return key_; }

private:
    explicit ChannelTable(Role role);

    std::vector<std::uint8_t> entries_;
    Role role_;
    std::uint64_t key_;
};
