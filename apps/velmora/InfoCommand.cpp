#include "apps/velmora/Commands.h"
#include "host/GlInfo.h"
#include "host/SurfacelessContext.h"

#include <cstdio>

namespace {

void printText(char const* name, std::string const& value) {
    std::printf("%-24s%s\n", name, value.c_str());
}

void printNumber(char const* name, std::int32_t value) {
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

void info() {
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

} // namespace

void addInfoCommand(CLI::App& program) {
    auto* const command =
        program.add_subcommand("info", "Print the OpenGL ES implementation, its limits and its shader precisions");
    command->callback(info);
}
