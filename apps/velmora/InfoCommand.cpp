#include "apps/velmora/Commands.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureText.h"
#include "host/Failures.h"
#include "host/PlainText.h"
#include "host/gl/GlInfo.h"
#include "host/gl/SurfacelessContext.h"
#include "host/image/InputFile.h"
#include "host/image/SrgbConversion.h"
#include "host/store/KeptMetadata.h"
#include "host/store/TileStore.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>

namespace {

void printText(std::string const& name, std::string const& value) {
    std::printf("%-24s%s\n", terminalText(name).c_str(), terminalText(value).c_str());
}

void printNumber(char const* name, std::int64_t value) {
    printText(name, std::to_string(value));
}

void printPrecision(GlPrecision const& precision) {
    std::printf("%-10s%-14s  -2^%d to 2^%d, ", precision.stage.c_str(), precision.type.c_str(), precision.range[0],
                precision.range[1]);
    if (precision.bits == 0)
        std::printf("whole numbers\n");
    else
        std::printf("relative accuracy 2^-%d\n", precision.bits);
}

void glInfo() {
    SurfacelessContext const context;
    GlInfo const gl = queryGlInfo();
    printText("renderer", gl.renderer);
    printText("vendor", gl.vendor);
    printText("version", gl.version);
    printText("shading language", gl.shadingLanguageVersion);
    printNumber("max texture size", gl.maxTextureSize);
    printText("max viewport", std::to_string(gl.maxViewport[0]) + " x " + std::to_string(gl.maxViewport[1]));
    printNumber("fragment texture units", gl.fragmentTextureUnits);
    printNumber("combined texture units", gl.combinedTextureUnits);
    std::printf("\nprecisions\n");
    for (GlPrecision const& precision : gl.precisions)
        printPrecision(precision);
}

std::string micronsText(StoreInfo const& store) {
    if (store.micronsPerPixelX <= 0 || store.micronsPerPixelY <= 0) return "unknown";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%g x %g microns", store.micronsPerPixelX, store.micronsPerPixelY);
    return text.data();
}

size_t bytesOf(std::string const& path) {
    std::error_code failed;
    auto const bytes = std::filesystem::file_size(path, failed);
    if (failed) throw failures::cannotOpen(path, failures::reasonOf(failed.value()));
    return bytes;
}

void storeInfo(size_t bytes, TileStore& store) {
    StoreInfo const& info = store.info();
    KeptMetadata const kept = keptIn(store);
    auto const number = [](char const* name, size_t value) { printNumber(name, static_cast<std::int64_t>(value)); };
    number("width", info.width);
    number("height", info.height);
    printText("bands", std::to_string(info.bands) + ", " + info.interpretation);
    number("bits per sample", info.bits);
    number("bits outside wavelet", info.residualBits);
    number("levels", info.levels);
    number("tile size", info.tileSize);
    number("tiles", storegeometry::totalTiles(info));
    printText("pixel size", micronsText(info));
    printText("made of", info.sourceName);
    printText("taken of it", info.selection.empty() ? "all, sample for sample" : info.selection);
    printText("kept with it", kept.summary.empty() ? "nothing" : kept.summary);
    for (ImageProperty const& line : picturetext::linesOfLook(kept.facts))
        printText(line.name, line.value);
    number("bytes", bytes);
}

nlohmann::ordered_json propertiesJson(std::vector<ImageProperty> const& properties) {
    auto list = nlohmann::ordered_json::array();
    for (ImageProperty const& property : properties)
        list.push_back({{"name", property.name}, {"value", property.value}});
    return list;
}

// Keys are the names of the store's description.
void storeJson(size_t bytes, TileStore& store) {
    StoreInfo const& info = store.info();
    KeptMetadata const kept = keptIn(store);
    auto metadata = nlohmann::ordered_json::array();
    for (MetadataItem const& item : store.metadata())
        metadata.push_back({{"kind", item.kind}, {"name", item.name}});
    nlohmann::ordered_json const report = {{"width", info.width},
                                           {"height", info.height},
                                           {"bands", info.bands},
                                           {"bits", info.bits},
                                           {"residualBits", info.residualBits},
                                           {"levels", info.levels},
                                           {"tileSize", info.tileSize},
                                           {"tiles", storegeometry::totalTiles(info)},
                                           {"micronsPerPixelX", info.micronsPerPixelX},
                                           {"micronsPerPixelY", info.micronsPerPixelY},
                                           {"sourceName", info.sourceName},
                                           {"interpretation", info.interpretation},
                                           {"selection", info.selection},
                                           {"rangeLow", info.rangeLow},
                                           {"rangeHigh", info.rangeHigh},
                                           {"orientation", kept.facts.orientation},
                                           {"colourProfile", SrgbConversion::of(kept.facts).profile},
                                           {"otherImages", kept.otherImages},
                                           {"metadata", metadata},
                                           {"properties", propertiesJson(kept.facts.properties)},
                                           {"bytes", bytes}};
    // A file name may hold any bytes.
    std::cout << report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void glJson() {
    SurfacelessContext const context;
    GlInfo const gl = queryGlInfo();
    nlohmann::ordered_json report = {{"renderer", gl.renderer},
                                     {"vendor", gl.vendor},
                                     {"version", gl.version},
                                     {"shadingLanguageVersion", gl.shadingLanguageVersion},
                                     {"maxTextureSize", gl.maxTextureSize},
                                     {"maxViewport", gl.maxViewport},
                                     {"fragmentTextureUnits", gl.fragmentTextureUnits},
                                     {"combinedTextureUnits", gl.combinedTextureUnits},
                                     {"precisions", nlohmann::ordered_json::array()}};
    for (GlPrecision const& precision : gl.precisions)
        report["precisions"].push_back({{"stage", precision.stage},
                                        {"type", precision.type},
                                        {"range", precision.range},
                                        {"bits", precision.bits}});
    std::cout << report.dump(2) << '\n';
}

// Nothing is printed before all of it is known.
void imageInfo(std::string const& image) {
    auto lines = picturetext::linesOf(picturetext::factsOf(image));
    auto const others = picturetext::otherImagesOf(image);
    if (!others.empty()) lines.push_back({"other images", CLI::detail::join(others, ", ")});
    lines.push_back({"bytes", std::to_string(bytesOf(image))});
    for (ImageProperty const& line : lines)
        printText(line.name, line.value);
}

nlohmann::ordered_json levelsJson(std::vector<PyramidLevel> const& levels) {
    auto all = nlohmann::ordered_json::array();
    for (PyramidLevel const& level : levels)
        all.push_back({{"width", level.size.width},
                       {"height", level.size.height},
                       {"tileWidth", level.unit.width},
                       {"tileHeight", level.unit.height}});
    return all;
}

double micronsOf(double pixelsPerMillimetre) {
    return pixelsPerMillimetre > 0 ? 1000 / pixelsPerMillimetre : 0;
}

// 0: a pixel's size is unknown. Properties are a list, for a name may be there twice.
void imageJson(std::string const& image) {
    PyramidFacts const facts = picturetext::factsOf(image);
    ImageFacts const& picture = facts.image;
    nlohmann::ordered_json report = {{"width", picture.layout.width},
                                     {"height", picture.layout.height},
                                     {"format", picture.format},
                                     {"bands", picture.layout.bands},
                                     {"sampleType", toText(picture.layout.type)},
                                     {"colours", picture.layout.colours},
                                     {"alpha", picture.layout.alpha},
                                     {"colourSpace", picture.colourSpace},
                                     {"pages", picture.pages},
                                     {"slices", facts.stack.slices},
                                     {"times", facts.stack.times},
                                     {"channels", nlohmann::ordered_json::array()},
                                     {"levels", levelsJson(facts.levels)},
                                     {"micronsPerPixelX", micronsOf(picture.pixelsPerMillimetreX)},
                                     {"micronsPerPixelY", micronsOf(picture.pixelsPerMillimetreY)},
                                     {"orientation", picture.orientation},
                                     {"colourProfile", SrgbConversion::of(picture).profile},
                                     {"nodata", nullptr},
                                     {"otherImages", picturetext::otherImagesOf(image)},
                                     {"properties", propertiesJson(picture.properties)},
                                     {"bytes", bytesOf(image)}};
    for (BandFacts const& band : picture.bands)
        report["channels"].push_back(band.name);
    if (picture.nodata) report["nodata"] = *picture.nodata;
    std::cout << report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

// A file that is called a store and is none is told so.
bool isImage(std::string const& path) {
    return !TileStore::isStore(path) && std::filesystem::path(path).extension() != ".vlm";
}

struct Options {
    std::string file;
    bool json = false;
};

void info(Options const& options) {
    if (options.file.empty()) return options.json ? glJson() : glInfo();
    requireRegularFile(options.file, HostError::Kind::UnreadableImage);
    if (isImage(options.file)) return options.json ? imageJson(options.file) : imageInfo(options.file);
    TileStore store(options.file, interruption::throwIfNoted);
    size_t const bytes = bytesOf(options.file);
    options.json ? storeJson(bytes, store) : storeInfo(bytes, store);
}

} // namespace

void addInfoCommand(CLI::App& program) {
    auto const options = std::make_shared<Options>();
    auto* const command = program.add_subcommand(
        "info",
        "Print what an image or a tile store holds, or the OpenGL ES implementation, its limits and its precisions");
    command->add_option("FILE", options->file, "An image or a tile store; without it the GL implementation is shown")
        ->type_name("")
        ->check(checkNamed);
    command->add_flag("--json", options->json, "Print JSON instead of text");
    command->callback([options] { info(*options); });
}
