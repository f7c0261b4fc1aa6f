#include "gles3renderbackend/filters/Gles3Filter1x16ToRGB8.h"

#include "GlslSources.h"

Gles3Filter1x16ToRGB8::Gles3Filter1x16ToRGB8(Filter& filter)
    : Gles3Shader(glsl::Gles3Filter1x16ToRGB8_vert, glsl::Gles3Filter1x16ToRGB8_frag, filter) {
    setAlignXIn(2);
}
