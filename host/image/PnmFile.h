#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// Netpbm's files: bitmaps, PGM, PPM and PAM of 8 and 16 bits, PFM of floats.
namespace pnmfile {

/// Whether a file that starts with these bytes is one of them.
bool is(std::string const& start);

/// Each of the pictures that follow one another in a file is a page. PFM stores its bottom row first; it is read from
/// the top, like the others. Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace pnmfile
