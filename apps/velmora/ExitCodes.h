#pragma once

#include "host/HostError.h"

#include <string>

/// The program's exit codes, one per kind of failure, for scripts.
enum ExitCode : int {
    kExitSuccess = 0,
    kExitInternalError = 1,
    kExitUsage = 2,
    kExitMissingFile = 3,
    kExitUnreadableImage = 4,
    kExitRegionOutside = 5,
    kExitUnwritableOutput = 6,
    kExitNoGlContext = 7,
    kExitBackendFailure = 8,
    kExitNoStore = 9,
    kExitDamagedStore = 10,
    kExitNewerStore = 11,
    kExitLockedStore = 12,
    kExitNoDisplay = 13,
    kExitInterrupted = 130, ///< 128 + SIGINT, the shells' convention
};

ExitCode exitCodeOf(HostError::Kind kind);

/// The exit codes as a table for --help.
std::string exitCodeTable();
