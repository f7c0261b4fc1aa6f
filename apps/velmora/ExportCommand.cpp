#include "apps/velmora/Commands.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "host/PlainText.h"
#include "host/store/StoreExporter.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr auto kExamples = R"(Example:
  velmora export slide.vlm copy.tif   the same samples again)";

struct Options {
    std::string store;
    std::string output;
    bool force = false;
};

void exportTiff(Options const& options) {
    OutputFile file(options.output);
    file.replace = options.force;
    file.sources = {options.store};
    requireUsable(file, OutputFile::Ending::Tiff);
    imageinput::requireStoreFile(options.store);
    TileStore store(options.store, interruption::throwIfNoted);
    StoreInfo const& info = store.info();
    {
        ProgressBar bar(options.output, stderr, info.width);
        exportStore(store, file, [&](size_t done, size_t total) {
            interruption::throwIfNoted();
            bar.update(done, total);
        });
    }
    bool const known = info.micronsPerPixelX > 0 || info.micronsPerPixelY > 0;
    if (known && !tiffFormatOf(info).hasResolution())
        picturefiles::tell("the size of a pixel of '" + options.store + "' does not fit in a TIFF; it is left out");
    std::printf("%s: %zu x %zu pixels, %s, %zu bits per sample, of %s\n", terminalText(options.output).c_str(),
                info.width, info.height, terminalText(info.interpretation).c_str(), info.bits,
                terminalText(options.store).c_str());
}

} // namespace

void addExportCommand(CLI::App& program) {
    auto const options = std::make_shared<Options>();
    auto* const command =
        program.add_subcommand("export", "Write the image of a tile store, sample for sample, into a TIFF file");
    command->footer(kExamples);
    command->add_option("STORE", options->store, "The tile store")->required()->type_name("")->check(checkNamed);
    command->add_option("OUTPUT", options->output, "The file to write, .tif or .tiff")
        ->required()
        ->type_name("")
        ->check(checkNamed);
    command->add_flag("--force", options->force, "Replace an existing output file");
    command->callback([options] { exportTiff(*options); });
}
