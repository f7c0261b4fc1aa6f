#include "apps/velmora/Commands.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/Threads.h"
#include "host/image/InputFile.h"
#include "host/output/OutputFile.h"
#include "host/store/StoreImporter.h"
#include "host/store/TileStore.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr auto kAutoLevels = "auto";

constexpr auto kExamples = R"(Examples:
  velmora import slide.tif slide.vlm                 the whole image, without loss
  velmora import --built-in map.vlm                  the built-in picture
  velmora import scan.tif scan.vlm --tile 512 --jobs 4
  velmora import ccd.fits ccd.vlm --range auto       floats or 32 bits, as 16 bits
  velmora import stack.tif z7.vlm --page 7 --bands 4,3,2

What a store would not keep sample for sample is refused, unless an option takes a part of it.
The store keeps the wavelet bands of the image as tiles. The image is read once, in strips: memory
grows with its width, not with its height.)";

struct Options {
    std::vector<std::string> names;
    bool builtIn = false;
    std::string levels = kAutoLevels;
    ImportOptions import;
    ImageSelection selection;
};

struct Files {
    std::string image; // empty: the built-in picture
    std::string store;
};

Files filesOf(Options const& options) {
    size_t const expected = options.builtIn ? 1 : 2;
    if (options.names.size() != expected)
        throw CLI::ValidationError(options.builtIn
                                       ? "--built-in takes one name, that of the store"
                                       : "an image and a store have to be named, or --built-in and a store");
    for (std::string const& name : options.names)
        if (name.empty()) throw CLI::ValidationError("a name is empty");
    return {options.builtIn ? "" : options.names.front(), options.names.back()};
}

void requireUsableStore(Files const& files, bool replace) {
    OutputFile store(files.store);
    store.replace = replace;
    store.sources = picturefiles::sourcesOf(files.image);
    requireUsable(store, OutputFile::Ending::NotOfAPicture);
}

// Checked before a reader of images reports an unknown format.
void requireNoStore(std::string const& image) {
    if (image.empty() || !TileStore::isStore(image)) return;
    TileStore const store(image, interruption::throwIfNoted);
    throw imageNotRead(image, "it is a tile store already; copy it, or make a picture of it with velmora export");
}

std::optional<size_t> levelsOf(std::string const& text) {
    size_t levels = 0;
    auto const end = std::from_chars(text.data(), text.data() + text.size(), levels);
    bool const whole = end.ec == std::errc() && end.ptr == text.data() + text.size();
    return whole && levels >= 1 && levels <= StoreInfo::kMaxLevels ? std::optional(levels) : std::nullopt;
}

std::string checkLevels(std::string const& text) {
    if (text == kAutoLevels || levelsOf(text)) return "";
    return "levels are auto, or 1 to " + std::to_string(StoreInfo::kMaxLevels);
}

std::string checkEven(std::string const& text) {
    return (text.back() - '0') % 2 == 0 ? "" : "the tile size must be even";
}

void import(Options const& options) {
    Files const files = filesOf(options);
    requireUsableStore(files, options.import.replace);
    requireNoStore(files.image);
    imageinput::inspect(files.image, options.selection, imageinput::Colours::Kept);
    ImportOptions importOptions = options.import;
    importOptions.sources = picturefiles::sourcesOf(files.image);
    importOptions.note = picturefiles::tell;
    importOptions.sourceName = picturefiles::nameOf(files.image);
    importOptions.levels = levelsOf(options.levels);

    auto const start = std::chrono::steady_clock::now();
    StoreInfo const info = picturefiles::importWithProgress(files.image, files.store, importOptions, options.selection);
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    double const megapixels = static_cast<double>(info.width) * static_cast<double>(info.height) / 1e6;
    std::error_code gone; // ignored: another process may have removed it already
    auto const bytes = std::filesystem::file_size(files.store, gone);
    std::string const part = info.selection.empty() ? "" : " (" + info.selection + ")";
    std::printf("%s: %zu x %zu pixels of %s%s in %s, %ju bytes in %.2f s, %.1f Mpixel/s\n",
                terminalText(files.store).c_str(), info.width, info.height, terminalText(info.sourceName).c_str(),
                terminalText(part).c_str(), counted(info.levels, "level").c_str(),
                static_cast<std::uintmax_t>(gone ? 0 : bytes), seconds.count(), megapixels / seconds.count());
}

} // namespace

void addImportCommand(CLI::App& program) {
    auto const options = std::make_shared<Options>();
    auto* const command = program.add_subcommand("import", "Make a lossless tile store of an image");
    command->footer(kExamples);
    command->add_option("NAMES", options->names, "IMAGE, the picture to read, and STORE, the file to make, .vlm")
        ->type_name("");
    command->add_flag("--built-in", options->builtIn, "Import the built-in picture; the only name is STORE");
    command->add_option("--tile", options->import.tileSize, "Side of a tile in samples, even")
        ->capture_default_str()
        ->type_name("SAMPLES")
        ->check(CLI::Range(StoreInfo::kMinTileSize, StoreInfo::kMaxTileSize))
        ->check(checkEven);
    command->add_option("--levels", options->levels, "Levels of the wavelet; auto: until it fits in one tile")
        ->capture_default_str()
        ->type_name("N")
        ->check(checkLevels);
    command->add_option("--jobs", options->import.jobs, "Threads that compress; default: one per core")
        ->type_name("N")
        ->check(CLI::Range(size_t{1}, kMaxJobs));
    addSelectionOptions(*command, options->selection);
    command->add_flag("--force", options->import.replace, "Replace an existing store");
    command->callback([options] { import(*options); });
}
