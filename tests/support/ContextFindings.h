#pragma once

#include <string>
#include <vector>

/// What GL contexts were left with. Tests of a host make contexts of their own, and nobody can ask those that are gone:
/// so a context is looked at whenever another one, or none, becomes current in its place (InterposedGl.cpp sees to
/// that).
namespace context_findings {

/// Looks at the current context, if there is one, and notes what is wrong with it.
void look();

/// What was noted since the last call, and what is wrong with the current context. Empty: all in order.
std::vector<std::string> take();

} // namespace context_findings
