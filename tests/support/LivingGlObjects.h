#pragma once

#include <set>
#include <string>
#include <vector>

/// The GL objects that this program has made and not yet deleted. Counted by wrapping the functions that make and
/// delete names (the list for the linker is in CMakeLists.txt), so it sees the library's calls as well as the tests'
/// own.
namespace living_gl_objects {

using Snapshot = std::set<std::string>; // "texture 3"

Snapshot snapshot();

/// What lives now and did not live then, and names that were deleted without living since the last call. Empty: all in
/// order.
std::vector<std::string> findingsSince(Snapshot const& before);

} // namespace living_gl_objects
