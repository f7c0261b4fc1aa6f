#pragma once

#include "host/annotations/Annotations.h"
#include "host/image/InputFile.h"

#include <cstddef>
#include <string>

/// Annotations as GeoJSON has them (RFC 7946), with the names, classes, colours and planes that QuPath writes beside.
/// Places are pixels of the picture.
namespace geojson {

struct Content {
    Annotations annotations;
    size_t withoutGeometry = 0; ///< features that are nowhere, and so are not among the annotations
};

/// Whether the file begins as one of JSON does. Throws HostError as InputFile does.
bool looksLikeOne(std::string const& path);

/// Throws HostError: missing file, or unreadable image where a place is none, a line or a ring is none, or more than
/// 50 million places are in it; std::bad_alloc; and what the check throws, which is called before each read.
Content read(std::string const& path, InputFile::Check const& check = {});

} // namespace geojson
