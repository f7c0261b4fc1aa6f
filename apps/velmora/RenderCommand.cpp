#include "apps/velmora/Commands.h"
#include "apps/velmora/DisplayOptions.h"
#include "apps/velmora/FilterOptions.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/channels/HostFilters.h"
#include "host/filter/EnhancedRenderer.h"
#include "host/filter/RegionRenderer.h"
#include "host/gl/SurfacelessContext.h"
#include "host/image/ImageReader.h"
#include "host/map/BuiltInPicture.h"
#include "host/output/PictureWriter.h"
#include "host/store/TileStore.h"
#include "host/view/ChannelStages.h"
#include "host/view/PictureRenderer.h"
#include "host/view/PyramidStages.h"
#include "host/view/StoreChannelStages.h"
#include "renderbackend/RenderBackendInstance.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr size_t kTileBudgetBytes = 256 * 1000 * 1000;
constexpr size_t kBandBudgetBytes = 32 * 1000 * 1000; // for the bands from which tiles are rebuilt

constexpr auto kExamples = R"(Examples:
  velmora render -o map.png -r 9900,4300,1024,768   a part of the built-in picture
  velmora render slide.tif -o view.png              the whole image
  velmora render slide.tif -o view.png -r 8000,6000,1920,1080 --tile 512
  velmora render scan16.tif -o view.png --gamma 2.2,300,9000 --sharpen 1
  velmora render heat.tif -o heat.png --range 280,310 --colour-map inferno
  velmora render cells.ome.tif -o cells.png --channel 0:0000FF --channel 2:00FF00:200,3000 --z 12
  velmora render slide.tif -o small.tif --zoom 0.1 --smooth
  velmora render slide.vlm -o part.png -r 8000,6000,1920,1080 --zoom 0.5

Filters run one after the other in the order given, each as often as it is given. A region is
that part of the whole picture enhanced. Alpha stays as it is. Of 16 bits filters look at 15, and
end in 8. Without filters, samples that an output of 8 bits cannot keep are shown as in the window:
through --range, which is auto unless it is given.)";

struct Options {
    std::string image;
    ImageSelection selection;
    DisplayRequest display;
    std::string output;
    bool force = false;
    std::string region;
    size_t tileSize = 256;
    double zoom = 1.0;
    bool smooth = false;
    std::uint64_t cacheBytes = picturefiles::kCacheBytes;
    size_t bits = 0; // 0: chosen by the output's format
    std::vector<enhancement::Step> steps;
};

OutputFile outputOf(Options const& options) {
    OutputFile file(options.output);
    file.replace = options.force;
    file.sources = picturefiles::sourcesOf(options.image);
    return file;
}

std::unique_ptr<PixelSource> openSource(Options const& options, ImageReader::Samples samples) {
    if (options.image.empty()) return std::make_unique<BuiltInPicture>();
    ImageReader::Options reading;
    reading.samples = samples;
    reading.selection = options.selection;
    reading.check = interruption::throwIfNoted;
    return std::make_unique<ImageReader>(options.image, reading);
}

// Bits per sample of the output: a TIFF keeps the picture's, a PNG is mostly for viewing.
size_t bitsOf(Options const& options, size_t pictureBits) {
    bool const weighed = options.smooth && options.zoom < 1;
    bool const kept = pictureBits == 16 && options.steps.empty() && !weighed;
    if (options.bits == 16 && pictureBits != 16)
        throw HostError(HostError::Kind::Usage,
                        picturefiles::nameOf(options.image) + " has samples of 8 bits; leave out --bits 16");
    if (options.bits == 16 && !kept)
        throw HostError(HostError::Kind::Usage, "filters and --smooth give 8 bits; leave out --bits 16, or them");
    if (options.bits != 0) return options.bits;
    return kept && namesTiff(options.output) ? 16 : 8;
}

Region chosenRegion(Options const& options, size_t width, size_t height) {
    Region const whole{0, 0, width, height};
    if (options.region.empty()) return whole;
    Region const region = parseRegion(options.region);
    if (liesIn(region, sizeOf(whole))) return region;
    std::string const name = options.image.empty() ? "the built-in picture" : "'" + options.image + "'";
    throw HostError(HostError::Kind::RegionOutside,
                    "the region " + options.region + " leaves " + name + ", which has " + std::to_string(whole.width) +
                        " x " + std::to_string(whole.height) + " pixels; choose X + W and Y + H within that");
}

