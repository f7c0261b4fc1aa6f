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

std::uint32_t tileHeightOf(Directory const& directory) {
    return directory.tileHeight > 0 ? directory.tileHeight : directory.tile;
}

void setNodata(TIFF* tiff, std::string const& text) {
    constexpr ttag_t kNodata = 42113;
    static std::string name = "GDAL_NODATA";
    TIFFFieldInfo const field{kNodata, -1, -1, TIFF_ASCII, FIELD_CUSTOM, 1, 0, name.data()};
    TIFFMergeFieldInfo(tiff, &field, 1);
    TIFFSetField(tiff, kNodata, text.c_str());
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
    if (directory.photometric == PHOTOMETRIC_YCBCR) {
        int const step = directory.subsampled ? 2 : 1;
        TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, step, step);
    }
    // libtiff takes red, green and blue.
    bool const isJpeg = directory.compression == COMPRESSION_JPEG && directory.photometric == PHOTOMETRIC_YCBCR;
    if (isJpeg) TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (directory.compression == COMPRESSION_WEBP) TIFFSetField(tiff, TIFFTAG_WEBP_LOSSLESS, 1);
    // libtiff takes samples of light as floats.
    if (directory.photometric == PHOTOMETRIC_LOGLUV) TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
    if (directory.inkSet != 0) TIFFSetField(tiff, TIFFTAG_INKSET, directory.inkSet);
    if (!directory.description.empty()) TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, directory.description.c_str());
    if (!directory.software.empty()) TIFFSetField(tiff, TIFFTAG_SOFTWARE, directory.software.c_str());
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
    if (!directory.nodata.empty()) setNodata(tiff, directory.nodata);
    if (!directory.iccProfile.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(directory.iccProfile.size()),
                     directory.iccProfile.data());
    if (directory.subDirectories > 0) {
        std::vector<toff_t> const places(directory.subDirectories);
        TIFFSetField(tiff, TIFFTAG_SUBIFD, directory.subDirectories, places.data());
    }
    if (directory.tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, directory.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, tileHeightOf(directory));
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                     directory.rowsPerStrip > 0 ? directory.rowsPerStrip : directory.height);
    }
}

// Of all bands, or of one plane, from a picture whose rows are whole bytes. Tiles begin at whole bytes too.
void writePlaneOfTiles(TIFF* tiff, Directory const& directory, std::uint16_t plane) {
    size_t const sampleBytes = std::max<size_t>(directory.bits / 8, 1);
    size_t const rowBytes = directory.bytes.size() / directory.height;
    size_t const tileRowBytes = static_cast<size_t>(TIFFTileRowSize(tiff));
    std::vector<std::uint8_t> tile(static_cast<size_t>(TIFFTileSize(tiff)));
    for (std::uint32_t y0 = 0; y0 < directory.height; y0 += tileHeightOf(directory))
        for (std::uint32_t x0 = 0; x0 < directory.width; x0 += directory.tile) {
            std::fill(tile.begin(), tile.end(), std::uint8_t{0xa5});
            size_t const width = std::min(directory.tile, directory.width - x0);
            size_t const height = std::min(tileHeightOf(directory), directory.height - y0);
            for (size_t y = 0; y < height; ++y) {
                std::uint8_t const* const row = &directory.bytes.at((y0 + y) * rowBytes);
                std::uint8_t* const to = &tile[y * tileRowBytes];
                if (!directory.planesApart) {
                    size_t const first = size_t{x0} * directory.bands * directory.bits / 8;
                    std::memcpy(to, row + first, (width * directory.bands * directory.bits + 7) / 8);
                    continue;
                }
                for (size_t x = 0; x < width; ++x)
                    std::memcpy(to + x * sampleBytes, row + ((x0 + x) * directory.bands + plane) * sampleBytes,
                                sampleBytes);
            }
            require(TIFFWriteTile(tiff, tile.data(), x0, y0, 0, plane) >= 0, "a tile cannot be written");
        }
}

void writeTiles(TIFF* tiff, Directory const& directory) {
    std::uint16_t const planes = directory.planesApart ? directory.bands : 1;
    for (std::uint16_t plane = 0; plane < planes; ++plane)
        writePlaneOfTiles(tiff, directory, plane);
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
