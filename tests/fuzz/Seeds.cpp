// velmora-fuzz-seeds FOLDER: writes the seeds that are stores, FOLDER/store-file/*.vlm.
#include "tests/fuzz/FuzzStores.h"

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: velmora-fuzz-seeds FOLDER\n", stderr);
        return 2;
    }
    std::filesystem::path const folder = std::filesystem::path(argv[1]) / "store-file";
    std::filesystem::create_directories(folder);
    for (size_t which = 0; which < fuzzstores::kValid; ++which)
        writeFile((folder / ("valid" + std::to_string(which) + ".vlm")).string(), fuzzstores::valid(which));
    return 0;
}
