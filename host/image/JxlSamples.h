#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <string>

/// JPEG XL, read with libjxl, because libvips does not distinguish the frames of an animation, which are pages here.
/// The decoder turns pictures upright itself, and scales samples of fewer bits to 8 or 16.
namespace jxlpicture {

bool is(std::string const& start);

/// Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace jxlpicture
