#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// TIFF files with any directories, written with libtiff.
namespace testtiff {

struct Directory {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bands = 1;
    std::uint16_t bits = 8;
    std::uint16_t sampleFormat = 1;  ///< 1 unsigned, 2 signed, 3 float
    std::uint16_t photometric = 1;   ///< 1: 0 is black; 2: RGB
    std::vector<std::uint8_t> bytes; ///< interleaved samples in the machine's byte order, rows of whole bytes
    std::vector<std::uint16_t> extraSamples;
    std::uint32_t subfileType = 0;
    std::uint16_t orientation = 1;
    std::uint16_t compression = 1;
    std::uint32_t tile = 0;         ///< width of tiles; 0: strips
    std::uint32_t tileHeight = 0;   ///< 0: as their width
    std::uint32_t rowsPerStrip = 0; ///< 0: all
    bool planesApart = false;
    std::uint16_t resolutionUnit = 0; ///< 0: no resolution; 1: none, 2: inch, 3: centimetre
    double xResolution = 0;
    double yResolution = 0;
    std::string description;
    std::string software;
    std::vector<std::uint16_t> palette; ///< reds, greens, blues
    std::uint16_t inkSet = 0;
    std::string nodata;                   ///< text of GDAL's tag; empty: none
    std::vector<std::uint8_t> iccProfile; ///< empty: none
    bool subsampled = false;              ///< half as many samples of colour, if they are YCbCr
    std::uint16_t subDirectories = 0;     ///< number of following directories that are sub-directories of this one
};

/// A directory of samples of one type.
template <class Sample>
Directory directory(std::uint32_t width, std::uint32_t height, std::uint16_t bands,
                    std::vector<Sample> const& samples) {
    Directory made;
    made.width = width;
    made.height = height;
    made.bands = bands;
    made.bits = 8 * sizeof(Sample);
    made.sampleFormat = Sample(0.5) > 0 ? 3 : Sample(-1) < 0 ? 2 : 1;
    made.photometric = bands >= 3 ? 2 : 1;
    auto const* const first = reinterpret_cast<std::uint8_t const*>(samples.data());
    made.bytes.assign(first, first + samples.size() * sizeof(Sample));
    return made;
}

/// `mode`: libtiff's: "w", "w8" for BigTIFF, "wb" for big-endian.
void write(std::string const& path, std::vector<Directory> const& directories, std::string const& mode = "w");

} // namespace testtiff
