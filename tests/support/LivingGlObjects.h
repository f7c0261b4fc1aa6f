#pragma once

#include <set>
#include <string>
#include <vector>

/// The GL objects that this program has made and not yet deleted. Counted by wrapping the functions that make and
/// delete names (CMakeLists.txt has the list for the linker), so the library's calls count as well as the tests' own.
namespace living_gl_objects {

using Snapshot = std::set<std::string>; // "texture 3"

Snapshot snapshot();

/// Objects that have been made since the snapshot and still live, and names that were deleted without living since the
/// last call. Empty: all in order.
std::vector<std::string> findingsSince(Snapshot const& before);

} // namespace living_gl_objects
