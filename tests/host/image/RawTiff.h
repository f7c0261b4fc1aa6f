#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// TIFF files tag by tag, without libtiff and without the product's own code: any number, any type, any byte order.
namespace rawtiff {

using Bytes = std::vector<std::uint8_t>;

struct Tag {
    std::uint16_t type = 3;
    /// Whole numbers, the bits of floats, or letters; two of each fraction.
    std::vector<std::uint64_t> numbers;

    bool operator==(Tag const& other) const { return type == other.type && numbers == other.numbers; }
};

/// With the directories that its tags lead to: of EXIF (34665), GPS (34853) and others.
struct Directory {
    std::map<std::uint16_t, Tag> tags;
    std::map<std::uint16_t, Directory> inner;
};

struct Layout {
    bool bigEndian = false;
    bool big = false; ///< BigTIFF
};

Tag text(std::string const& letters); ///< with the zero at its end
Tag doubles(std::vector<double> const& numbers);

/// A file whose first directory has these tags and nothing else: an EXIF block.
Bytes structure(Directory const& directory, Layout const& layout);
/// The same, of a picture of 8-bit samples: with the tags that it needs, unless the directory has others.
Bytes picture(std::uint16_t width, std::uint16_t height, std::uint16_t bands, Bytes const& samples, Directory directory,
              Layout const& layout);

/// The first directory of a file, or a further one. Throws std::out_of_range if there is none.
Directory read(Bytes const& file, size_t number = 0);

Bytes fileBytes(std::string const& path);
void write(std::string const& path, Bytes const& bytes);

} // namespace rawtiff
