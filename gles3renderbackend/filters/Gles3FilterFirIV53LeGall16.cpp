#include "gles3renderbackend/filters/Gles3FilterFirIV53LeGall16.h"

#include "GlslSources.h"

Gles3FilterFirIV53LeGall16::Gles3FilterFirIV53LeGall16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterFirIV53LeGall16_vert, glsl::Gles3FilterFirIV53LeGall16_frag, filter) {
    setAlignXIn(2);
    setAlignXOut(2);
}
