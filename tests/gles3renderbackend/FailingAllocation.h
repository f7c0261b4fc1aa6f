#pragma once

#include <cstddef>

namespace backendtest {

/// The next `new` of exactly this many bytes throws std::bad_alloc; 0: none does.
void failNextAllocation(size_t bytes);

} // namespace backendtest
