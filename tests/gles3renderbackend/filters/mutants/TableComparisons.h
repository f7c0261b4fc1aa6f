#pragma once

#include "tests/gles3renderbackend/filters/mutants/FilterComparisons.h"

#include <map>

/// Those of the filters that look results up, by name.
std::map<std::string, std::vector<FilterComparison>> tableComparisons();
