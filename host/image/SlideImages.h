#pragma once

#include "host/image/SmallPicture.h"

#include <string>
#include <vector>

class InputFile;

/// The pictures beside that of a slide: its label, the whole glass, a thumbnail. Read with OpenSlide. Any thread.
namespace slideimages {

/// Their names, in alphabetical order; none if the file is no slide. Throws HostError (unreadable image).
std::vector<std::string> names(InputFile& file);
/// One of them, of the colours red, green and blue. Throws HostError (unreadable image).
SmallPicture read(InputFile const& file, std::string const& name);

} // namespace slideimages
