#include "apps/velmora/Commands.h"
#include "apps/velmora/SelectionOptions.h"
#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/store/StoreCheck.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

StoreCheckResult checkWithProgress(std::string const& path) {
    imageinput::requireStoreFile(path);
    TileStore store(path, interruption::throwIfNoted);
    ProgressBar bar(path, stderr);
    return checkStore(store, [&](size_t done, size_t total) {
        interruption::throwIfNoted();
        bar.update(done, total);
    });
}

void check(std::string const& path) {
    StoreCheckResult const result = checkWithProgress(path);
    for (std::string const& description : result.descriptions)
        std::printf("%s\n", terminalText(description).c_str());
    if (result.damages > 0)
        throw HostError(HostError::Kind::DamagedStore, "the tile store '" + path + "' is damaged in " +
                                                           counted(result.damages, "place") +
                                                           "; import the picture again, or restore the file "
                                                           "from a copy");
    std::printf("%s: %s, all as they were written\n", terminalText(path).c_str(),
                counted(result.tiles, "tile").c_str());
}

} // namespace

void addCheckCommand(CLI::App& program) {
    auto const path = std::make_shared<std::string>();
    auto* const command = program.add_subcommand("check", "Read every tile of a tile store and test its checksum");
    command->add_option("STORE", *path, "The tile store")->required()->type_name("")->check(checkNamed);
    command->callback([path] { check(*path); });
}
