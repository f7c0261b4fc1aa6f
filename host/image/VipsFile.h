#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// libvips' own files, ".v": a header of 64 bytes and the samples.
namespace vipsfile {

bool is(std::string const& start);

/// Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace vipsfile
