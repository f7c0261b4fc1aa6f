// velmora-require-gl [COMMAND ARGUMENT...]: runs the command if the GL implementation that the environment names is
// available. Otherwise it says why not and ends with the code of a skipped or, if one is required, a failed test.
#include "tests/support/GlImplementation.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
    {
        auto const implementation = GlImplementation::open();
        auto& stream = implementation.context == nullptr ? std::cerr : std::cout;
        stream << implementation.description << std::endl;
        // Skips the clean-up: a driver's leaks do not matter here.
        if (implementation.context == nullptr) std::_Exit(GlImplementation::exitCodeWhenMissing());
        if (argc < 2) std::_Exit(EXIT_SUCCESS);
    }
    execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    return EXIT_FAILURE;
}
