#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// Netpbm's files: bitmaps, PGM, PPM and PAM of 8 and 16 bits, PFM of floats.
namespace pnmfile {

/// Whether a file that starts so is one.
bool is(std::string const& start);

/// Pictures may follow one another in a file: each is a page. PFM has its lowest row first; it is read from the top, as
/// the others. Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace pnmfile
