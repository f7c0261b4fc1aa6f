#pragma once

#include "host/filter/Enhancement.h"

#include <CLI/CLI.hpp>

#include <vector>

/// Adds one option a filter to a command, each as often as the user likes.
void addFilterOptions(CLI::App& command);

/// What the parsed command line asks for, in its order.
std::vector<enhancement::Step> filterStepsOf(CLI::App const& command);
