#include "gles3renderbackend/filters/Gles3FilterInterleave16.h"

#include "GlslSources.h"

Gles3FilterInterleave16::Gles3FilterInterleave16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterInterleave16_vert, glsl::Gles3FilterInterleave16_frag, filter) {
    setAlignXIn(2);
}
