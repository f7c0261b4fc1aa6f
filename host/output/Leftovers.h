#pragma once

#include <filesystem>
#include <string>

/// Names temporary files of outputs, and removes those whose writer was killed.
///
/// A writer holds a lock on its temporary file, which the system releases when the process ends, in whatever way. A
/// temporary file without a lock is a leftover. Any thread, any number of processes.
namespace leftovers {

/// A name for a temporary file of the target, in the target's folder, with a random end: ".NAME.velmora-0123abcd". A
/// NAME too long for that is replaced by its beginning and a hash.
std::filesystem::path temporaryName(std::filesystem::path const& target);

/// Locks a temporary file, open for writing, until its last descriptor is closed. False if it was taken for a leftover
/// just before, and is gone. Throws std::system_error. On a file system without locks no file is a leftover.
bool hold(int descriptor);

/// Removes the leftovers of a target, as far as possible.
void removeOf(std::filesystem::path const& target);

/// Removes the leftovers of all targets in a folder, as far as possible.
void removeAll(std::filesystem::path const& folder);

} // namespace leftovers
