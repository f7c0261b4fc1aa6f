#pragma once

#include "host/image/SampleSource.h"
#include "host/image/VipsSource.h"

#include <vips/vips8>

#include <memory>

/// A file opened by libvips, and its properties.
namespace vipsopening {

struct Opened {
    std::unique_ptr<VipsSourceOfFile> source; ///< before the image, which reads from it
    vips::VImage image;
    ImageFacts facts;
    bool readsAnywhere = false;
};

/// Whether OpenSlide reads the file.
bool isSlide(InputFile& file);

/// Throws HostError (unreadable image; usage), vips::VError.
Opened open(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

} // namespace vipsopening
