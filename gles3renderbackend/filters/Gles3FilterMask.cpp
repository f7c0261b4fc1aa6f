#include "gles3renderbackend/filters/Gles3FilterMask.h"

#include "renderbackend/FilterParameters.h"

#include "GlslSources.h"

Gles3FilterMask::Gles3FilterMask(Filter& filter) : Gles3Shader(glsl::Gles3FilterMask_vert, glsl::copy_frag, filter) {
    offerParameters<MaskFilterParams>(); // read by maskRange: the program itself has no parameters
}
