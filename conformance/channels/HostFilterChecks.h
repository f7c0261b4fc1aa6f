#pragma once

#include "conformance/Checks.h"

namespace conformance {

/// The runs of the program's own filters, for a backend that has them in its registry.
Checks hostFilterChecks();

} // namespace conformance
