#pragma once

#include "host/display/DisplayRequest.h"
#include "host/image/ImageSelection.h"

#include <string>
#include <vector>

/// Checks of the IMAGE argument before a command starts its work.
namespace imageinput {

enum class Colours {
    Kept,  ///< a command that promises every sample: colours other than grey and RGB are refused
    Shown, ///< a command that shows a picture: such colours are converted, with a note
    Ranged ///< the same, and samples of every type are shown through a range
};

/// Opens the image, or nothing for the built-in picture: the conversions that no option asked for, a sentence each.
/// Throws HostError: missing file, unreadable image (something would be lost that an option could keep), usage
/// (the selection is impossible, or display is asked for of what is shown as it is, such as the built-in picture).
std::vector<std::string> notesOf(std::string const& image, ImageSelection const& selection, Colours colours,
                                 DisplayRequest const& display = {});

/// Reports sentences on stderr.
void print(std::vector<std::string> const& notes);

/// notesOf(), reported on stderr.
void inspect(std::string const& image, ImageSelection const& selection, Colours colours,
             DisplayRequest const& display = {});

/// Throws HostError (no store) if a store's name is not that of a regular file, before opening a pipe could block.
void requireStoreFile(std::string const& path);

} // namespace imageinput
