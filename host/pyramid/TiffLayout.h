#pragma once

#include "host/image/SampleSource.h"
#include "host/image/TiffDirectory.h"
#include "host/image/TiffFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// How one directory of a TIFF file keeps its samples, and which samples they become.
struct TiffLayout {
    SampleFormat samples; ///< decoded
    Size unit;            ///< pixels of a tile; of a strip, but for the last one
    Size units;           ///< their number along both axes
    bool tiled = false;
    bool planesApart = false;
    bool inverted = false;             ///< 0 is white
    bool toRgb = false;                ///< libtiff's JPEG decoder converts YCbCr
    size_t bits = 0;                   ///< of a sample in the file
    size_t bands = 0;                  ///< of the file: 1 for a palette
    std::vector<std::uint8_t> palette; ///< samples.bands bytes per index

    /// Of the current directory; empty if its samples are not decoded here. Sizes are within bounds, but the file need
    /// not hold them.
    static std::optional<TiffLayout> of(TiffFile const& tiff, TiffDirectory const& directory);

    /// Bytes of a row of a unit as libtiff decodes it: of all bands, or of one if planes are apart.
    size_t rowBytes() const { return (unit.width * (planesApart ? 1 : bands) * bits + 7) / 8; }
    /// Whether libtiff's bytes are the samples.
    bool isPlain() const { return bits >= 8 && palette.empty() && !inverted && !planesApart; }
    /// Decoded rows of a unit (of one band, if planes are apart) as samples of whole pixels.
    void expand(std::uint8_t const* decoded, size_t rows, size_t band, std::uint8_t* to) const;

    bool operator==(TiffLayout const& other) const;

private:
    void expandIndices(std::uint8_t const* decoded, size_t rows, std::uint8_t* to) const;
};
