#include "tests/host/image/TestTiff.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

using testtiff::Directory;

namespace {

void require(bool done, char const* what) {
    if (!done) throw std::runtime_error(what);
}

void setFields(TIFF* tiff, Directory const& directory) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, directory.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, directory.height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, directory.bands);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, directory.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, directory.sampleFormat);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, directory.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, directory.compression);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, directory.orientation);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, directory.planesApart ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (directory.subfileType != 0) TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, directory.subfileType);
    if (directory.photometric == PHOTOMETRIC_YCBCR) TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
    // libtiff takes samples of light as floats.
    if (directory.photometric == PHOTOMETRIC_LOGLUV) TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
    if (directory.inkSet != 0) TIFFSetField(tiff, TIFFTAG_INKSET, directory.inkSet);
    if (!directory.description.empty()) TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, directory.description.c_str());
    if (!directory.extraSamples.empty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, directory.extraSamples.size(), directory.extraSamples.data());
    if (directory.resolutionUnit != 0) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, directory.resolutionUnit);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, directory.xResolution);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, directory.yResolution);
    }
    if (!directory.palette.empty()) {
        size_t const colours = directory.palette.size() / 3;
        std::uint16_t const* const reds = directory.palette.data();
        TIFFSetField(tiff, TIFFTAG_COLORMAP, reds, reds + colours, reds + 2 * colours);
    }
    if (directory.subDirectories > 0) {
        std::vector<toff_t> const places(directory.subDirectories);
        TIFFSetField(tiff, TIFFTAG_SUBIFD, directory.subDirectories, places.data());
    }
    if (directory.tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, directory.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, directory.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                     directory.rowsPerStrip > 0 ? directory.rowsPerStrip : directory.height);
    }
}

void writeTiles(TIFF* tiff, Directory const& directory) {
    size_t const pixelBytes = size_t{directory.bands} * directory.bits / 8;
    std::vector<std::uint8_t> tile(static_cast<size_t>(TIFFTileSize(tiff)));
    for (std::uint32_t y0 = 0; y0 < directory.height; y0 += directory.tile)
        for (std::uint32_t x0 = 0; x0 < directory.width; x0 += directory.tile) {
            size_t const width = std::min(directory.tile, directory.width - x0);
            for (std::uint32_t y = y0; y < std::min(y0 + directory.tile, directory.height); ++y)
                std::memcpy(&tile[(y - y0) * directory.tile * pixelBytes],
                            &directory.bytes.at((y * size_t{directory.width} + x0) * pixelBytes), width * pixelBytes);
            require(TIFFWriteTile(tiff, tile.data(), x0, y0, 0, 0) >= 0, "a tile cannot be written");
        }
}

void writeRows(TIFF* tiff, Directory const& directory) {
    size_t const rowBytes = directory.bytes.size() / directory.height;
    size_t const sampleBytes = std::max<size_t>(directory.bits / 8, 1);
    std::uint16_t const planes = directory.planesApart ? directory.bands : 1;
    for (std::uint16_t plane = 0; plane < planes; ++plane)
        for (std::uint32_t y = 0; y < directory.height; ++y) {
            std::vector<std::uint8_t> row(&directory.bytes[y * rowBytes], &directory.bytes[y * rowBytes] + rowBytes);
            if (directory.planesApart) {
                for (size_t x = 0; x < directory.width; ++x)
                    std::memcpy(&row[x * sampleBytes],
                                &directory.bytes[y * rowBytes + (x * directory.bands + plane) * sampleBytes],
                                sampleBytes);
            }
            require(TIFFWriteScanline(tiff, row.data(), y, plane) == 1, "a row cannot be written");
        }
}

} // namespace

void testtiff::write(std::string const& path, std::vector<Directory> const& directories, std::string const& mode) {
    std::unique_ptr<TIFF, decltype(&TIFFClose)> const tiff(TIFFOpen(path.c_str(), mode.c_str()), TIFFClose);
    require(tiff != nullptr, "no TIFF can be written");
    for (Directory const& directory : directories) {
        setFields(tiff.get(), directory);
        if (directory.tile > 0)
            writeTiles(tiff.get(), directory);
        else
            writeRows(tiff.get(), directory);
        require(TIFFWriteDirectory(tiff.get()) == 1, "a directory cannot be written");
    }
}
