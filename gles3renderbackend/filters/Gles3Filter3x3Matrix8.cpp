#include "gles3renderbackend/filters/Gles3Filter3x3Matrix8.h"

#include "gles3renderbackend/filters/FixedPoint.h"
#include "renderbackend/FilterParameters.h"

#include "GlslSources.h"

Gles3Filter3x3Matrix8::Gles3Filter3x3Matrix8(Filter& filter)
    : Gles3Shader(glsl::Gles3Filter3x3Matrix8_vert, glsl::Gles3Filter3x3Matrix8_frag, filter) {
    offerParameters<Filter3x3MatrixParams>();
}

void Gles3Filter3x3Matrix8::uploadParameters(SingleFilterParameters const& params) {
    auto const coefficients = scaledCoefficients(params.as<Filter3x3MatrixParams>());
    std::array<GLfloat, 9> matrix{};
    for (size_t i = 0; i < matrix.size(); ++i)
        matrix[i] = static_cast<GLfloat>(coefficients[i]) * (1.0F / 1024.0F);
    glUniformMatrix3fv(uniformLocation("a_matrix3x3"), 1, GL_FALSE, matrix.data());
}
