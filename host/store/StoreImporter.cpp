#include "host/store/StoreImporter.h"

#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/Threads.h"
#include "host/image/PixelBands.h"
#include "host/image/PixelSource.h"
#include "host/store/ColourPlanes.h"
#include "host/store/CompressionPool.h"
#include "host/store/PlaneTransform.h"
#include "host/store/StoreMemory.h"
#include "host/store/TileStoreFormat.h"
#include "host/store/TileStoreWriter.h"

#include <algorithm>
#include <deque>
#include <sstream>

namespace {

constexpr size_t kStripBytes = 8 * 1024 * 1024;
constexpr size_t kMaxStripRows = 128;
constexpr double kMicronsPerMillimetre = 1000;

constexpr size_t kMaxNameBytes = 1024;

// 0 if it is unknown, or if no store can hold it.
double micronsPerPixel(double pixelsPerMillimetre) {
    if (!(pixelsPerMillimetre > 0)) return 0;
    double const microns = kMicronsPerMillimetre / pixelsPerMillimetre;
    return microns <= StoreInfo::kMaxMicronsPerPixel ? microns : 0;
}

// Whether it is neither "unknown" nor a value that a store can hold.
bool isNonsense(double pixelsPerMillimetre) {
    return pixelsPerMillimetre != 0 && micronsPerPixel(pixelsPerMillimetre) == 0;
}

void tellOfNonsense(PixelSource const& source, ImportOptions const& options) {
    double const x = source.pixelsPerMillimetreX();
    double const y = source.pixelsPerMillimetreY();
    if (!options.note || !(isNonsense(x) || isNonsense(y))) return;
    std::ostringstream line;
    line << "the resolution of '" << plainText(options.sourceName, kMaxNameBytes) << "', " << x << " x " << y
         << " pixels a millimetre, cannot be; the store says that it is not known";
    options.note(line.str());
}

void tellOfLost(PixelSource const& source, ImportOptions const& options) {
    PixelSource::Lost const lost = source.lost();
    if (!options.note || !lost.any()) return;
    std::string line = "'" + plainText(options.sourceName, kMaxNameBytes) + "': ";
    if (lost.clipped > 0) line += counted(lost.clipped, "sample") + " beyond the range clipped";
    if (lost.clipped > 0 && lost.notNumbers > 0) line += ", ";
    if (lost.notNumbers > 0)
        line += counted(lost.notNumbers, "sample") + (lost.notNumbers == 1 ? " that is" : " that are") +
                " no number made 0";
    options.note(line);
}

StoreInfo infoOf(PixelSource& source, ImportOptions const& options, size_t residualBits) {
    StoreInfo info;
    info.width = source.width();
    info.height = source.height();
    info.bands = source.bands();
    info.bits = 8 * source.sampleBytes();
    info.residualBits = residualBits;
    info.tileSize = options.tileSize;
    info.levels = options.levels.value_or(storegeometry::autoLevels(info.width, info.height, info.tileSize));
    info.micronsPerPixelX = micronsPerPixel(source.pixelsPerMillimetreX());
    info.micronsPerPixelY = micronsPerPixel(source.pixelsPerMillimetreY());
    info.sourceName = plainText(options.sourceName, kMaxNameBytes);
    info.interpretation = pixelbands::toText(info.bands);
    auto const selection = source.selection();
    info.selection = selection.text;
    info.rangeLow = selection.rangeLow;
    info.rangeHigh = selection.rangeHigh;
    return info;
}

// Takes the samples from the picture's rows into the file. Only the calling thread writes to the file.
class Import {
public:
    Import(OutputFile const& file, StoreInfo const& info, std::vector<MetadataItem> const& metadata, size_t jobs)
        : info_(info), writer_(file, info, metadata), pool_(info, jobs), planes_(info) {
        auto const sink = [this](RawTile&& tile) { put(std::move(tile)); };
        for (size_t plane = 0; plane < info.bands; ++plane) {
            transforms_.emplace_back(info, plane, sink);
            if (info.residualBits > 0) residuals_.emplace_back(info, 0, Band::Residual, plane, sink);
        }
    }

