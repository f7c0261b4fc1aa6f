#pragma once

#include "host/image/ImageSelection.h"

#include <cstdint>
#include <filesystem>
#include <string>

/// Where the viewer keeps the stores that it makes of pictures. Nobody else needs them: they may be deleted at any
/// time.
namespace importcache {

/// The folder "velmora" in `cacheHome`, or else, where that is no absolute path, in the folder .cache of `home`. The
/// values of XDG_CACHE_HOME and HOME; nothing where neither is of use, for any other folder would be everybody's.
std::filesystem::path folder(std::string const& cacheHome, std::string const& home);

/// Makes the folder its owner's alone, and makes it where it is not there. Throws HostError (unwritable output) where
/// it cannot be made, and where others could have put stores into it that would be shown for ours: a link, a folder of
/// another user, one that others may write to.
void makePrivate(std::filesystem::path const& folder);

/// The name of the store of a picture file: the picture's name and a hash, which changes with the file's absolute path,
/// its size or the time of its last change, and with the part of it that is taken. Throws HostError (missing file).
std::string storeName(std::filesystem::path const& picture, ImageSelection const& selection = {});

/// The same for what is no file, from a text that says which it is.
std::string storeName(std::string const& stem, std::string const& identity);

} // namespace importcache
