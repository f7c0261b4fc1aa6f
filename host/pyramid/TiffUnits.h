#pragma once

#include "host/pyramid/TiffLayout.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// A directory of a TIFF file that is read as a level.
struct TiffLevel {
    std::uint64_t offset = 0; ///< of the directory in the file
    TiffLayout layout;
};

/// Decodes the tiles or strips of one level. One thread at a time. After a failure it must not be used any more.
class TiffUnits {
public:
    /// Throws HostError (unreadable image), if the file no longer has this level.
    TiffUnits(InputFile& file, TiffLevel const& level, std::optional<double> nodata);

    /// The samples of a unit, of which `shown` pixels lie in the picture. Units that a file leaves out are nodata, if
    /// it states such a sample. Throws HostError, and what the file's check throws.
    std::vector<std::uint8_t> decode(size_t index, Size const& shown);

private:
    bool isLeftOut(size_t index) const;
    std::vector<std::uint8_t> blank(size_t pixels) const;
    void decodePlane(size_t index, size_t rows, std::uint8_t* decoded);

    TiffFile tiff_;
    TiffLevel const& level_;
    std::optional<double> nodata_;
    std::vector<std::uint8_t> decoded_;
};
