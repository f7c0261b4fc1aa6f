#include "host/view/PercentilePoints.h"

#include "host/store/TileStore.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace {

constexpr int kLargestCode = std::numeric_limits<std::uint16_t>::max();

// The given percentile (nearest rank).
std::uint16_t codeAt(std::vector<std::uint16_t>& codes, size_t percent) {
    auto const place = codes.begin() + static_cast<std::ptrdiff_t>((codes.size() - 1) * percent / 100);
    std::nth_element(codes.begin(), place, codes.end());
    return *place;
}

// The low band of the coarsest level keeps the picture's codes, but the wavelet may take some beyond their ends.
std::uint16_t codeOf(std::int16_t sample, size_t residualBits) {
    return static_cast<std::uint16_t>(std::clamp(int{sample} * (1 << residualBits), 0, kLargestCode));
}

} // namespace

PercentilePoints percentilePoints(std::vector<std::uint16_t> codes) {
    if (codes.empty()) return {0, 1};
    std::uint64_t const black = codeAt(codes, 1);
    std::uint64_t const white = codeAt(codes, 99);
    return {black, std::max(white, black + 1)};
}

PercentilePoints percentilePoints(TileStore& store) {
    StoreInfo const& info = store.info();
    Size const tiles = storegeometry::tileCount(info, info.levels);
    // What lies beyond the picture in the band continues it mirrored, and counts like the rest.
    std::vector<std::uint16_t> codes;
    for (size_t row = 0; row < tiles.height; ++row)
        for (size_t column = 0; column < tiles.width; ++column) {
            TileAddress const address{info.levels, Band::LL, 0, column, row};
            Size const filled = storegeometry::filledPart(info, address);
            std::vector<std::int16_t> const samples = store.tile(address);
            for (size_t y = 0; y < filled.height; ++y)
                for (size_t x = 0; x < filled.width; ++x)
                    codes.push_back(codeOf(samples[y * info.tileSize + x], info.residualBits));
        }
    return percentilePoints(std::move(codes));
}
