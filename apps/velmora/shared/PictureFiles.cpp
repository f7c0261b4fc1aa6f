#include "apps/velmora/shared/PictureFiles.h"

#include "apps/velmora/shared/ImportCache.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "host/map/BuiltInPicture.h"
#include "host/output/Leftovers.h"
#include "host/store/TileStore.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace {

std::string environment(char const* name) {
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
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

std::string picturefiles::cachedStore(std::string const& image, ImageSelection const& selection) {
    std::string const name = image.empty() ? importcache::storeName("built-in", BuiltInPicture().description())
                                           : importcache::storeName(std::filesystem::path(image), selection);
    auto const folder = importcache::folder(environment("XDG_CACHE_HOME"), environment("HOME"));
    if (folder.empty())
        throw HostError(
            HostError::Kind::UnwritableOutput,
            "there is no folder to keep a store of " + nameOf(image) +
                " in: neither XDG_CACHE_HOME nor HOME names one; set one of them, or import the picture with "
                "velmora import");
    importcache::makePrivate(folder);
    leftovers::removeAll(folder);
    return (folder / name).string();
}

bool picturefiles::isUsableStore(std::string const& path) {
    try {
        TileStore const opened(path);
        return true;
    } catch (HostError const&) {
        return false;
    }
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

std::string picturefiles::storeOf(std::string const& image, ImageSelection const& selection) {
    if (!image.empty() && TileStore::isStore(image)) return image;
    std::string store = cachedStore(image, selection);
    if (isUsableStore(store)) return store;
    importWithProgress(image, store, cacheOptions(image), selection);
    return store;
}
