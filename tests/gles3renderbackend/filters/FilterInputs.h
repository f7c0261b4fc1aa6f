#pragma once

#include "conformance/Inputs.h"

#include <cstdlib>

/// What the filters are fed with in the tests.
namespace filtertest {

using conformance::boundaryPlane;
using conformance::boundaryTriples;
using conformance::colours;
using conformance::cropped;
using conformance::everySample;
using conformance::everySampleOfChannel;
using conformance::everySampleThrice;
using conformance::greySlope;
using conformance::kBoundaries;
using conformance::kColourParts;
using conformance::randomColours;
using conformance::randomPlane;
using conformance::randomPlanes;
using conformance::randomTexels;
using reference::Texels;

/// VELMORA_LONG in the environment: whole colour cubes instead of samples of them.
inline bool isLongRun() {
    return std::getenv("VELMORA_LONG") != nullptr;
}

} // namespace filtertest
