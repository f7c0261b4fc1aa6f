#pragma once

#include "host/image/ImageSelection.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

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

/// A store in a cache.
struct Store {
    std::filesystem::path path;
    std::uint64_t bytes = 0;
    std::chrono::system_clock::time_point used; ///< last
};

/// Notes that a store is used now, and keeps trim() of any process from removing it as long as the result lives. Null
/// for a store that cannot be opened.
std::shared_ptr<void const> use(std::filesystem::path const& store);

/// The stores in a folder, the one that was used longest ago first. Other files, and links, are none.
std::vector<Store> stores(std::filesystem::path const& folder);

/// Removes stores, those that were used longest ago first, until the others take at most so many bytes; none that is in
/// use. Returns what is gone.
std::vector<Store> trim(std::filesystem::path const& folder, std::uint64_t bytes);

/// Bytes of all of them.
std::uint64_t bytesOf(std::vector<Store> const& stores);

} // namespace importcache
