#include "gles3renderbackend/filters/Gles3FilterYCoCg16ToRGBA8.h"

#include "GlslSources.h"

Gles3FilterYCoCg16ToRGBA8::Gles3FilterYCoCg16ToRGBA8(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterYCoCg16ToRGBA8_vert, glsl::Gles3FilterYCoCg16ToRGBA8_frag, filter) {}
