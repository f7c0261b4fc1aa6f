#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// FITS files, read with cfitsio. Each header and data unit (HDU) that holds a picture is a page; planes of a cube are
/// bands; the first row in the file is the first row read.
namespace fitspicture {

/// Whether a file that starts with these bytes is a FITS file.
bool is(std::string const& start);

/// Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace fitspicture
