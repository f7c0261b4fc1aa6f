#pragma once

#include "tests/host/store/TestPictures.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A store's picture at its levels, straight from the formulas of colour transform and wavelet.
namespace levelmodel {

/// Lowest bits of a 16-bit sample that its store leaves outside the wavelet, where the coefficients of the rest fit.
constexpr size_t kResidualBits = 3;

/// The picture at level 0, 1, ... `levels`, interleaved bytes: each level has half the samples of the one before,
/// rounded up.
std::vector<std::vector<std::uint8_t>> levelsOf(testpictures::Picture const& picture, size_t levels);

/// The same of a picture of 16 bits, as codes of 16 bits: those of coarser levels, which know of the upper bits only,
/// have lower bits of 0 and end where the picture's do.
std::vector<std::vector<std::uint16_t>> codesOf(testpictures::Picture const& picture, size_t levels);

} // namespace levelmodel
