#pragma once

#include <cstddef>
#include <functional>

/// Called now and then while something long goes on: steps finished so far and steps in all. Steps are rows, tiles or
/// filters. May throw to stop the work.
using Progress = std::function<void(size_t done, size_t all)>;
