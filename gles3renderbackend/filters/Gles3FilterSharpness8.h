#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Unsharp mask on 8-bit pixels, all four channels. With a FilterSharpness8Params.
class Gles3FilterSharpness8 : public Gles3Shader {
public:
    explicit Gles3FilterSharpness8(Filter& filter);

    void uploadParameters(SingleFilterParameters const& params) override;
};
