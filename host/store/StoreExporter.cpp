#include "host/store/StoreExporter.h"

#include "host/store/ColourPlanes.h"
#include "host/store/StoreMemory.h"
#include "host/store/StoredPlane.h"

#include <array>
#include <cstdio>
#include <deque>

namespace {

// A wide picture of flat parts is a small file: what its rows take is known before any of it is taken.
void requireMemory(TileStore const& store) {
    size_t const needed = storememory::exportBytes(store.info());
    size_t const available = storememory::availableBytes();
    if (needed <= available) return;
    auto const gigabytes = [](size_t bytes) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.1f GB", static_cast<double>(bytes) / 1e9);
        return std::string(text.data());
    };
    throw HostError(HostError::Kind::OutOfMemory, "exporting '" + store.path() + "' may take " + gigabytes(needed) +
                                                      " of memory for rows of " + std::to_string(store.info().width) +
                                                      " pixels, more than the " + gigabytes(available) +
                                                      " that there are; draw parts of it with velmora render");
}

} // namespace

TiffWriter::Format tiffFormatOf(StoreInfo const& info) {
    return {info.width, info.height, info.bands, info.bits, info.micronsPerPixelX, info.micronsPerPixelY};
}

void exportStore(TileStore& store, OutputFile file, ExportProgress const& progress) {
    StoreInfo const& info = store.info();
    file.sources.push_back(store.path());
    requireMemory(store);
    TiffWriter tiff(file, tiffFormatOf(info));
    std::deque<StoredPlane> planes;
    std::deque<TileRowReader> residuals;
    for (size_t plane = 0; plane < info.bands; ++plane) {
        planes.emplace_back(store, plane);
        if (info.residualBits > 0) residuals.emplace_back(store, 0, Band::Residual, plane);
    }
    ColourPlanes colours(info);
    std::vector<std::uint8_t> pixels(info.width * info.bands * info.bits / 8);
    for (size_t y = 0; y < info.height; ++y) {
        progress(y, info.height);
        for (size_t plane = 0; plane < info.bands; ++plane) {
            planes[plane].next(colours.plane(plane));
            if (info.residualBits > 0) residuals[plane].next(colours.residual(plane));
        }
        colours.join(pixels.data());
        tiff.writeRows(pixels.data(), 1);
    }
    progress(info.height, info.height);
    tiff.finish();
}
