#include "gles3renderbackend/filters/Gles3FilterSharpness8.h"

#include "gles3renderbackend/filters/FixedPoint.h"
#include "renderbackend/FilterParameters.h"

#include "GlslSources.h"

Gles3FilterSharpness8::Gles3FilterSharpness8(Filter& filter)
    : Gles3Shader(glsl::Gles3FilterSharpness8_vert, glsl::Gles3FilterSharpness8_frag, filter) {
    offerParameters<FilterSharpness8Params>();
}

void Gles3FilterSharpness8::uploadParameters(SingleFilterParameters const& params) {
    auto const& sharpness = params.as<FilterSharpness8Params>();
    // The gain is rounded toward zero to steps of 1/32.
    std::int32_t const steps = arithmeticShift(toInteger(sharpness.gain * 32.0), sharpness.shiftBits);
    glUniform1f(uniformLocation("a_gain"), static_cast<GLfloat>(steps) * 0.03125F);
}
