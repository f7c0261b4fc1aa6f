#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

class InputFile;

/// The bytes of a TIFF, or of an EXIF block, which is built as one.
struct TiffBytes {
    std::uint64_t size = 0;
    /// Reads `count` bytes that lie below `size`; may throw.
    std::function<void(std::uint64_t offset, void* bytes, size_t count)> read;

    static TiffBytes of(InputFile& file);
    /// Of an EXIF block, with or without its marker. The block has to live as long.
    static TiffBytes of(std::vector<std::uint8_t> const& exif);
};

/// A tag and its values, independent of the file's byte order.
struct TiffTag {
    /// Its number, after the numbers of the tags that lead to its directory: {34735}, or {34665, 33434} in that of
    /// EXIF.
    std::vector<std::uint16_t> path;
    std::uint16_t type = 0;           ///< of a value: 2 for text, 12 for doubles
    std::vector<std::uint8_t> values; ///< as in the file, numbers little-endian

    std::uint16_t number() const { return path.back(); }
    std::uint64_t count() const;
};

/// Numbers of tags. Those of libtiff's header are not repeated here.
namespace tifftags {

constexpr std::uint16_t kExif = 34665;
constexpr std::uint16_t kGps = 34853;
constexpr std::uint16_t kInteroperability = 40965;
constexpr std::uint16_t kNodata = 42113; ///< GDAL's

/// Bytes of a value of a type; 0 for a type that does not exist.
size_t bytesOf(std::uint16_t type);
/// Whether values of a type need the offsets of a BigTIFF.
bool isBig(std::uint16_t type);

/// Whether a tag says how the samples lie in the file, or leads to another part of it: a file that is written later
/// says so of its own.
bool isOfFile(std::vector<std::uint16_t> const& path);

/// "34735", or "34665/33434".
std::string nameOf(std::vector<std::uint16_t> const& path);
/// Throws std::invalid_argument for a text that nameOf() does not return.
std::vector<std::uint16_t> pathOf(std::string const& name);

} // namespace tifftags

/// The directories of a TIFF, read entry by entry: libtiff reports neither offsets nor the types of unknown tags.
class TiffStructure {
public:
    struct Entry {
        std::uint16_t tag = 0;
        std::uint16_t type = 0;
        std::uint64_t count = 0;
        std::uint64_t offset = 0; ///< of the values in the file
    };

    /// Throws what bytes.read throws.
    explicit TiffStructure(TiffBytes bytes);

    bool isBigEndian() const { return bigEndian_; }
    bool isBigTiff() const { return big_; }
    std::uint64_t firstDirectory() const { return first_; }

    /// Of the directory at an offset; those that do not lie in the file are left out.
    std::vector<Entry> entries(std::uint64_t directory) const;
    /// Where the directory behind that at an offset lies; 0: there is none.
    std::uint64_t next(std::uint64_t directory) const;
    /// A number in the file; 0 beyond its end.
    std::uint64_t number(std::uint64_t offset, size_t bytes) const;

    struct Tags {
        std::vector<TiffTag> tags;       ///< in the order of the file
        std::set<std::uint16_t> leftOut; ///< damaged, of an unknown type, too large, or leading to other directories
    };
    /// The tags of the directory at an offset, and of the directories for EXIF, GPS and interoperability that it leads
    /// to. A number that comes again is passed over.
    Tags tags(std::uint64_t directory) const;

private:
    struct Reading;
    void read(std::uint64_t directory, std::vector<std::uint16_t> const& path, Reading& reading) const;
    bool copy(Entry const& entry, std::vector<std::uint8_t>& values) const;

    TiffBytes bytes_;
    bool bigEndian_ = false;
    bool big_ = false;
    std::uint64_t first_ = 0;
};
