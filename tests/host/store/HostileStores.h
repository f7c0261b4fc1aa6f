#pragma once

#include <string>
#include <vector>

/// Files that are made to block a program that reads them as a store, or to fill its memory. Each is damage.
namespace hostilestores {

struct Hostile {
    char const* name;
    void (*make)(std::string const& path);
};

std::vector<Hostile> const& all();

/// A file with the marks of a store of version 3 and objects of its own.
void makeWith(std::string const& schema, std::string const& path);

/// The statements that make a store's objects, each with a semicolon, and one that counts for ever, as r(n).
extern char const* const kMeta;
extern char const* const kTiles;
extern char const* const kIndex;
extern char const* const kEndless;

} // namespace hostilestores