    void run(PixelSource& source, Progress const& progress) {
        size_t const rowBytes = info_.width * info_.bands * info_.bits / 8;
        size_t const stripRows = std::clamp<size_t>(kStripBytes / rowBytes, 1, kMaxStripRows);
        std::vector<std::uint8_t> pixels;
        for (size_t y = 0; y < info_.height; y += stripRows) {
            progress(y, info_.height);
            size_t const rows = std::min(stripRows, info_.height - y);
            source.read({0, y, info_.width, rows}, pixels);
            for (size_t row = 0; row < rows; ++row)
                pushRow(&pixels[row * rowBytes]);
        }
        write(pool_.finish());
        progress(info_.height, info_.height);
        writer_.finish();
    }

private:
    void pushRow(std::uint8_t const* pixels) {
        planes_.split(pixels);
        for (size_t plane = 0; plane < info_.bands; ++plane) {
            transforms_[plane].push(planes_.plane(plane));
            if (info_.residualBits > 0) residuals_[plane].push(planes_.residual(plane));
        }
    }

    void put(RawTile&& tile) {
        pool_.add(std::move(tile));
        write(pool_.take());
    }

    void write(std::vector<StoredTile> const& tiles) {
        for (StoredTile const& tile : tiles)
            writer_.write(tile);
    }

    StoreInfo info_;
    TileStoreWriter writer_;
    CompressionPool pool_;
    ColourPlanes planes_;
    std::deque<PlaneTransform> transforms_;
    std::deque<TileRowWriter> residuals_;
};

// What a store has room for.
std::vector<MetadataItem> keptMetadata(PixelSource& source, ImportOptions const& options) {
    PictureMetadata found = source.metadata();
    size_t const most = storeformat::kMaxItems;
    auto const isTooLong = [](MetadataItem const& item) {
        return item.name.size() > storeformat::kMaxItemNameBytes || item.bytes.size() > storeformat::kMaxItemBytes;
    };
    std::vector<MetadataItem> kept;
    for (MetadataItem& item : found.items) {
        if (kept.size() < most && !isTooLong(item))
            kept.push_back(std::move(item));
        else
            found.leftOut.push_back("a store has no room for the " + item.kind + " '" +
                                    plainText(item.name, kMaxNameBytes) + "'; it is left out");
    }
    for (std::string const& line : found.leftOut)
        if (options.note) options.note(line);
    return kept;
}

void requireSize(PixelSource const& source) {
    if (source.width() > StoreInfo::kMaxSide || source.height() > StoreInfo::kMaxSide)
        throw HostError(HostError::Kind::UnreadableImage, "the picture is too large: a tile store has up to " +
                                                              std::to_string(StoreInfo::kMaxSide) +
                                                              " pixels per side; import a part of it");
}

} // namespace

StoreInfo importStore(PictureOpener const& open, std::string const& path, ImportOptions const& options,
                      Progress const& progress) {
    OutputFile file(path);
    file.replace = options.replace;
    file.sources = options.sources;
    requireUsable(file);
    auto source = open();
    requireSize(*source);
    tellOfNonsense(*source, options);
    std::vector<MetadataItem> const metadata = keptMetadata(*source, options);
    std::deque<size_t> residualBits = source->sampleBytes() == 2 ? std::deque<size_t>{3, 5} : std::deque<size_t>{0};
    while (true) {
        StoreInfo info = infoOf(*source, options, residualBits.front());
        residualBits.pop_front();
        storememory::requireForImport(info);
        try {
            Import(file, info, metadata, threadsFor(options.jobs)).run(*source, progress);
            tellOfLost(*source, options);
            return info;
        } catch (CoefficientOverflow const&) {
            if (residualBits.empty()) throw;
        }
        source = open();
    }
}
