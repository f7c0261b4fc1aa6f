#pragma once

#include "host/HostError.h"

#include <string>

/// Failures that occur in several rooms, each with one wording.
namespace failures {

/// The text of an errno, in the style of our other messages.
std::string reasonOf(int error);

/// "cannot open 'PATH': REASON; check the path"
HostError cannotOpen(std::string const& path, std::string const& reason);

/// Both texts say which driver to install.
HostError noGlContext(std::string const& reason);
HostError noGlContextForWindow(std::string const& reason);

} // namespace failures
