#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Cuts signed 16-bit samples, two per texel, to multiples of a power of two, magnitudes toward zero. With a
/// FilterTruncate16Params.
class Gles3FilterTruncate16 : public Gles3Shader {
public:
    explicit Gles3FilterTruncate16(Filter& filter);

    void uploadParameters(SingleFilterParameters const& params) override;
};
