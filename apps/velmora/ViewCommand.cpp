#include "apps/velmora/Commands.h"
#include "apps/velmora/DisplayOptions.h"
#include "apps/velmora/FilterOptions.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/view/Viewer.h"
#include "host/Threads.h"
#include "host/image/InputFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <malloc.h>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kMegabyte = 1000 * 1000;
constexpr size_t kMaxMegabytes = 1000 * 1000;
constexpr double kMaxWindowSide = 16384;

constexpr auto kExamples = R"(Examples:
  velmora view                                   the built-in picture
  velmora view slide.vlm                         a tile store
  velmora view slide.svs                         a whole slide, by the levels that it has
  velmora view scan.tif                          12 bits in 16 are shown bright: --range auto
  velmora view heat.tif --range 280,310 --colour-map inferno
  velmora view cells.ome.tif --channel 0:0000FF --channel 2:00FF00:200,3000 --z 12
  velmora view scan.tif --gamma 2.2,300,9000     filters of 16 bits: a store is made first, once
  velmora view slide.svs --annotations cells.geojson
  velmora view slide.vlm --at 52000,31000,1 --size 1920x1080 --screenshot part.png

Drag and wheel move; the key ? shows all keys. Stores of images are kept in $XDG_CACHE_HOME/velmora
or ~/.cache/velmora; velmora cache shows and clears them.)";

struct Memory {
    size_t host = 256; // megabytes
    size_t gpu = 256;
};

struct Texts {
    std::string size;
    std::string at;
    std::string script;
};

// The numbers of a text with separators; nothing if it does not parse.
template <size_t count>
std::optional<std::array<double, count>> numbersOf(std::string const& text, char separator) {
    std::istringstream stream(text);
    stream >> std::noskipws;
    std::array<double, count> numbers{};
    for (size_t i = 0; i < count; ++i) {
        if (i > 0 && stream.get() != separator) return std::nullopt;
        if (!(stream >> numbers[i])) return std::nullopt;
    }
    return stream.peek() == std::char_traits<char>::eof() ? std::optional(numbers) : std::nullopt;
}

std::optional<Size> sizeOf(std::string const& text) {
    auto const numbers = numbersOf<2>(text, 'x');
    if (!numbers) return std::nullopt;
    for (double const side : *numbers)
        if (side < 1 || side > kMaxWindowSide || side != std::floor(side)) return std::nullopt;
    return Size{static_cast<size_t>((*numbers)[0]), static_cast<size_t>((*numbers)[1])};
}

std::optional<ViewerOptions::Start> startOf(std::string const& text) {
    auto const numbers = numbersOf<3>(text, ',');
    // No store has pixels beyond 1e9.
    if (!numbers || std::abs((*numbers)[0]) > 1e9 || std::abs((*numbers)[1]) > 1e9 || !((*numbers)[2] > 0))
        return std::nullopt;
    return ViewerOptions::Start{(*numbers)[0], (*numbers)[1], (*numbers)[2]};
}

std::string checkSize(std::string const& text) {
    if (sizeOf(text)) return "";
    return "\"" + text + "\" is not WxH, whole numbers up to " + std::to_string(static_cast<int>(kMaxWindowSide));
}

std::string checkStart(std::string const& text) {
    return startOf(text) ? "" : "\"" + text + "\" is not X,Y,ZOOM with a zoom above 0";
}

// The program itself, with a GL driver that draws on the processor.
constexpr size_t kProgramBytes = 160 * kMegabyte;
constexpr size_t kLeastTileBytes = 16 * kMegabyte;

// The tiles' part of the process's memory.
size_t tileBytes(size_t memory) {
    return std::max(memory, kProgramBytes + kLeastTileBytes) - kProgramBytes;
}

// The GPU's memory: five eighths for rebuilt tiles, a quarter for their bands, the rest for frames and intermediate
// targets. The backend counts one byte per sample of a band, which takes two.
void share(size_t gpuMemory, ViewerOptions& options) {
    options.picture.gpuBytes = gpuMemory / 8 * 5;
    options.bandBytes = gpuMemory / 8;
}

void addMemoryOption(CLI::App& command, char const* name, size_t& megabytes, char const* help) {
    command.add_option(name, megabytes, help)
        ->type_name("MB")
        ->capture_default_str()
        ->check(CLI::Range(size_t{1}, kMaxMegabytes));
}

