#pragma once

#include "host/image/ImageSelection.h"
#include "host/pyramid/PyramidReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// A picture file, shown by the levels that it has: opening it decodes nothing but headers. Samples keep their values
/// and their type, whichever it is.
///
///     TIFF, BigTIFF, COG, OME-TIFF    libtiff, tile by tile; levels are reduced copies (pages or sub-directories), or
///                                     pages of decreasing size
///     slides                          OpenSlide's levels
///     JPEG 2000                       the resolutions of its wavelet
///     JPEG                            1/2, 1/4 and 1/8 as the decoder gives them; each is decoded once, into memory
///     tile stores                     the levels of their wavelet, rebuilt tile by tile
///     all others                      decoded once, into memory, by the first reader
///
/// Any thread, also several at once.
class Pyramid {
public:
    /// Made by openPyramid().
    Pyramid(std::string path, std::shared_ptr<PyramidFile const> file, ImageSelection const& selection);

    std::string const& path() const { return path_; }
    /// Of the selected bands.
    PyramidFacts const& facts() const { return *facts_; }
    /// The orientation of the file's pixels, of which upright ones were made; 1: none were.
    int orientation() const { return taking_.orientation; }
    /// A reader, independent of others and of the life of this object. Throws HostError.
    std::unique_ptr<PyramidReader> reader(InputFile::Check const& check = {}) const;
    /// The same of colours as they lie in the file.
    std::unique_ptr<PyramidReader> ownColours(InputFile::Check const& check = {}) const;

private:
    std::string path_;
    std::shared_ptr<PyramidFile const> file_;
    PyramidTaking taking_;
    std::shared_ptr<PyramidFacts const> facts_;
};

struct PyramidOptions {
    /// Page, bands, conversions to sRGB and orientation; without a page the first one is taken. A range is not applied.
    ImageSelection selection;
    std::uint64_t memoryBytes = 256'000'000; ///< that the samples of a level may take which is decoded as a whole
    size_t cacheBytes = size_t{64} << 20;    ///< of decoded tiles of the file, which all readers share
    InputFile::Check check = {};             ///< called now and then while the file is opened
};

struct PyramidOpening {
    std::unique_ptr<Pyramid> pyramid;
    /// Without a pyramid: why the file cannot be shown before it has been imported; a clause for a user.
    std::string reason;
};

/// Opens a picture file. There is no pyramid if its smallest level takes more than memoryBytes. Throws HostError:
/// missing file; unreadable image; of a store what TileStore throws; usage, if the file lacks what is selected.
PyramidOpening openPyramid(std::string const& path, PyramidOptions const& options = {});
