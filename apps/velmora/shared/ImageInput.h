#pragma once

#include "host/image/ImageSelection.h"

#include <string>

/// What commands look at before they start on what they are given as IMAGE.
namespace imageinput {

enum class Colours {
    Kept, ///< a command that promises every sample: others than grey and RGB are refused
    Shown ///< a command that shows a picture: they are converted, and that is said
};

/// Opens the image, or nothing for the built-in picture, and says on stderr what is done with it that nobody has asked
/// for. Throws HostError: missing file, unreadable image (something of it would be lost that an option could keep),
/// usage (the selection cannot be had, as of a store or of the built-in picture).
void inspect(std::string const& image, ImageSelection const& selection, Colours colours);

/// Throws HostError (no store) where a store that is named is no regular file, before something waits for a pipe.
void requireStoreFile(std::string const& path);

} // namespace imageinput
