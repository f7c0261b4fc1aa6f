#pragma once

#include "host/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class InputFile;

/// The pictures beside that of a slide: its label, the whole glass, a thumbnail. Read with OpenSlide. Any thread.
namespace slideimages {

struct SlideImage {
    std::string name;               ///< "label"
    Size size;                      ///< in the file
    Size shown;                     ///< of the pixels here
    std::vector<std::uint8_t> rgba; ///< opaque, rows from the top
};

/// Their names, in alphabetical order; none if the file is no slide. Throws HostError (unreadable image).
std::vector<std::string> names(InputFile& file);
/// One of them; where a side is longer than `longestSide` each pixel is the mean of a square of the file's, as small as
/// that takes. Throws HostError (unreadable image).
SlideImage read(InputFile const& file, std::string const& name, size_t longestSide);

} // namespace slideimages
