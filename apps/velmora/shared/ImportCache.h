#pragma once

#include "host/image/ImageSelection.h"

#include <cstdint>
#include <filesystem>
#include <string>

/// The folder of the stores that the viewer makes of pictures. No other program needs them: they may be deleted at any
/// time.
namespace importcache {

/// The folder "velmora" in `cacheHome`, or, if that is no absolute path, in the folder .cache of `home`. The arguments
/// are the values of XDG_CACHE_HOME and HOME; empty if neither is usable, because any other folder would be shared.
std::filesystem::path folder(std::string const& cacheHome, std::string const& home);

/// Creates the folder if it is missing, and makes it private to its owner. Throws HostError (unwritable output) if it
/// cannot be created, and if others could have put stores into it that would be shown for ours: a link, a folder of
/// another user, a folder that others may write to.
void makePrivate(std::filesystem::path const& folder);

/// The name of the store of a picture file: the picture's name and a hash of the file's absolute path, size and time of
/// the last change, and of the selected part. Throws HostError (missing file).
std::string storeName(std::filesystem::path const& picture, ImageSelection const& selection = {});

/// The name of the store of anything but a file, from a text that identifies it.
std::string storeName(std::string const& stem, std::string const& identity);

} // namespace importcache
