#include "gles3renderbackend/filters/Gles3FilterSharpnessV16.h"

#include "gles3renderbackend/filters/FixedPoint.h"
#include "renderbackend/FilterParameters.h"

#include "GlslSources.h"

Gles3FilterSharpnessV16::Gles3FilterSharpnessV16(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterSharpnessV16_vert, glsl::Gles3FilterSharpnessV16_frag, filter) {
    offerParameters<FilterSharpness16Params>();
}

void Gles3FilterSharpnessV16::uploadParameters(SingleFilterParameters const& params) {
    auto const& sharpness = params.as<FilterSharpness16Params>();
    // Deliberate: the fraction is dropped before the scaling by 32, so this pass uses whole gains only, unlike the
    // 8-bit filter.
    std::int64_t const steps = arithmeticShift(std::int64_t{toInteger(sharpness.gain)} * 32, sharpness.shiftBits);
    glUniform1f(uniformLocation("a_gain"), static_cast<GLfloat>(steps));
}
