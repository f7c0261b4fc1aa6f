#pragma once

#include <string>
#include <vector>

/// Finds vertex attribute arrays that were left enabled: the host's next draw would read from a buffer that may be
/// gone.
namespace enabled_vertex_arrays {

/// The enabled arrays of the bound vertex array object. They are disabled, so that only one test reports them. Empty:
/// all in order.
std::vector<std::string> findings();

} // namespace enabled_vertex_arrays
