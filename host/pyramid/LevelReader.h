#pragma once

#include "host/Geometry.h"
#include "host/HostError.h"
#include "host/image/InputFile.h"
#include "host/image/SampleSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A size in which a file has its picture.
struct PyramidLevel {
    Size size; ///< samples
    Size unit; ///< samples that are decoded at once: a tile or a strip of the file
};

/// What is known of a picture and its levels.
struct PyramidFacts {
    ImageFacts image;                 ///< of the full size
    std::vector<PyramidLevel> levels; ///< the full size first; widths and heights decrease
    /// Pages that hold the picture's bands: planes of each slice at each time, which have equally many bands. The
    /// bands of image.layout are those of one slice at one time.
    ImageStack stack;
    /// Colours are premultiplied by alpha, and samples are left so.
    bool isMultiplied = false;
    std::uint64_t readerBytes = 0; ///< approximate memory of a reader, besides the cache
    std::uint64_t sharedBytes = 0; ///< approximate memory that readers share when all levels have been read, besides it

    size_t planeBands() const { return image.layout.bands / stack.planes; }
    size_t planePixelBytes() const { return image.layout.pixelBytes() / stack.planes; }
};

/// Counts of a reader's work.
struct PyramidStatistics {
    std::uint64_t decodedUnits = 0; ///< tiles and strips of the file
    std::uint64_t decodedBytes = 0; ///< their samples
    std::uint64_t cachedUnits = 0;  ///< taken from the cache
};

/// Whether a level of size `a` may follow one of size `b`: no side is longer, and one is shorter.
bool isSmaller(Size const& a, Size const& b);

/// Throws HostError (unreadable image) if a file that has been opened again has another picture.
void requireSame(std::string const& path, PyramidFacts const& facts, size_t level, ImageFacts const& opened);
/// The failure of requireSame().
HostError changed(std::string const& path);

/// Reads the levels of one kind of file. One thread at a time.
class LevelReader {
public:
    LevelReader() = default;
    LevelReader(LevelReader const&) = delete;
    LevelReader& operator=(LevelReader const&) = delete;
    virtual ~LevelReader() = default;

    /// Reads a region that lies in the level, of one plane, numbered as in TiffStack: all of its bands, interleaved,
    /// rows tightly packed from the top. Throws HostError, and what the check throws; a later read is not affected.
    virtual void read(size_t level, size_t plane, Region const& region, std::uint8_t* samples) = 0;
    virtual void setCheck(InputFile::Check const& check) = 0;
    virtual PyramidStatistics statistics() const = 0;
};

/// A file of one kind, opened. Any thread.
class PyramidFile {
public:
    PyramidFile() = default;
    PyramidFile(PyramidFile const&) = delete;
    PyramidFile& operator=(PyramidFile const&) = delete;
    virtual ~PyramidFile() = default;

    virtual PyramidFacts const& facts() const = 0;
    /// A reader, which keeps what it needs of this object. Throws HostError.
    virtual std::unique_ptr<LevelReader> reader(InputFile::Check const& check) const = 0;
};
