#pragma once

#include "host/image/ImageSelection.h"
#include "host/store/StoreImporter.h"

#include <string>
#include <vector>

/// What the commands are given as IMAGE: a file, or nothing for the built-in picture; and the store of it that is kept
/// in the user's cache.
namespace picturefiles {

/// For a person, without folders.
std::string nameOf(std::string const& image);

/// The files that an output made of it is made of.
std::vector<std::string> sourcesOf(std::string const& image);

/// Opens it with the samples that the file has, or the part of it that is selected.
PictureOpener openerOf(std::string const& image, ImageSelection const& selection = {});

/// The name that the store of an image, or of a part of it, has in the cache; makes the folder, and removes what killed
/// imports have left there. Throws HostError (missing file, unwritable output).
std::string cachedStore(std::string const& image, ImageSelection const& selection = {});

/// Whether the file is a store that can be read: another version of the program may have made it.
bool isUsableStore(std::string const& path);

/// A line on stderr that is no failure.
void tell(std::string const& line);

/// What an import of the image into a store in the cache takes.
ImportOptions cacheOptions(std::string const& image);

/// Makes a store, with a bar that shows how far it is. Throws what importStore throws, and where the user interrupts.
StoreInfo importWithProgress(std::string const& image, std::string const& store, ImportOptions const& options,
                             ImageSelection const& selection = {});

/// The image itself where it is a store, else its store in the cache, made where there is none yet.
std::string storeOf(std::string const& image, ImageSelection const& selection = {});

} // namespace picturefiles
