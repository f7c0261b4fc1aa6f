#include "host/store/ImportMemory.h"

#include "host/HostError.h"
#include "host/MemoryBudget.h"

#include <algorithm>

namespace {

constexpr std::uint64_t kSampleBytes = sizeof(wavelet53::Sample);
constexpr std::uint64_t kRowsOfALevel = 24; // twelve that it keeps, of two bands each

std::uint64_t tileRowBytes(StoreInfo const& info, Extent const& band) {
    return kSampleBytes * band.width * std::min(info.tileSize, band.height);
}

} // namespace

std::uint64_t importBytes(StoreInfo const& info) {
    std::uint64_t plane = info.residualBits > 0 ? tileRowBytes(info, {info.width, info.height}) : 0;
    for (size_t level = 1; level <= info.levels; ++level) {
        Extent const band = storegeometry::bandExtent(info, level);
        plane += kRowsOfALevel * kSampleBytes * band.width;
        plane += (level == info.levels ? 4 : 3) * tileRowBytes(info, band);
    }
    // A row of the picture, and the row that is being split into planes.
    std::uint64_t const row = info.width * (info.bits / 8 + 2 * kSampleBytes);
    return info.bands * (plane + row);
}

void requireImportMemory(StoreInfo const& info) {
    std::uint64_t const bytes = importBytes(info);
    if (bytes <= memorybudget::kPictureBytes) return;
    throw HostError(HostError::Kind::UnreadableImage,
                    "'" + info.sourceName + "' is " + std::to_string(info.width) +
                        " pixels wide: an import with tiles of " + std::to_string(info.tileSize) +
                        " samples takes about " + memorybudget::toText(bytes) + " of memory, more than the " +
                        memorybudget::toText(memorybudget::kPictureBytes) +
                        " that a picture may take; choose a smaller --tile, or cut it into narrower pictures");
}