std::string toText(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", number);
    return text.data();
}

// Draws into a file of a size, with a progress bar. Returns the seconds taken.
using Draw = std::function<void(std::shared_ptr<RenderBackendInstance> const& instance, RowSink const& write,
                                Progress const& progress)>;

struct Shape {
    size_t width;
    size_t height;
    size_t bands;
    size_t bits;
};

double drawInto(OutputFile const& output, Shape const& shape, size_t tileBytes, Draw const& draw) {
    // Opened before the context, so that an unwritable output is reported at once.
    auto const file = makePictureWriter(output, shape.width, shape.height, shape.bands, shape.bits);
    SurfacelessContext context;
    Gles3RenderBackend backend(hostfilters::registry(), RenderBackend::RGBA32, tileBytes);
    auto const instance = backend.createInstance(context);

    auto const start = std::chrono::steady_clock::now();
    {
        ProgressBar bar(output.path, stderr);
        draw(
            instance, [&file](std::uint8_t const* rows, size_t count) { file->writeRows(rows, count); },
            [&bar](size_t done, size_t total) {
                interruption::throwIfNoted();
                bar.update(done, total);
            });
        interruption::throwIfNoted();
        file->finish();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void report(Options const& options, Shape const& drawn, size_t width, size_t height, std::string const& description,
            double seconds) {
    std::string const picture = options.image.empty() ? "the built-in picture" : options.image;
    std::printf("%s: %zu x %zu pixels of %s (%zu x %zu, %s), %zu bits per sample, in %.2f s\n",
                terminalText(options.output).c_str(), drawn.width, drawn.height, terminalText(picture).c_str(), width,
                height, terminalText(description).c_str(), drawn.bits, seconds);
}

void renderImage(Options const& options) {
    auto source = openSource(options, ImageReader::Samples::kAsStored);
    Region const region = chosenRegion(options, source->width(), source->height());
    Shape const shape = {region.width, region.height, EnhancedRenderer::bandsOf(source->bands(), options.steps),
                         bitsOf(options, 8 * source->sampleBytes())};
    // Without a filter, 16-bit samples are shown as their upper byte.
    if (source->sampleBytes() == 2 && options.steps.empty() && shape.bits == 8)
        source = openSource(options, ImageReader::Samples::kEightBits);
    double const seconds = drawInto(
        outputOf(options), shape, kTileBudgetBytes, [&](auto const& instance, auto const& write, auto const& progress) {
            if (options.steps.empty())
                RegionRenderer(instance, options.tileSize).render(*source, region, write, progress);
            else
                EnhancedRenderer(instance, options.steps).render(*source, region, write, progress);
        });
    // Without a count: the apron of a part is read again for its neighbours.
    if (source->lost().any())
        picturefiles::tell("what of " + picturefiles::nameOf(options.image) +
                           " lies beyond the range is clipped, what is no number is drawn as 0");
    report(options, shape, source->width(), source->height(), source->description(), seconds);
}

Zoom zoomOf(Options const& options, PictureInfo const& info) {
    Zoom const smallest = Zoom::nearest(0.0, info.levels);
    if (options.zoom >= smallest.value()) return Zoom::nearest(options.zoom, info.levels);
    throw HostError(HostError::Kind::Usage, picturefiles::nameOf(options.image) + " has " +
                                                counted(info.levels, "level") + "; --zoom is at least " +
                                                toText(smallest.value()));
}

// Without channels where samples are shown as they are.
ShownChannels showingOf(PictureSource const& source) {
    if (source.pyramid && source.display) return ChannelStages::showingOf(*source.pyramid, *source.display);
    if (source.pyramid) return {PyramidStages::infoOf(*source.pyramid), {}};
    TileStore store(source.store, interruption::throwIfNoted);
    if (source.display) return StoreChannelStages::showingOf(store, *source.display);
    return {store.info(), {}};
}

// Which slice and time of a stack.
std::string positionText(ImageStack const& stack, StackPosition const& position) {
    auto const along = [](std::string const& noun, size_t index, size_t extent) {
        if (extent == 1) return std::string();
        return noun == "page" ? ", page " + std::to_string(index + 1) + " of " + std::to_string(extent)
                              : ", " + noun + " " + std::to_string(index) + " of 0 to " + std::to_string(extent - 1);
    };
    return along(stack.sliceNoun, position.slice, stack.slices) + along("t", position.time, stack.times);
}

// Which channels, and the samples that they show.
std::string channelsText(std::vector<ChannelDisplay> const& channels) {
    std::vector<ChannelDisplay> on;
    std::copy_if(channels.begin(), channels.end(), std::back_inserter(on), [](ChannelDisplay const& channel) {
        return channel.isOn && channel.role == ChannelTable::Role::Added;
    });
    auto const colours = std::count_if(channels.begin(), channels.end(), [](ChannelDisplay const& channel) {
        return channel.role == ChannelTable::Role::Added;
    });
    std::string text;
    if (on.size() != static_cast<size_t>(colours))
        text = ", " + std::to_string(on.size()) + " of " + std::to_string(colours) + " channels";
    if (on.empty()) return text;
    auto const hasRangeOfFirst = [&](ChannelDisplay const& channel) {
        return channel.tone.low == on.front().tone.low && channel.tone.high == on.front().tone.high;
    };
    if (!std::all_of(on.begin(), on.end(), hasRangeOfFirst)) return text + ", each in a range of its own";
    return text + ", samples from " + toText(on.front().tone.low) + " to " + toText(on.front().tone.high);
}

// What was made of the file's pixels.
std::string changesText(Pyramid const& pyramid) {
    std::string const& profile = pyramid.facts().image.followedProfile;
    std::string const text = profile.empty() ? "" : ", " + printableText(profile) + " converted to sRGB";
    if (pyramid.orientation() == 1) return text;
    return text + ", turned upright (orientation " + std::to_string(pyramid.orientation()) + ")";
}

// What is said of a picture in the closing line.
std::string description(PictureSource const& source, ShownChannels const& showing) {
    PictureInfo const& info = showing.info;
    std::string text = printableText(info.interpretation);
    if (!source.display) text += ", " + std::to_string(info.bits) + " bits";
    if (source.pyramid)
        text += ", " + source.pyramid->facts().image.format + changesText(*source.pyramid);
    else
        text += ", store of " + counted(info.levels, "level");
    if (source.pyramid && source.display) text += positionText(source.pyramid->facts().stack, source.display->position);
    return text + channelsText(showing.channels);
}

void renderLevels(Options const& options, PictureSource const& source) {
    ShownChannels const showing = showingOf(source);
    PictureInfo const& info = showing.info;
    Zoom const zoom = zoomOf(options, info);
    std::string const note = zoom.noteFor(options.zoom);
    Region const wanted = chosenRegion(options, info.width, info.height);
    Region const region = PictureRenderer::regionAt(info, zoom, wanted);
    Shape const shape = {region.width, region.height, EnhancedRenderer::bandsOf(info.bands, options.steps),
                         bitsOf(options, info.bits)};
    double const seconds = drawInto(
        outputOf(options), shape, kBandBudgetBytes, [&](auto const& instance, auto const& write, auto const& progress) {
            PictureRenderer(instance, source, options.steps, interruption::throwIfNoted, shape.bits)
                .render(zoom, options.smooth, region, write, progress);
        });
    report(options, shape, info.width, info.height, description(source, showing) + (note.empty() ? "" : ", " + note),
           seconds);
}

// Whether samples are shown as the window shows them: where nothing looks at the samples themselves.
bool mayBeDisplayed(Options const& options) {
    bool const asksForMore = !options.display.asksForRangeAlone();
    if (asksForMore && options.bits == 16)
        throw HostError(HostError::Kind::Usage, "--bits 16 keeps samples, and --channel, --z, --t, --curve, "
                                                "--colour-map and --invert show them in 8 bits; leave out one of them");
    return options.bits != 16 && (options.steps.empty() || asksForMore);
}

// Whether the output keeps 16 bits of what was not asked to be shown otherwise. A range makes 16 bits of a file's
// samples; those of a store it shows.
bool keepsSamples(Options const& options, PictureSource const& source) {
    bool const isWeighed = options.smooth && options.zoom < 1;
    if (!namesTiff(options.output) || options.bits == 8 || isWeighed) return false;
    if (TileStore::isStore(options.image)) return options.display.isEmpty();
    SampleFormat const& layout = source.pyramid->facts().image.layout;
    bool const isWide = layout.type == SampleType::Unsigned16 || options.selection.hasRange();
    return options.display.asksForRangeAlone() && isWide && layout.isPlain();
}

// What shows the samples of a file as the window does; nothing where they are as they are, or are kept.
std::optional<PictureSource> displayedSource(Options const& options) {
    if (!mayBeDisplayed(options)) return std::nullopt;
    auto source = picturefiles::shownAtOnce(options.image, options.selection, options.display);
    bool const isDisplayed = source && source->display && !keepsSamples(options, *source);
    return isDisplayed ? source : std::nullopt;
}

void render(Options const& options) {
    // Checked at once: importing an image first may take long.
    requireUsable(outputOf(options), OutputFile::Ending::PngOrTiff);
    imageinput::inspect(options.image, options.selection,
                        mayBeDisplayed(options) ? imageinput::Colours::Ranged : imageinput::Colours::Shown,
                        options.display);
    if (auto const source = displayedSource(options)) return renderLevels(options, *source);
    // At zoom 1 reading the region suffices.
    bool const isStore = TileStore::isStore(options.image);
    if (options.zoom == 1.0 && !isStore) return renderImage(options);
    auto const source = picturefiles::shownAtOnce(options.image, options.selection);
    if (isStore) imageinput::print(picturefiles::notesOf(*source, options.selection));
    renderLevels(options,
                 source ? *source : picturefiles::storeOf(options.image, options.selection, options.cacheBytes));
}

std::string checkZoom(std::string const& text) {
    double zoom = 0.0;
    try {
        zoom = std::stod(text);
    } catch (std::exception const&) {
        return "\"" + text + "\" is not a number";
    }
    if (zoom > 0.0 && zoom <= static_cast<double>(Zoom::kLargest)) return "";
    return "\"" + text + "\" is not a number above 0, at most " + std::to_string(Zoom::kLargest);
}

std::string checkRegion(std::string const& text) {
    try {
        parseRegion(text);
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "";
}

} // namespace

void addRenderCommand(CLI::App& program) {
    auto const options = std::make_shared<Options>();
    auto* const command =
        program.add_subcommand("render", "Draw an image through the backend and write a PNG or TIFF file");
    command->footer(kExamples);
    command->add_option("IMAGE", options->image, "An image or a store; default: the built-in picture")
        ->type_name("")
        ->check(checkNamed);
    addSelectionOptions(*command, options->selection);
    addDisplayOptions(*command, options->display);
    addColourOptions(*command, options->selection);
    command
        ->add_option("-o,--output", options->output,
                     "The file to write: a TIFF where it ends in .tif or .tiff, a PNG where it ends in .png")
        ->required()
        ->type_name("FILE")
        ->check(checkNamed);
    command->add_flag("--force", options->force, "Replace an existing output file");
    command->add_option("-r,--region", options->region, "The part to draw, in pixels; default: the whole image")
        ->type_name("X,Y,W,H")
        ->check(checkRegion);
    command
        ->add_option("--zoom", options->zoom,
                     "Magnification, output pixels per picture pixel: a whole number, or below 1 the nearest of 32 "
                     "steps per halving")
        ->capture_default_str()
        ->type_name("Z")
        ->check(checkZoom);
    command
        ->add_option("--bits", options->bits,
                     "Bits per sample of the output, 8 or 16; default: 16 where the picture has them, the file is a "
                     "TIFF and there "
                     "is no filter and no --smooth, else 8")
        ->type_name("N")
        ->check(CLI::IsMember({8, 16}));
    command
        ->add_option("--tile", options->tileSize, "Side of a tile in pixels, where an image is drawn without filters")
        ->capture_default_str()
        ->type_name("PIXELS")
        ->check(CLI::Range(RegionRenderer::kMinTileSize, RegionRenderer::kMaxTileSize));
    command->add_flag("--smooth", options->smooth,
                      "Zoom below 1: bilinear interpolation instead of the nearest sample");
    addCacheOption(*command, options->cacheBytes);
    addFilterOptions(*command);
    command->callback([options, command] {
        options->steps = filterStepsOf(*command);
        options->display = withRange(options->display, options->selection);
        render(*options);
    });
}
