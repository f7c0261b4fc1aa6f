#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// The first 100 bytes of a store's file: SQLite's own head. They lie under no checksum, and several of them change
/// what SQLite makes of all others, or which files it looks for beside this one: so they are compared with what a store
/// has, byte for byte, before SQLite sees the file.
namespace storehead {

struct Head {
    std::array<unsigned char, 100> bytes{}; ///< 0 where the file is shorter
    size_t fileBytes = 0;

    /// SQLite's user_version.
    std::int64_t version() const;
};

/// Whether a file is to be opened as a store: a database of SQLite, or one whose marks have a damaged byte. No picture
/// starts like that.
bool isMarked(std::string const& path);

/// Throws HostError: missing file, also where it cannot be read; no store; damaged store, where its marks are; locked
/// store.
Head read(std::string const& path);

/// Throws HostError (damaged store) where the rest of the head is not that of a store of a version.
void requireLayout(Head const& head, std::string const& path, std::int64_t version);

} // namespace storehead
