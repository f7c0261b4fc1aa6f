#include "gles3renderbackend/filters/Gles3Filter3x16To4x8.h"

#include "GlslSources.h"

Gles3Filter3x16To4x8::Gles3Filter3x16To4x8(Filter& filter)
    : Gles3Shader(glsl::Gles3Filter3x16To4x8_vert, glsl::Gles3Filter3x16To4x8_frag, filter) {}
