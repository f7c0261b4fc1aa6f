#pragma once

#include <cstddef>
#include <functional>

/// Called now and then during long work: steps finished so far and total steps. Steps are rows, tiles or filters. An
/// exception stops the work.
using Progress = std::function<void(size_t done, size_t all)>;
