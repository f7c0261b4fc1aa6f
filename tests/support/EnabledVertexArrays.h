#pragma once

#include <string>
#include <vector>

/// Vertex attribute arrays that were left enabled: the host's next draw would read from a buffer that may be gone.
namespace enabled_vertex_arrays {

/// The arrays of the bound vertex array object that are enabled. They are disabled, so that only one test has them.
/// Empty: all in order.
std::vector<std::string> findings();

} // namespace enabled_vertex_arrays
