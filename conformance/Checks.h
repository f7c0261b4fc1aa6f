#pragma once

#include "conformance/Trial.h"

#include <functional>
#include <map>
#include <string>

/// The catalogue: the runs that compare each filter with its model, one table per subject. `velmora verify`, the tests
/// and the mutants of the GLSL all use exactly these.
namespace conformance {

/// All runs of one filter at the trial's depth, with inputs that distinguish wrong results from right ones.
using Check = std::function<void(Trial&)>;
/// Keyed by the filter's name.
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
