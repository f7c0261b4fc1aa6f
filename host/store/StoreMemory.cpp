#include "host/store/StoreMemory.h"

#include "host/HostError.h"
#include "host/MemoryBudget.h"

#include <algorithm>

namespace {

constexpr std::uint64_t kSampleBytes = sizeof(wavelet53::Sample);
constexpr std::uint64_t kImportedRows = 24; // rows per level: it keeps twelve of two bands each
constexpr std::uint64_t kExportedRows = 14; // rows per level: six of two bands, and the joiner's even and odd samples

std::uint64_t cutTilesBytes(StoreInfo const& info, Size const& band) {
    return kSampleBytes * band.width * std::min(info.tileSize, band.height);
}

// Counts whole tiles, also if they reach beyond the band.
std::uint64_t readTilesBytes(StoreInfo const& info, size_t level) {
    size_t const rows = std::min(info.tileSize, storegeometry::bandExtent(info, level).height);
    return kSampleBytes * storegeometry::tileCount(info, level).width * info.tileSize * rows;
}

} // namespace

std::uint64_t storememory::importBytes(StoreInfo const& info) {
    std::uint64_t plane = info.residualBits > 0 ? cutTilesBytes(info, {info.width, info.height}) : 0;
    for (size_t level = 1; level <= info.levels; ++level) {
        Size const band = storegeometry::bandExtent(info, level);
        plane += kImportedRows * kSampleBytes * band.width;
        plane += (level == info.levels ? 4 : 3) * cutTilesBytes(info, band);
    }
    // A row of the picture, and the row that is being split into planes.
    std::uint64_t const row = info.width * (info.bits / 8 + 2 * kSampleBytes);
    return info.bands * (plane + row);
}

std::uint64_t storememory::exportBytes(StoreInfo const& info) {
    std::uint64_t const row = info.width * kSampleBytes;
    std::uint64_t plane = row + readTilesBytes(info, info.levels);
    if (info.residualBits > 0) plane += row + readTilesBytes(info, 0);
    for (size_t level = 1; level <= info.levels; ++level) {
        plane += kExportedRows * kSampleBytes * storegeometry::bandExtent(info, level).width;
        plane += 3 * readTilesBytes(info, level);
    }
    return info.bands * (plane + info.width * info.bits / 8);
}

void storememory::requireForImport(StoreInfo const& info) {
    std::uint64_t const bytes = importBytes(info);
    if (bytes <= memorybudget::kPictureBytes) return;
    throw HostError(HostError::Kind::UnreadableImage,
                    "'" + info.sourceName + "' is " + std::to_string(info.width) +
                        " pixels wide: an import with tiles of " + std::to_string(info.tileSize) +
                        " samples takes about " + memorybudget::toText(bytes) + " of memory, more than the " +
                        memorybudget::toText(memorybudget::kPictureBytes) +
                        " that a picture may take; choose a smaller --tile, or cut it into narrower pictures");
}

void storememory::requireForExport(StoreInfo const& info, std::string const& store) {
    std::uint64_t const bytes = exportBytes(info);
    std::uint64_t const available = memorybudget::availableBytes();
    if (bytes <= available) return;
    throw HostError(HostError::Kind::OutOfMemory, "exporting '" + store + "' may take " + memorybudget::toText(bytes) +
                                                      " of memory for rows of " + std::to_string(info.width) +
                                                      " pixels, more than the " + memorybudget::toText(available) +
                                                      " that there are; draw parts of it with velmora render");
}
