#pragma once

#include "apps/velmora/shared/RecentFiles.h"
#include "host/image/ImageSelection.h"
#include "host/store/StoreImporter.h"
#include "host/view/PictureSource.h"

#include <cstdint>
#include <filesystem>
#include <optional>
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

/// What the stores in the cache may take by default.
constexpr std::uint64_t kCacheBytes = 10'000'000'000;

/// The cache's folder, which need not be there. what: is to be kept in it. Throws HostError (unwritable output) if the
/// user has none.
std::filesystem::path cacheFolder(std::string const& what = "stores of images");

/// The path of the store of an image, or of a part of it, in the cache; creates the folder, and removes the leftovers
/// of killed imports. Throws HostError (missing file, unwritable output).
std::string cachedStore(std::string const& image, ImageSelection const& selection = {});

/// What can be shown of the image without reading all of it first: a store, or the file itself by the levels that it
/// has; a store that is turned, or follows an ICC profile, is such a file. Samples of 8 bits are shown as they are
/// where they can be and nothing else is asked for; others as `display` says, if it is given. Throws HostError:
/// also (usage) if more than a range is asked for, and the image cannot be shown so.
std::optional<PictureSource> shownAtOnce(std::string const& image, ImageSelection const& selection,
                                         std::optional<DisplayRequest> const& display = {});

/// Sentences on what shownAtOnce() does not follow of what a store says of its look: it has more than 8 bits, which are
/// taken as they are. Throws what TileStore throws.
std::vector<std::string> notesOf(PictureSource const& source, ImageSelection const& selection);

/// The store as shownAtOnce() shows it. Throws what TileStore throws.
PictureSource displayed(PictureSource store, std::optional<DisplayRequest> const& display);

/// The store at a path in the cache, kept there as long as the result lives; nothing if it has to be made: it is
/// missing, or another version of the program has made it.
std::optional<PictureSource> usableStore(std::string const& path);

/// A store that was just made, kept in the cache as long as the result lives. Others that were used longest ago are
/// removed until all take at most so many bytes; prints a note if it alone takes more.
PictureSource keptStore(std::string const& path, std::uint64_t cacheBytes);

/// The user's pictures that were opened last.
RecentFiles recentFiles();

/// Prints a note on stderr.
void tell(std::string const& line);

/// The options for importing the image into a store in the cache.
ImportOptions cacheOptions(std::string const& image);

/// Makes a store, with a progress bar. Throws what importStore throws, and Interrupted.
StoreInfo importWithProgress(std::string const& image, std::string const& store, ImportOptions const& options,
                             ImageSelection const& selection = {});

/// The image's store in the cache, which is made if it is missing. cacheBytes: as for keptStore().
PictureSource storeOf(std::string const& image, ImageSelection const& selection, std::uint64_t cacheBytes);

} // namespace picturefiles
