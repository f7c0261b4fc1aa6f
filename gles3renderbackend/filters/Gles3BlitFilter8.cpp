#include "gles3renderbackend/filters/Gles3BlitFilter8.h"

#include "GlslSources.h"

Gles3BlitFilter8::Gles3BlitFilter8(Filter& filter)
    : Gles3Shader(glsl::Gles3BlitFilter8_vert, glsl::copy_frag, filter) {}
