#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// JPEG XL, read with libjxl: frames of an animation are pages, which libvips does not tell apart. The decoder turns
/// pictures upright itself, and samples of fewer than 8 or 16 bits fill these.
namespace jxlpicture {

bool is(std::string const& start);

/// Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace jxlpicture
