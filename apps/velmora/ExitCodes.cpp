#include "apps/velmora/ExitCodes.h"

#include <array>
#include <sstream>

namespace {

struct Row {
    ExitCode code;
    char const* meaning;
};

constexpr std::array<Row, 15> kTable{
    {{kExitSuccess, "done"},
     {kExitInternalError, "internal error, out of memory, or verify found differences"},
     {kExitUsage, "the command line is not understood"},
     {kExitMissingFile, "an input file cannot be opened or read"},
     {kExitUnreadableImage, "a file is no image, is damaged, or needs an option that takes a part of it"},
     {kExitRegionOutside, "the region does not lie in the picture"},
     {kExitUnwritableOutput, "the output cannot be written"},
     {kExitNoGlContext, "no OpenGL ES 3 context"},
     {kExitBackendFailure, "the render backend reports a failure"},
     {kExitNoStore, "a file is no tile store"},
     {kExitDamagedStore, "a tile store is damaged"},
     {kExitNewerStore, "a tile store is of a newer version of the program"},
     {kExitLockedStore, "a tile store is locked by another program"},
     {kExitNoDisplay, "no display to open a window on"},
     {kExitInterrupted, "interrupted; no output is left behind"}}};

} // namespace

ExitCode exitCodeOf(HostError::Kind kind) {
    switch (kind) {
    case HostError::Kind::MissingFile:
        return kExitMissingFile;
    case HostError::Kind::UnreadableImage:
        return kExitUnreadableImage;
    case HostError::Kind::RegionOutside:
        return kExitRegionOutside;
    case HostError::Kind::UnwritableOutput:
        return kExitUnwritableOutput;
    case HostError::Kind::NoGlContext:
        return kExitNoGlContext;
    case HostError::Kind::NoStore:
        return kExitNoStore;
    case HostError::Kind::DamagedStore:
        return kExitDamagedStore;
    case HostError::Kind::NewerStore:
        return kExitNewerStore;
    case HostError::Kind::LockedStore:
        return kExitLockedStore;
    case HostError::Kind::NoDisplay:
        return kExitNoDisplay;
    case HostError::Kind::Usage:
        return kExitUsage;
    case HostError::Kind::InexactGl:
    case HostError::Kind::OutOfMemory:
        return kExitInternalError;
    }
    return kExitInternalError;
}

std::string exitCodeTable() {
    std::ostringstream table;
    table << "Exit codes:\n";
    for (Row const& row : kTable) {
        table.width(5);
        table << static_cast<int>(row.code) << "  " << row.meaning << '\n';
    }
    return table.str();
}
