#include "gles3renderbackend/filters/Gles3FilterSharpnessH16.h"

#include "GlslSources.h"

Gles3FilterSharpnessH16::Gles3FilterSharpnessH16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterSharpnessH16_vert, glsl::Gles3FilterSharpnessH16_frag, filter) {}
