#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Three planes of 16-bit samples, two per texel, become pixels of three channels in two texels each.
class Gles3FilterInterleave16 : public Gles3Shader {
public:
    explicit Gles3FilterInterleave16(Filter& filter);
};
