#include "gles3renderbackend/filters/Gles3FilterMask.h"

#include "GlslSources.h"

Gles3FilterMask::Gles3FilterMask(Filter& filter) : Gles3Shader(glsl::mask_vert, glsl::copy_frag, filter) {}
