#pragma once

#include "host/pyramid/TiffLayout.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Directories of a TIFF file that are read as a level.
struct TiffLevel {
    std::vector<std::uint64_t> offsets; ///< in the file: that of each plane
    TiffLayout layout;                  ///< of all of them
};

/// Decodes the tiles or strips of one plane of a level. One thread at a time. After a failure it must not be used any
/// more.
class TiffUnits {
public:
    /// Throws HostError (unreadable image), if the file no longer has this level, or another layout of the plane.
    TiffUnits(InputFile& file, TiffLevel const& level, size_t plane, std::optional<double> nodata);

    /// The samples of a unit, of which `shown` pixels lie in the picture. Units that a file leaves out are nodata, if
    /// it states such a sample. Throws HostError, and what the file's check throws.
    std::vector<std::uint8_t> decode(size_t index, Size const& shown);

private:
    // Of a unit in the file.
    struct Place {
        std::uint64_t offset = 0;
        std::uint64_t bytes = 0;

        bool isLeftOut() const { return offset == 0 && bytes == 0; }
    };

    Place placeOf(size_t index) const;
    std::vector<std::uint8_t> blank(size_t pixels) const;
    void decodePlane(size_t index, size_t rows, std::uint8_t* decoded);

    TiffFile tiff_;
    TiffLevel const& level_;
    std::optional<double> nodata_;
    std::vector<std::uint8_t> decoded_;
};
