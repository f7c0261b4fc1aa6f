#pragma once

#include "host/HostError.h"

#include <string>

/// Failures that several rooms meet: one wording each.
namespace failures {

/// What the system says of an errno, in the words of our other messages.
std::string reasonOf(int error);

/// "cannot open 'PATH': REASON; check the path"
HostError cannotOpen(std::string const& path, std::string const& reason);

/// Both say which driver to install.
HostError noGlContext(std::string const& reason);
HostError noGlContextForWindow(std::string const& reason);

} // namespace failures
