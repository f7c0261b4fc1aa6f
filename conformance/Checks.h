#pragma once

#include "conformance/Trial.h"

#include <functional>
#include <map>
#include <string>

/// The catalogue: the runs of each filter beside its model, a table a subject. `velmora verify`, the tests and the
/// mutants of the GLSL all run these and no others.
namespace conformance {

/// All runs of one filter that the trial's depth asks for, with the inputs that tell a wrong result from a right one.
using Check = std::function<void(Trial&)>;
/// By the filter's name.
using Checks = std::map<std::string, Check>;

Checks copyChecks();
Checks maskChecks();
Checks waveletChecks();
Checks colourChecks();
Checks matrixChecks();
Checks sharpness8Checks();
Checks sharpness16Checks();
Checks toneChecks();
Checks equalisationChecks();

} // namespace conformance
