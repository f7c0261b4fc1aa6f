#pragma once

#include "host/image/ImageSelection.h"

#include <CLI/CLI.hpp>

#include <string>

/// Adds the options that select a part of an image file, the same for all commands that read one.
void addSelectionOptions(CLI::App& command, ImageSelection& selection);

/// A validator of file names: an empty name, for instance of an unset variable in a script, is refused.
std::string checkNamed(std::string const& name);
