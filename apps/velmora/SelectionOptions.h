#pragma once

#include "host/image/ImageSelection.h"

#include <CLI/CLI.hpp>

#include <string>

/// The options that choose a part of an image file, alike for all commands that read one.
void addSelectionOptions(CLI::App& command, ImageSelection& selection);

/// For names of files: an empty one, as of a variable of a script that is not set, is no file and stands for nothing
/// else.
std::string checkNamed(std::string const& name);
