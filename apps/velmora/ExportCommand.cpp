#include "apps/velmora/Commands.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/MetadataFiles.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "host/PlainText.h"
#include "host/Threads.h"
#include "host/store/StoreExporter.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr auto kExamples = R"(Examples:
  velmora export slide.vlm copy.tif                    the same samples again
  velmora export slide.vlm copy.tif --metadata folder  and label.png, profile.icc, ... in a folder

The TIFF has the tags, the ICC profile and the label and other images that the store has kept, as
they were in the file that it was made of.)";

struct Options {
    std::string store;
    std::string output;
    std::string metadata; // folder; empty: none
    size_t jobs = 0;
    bool force = false;
};

void tellOfLeftOut(Options const& options, StoreInfo const& info, size_t images) {
    bool const hasSize = info.micronsPerPixelX > 0 || info.micronsPerPixelY > 0;
    if (hasSize && !tiffFormatOf(info).hasResolution())
        picturefiles::tell("the size of a pixel of '" + options.store + "' does not fit in a TIFF; it is left out");
    if (images > 0)
        picturefiles::tell(counted(images, "image") + " beside the picture of '" + options.store +
                           "' cannot be written, and left out; --metadata FOLDER keeps what is there");
}

std::string textOf(std::vector<std::string> const& names) {
    if (names.empty()) return "nothing, for the store has kept nothing but tags";
    return terminalText(CLI::detail::join(names, ", "));
}

void exportTiff(Options const& options) {
    OutputFile file(options.output);
    file.replace = options.force;
    file.sources = {options.store};
    requireUsable(file, OutputFile::Ending::Tiff);
    imageinput::requireStoreFile(options.store);
    TileStore store(options.store, interruption::throwIfNoted);
    StoreInfo const& info = store.info();
    std::optional<MetadataFiles> files;
    if (!options.metadata.empty()) files.emplace(store.allMetadata(), options.metadata, options.force, options.store);
    size_t imagesLeftOut = 0;
    {
        ProgressBar bar(options.output, stderr, info.width);
        auto const progress = [&](size_t done, size_t total) {
            interruption::throwIfNoted();
            bar.update(done, total);
        };
        imagesLeftOut = exportStore(store, file, progress, options.jobs);
    }
    if (files) files->write();
    tellOfLeftOut(options, info, imagesLeftOut);
    std::printf("%s: %zu x %zu pixels, %s, %zu bits per sample, of %s\n", terminalText(options.output).c_str(),
                info.width, info.height, terminalText(info.interpretation).c_str(), info.bits,
                terminalText(options.store).c_str());
    if (files) std::printf("%s: %s\n", terminalText(options.metadata).c_str(), textOf(files->names()).c_str());
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
    command
        ->add_option("--metadata", options->metadata,
                     "Also write what the store has kept beside the picture as files of this folder")
        ->type_name("FOLDER")
        ->check(checkNamed);
    command->add_option("--jobs", options->jobs, "Threads that compress; default: one per core")
        ->type_name("N")
        ->check(CLI::Range(size_t{1}, kMaxJobs));
    command->add_flag("--force", options->force, "Replace existing output files");
    command->callback([options] { exportTiff(*options); });
}
