#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// The first 100 bytes of a store's file: SQLite's own header. No checksum covers them, and several of them change the
/// meaning of all other bytes, or the files that SQLite looks for beside this one. So they are compared with a store's,
/// byte for byte, before SQLite opens the file.
namespace storehead {

struct Head {
    std::array<unsigned char, 100> bytes{}; ///< 0 where the file is shorter
    size_t fileBytes = 0;

    /// SQLite's user_version.
    std::int64_t version() const;
};

/// Whether a file is to be opened as a store: a database of SQLite, or a file whose marks have one damaged byte. No
/// picture format starts like that. Throws HostError: missing file, if the system does not give the bytes of a file
/// that is there; read as a picture, a store would be called damaged.
bool isMarked(std::string const& path);

/// Throws HostError: missing file, also if it cannot be read; no store; damaged store, if the marks are damaged; locked
/// store.
Head read(std::string const& path);

/// Throws HostError (damaged store) if the rest of the header is not that of a store of this version.
void requireLayout(Head const& head, std::string const& path, std::int64_t version);

} // namespace storehead
