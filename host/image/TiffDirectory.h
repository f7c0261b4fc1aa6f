#pragma once

#include "host/image/SampleSource.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class TiffFile;

/// Whether a file begins as TIFF or BigTIFF files do.
bool isTiff(InputFile& file);

/// The directories of a TIFF file.
struct TiffChain {
    /// Planes of one picture are of one kind.
    struct Kind {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint16_t bands = 0;
        std::uint16_t bits = 0; ///< of a sample
        std::uint16_t sampleFormat = 0;
        std::uint16_t photometric = 0;

        bool operator==(Kind const& other) const;
    };

    struct Entry {
        std::uint64_t offset = 0; ///< in the file
        std::uint32_t subfileType = 0;
        Kind kind;
        std::vector<std::uint64_t> subDirectories; ///< offsets

        bool isReduced() const; ///< a smaller copy of another picture, or a picture beside it
        bool isBeside() const;  ///< a label or the whole glass, as slide scanners mark them
        bool isMask() const;
    };

    std::vector<Entry> entries; ///< as they follow one another
    std::vector<size_t> pages;  ///< indices of those that are no reduced-size copies of others

    /// From the first directory on, which must be the current one. Throws HostError (unreadable image).
    static TiffChain read(TiffFile const& tiff);
};

/// The properties of the picture in one directory of a TIFF file that libvips does not report.
struct TiffDirectory {
    size_t index = 0;              ///< in the file, from 0
    std::uint64_t offset = 0;      ///< in the file
    size_t pages = 1;              ///< directories that are no reduced-size copies of others
    std::uint16_t photometric = 0; ///< meaning of the samples
    std::uint16_t compression = 1;
    std::uint16_t colourBands = 0; ///< bands before the extra samples, after decoding: 3 for a palette
    std::uint16_t extraBands = 0;
    bool hasAlpha = false;      ///< the first extra band is marked as alpha
    bool isMultiplied = false;  ///< colours are premultiplied by it
    bool roundsPalette = false; ///< a palette has colours that 8 bits cannot hold
    std::string colourSpace;    ///< if neither grey nor RGB
    bool convertible = false;   ///< libvips can convert it to sRGB
    bool tiled = false;
    std::uint64_t heldBytes = 0;     ///< decoder's buffers, and what libvips keeps of them
    double pixelsPerMillimetreX = 0; ///< 0: unknown
    double pixelsPerMillimetreY = 0;
    std::string description;
    std::vector<ImageProperty> properties;
    std::optional<double> nodata;              ///< GDAL's tag
    std::optional<ImageStack> stack;           ///< of the pages, if none was asked for
    std::vector<std::uint64_t> multipliedTags; ///< offsets in the file of the bytes that state isMultiplied

    /// Throws HostError (unreadable image; usage, if there is no such page).
    static TiffDirectory read(InputFile& file, SampleRequest const& request);
    /// Of the current directory: `index`, `offset`, `pages` and `stack` are left out. Throws HostError (unreadable
    /// image).
    static TiffDirectory current(TiffFile const& tiff);
};
