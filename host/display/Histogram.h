#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// How often samples of a channel occur: bins of equal width from the smallest to the largest one.
struct Histogram {
    static constexpr size_t kBins = 128;

    double low = 0;  ///< the smallest sample
    double high = 0; ///< the largest
    std::array<std::uint32_t, kBins> counts{};

    /// Of samples that are finite, and not beyond Tone::kFarthest; others do not count. Without any, all is 0.
    static Histogram of(std::vector<double> const& samples);
};
