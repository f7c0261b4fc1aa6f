#pragma once

#include "tests/gles3renderbackend/filters/FilterRig.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// One run of a filter on a small and telling input, beside its reference.
using FilterComparison = std::function<::testing::AssertionResult(filtertest::FilterRig& rig)>;

/// The runs of a filter, together sharp enough for every mutant of its GLSL. All of one name use the same two stages.
/// Throws std::out_of_range for a name without any.
std::vector<FilterComparison> const& comparisonsOf(std::string const& filter);
