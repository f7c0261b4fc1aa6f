#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Files of stores that the product does not write: older versions, damaged ones.
namespace storefiles {

/// Runs statements on the file with a plain SQLite, also such that change its schema.
void change(std::string const& path, std::string const& statements);

/// Rewrites a store as one of an older version, as docs/STORE.md describes them.
void rewriteAs(std::int64_t version, std::string const& path);

/// Gives items of the metadata other names, and corrects the checksums.
void renameMetadata(std::string const& path, std::vector<std::pair<std::string, std::string>> const& names);

/// Corrects the checksum after a change of the description.
void sealDescription(std::string const& path);

/// The files beside a database, under its name with a suffix, while a program changes it with `statements` and then
/// every tile; `mode` is its first statement.
std::string unfinishedChange(std::string const& path, std::string const& mode, std::string const& statements,
                             std::string const& suffix);

/// The file's bytes with one bit flipped: bit 0 is the lowest of the first byte.
std::string withBit(std::string file, size_t bit);

} // namespace storefiles
