#pragma once

#include <iosfwd>
#include <string>
#include <vector>

/// The required effect of a mutant.
enum class Fate {
    kDiffers,                ///< results differ from the reference
    kDiffersInHalfPrecision, ///< results differ if mediump has 16 bits, as on llvmpipe; elsewhere nothing changes
    kEquivalent              ///< no result changes: `why` gives the reason
};

/// One deliberate fault in the GLSL text of one filter.
struct Mutant {
    char const* name;   ///< unique
    char const* filter; ///< one that runs it
    char const* file;   ///< below gles3renderbackend/filters
    char const* search; ///< stands in the file, and in the filter's stage, exactly once
    char const* replacement;
    char const* why; ///< the loss without the code, or why there is none
    Fate fate = Fate::kDiffers;
};

std::ostream& operator<<(std::ostream& stream, Mutant const& mutant);

std::vector<Mutant> const& glslMutants();
