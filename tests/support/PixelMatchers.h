#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// EXPECT_TRUE(pixelsEqual(read(target), expected, widthTexels)). Compares byte for byte; a failure shows the first
/// wrong texel, the texels around it on both sides and the number of wrong bytes.
::testing::AssertionResult pixelsEqual(std::vector<std::uint8_t> const& actual,
                                       std::vector<std::uint8_t> const& expected, size_t widthTexels,
                                       size_t bytesPerTexel = 4);