// Tiles are allocated and freed as long as the window is open. glibc would keep their memory in its fragmented heaps;
// blocks of their own are returned to the system.
void returnFreedTiles() {
#ifdef __GLIBC__
    constexpr int kTileBytes = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, kTileBytes);
#endif
}

// Checks all of them before a window opens.
void requireScreenshots(ViewerOptions const& options) {
    std::vector<std::string> names;
    if (!options.screenshot.empty()) names.push_back(options.screenshot);
    for (Script::Line const& line : options.script)
        if (line.action == Script::Action::Screenshot) names.push_back(line.text);
    for (std::string const& name : names)
        requireUsable(options.outputOf(name, options.force), OutputFile::Ending::Png);
}

void view(ViewerOptions options, Texts const& texts, Memory const& memory) {
    returnFreedTiles();
    options.picture.hostBytes = tileBytes(memory.host * kMegabyte);
    share(memory.gpu * kMegabyte, options);
    if (!texts.size.empty()) options.window = *sizeOf(texts.size);
    if (!texts.at.empty()) options.start = startOf(texts.at);
    if (!texts.script.empty()) options.script = Script::read(texts.script);
    options.picture.threads = options.importJobs;
    options.picture.showHoles = true;
    options.picture.interruption = interruption::throwIfNoted;
    options.sources = picturefiles::sourcesOf(options.image);
    // Before a window opens.
    requireScreenshots(options);
    if (!options.annotations.empty()) InputFile const readable(options.annotations);
    imageinput::inspect(options.image, options.selection, options.colours(), options.display);
    Viewer(options).run();
}

} // namespace

void addViewCommand(CLI::App& program) {
    auto const options = std::make_shared<ViewerOptions>();
    auto const texts = std::make_shared<Texts>();
    auto const memory = std::make_shared<Memory>();
    auto* const command = program.add_subcommand("view", "Show an image or a tile store in a window");
    command->footer(kExamples);
    command->add_option("IMAGE", options->image, "An image or a store; default: the built-in picture")
        ->type_name("")
        ->check(checkNamed);
    addSelectionOptions(*command, options->selection);
    addDisplayOptions(*command, options->display);
    addColourOptions(*command, options->selection);
    command->add_option("--size", texts->size, "Window size; default: 1280x800")->type_name("WxH")->check(checkSize);
    command->add_option("--at", texts->at, "Picture pixel at the centre, and zoom (screen pixels per picture pixel)")
        ->type_name("X,Y,ZOOM")
        ->check(checkStart);
    auto* const annotations =
        command
            ->add_option("--annotations", options->annotations,
                         "Draw the shapes of a GeoJSON file, as QuPath writes them, over the picture")
            ->type_name("FILE")
            ->check(checkNamed);
    command->add_flag("--smooth", options->smooth,
                      "Zoom below 1: bilinear interpolation instead of the nearest sample");
    addMemoryOption(*command, "--memory", memory->host, "Memory budget: program plus decompressed tiles");
    addMemoryOption(*command, "--gpu-memory", memory->gpu, "GPU memory budget: rebuilt tiles");
    command->add_option("--jobs", options->importJobs, "Threads that read tiles; default: one per core")
        ->type_name("N")
        ->check(CLI::Range(size_t{1}, kMaxJobs));
    options->cacheBytes = picturefiles::kCacheBytes;
    addCacheOption(*command, options->cacheBytes);
    command->add_flag("--bare", options->bare, "Show the picture without overlay")->excludes(annotations);
    command->add_flag_callback(
        "--light", [options] { options->setTheme(true); }, "Light panels, and light around the picture");
    command
        ->add_option("--screenshot", options->screenshot,
                     "Write the window to a .png file once it is complete, and quit")
        ->type_name("FILE")
        ->check(checkNamed);
    command->add_flag("--force", options->force, "Screenshots may replace existing files");
    command->add_option("--script", texts->script, "Run a viewer script: a text file, one action per line")
        ->type_name("FILE")
        ->check(checkNamed);
    command->add_flag("--report", options->report, "Print times, frames and memory at the end");
    addFilterOptions(*command);
    command->callback([options, texts, memory, command] {
        options->steps = filterStepsOf(*command);
        options->display = withRange(options->display, options->selection);
        view(*options, *texts, *memory);
    });
}
