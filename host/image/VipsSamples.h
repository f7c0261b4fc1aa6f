#pragma once

#include "host/image/SampleSource.h"

#include <memory>

/// The formats that libvips decodes: JPEG, PNG, WebP, GIF, TIFF, HEIF, JPEG 2000, JPEG XL, Radiance, PDF, and slides
/// through OpenSlide. ICC profiles and orientation tags are not applied.
namespace vipssamples {

/// Whether the file is given to OpenSlide.
bool isSlide(InputFile& file);

/// Throws HostError (unreadable image; usage).
std::unique_ptr<SampleSource> open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace vipssamples
