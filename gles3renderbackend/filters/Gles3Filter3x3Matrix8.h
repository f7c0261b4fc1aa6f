#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// A colour matrix on 8-bit pixels. With a Filter3x3MatrixParams; alpha becomes 255.
class Gles3Filter3x3Matrix8 : public Gles3Shader {
public:
    explicit Gles3Filter3x3Matrix8(Filter& filter);

    void uploadParameters(SingleFilterParameters const& params) override;
};
