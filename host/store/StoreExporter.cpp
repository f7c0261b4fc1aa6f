#include "host/store/StoreExporter.h"

#include "host/store/ColourPlanes.h"
#include "host/store/ExportedTags.h"
#include "host/store/PlaneInverse.h"
#include "host/store/StoreMemory.h"

#include <algorithm>
#include <deque>
#include <utility>

TiffWriter::Format tiffFormatOf(StoreInfo const& info, std::vector<MetadataItem> const& metadata) {
    TiffWriter::Format format;
    format.width = info.width;
    format.height = info.height;
    format.bands = info.bands;
    format.bits = info.bits;
    format.micronsPerPixelX = info.micronsPerPixelX;
    format.micronsPerPixelY = info.micronsPerPixelY;
    format.tags = exportedTags(metadata, info);
    size_t pixels = 0;
    for (MetadataItem const& item : metadata) {
        if (item.kind != picturemetadata::kImage) continue;
        auto picture = smallpicture::fromPng(item.bytes, smallpicture::kMostPixels - pixels);
        if (!picture) continue;
        pixels += picture->size.width * picture->size.height;
        format.others.push_back({item.name, std::move(*picture)});
    }
    return format;
}

size_t exportStore(TileStore& store, OutputFile file, Progress const& progress, size_t jobs) {
    StoreInfo const& info = store.info();
    file.sources.push_back(store.path());
    storememory::requireForExport(info, store.path());
    auto const metadata = store.allMetadata();
    TiffWriter::Format const format = tiffFormatOf(info, metadata);
    TiffWriter tiff(file, format, jobs);
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
    auto const isImage = [](MetadataItem const& item) { return item.kind == picturemetadata::kImage; };
    auto const images = std::count_if(metadata.begin(), metadata.end(), isImage);
    return static_cast<size_t>(images) - format.others.size();
}
