#pragma once

#include <filesystem>
#include <string>

/// Temporary files of outputs: how they are named, and what becomes of those whose writer was killed.
///
/// A writer holds a lock on its temporary file, which the system lets go of when the process ends, however that comes
/// about. A temporary file that nobody holds is a leftover. Any thread, any number of processes.
namespace leftovers {

/// A name for a temporary file of the target, in the target's folder, with a random end: ".NAME.velmora-0123abcd"; of a
/// NAME too long for that only its beginning and a hash.
std::filesystem::path temporaryName(std::filesystem::path const& target);

/// Takes hold of a temporary file, open for writing, until its last descriptor is closed. False where it was taken for
/// a leftover just before, and is gone. Throws std::system_error. On a file system without locks nothing is a leftover.
bool hold(int descriptor);

/// Removes the leftovers of a target, as far as that is possible.
void removeOf(std::filesystem::path const& target);

/// The same for all targets in a folder.
void removeAll(std::filesystem::path const& folder);

} // namespace leftovers
