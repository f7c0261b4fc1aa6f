#pragma once

#include <string>
#include <vector>

/// Faults in the state of GL contexts. Tests of a host make contexts of their own, which cannot be inspected once they
/// are destroyed: so a context is inspected whenever another one, or none, becomes current in its place
/// (InterposedGl.cpp calls look()).
namespace context_findings {

/// Inspects the current context, if there is one, and records its faults.
void look();

/// The faults recorded since the last call, and those of the current context. Empty: all in order.
std::vector<std::string> take();

} // namespace context_findings
