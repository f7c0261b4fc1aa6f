#include "gles3renderbackend/filters/Gles3FilterTruncate16.h"

#include "renderbackend/FilterParameters.h"

#include "GlslSources.h"

Gles3FilterTruncate16::Gles3FilterTruncate16(Filter& filter)
    : Gles3Shader(glsl::copy_vert, glsl::Gles3FilterTruncate16_frag, filter) {
    offerParameters<FilterTruncate16Params>();
}

void Gles3FilterTruncate16::uploadParameters(SingleFilterParameters const& params) {
    auto const& truncation = params.as<FilterTruncate16Params>();
    // Shift counts wrap as the machine's do: 64-bit for the divisor, 32-bit for the constant.
    std::uint64_t const divisor = std::uint64_t{1} << (truncation.shift % 64);
    std::uint32_t const range = std::uint32_t{1} << (truncation.shift % 32);
    auto const middle = static_cast<std::int32_t>(range - 1) >> 1;
    glUniform1f(uniformLocation("a_divisor"), static_cast<GLfloat>(divisor));
    glUniform1f(uniformLocation("a_constant"), truncation.rounding ? static_cast<GLfloat>(middle) : 0.0F);
}
