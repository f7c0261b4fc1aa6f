#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Copies 8-bit texels.
class Gles3BlitFilter8 : public Gles3Shader {
public:
    explicit Gles3BlitFilter8(Filter& filter);
};
