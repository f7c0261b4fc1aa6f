#include "gles3renderbackend/filters/Gles3Filter3x3Matrix16.h"

#include "gles3renderbackend/filters/FixedPoint.h"
#include "renderbackend/FilterParameters.h"

#include "GlslSources.h"

#include <cstdlib>

Gles3Filter3x3Matrix16::Gles3Filter3x3Matrix16(Filter& filter)
    : Gles3Shader(glsl::Gles3Filter3x3Matrix16_vert, glsl::Gles3Filter3x3Matrix16_frag, filter) {
    offerParameters<Filter3x3MatrixParams>();
}

void Gles3Filter3x3Matrix16::uploadParameters(SingleFilterParameters const& params) {
    auto const coefficients = scaledCoefficients(params.as<Filter3x3MatrixParams>());
    setMatrix("a_matrix4x4_32_1", coefficients, 0);
    setMatrix("a_matrix4x4_32_2", coefficients, 1);
    setMatrix("a_matrix4x4_32_3", coefficients, 2);
    // Deliberate: a count of 0 stores nothing, so the rounding correction of this name stays zero.
    std::array<GLfloat, 4> const correction = {0.0F, 2.0F, 0.0F, 0.0F};
    glUniform4fv(uniformLocation("a_K"), 0, correction.data());
}

void Gles3Filter3x3Matrix16::setMatrix(std::string const& name, std::array<std::int32_t, 9> const& coefficients,
                                       size_t channel) const {
    std::array<GLfloat, 16> bytes{};
    for (size_t c = 0; c < 3; ++c) {
        std::int64_t const coefficient = coefficients[3 * c + channel];
        std::int64_t const magnitude = std::abs(coefficient);
        for (size_t k = 0; k < 4; ++k) {
            auto const byte = static_cast<GLfloat>((magnitude >> (8 * k)) & 0xFF);
            bytes[4 * c + k] = coefficient < 0 ? -byte : byte;
        }
    }
    glUniformMatrix4fv(uniformLocation(name), 1, GL_FALSE, bytes.data());
}
