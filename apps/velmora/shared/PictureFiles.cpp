#include "apps/velmora/shared/PictureFiles.h"

#include "apps/velmora/shared/ImportCache.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/image/ImageReader.h"
#include "host/image/SrgbConversion.h"
#include "host/map/BuiltInPicture.h"
#include "host/output/Leftovers.h"
#include "host/store/KeptMetadata.h"
#include "host/store/TileStore.h"
#include "host/view/PyramidStages.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>

namespace {

std::string environment(char const* name) {
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

[[noreturn]] void refuseDisplay(std::string const& image, std::string const& reason) {
    throw HostError(HostError::Kind::Usage,
                    "'" + image + "' cannot be shown with --channel, --z, --t, --curve, --colour-map or --invert: " +
                        reason + "; leave them out");
}

// Of a store, how its picture is to be looked at. Nothing of one whose metadata is damaged: whoever reads its samples
// says so of them.
ImageFacts lookOf(std::string const& path) {
    try {
        TileStore store(path, interruption::throwIfNoted);
        return keptIn(store).facts;
    } catch (HostError const& error) {
        if (error.kind() != HostError::Kind::DamagedStore) throw;
        return {};
    }
}

bool asksForAnotherLook(std::string const& path, ImageSelection const& selection) {
    if (!selection.followsProfile && !selection.isUpright) return false;
    ImageFacts const facts = lookOf(path);
    return (selection.isUpright && facts.orientation != 1) ||
           (selection.followsProfile && SrgbConversion::of(facts).conversion);
}

} // namespace

std::string picturefiles::nameOf(std::string const& image) {
    return image.empty() ? "the built-in picture" : std::filesystem::path(image).filename().string();
}

std::vector<std::string> picturefiles::sourcesOf(std::string const& image) {
    return image.empty() ? std::vector<std::string>() : std::vector<std::string>{image};
}

PictureOpener picturefiles::openerOf(std::string const& image, ImageSelection const& selection) {
    ImageReader::Options options;
    options.samples = ImageReader::Samples::kAsStored;
    options.selection = selection;
    options.check = interruption::throwIfNoted;
    return [image, options]() -> std::unique_ptr<PixelSource> {
        if (image.empty()) return std::make_unique<BuiltInPicture>();
        return std::make_unique<ImageReader>(image, options);
    };
}

std::filesystem::path picturefiles::cacheFolder(std::string const& what) {
    auto folder = importcache::folder(environment("XDG_CACHE_HOME"), environment("HOME"));
    if (!folder.empty()) return folder;
    throw HostError(HostError::Kind::UnwritableOutput,
                    "there is no folder to keep " + what +
                        " in: neither XDG_CACHE_HOME nor HOME names one; set one of them, or import the picture with "
                        "velmora import");
}

std::string picturefiles::cachedStore(std::string const& image, ImageSelection const& selection) {
    std::string const name = image.empty() ? importcache::storeName("built-in", BuiltInPicture().description())
                                           : importcache::storeName(std::filesystem::path(image), selection);
    auto const folder = cacheFolder("a store of " + nameOf(image));
    importcache::makePrivate(folder);
    leftovers::removeAll(folder);
    return (folder / name).string();
}

std::optional<PictureSource> picturefiles::shownAtOnce(std::string const& image, ImageSelection const& selection,
                                                       std::optional<DisplayRequest> const& display) {
    if (image.empty()) return std::nullopt;
    bool const isStore = TileStore::isStore(image);
    auto const asStored = [&] { return displayed(PictureSource(image), display); };
    if (isStore && !asksForAnotherLook(image, selection)) return asStored();
    if (!isStore && selection.hasRange() && !display) return std::nullopt;
    PyramidOptions options;
    options.selection = selection;
    options.check = interruption::throwIfNoted;
    PyramidOpening opening = openPyramid(image, options);
    std::shared_ptr<Pyramid const> const pyramid = std::move(opening.pyramid);
    bool const hasWishes = display && !display->asksForRangeAlone();
    if (!pyramid) {
        if (isStore) return asStored();
        if (hasWishes) refuseDisplay(image, opening.reason);
        return std::nullopt;
    }
    ImageFacts const& facts = pyramid->facts().image;
    bool const isOne = !pyramid->facts().stack.hasPositions();
    bool const asIs = PyramidStages::shows(*pyramid) && (!display || (display->isEmpty() && isOne));
    // Other colours are converted on the way into a store.
    bool const isConverted = !facts.colourSpace.empty() && selection.bands.empty();
    bool const isRanged = display && !isConverted && !pyramid->facts().isMultiplied;
    if (!asIs && !isRanged) {
        if (isStore) return asStored();
        if (hasWishes) refuseDisplay(image, "its colours are converted first");
        return std::nullopt;
    }
    PictureSource source(pyramid);
    if (!asIs) source.display = display;
    return source;
}

std::vector<std::string> picturefiles::notesOf(PictureSource const& source, ImageSelection const& selection) {
    std::vector<std::string> notes;
    if (source.pyramid || !asksForAnotherLook(source.store, selection)) return notes;
    ImageFacts const facts = lookOf(source.store);
    auto const profile = SrgbConversion::of(facts);
    if (selection.followsProfile && profile.conversion)
        notes.push_back("'" + source.store + "' is shown without its ICC profile" +
                        (profile.profile.empty() ? "" : ", " + profile.profile) +
                        ": its 16 bits are taken as they are; velmora export keeps it");
    if (selection.isUpright && facts.orientation != 1)
        notes.push_back("'" + source.store + "' asks to be turned or mirrored (orientation " +
                        std::to_string(facts.orientation) + "); its 16 bits are taken as they lie in the store");
    return notes;
}

PictureSource picturefiles::displayed(PictureSource store, std::optional<DisplayRequest> const& display) {
    bool const isDeep = TileStore(store.store, interruption::throwIfNoted).info().bits > 8;
    if (display && (isDeep || !display->isEmpty())) store.display = display;
    return store;
}

std::optional<PictureSource> picturefiles::usableStore(std::string const& path) {
    PictureSource source(path);
    // Before it is opened, so that no other process removes it in between.
    source.kept = importcache::use(path);
    try {
        TileStore const opened(path);
        return source;
    } catch (HostError const&) {
        return std::nullopt;
    }
}

PictureSource picturefiles::keptStore(std::string const& path, std::uint64_t cacheBytes) {
    PictureSource source(path);
    source.kept = importcache::use(path);
    std::filesystem::path const store = path;
    importcache::trim(store.parent_path(), cacheBytes);
    std::error_code failed;
    std::uint64_t const bytes = std::filesystem::file_size(store, failed);
    if (!failed && bytes > cacheBytes)
        tell("note: " + path + " takes " + bytesText(bytes) + ", more than --cache-size " + bytesText(cacheBytes) +
             ": it goes as soon as another store is made");
    return source;
}

RecentFiles picturefiles::recentFiles() {
    return {environment("XDG_STATE_HOME"), environment("HOME")};
}

void picturefiles::tell(std::string const& line) {
    std::fprintf(stderr, "velmora: %s\n", onOneLine(line).c_str());
}

ImportOptions picturefiles::cacheOptions(std::string const& image) {
    ImportOptions options;
    options.replace = true;
    options.sourceName = nameOf(image);
    options.sources = sourcesOf(image);
    options.note = tell;
    return options;
}

StoreInfo picturefiles::importWithProgress(std::string const& image, std::string const& store,
                                           ImportOptions const& options, ImageSelection const& selection) {
    // Steps are rows, the rate counts pixels: the bar needs the width, which is known once the picture is open.
    std::unique_ptr<ProgressBar> bar;
    auto const open = [&] {
        auto picture = openerOf(image, selection)();
        bar = std::make_unique<ProgressBar>(store, stderr, picture->width());
        return picture;
    };
    return importStore(open, store, options, [&](size_t done, size_t total) {
        interruption::throwIfNoted();
        bar->update(done, total);
    });
}

PictureSource picturefiles::storeOf(std::string const& image, ImageSelection const& selection,
                                    std::uint64_t cacheBytes) {
    std::string const store = cachedStore(image, selection);
    if (auto source = usableStore(store)) return *source;
    importWithProgress(image, store, cacheOptions(image), selection);
    return keptStore(store, cacheBytes);
}
