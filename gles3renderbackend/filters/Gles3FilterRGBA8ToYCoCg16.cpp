#include "gles3renderbackend/filters/Gles3FilterRGBA8ToYCoCg16.h"

#include "GlslSources.h"

Gles3FilterRGBA8ToYCoCg16::Gles3FilterRGBA8ToYCoCg16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterRGBA8ToYCoCg16_vert, glsl::Gles3FilterRGBA8ToYCoCg16_frag, filter) {}
