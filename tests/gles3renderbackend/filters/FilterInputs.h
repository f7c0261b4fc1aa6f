#pragma once

#include "conformance/Inputs.h"

/// Input pictures of the filters in the tests.
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

} // namespace filtertest
