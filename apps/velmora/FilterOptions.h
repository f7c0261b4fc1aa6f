#pragma once

#include "host/filter/Enhancement.h"

#include <CLI/CLI.hpp>

#include <vector>

/// Adds one option per filter to a command; each may be given several times.
void addFilterOptions(CLI::App& command);

/// The filters of the parsed command line, in its order.
std::vector<enhancement::Step> filterStepsOf(CLI::App const& command);
