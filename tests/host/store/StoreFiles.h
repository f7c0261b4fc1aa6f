#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Files of stores that nobody has written like that: older versions, damaged ones.
namespace storefiles {

/// Runs statements on the file with a plain SQLite, also such that change its schema.
void change(std::string const& path, std::string const& statements);

/// Rewrites a store as one of version 1 or 2, as docs/STORE.md describes them.
void rewriteAs(std::int64_t version, std::string const& path);

/// After a change of the description: its checksum fits again.
void sealDescription(std::string const& path);

/// What lies beside a database, under its name with a suffix, while a program changes it with `statements`, and after
/// that every tile; `mode` is the first thing that it does.
std::string unfinishedChange(std::string const& path, std::string const& mode, std::string const& statements,
                             std::string const& suffix);

/// The file's bytes with one bit flipped: bit 0 is the lowest of the first byte.
std::string withBit(std::string file, size_t bit);

} // namespace storefiles
