#include "apps/velmora/Commands.h"
#include "apps/velmora/Interruption.h"
#include "host/GlInfo.h"
#include "host/SurfacelessContext.h"
#include "host/TerminalText.h"
#include "host/store/TileStore.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace {

void printText(char const* name, std::string const& value) {
    std::printf("%-24s%s\n", name, terminalText(value).c_str());
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

void storeInfo(std::string const& path) {
    TileStore const store(path, interruption::throwIfNoted);
    StoreInfo const& info = store.info();
    auto const number = [](char const* name, size_t value) { printNumber(name, static_cast<std::int64_t>(value)); };
    number("width", info.width);
    number("height", info.height);
    printText("bands", std::to_string(info.bands) + ", " + info.interpretation);
    number("bits a sample", info.bits);
    number("bits outside wavelet", info.residualBits);
    number("levels", info.levels);
    number("tile size", info.tileSize);
    number("tiles", storegeometry::totalTiles(info));
    printText("pixel size", micronsText(info));
    printText("made of", info.sourceName);
    number("bytes", std::filesystem::file_size(path));
}

} // namespace

void addInfoCommand(CLI::App& program) {
    auto const store = std::make_shared<std::string>();
    auto* const command = program.add_subcommand(
        "info", "Print the OpenGL ES implementation, its limits and its shader precisions, or what a tile store holds");
    auto const* const option =
        command->add_option("STORE", *store, "A tile store; without it the GL implementation is shown")->type_name("");
    command->callback([store, option] { option->empty() ? glInfo() : storeInfo(*store); });
}
