#include "gles3renderbackend/resources/GlFormats.h"

std::optional<TexelFormat> texelFormat(RenderBackend::ImageFormatType format) {
    switch (format) {
    case RenderBackend::RGB24:
        return TexelFormat{GL_RGB, GL_UNSIGNED_BYTE, 3};
    case RenderBackend::RGBA32:
        return TexelFormat{GL_RGBA, GL_UNSIGNED_BYTE, 4};
    case RenderBackend::GRAY8:
        return TexelFormat{GL_LUMINANCE, GL_UNSIGNED_BYTE, 1};
    case RenderBackend::UNDEFINED:
        break;
    }
    return std::nullopt;
}

std::optional<RenderBackend::ImageFormatType> formatOfBytes(size_t bytesPerTexel) {
    switch (bytesPerTexel) {
    case 1:
        return RenderBackend::GRAY8;
    case 3:
        return RenderBackend::RGB24;
    case 4:
        return RenderBackend::RGBA32;
    default:
        return std::nullopt;
    }
}

std::optional<SamplingFilters> samplingFilters(RenderBackend::ImageFiltering filtering) {
    switch (filtering) {
    case RenderBackend::NEAREST:
        return SamplingFilters{GL_NEAREST, GL_NEAREST};
    case RenderBackend::LINEAR:
        return SamplingFilters{GL_LINEAR, GL_LINEAR};
    case RenderBackend::TRILINEAR:
        return SamplingFilters{GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR};
    }
    return std::nullopt;
}
