#pragma once

#include "host/display/DisplayRequest.h"
#include "host/image/ImageSelection.h"

#include <CLI/CLI.hpp>

/// Adds the options that say how samples are shown. --range is among those of addSelectionOptions(), and gets the
/// words for what it means here.
void addDisplayOptions(CLI::App& command, DisplayRequest& request);

/// Adds --no-icc and --no-rotate; without them profiles and orientation tags are followed.
void addColourOptions(CLI::App& command, ImageSelection& selection);

/// The request with the range of --range.
DisplayRequest withRange(DisplayRequest request, ImageSelection const& selection);
