#include "host/pyramid/TiffUnits.h"

#include "host/image/NodataSample.h"
#include "host/pyramid/LevelReader.h"

#include <cstring>

namespace {

// The header is read with the directory, and values of tile tables on demand: a picture may have millions of tiles.
constexpr auto kMode = "rhmDOC";

} // namespace

TiffUnits::TiffUnits(InputFile& file, TiffLevel const& level, size_t plane, std::optional<double> nodata)
    : tiff_(file, kMode), level_(level), nodata_(nodata) {
    if (TIFFSetSubDirectory(tiff_.get(), level.offsets[plane]) != 1) throw tiff_.failure();
    auto const layout = TiffLayout::of(tiff_, TiffDirectory::current(tiff_));
    file.rethrow();
    if (layout && *layout == level.layout) return;
    if (plane == 0) throw changed(file.path());
    throw imageNotRead(file.path(), "its pages keep their samples in different ways; choose one with --page N");
}

std::vector<std::uint8_t> TiffUnits::decode(size_t index, Size const& shown) {
    TiffLayout const& layout = level_.layout;
    size_t const rows = shown.height;
    if (nodata_ && placeOf(index).isLeftOut()) return blank(shown.width * rows);
    // Rows of a tile below the picture are decoded too.
    size_t const decodedRows = layout.tiled ? layout.unit.height : rows;
    std::vector<std::uint8_t> samples(layout.unit.width * decodedRows * layout.samples.pixelBytes());
    size_t const planes = layout.planesApart ? layout.bands : 1;
    for (size_t plane = 0; plane < planes; ++plane) {
        size_t const number = plane * layout.units.width * layout.units.height + index;
        if (layout.isPlain()) {
            decodePlane(number, decodedRows, samples.data());
            continue;
        }
        decoded_.resize(layout.rowBytes() * decodedRows);
        decodePlane(number, decodedRows, decoded_.data());
        layout.expand(decoded_.data(), decodedRows, plane, samples.data());
    }
    size_t const pixelBytes = layout.samples.pixelBytes();
    // Columns of a tile beside the picture go.
    if (shown.width < layout.unit.width)
        for (size_t row = 1; row < rows; ++row)
            std::memmove(&samples[row * shown.width * pixelBytes], &samples[row * layout.unit.width * pixelBytes],
                         shown.width * pixelBytes);
    samples.resize(shown.width * rows * pixelBytes);
    return samples;
}

TiffUnits::Place TiffUnits::placeOf(size_t index) const {
    auto const unit = static_cast<std::uint32_t>(index);
    Place place;
    int failed = 0;
    place.offset = TIFFGetStrileOffsetWithErr(tiff_.get(), unit, &failed);
    if (failed == 0) place.bytes = TIFFGetStrileByteCountWithErr(tiff_.get(), unit, &failed);
    if (failed != 0) throw tiff_.failure();
    return place;
}

std::vector<std::uint8_t> TiffUnits::blank(size_t pixels) const {
    SampleFormat const& format = level_.layout.samples;
    std::vector<std::uint8_t> const one =
        nodatasample::bytesOf(*nodata_, format.type).value_or(std::vector<std::uint8_t>(bytesOf(format.type)));
    std::vector<std::uint8_t> samples(pixels * format.pixelBytes());
    for (size_t at = 0; at < samples.size(); at += one.size())
        std::memcpy(&samples[at], one.data(), one.size());
    return samples;
}

void TiffUnits::decodePlane(size_t index, size_t rows, std::uint8_t* decoded) {
    auto const number = static_cast<std::uint32_t>(index);
    auto const bytes = static_cast<tmsize_t>(level_.layout.rowBytes() * rows);
    tiff_.file().check();
    tiff_.message().clear();
    // libtiff would read what is not compressed from any offset, also from 0, where the header lies.
    Place const place = placeOf(index);
    if (place.offset == 0 || place.bytes == 0) throw unreadableImage(tiff_.file().path(), "it leaves out a tile");
    tmsize_t const got = level_.layout.tiled ? TIFFReadEncodedTile(tiff_.get(), number, decoded, bytes)
                                             : TIFFReadEncodedStrip(tiff_.get(), number, decoded, bytes);
    tiff_.file().rethrow();
    bool const isWhole = got == bytes && *tiff_.message().text() == 0;
    if (isWhole && *tiff_.message().warning() == 0) return;
    char const* const reason = *tiff_.message().text() != 0 ? tiff_.message().text() : tiff_.message().warning();
    throw unreadableImage(tiff_.file().path(), *reason != 0 ? reason : "a tile ends before its samples do");
}
