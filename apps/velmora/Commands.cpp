#include "apps/velmora/Commands.h"

#include "apps/velmora/ExitCodes.h"

namespace {

constexpr auto kDescription = "Draws very large images tile by tile on OpenGL ES 3.";
constexpr auto kExamples = R"(Examples:
  velmora render photo.tif -o view.png         draw an image, write what was drawn
  velmora render -o map.png -r 0,0,1920,1080   draw a part of the built-in picture
  velmora view photo.tif                       pan and zoom through an image or a store
  velmora info                                 what the GL driver can do
  velmora verify                               whether every filter is exact on it
  velmora import photo.tif photo.vlm           keep an image as a lossless tile store
  velmora render --help                        more about one command

)";

} // namespace

std::unique_ptr<CLI::App> makeProgram() {
    auto program = std::make_unique<CLI::App>(kDescription, "velmora");
    program->set_version_flag("--version", "velmora " VELMORA_VERSION, "Print the version and exit");
    program->require_subcommand(0, 1);
    program->footer(kExamples + exitCodeTable());
    addViewCommand(*program);
    addRenderCommand(*program);
    addInfoCommand(*program);
    addVerifyCommand(*program);
    addImportCommand(*program);
    addExportCommand(*program);
    addCheckCommand(*program);
    addCacheCommand(*program);
    return program;
}
