#include "gles3renderbackend/filters/Gles3FilterFirIH53LeGall16.h"

#include "GlslSources.h"

Gles3FilterFirIH53LeGall16::Gles3FilterFirIH53LeGall16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterFirIH53LeGall16_vert, glsl::Gles3FilterFirIH53LeGall16_frag, filter) {
    setAlignXIn(2);
    setAlignXOut(2);
}
