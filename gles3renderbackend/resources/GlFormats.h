#pragma once

#include "gles3renderbackend/Gl.h"
#include "renderbackend/RenderBackend.h"

#include <cstddef>
#include <optional>

/// GL's names of a texel layout. Internal format and format are the same constant.
struct TexelFormat {
    GLenum format;
    GLenum type;
    size_t bytes; ///< per texel
};

/// Empty for UNDEFINED and for values outside the enumeration.
std::optional<TexelFormat> texelFormat(RenderBackend::ImageFormatType format);

/// The layout with this many bytes per texel; empty for counts other than 1, 3 and 4.
std::optional<RenderBackend::ImageFormatType> formatOfBytes(size_t bytesPerTexel);

/// GL's minifying and magnifying filters.
struct SamplingFilters {
    GLint minifying;
    GLint magnifying;
};

/// Empty for values outside the enumeration.
std::optional<SamplingFilters> samplingFilters(RenderBackend::ImageFiltering filtering);
