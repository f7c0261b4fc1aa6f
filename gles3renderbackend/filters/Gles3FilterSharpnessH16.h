#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// The horizontal blur of the 16-bit unsharp mask: five taps, weights 1 13 36 13 1, scale 64. Three channels, read as
/// 10-bit samples: negative ones count as 0, larger ones as 1023. The output is unsigned.
class Gles3FilterSharpnessH16 : public Gles3Shader {
public:
    explicit Gles3FilterSharpnessH16(Filter& filter);
};
