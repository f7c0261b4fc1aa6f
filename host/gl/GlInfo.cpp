#include "host/gl/GlInfo.h"

#include "gles3renderbackend/Gl.h"

namespace {

struct Named {
    GLenum value;
    char const* name;
};

constexpr std::array<Named, 2> kStages{{{GL_VERTEX_SHADER, "vertex"}, {GL_FRAGMENT_SHADER, "fragment"}}};
constexpr std::array<Named, 6> kTypes{{{GL_LOW_FLOAT, "lowp float"},
                                       {GL_MEDIUM_FLOAT, "mediump float"},
                                       {GL_HIGH_FLOAT, "highp float"},
                                       {GL_LOW_INT, "lowp int"},
                                       {GL_MEDIUM_INT, "mediump int"},
                                       {GL_HIGH_INT, "highp int"}}};

std::string text(GLenum name) {
    auto const* const value = glGetString(name);
    return value == nullptr ? "unknown" : reinterpret_cast<char const*>(value);
}

std::int32_t number(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

std::vector<GlPrecision> queryPrecisions() {
    std::vector<GlPrecision> precisions;
    for (auto const& stage : kStages) {
        for (auto const& type : kTypes) {
            std::array<GLint, 2> range{};
            GLint bits = 0;
            glGetShaderPrecisionFormat(stage.value, type.value, range.data(), &bits);
            precisions.push_back({stage.name, type.name, {range[0], range[1]}, bits});
        }
    }
    return precisions;
}

} // namespace

GlInfo queryGlInfo() {
    std::array<GLint, 2> viewport{};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport.data());
    return {text(GL_VENDOR),
            text(GL_RENDERER),
            text(GL_VERSION),
            text(GL_SHADING_LANGUAGE_VERSION),
            number(GL_MAX_TEXTURE_SIZE),
            {viewport[0], viewport[1]},
            number(GL_MAX_TEXTURE_IMAGE_UNITS),
            number(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS),
            queryPrecisions()};
}
