#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// The vertical blur of the 16-bit unsharp mask, and the mask itself: input 00 is the source, input 01 the output of
/// Gles3FilterSharpnessH16. With a FilterSharpness16Params. The output is not clamped.
class Gles3FilterSharpnessV16 : public Gles3Shader {
public:
    explicit Gles3FilterSharpnessV16(Filter& filter);

    void uploadParameters(SingleFilterParameters const& params) override;
};
