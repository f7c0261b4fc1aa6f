#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// Windows bitmaps: palettes of 1, 4 and 8 bits, colours of 24 and 32 bits, uncompressed.
namespace bmpfile {

bool is(std::string const& start);

/// Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace bmpfile
