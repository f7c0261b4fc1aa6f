#pragma once

#include "host/image/ImageSelection.h"
#include "host/store/StoreImporter.h"

#include <string>
#include <vector>

/// The IMAGE argument of the commands: a file, or nothing for the built-in picture; and its store in the user's cache.
namespace picturefiles {

/// A human-readable name, without folders.
std::string nameOf(std::string const& image);

/// The source files of an output that is made from the image.
std::vector<std::string> sourcesOf(std::string const& image);

/// Opens the image with the samples of the file, or its selected part.
PictureOpener openerOf(std::string const& image, ImageSelection const& selection = {});

/// The path of the store of an image, or of a part of it, in the cache; creates the folder, and removes the leftovers
/// of killed imports. Throws HostError (missing file, unwritable output).
std::string cachedStore(std::string const& image, ImageSelection const& selection = {});

/// Whether the file is a readable store: another version of the program may have made it.
bool isUsableStore(std::string const& path);

/// Prints a note on stderr.
void tell(std::string const& line);

/// The options for importing the image into a store in the cache.
ImportOptions cacheOptions(std::string const& image);

/// Makes a store, with a progress bar. Throws what importStore throws, and Interrupted.
StoreInfo importWithProgress(std::string const& image, std::string const& store, ImportOptions const& options,
                             ImageSelection const& selection = {});

/// The image itself if it is a store, else its store in the cache, which is made if it is missing.
std::string storeOf(std::string const& image, ImageSelection const& selection = {});

} // namespace picturefiles
