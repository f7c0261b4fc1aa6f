#pragma once

#include "tests/support/ShaderEdit.h"

#include <iosfwd>
#include <vector>

/// A GPU that keeps some numbers of a fragment in 16 bits, whatever precision the text asks for. Emulated: what the
/// text reads of them goes through a rounding function.
struct CoarseDevice {
    enum class Quantity { kVaryings, kFragCoord };

    char const* name;
    Quantity quantity;
    /// GLSL: the function's body. In: v, a highp vec4 of these numbers. Returns it as coarse as the device keeps it.
    char const* rounding;
    /// Whether results are wrong for it.
    bool tooCoarse;
    char const* why;
};

std::ostream& operator<<(std::ostream& stream, CoarseDevice const& device);

std::vector<CoarseDevice> const& coarseDevices();

/// Makes a fragment text that of the device. Counts the varyings, or the places that read gl_FragCoord.
ShaderEdit::Rewriting emulating(CoarseDevice const& device);
