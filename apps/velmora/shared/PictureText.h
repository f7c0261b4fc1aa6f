#pragma once

#include "host/pyramid/LevelReader.h"
#include "host/store/TileStore.h"

#include <string>
#include <vector>

/// What a picture file holds, in words for a person.
namespace picturetext {

/// Of any picture file that is read, also one of which a part has to be chosen. Throws HostError: missing file;
/// unreadable image.
PyramidFacts factsOf(std::string const& path);

/// The names of the pictures beside that of a slide: "label". None of other files. Throws what factsOf() throws.
std::vector<std::string> otherImagesOf(std::string const& path);

/// A line each: "size", "format", "samples", ... and what the file says of the picture's making. Values are as they are
/// in the file: a terminal and a window have other ways to make them harmless.
std::vector<ImageProperty> linesOf(PyramidFacts const& facts);
/// Of these, the lines on how it is to be looked at, and of its making.
std::vector<ImageProperty> linesOfLook(ImageFacts const& image);
/// The lines of a tile store. Throws what TileStore throws.
std::vector<ImageProperty> linesOf(TileStore& store);

} // namespace picturetext
