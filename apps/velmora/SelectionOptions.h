#pragma once

#include "host/image/ImageSelection.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

/// Adds the options that select a part of an image file, the same for all commands that read one.
void addSelectionOptions(CLI::App& command, ImageSelection& selection);

/// Adds --cache-size, what stores of images may take in the cache.
void addCacheOption(CLI::App& command, std::uint64_t& bytes);

/// A validator of file names: an empty name, for instance of an unset variable in a script, is refused.
std::string checkNamed(std::string const& name);
