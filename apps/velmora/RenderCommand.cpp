#include "apps/velmora/Commands.h"
#include "apps/velmora/Interruption.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/BuiltInPicture.h"
#include "host/HostError.h"
#include "host/ImageReader.h"
#include "host/PngWriter.h"
#include "host/ProgressBar.h"
#include "host/RegionRenderer.h"
#include "host/SurfacelessContext.h"
#include "renderbackend/RenderBackendInstance.h"

#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

constexpr size_t kTileBudgetBytes = 256 * 1000 * 1000;

constexpr auto kExamples = R"(Examples:
  velmora render -o map.png -r 9900,4300,1024,768   a part of the built-in picture
  velmora render slide.tif -o view.png              the whole image
  velmora render slide.tif -o view.png -r 8000,6000,1920,1080 --tile 512)";

struct Options {
    std::string image;
    std::string output;
    std::string region;
    size_t tileSize = 256;
};

std::unique_ptr<PixelSource> openSource(Options const& options) {
    if (options.image.empty()) return std::make_unique<BuiltInPicture>();
    return std::make_unique<ImageReader>(options.image);
}

Region chosenRegion(Options const& options, PixelSource const& source) {
    Region const whole{0, 0, source.width(), source.height()};
    if (options.region.empty()) return whole;
    Region const region = parseRegion(options.region);
    if (liesIn(region, whole.width, whole.height)) return region;
    std::string const name = options.image.empty() ? "the built-in picture" : "'" + options.image + "'";
    throw HostError(HostError::Kind::RegionOutside,
                    "the region " + options.region + " leaves " + name + ", which has " + std::to_string(whole.width) +
                        " x " + std::to_string(whole.height) + " pixels; choose X + W and Y + H within that");
}

void render(Options const& options) {
    auto const source = openSource(options);
    Region const region = chosenRegion(options, *source);
    // Before the context: an output that cannot be written is known at once.
    PngWriter png(options.output, region.width, region.height, source->bands());
    SurfacelessContext context;
    Gles3RenderBackend backend(RenderBackend::RGBA32, kTileBudgetBytes);
    RegionRenderer renderer(backend.createInstance(context), options.tileSize);

    auto const start = std::chrono::steady_clock::now();
    {
        ProgressBar bar(options.output, stderr);
        auto const progress = [&bar](size_t done, size_t total) {
            interruption::throwIfNoted();
            bar.update(done, total);
        };
        renderer.render(
            *source, region, [&png](std::uint8_t const* rows, size_t count) { png.writeRows(rows, count); }, progress);
        interruption::throwIfNoted();
        png.finish();
    }
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %zu x %zu pixels of %s (%zu x %zu, %s) in %.2f s\n", options.output.c_str(), region.width,
                region.height, options.image.empty() ? "the built-in picture" : options.image.c_str(), source->width(),
                source->height(), source->description().c_str(), seconds.count());
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
    auto* const command = program.add_subcommand("render", "Draw an image through the backend and write a PNG file");
    command->footer(kExamples);
    command->add_option("IMAGE", options->image, "Any image that libvips reads; without it the built-in picture")
        ->type_name("");
    command->add_option("-o,--output", options->output, "The PNG file to write")->required()->type_name("FILE");
    command->add_option("-r,--region", options->region, "The part to draw, in pixels; without it the whole image")
        ->type_name("X,Y,W,H")
        ->check(checkRegion);
    command->add_option("--tile", options->tileSize, "Side of a tile in pixels")
        ->capture_default_str()
        ->type_name("PIXELS")
        ->check(CLI::Range(RegionRenderer::kMinTileSize, RegionRenderer::kMaxTileSize));
    command->callback([options] { render(*options); });
}
