#include "gles3renderbackend/filters/Gles3FilterYCoCg16ToRGB16.h"

#include "GlslSources.h"

Gles3FilterYCoCg16ToRGB16::Gles3FilterYCoCg16ToRGB16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterYCoCg16ToRGB16_vert, glsl::Gles3FilterYCoCg16ToRGB16_frag, filter) {}
