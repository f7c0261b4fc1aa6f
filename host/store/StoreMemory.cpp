#include "host/store/StoreMemory.h"

#include <algorithm>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr std::size_t kSampleBytes = sizeof(wavelet53::Sample);
// LevelInverse: six rows of two bands, and the joiner's even and odd samples.
constexpr std::size_t kRowsOfALevel = 14;

std::size_t tileRowBytes(StoreInfo const& info, std::size_t level) {
    Extent const extent = storegeometry::bandExtent(info, level);
    std::size_t const columns = storegeometry::tileCount(info, level).width;
    return columns * info.tileSize * std::min(info.tileSize, extent.height) * kSampleBytes;
}

std::size_t planeBytes(StoreInfo const& info) {
    std::size_t bytes = info.width * kSampleBytes + tileRowBytes(info, info.levels);
    if (info.residualBits > 0) bytes += info.width * kSampleBytes + tileRowBytes(info, 0);
    for (std::size_t level = 1; level <= info.levels; ++level)
        bytes +=
            kRowsOfALevel * storegeometry::bandExtent(info, level).width * kSampleBytes + 3 * tileRowBytes(info, level);
    return bytes;
}

} // namespace

std::size_t storememory::exportBytes(StoreInfo const& info) {
    return info.bands * planeBytes(info) + info.width * info.bands * info.bits / 8;
}

std::size_t storememory::availableBytes() {
    auto const machine =
        static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    return limit.rlim_cur == RLIM_INFINITY ? machine : std::min<std::size_t>(machine, limit.rlim_cur);
}
