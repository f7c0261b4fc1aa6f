#pragma once

/// Locks of open files, which the system releases when the last descriptor of the opening is closed, in whatever way a
/// process ends. They belong to the opening: SQLite's locks on a store's file belong to the process, and would go with
/// any of its descriptors that is closed. Any thread.
namespace filelock {

enum class Kind {
    Shared,   ///< with others of its kind; the descriptor is open for reading
    Exclusive ///< alone; the descriptor is open for writing
};

/// Whether the lock was to be had at once. False sets errno.
bool take(int descriptor, Kind kind);
/// As take(), but waits while others hold it.
bool await(int descriptor, Kind kind);
/// Whether a lock failed with this value of errno because the file system has none.
bool isMissing(int errorNumber);

} // namespace filelock
