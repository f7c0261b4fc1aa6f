#include "host/store/StoreExporter.h"

#include "host/store/ColourPlanes.h"
#include "host/store/PlaneInverse.h"
#include "host/store/StoreMemory.h"

#include <deque>

TiffWriter::Format tiffFormatOf(StoreInfo const& info) {
    return {info.width, info.height, info.bands, info.bits, info.micronsPerPixelX, info.micronsPerPixelY};
}

void exportStore(TileStore& store, OutputFile file, Progress const& progress) {
    StoreInfo const& info = store.info();
    file.sources.push_back(store.path());
    storememory::requireForExport(info, store.path());
    TiffWriter tiff(file, tiffFormatOf(info));
    std::deque<PlaneInverse> planes;
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
