#include "tests/support/RecordingGlNames.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

namespace recording {

namespace {

using Names = std::map<GLenum, char const*>;

Names const& enumNames() {
    static Names const names{
        {GL_NONE, "0"},
        {GL_TEXTURE_2D, "GL_TEXTURE_2D"},
        {GL_TEXTURE_MIN_FILTER, "GL_TEXTURE_MIN_FILTER"},
        {GL_TEXTURE_MAG_FILTER, "GL_TEXTURE_MAG_FILTER"},
        {GL_TEXTURE_WRAP_S, "GL_TEXTURE_WRAP_S"},
        {GL_TEXTURE_WRAP_T, "GL_TEXTURE_WRAP_T"},
        {GL_TEXTURE_BASE_LEVEL, "GL_TEXTURE_BASE_LEVEL"},
        {GL_TEXTURE_MAX_LEVEL, "GL_TEXTURE_MAX_LEVEL"},
        {GL_NEAREST, "GL_NEAREST"},
        {GL_LINEAR, "GL_LINEAR"},
        {GL_NEAREST_MIPMAP_NEAREST, "GL_NEAREST_MIPMAP_NEAREST"},
        {GL_LINEAR_MIPMAP_NEAREST, "GL_LINEAR_MIPMAP_NEAREST"},
        {GL_NEAREST_MIPMAP_LINEAR, "GL_NEAREST_MIPMAP_LINEAR"},
        {GL_LINEAR_MIPMAP_LINEAR, "GL_LINEAR_MIPMAP_LINEAR"},
        {GL_CLAMP_TO_EDGE, "GL_CLAMP_TO_EDGE"},
        {GL_REPEAT, "GL_REPEAT"},
        {GL_MIRRORED_REPEAT, "GL_MIRRORED_REPEAT"},
        {GL_RED, "GL_RED"},
        {GL_RG, "GL_RG"},
        {GL_RGB, "GL_RGB"},
        {GL_RGBA, "GL_RGBA"},
        {GL_R8, "GL_R8"},
        {GL_RG8, "GL_RG8"},
        {GL_RGB8, "GL_RGB8"},
        {GL_RGBA8, "GL_RGBA8"},
        {GL_RGB565, "GL_RGB565"},
        {GL_ALPHA, "GL_ALPHA"},
        {GL_LUMINANCE, "GL_LUMINANCE"},
        {GL_LUMINANCE_ALPHA, "GL_LUMINANCE_ALPHA"},
        {GL_BYTE, "GL_BYTE"},
        {GL_UNSIGNED_BYTE, "GL_UNSIGNED_BYTE"},
        {GL_SHORT, "GL_SHORT"},
        {GL_UNSIGNED_SHORT, "GL_UNSIGNED_SHORT"},
        {GL_UNSIGNED_SHORT_5_6_5, "GL_UNSIGNED_SHORT_5_6_5"},
        {GL_INT, "GL_INT"},
        {GL_UNSIGNED_INT, "GL_UNSIGNED_INT"},
        {GL_FLOAT, "GL_FLOAT"},
        {GL_FRAMEBUFFER, "GL_FRAMEBUFFER"},
        {GL_READ_FRAMEBUFFER, "GL_READ_FRAMEBUFFER"},
        {GL_DRAW_FRAMEBUFFER, "GL_DRAW_FRAMEBUFFER"},
        {GL_RENDERBUFFER, "GL_RENDERBUFFER"},
        {GL_COLOR_ATTACHMENT0, "GL_COLOR_ATTACHMENT0"},
        {GL_DEPTH_ATTACHMENT, "GL_DEPTH_ATTACHMENT"},
        {GL_STENCIL_ATTACHMENT, "GL_STENCIL_ATTACHMENT"},
        {GL_FRAMEBUFFER_COMPLETE, "GL_FRAMEBUFFER_COMPLETE"},
        {GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT, "GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT"},
        {GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, "GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT"},
        {GL_FRAMEBUFFER_UNSUPPORTED, "GL_FRAMEBUFFER_UNSUPPORTED"},
        {GL_ARRAY_BUFFER, "GL_ARRAY_BUFFER"},
        {GL_ELEMENT_ARRAY_BUFFER, "GL_ELEMENT_ARRAY_BUFFER"},
        {GL_PIXEL_PACK_BUFFER, "GL_PIXEL_PACK_BUFFER"},
        {GL_PIXEL_UNPACK_BUFFER, "GL_PIXEL_UNPACK_BUFFER"},
        {GL_COPY_READ_BUFFER, "GL_COPY_READ_BUFFER"},
        {GL_COPY_WRITE_BUFFER, "GL_COPY_WRITE_BUFFER"},
        {GL_UNIFORM_BUFFER, "GL_UNIFORM_BUFFER"},
        {GL_STREAM_DRAW, "GL_STREAM_DRAW"},
        {GL_STREAM_READ, "GL_STREAM_READ"},
        {GL_STREAM_COPY, "GL_STREAM_COPY"},
        {GL_STATIC_DRAW, "GL_STATIC_DRAW"},
        {GL_STATIC_READ, "GL_STATIC_READ"},
        {GL_STATIC_COPY, "GL_STATIC_COPY"},
        {GL_DYNAMIC_DRAW, "GL_DYNAMIC_DRAW"},
        {GL_DYNAMIC_READ, "GL_DYNAMIC_READ"},
        {GL_DYNAMIC_COPY, "GL_DYNAMIC_COPY"},
        {GL_VERTEX_SHADER, "GL_VERTEX_SHADER"},
        {GL_FRAGMENT_SHADER, "GL_FRAGMENT_SHADER"},
        {GL_COMPILE_STATUS, "GL_COMPILE_STATUS"},
        {GL_LINK_STATUS, "GL_LINK_STATUS"},
        {GL_VALIDATE_STATUS, "GL_VALIDATE_STATUS"},
        {GL_DELETE_STATUS, "GL_DELETE_STATUS"},
        {GL_SHADER_TYPE, "GL_SHADER_TYPE"},
        {GL_SHADER_SOURCE_LENGTH, "GL_SHADER_SOURCE_LENGTH"},
        {GL_INFO_LOG_LENGTH, "GL_INFO_LOG_LENGTH"},
        {GL_ATTACHED_SHADERS, "GL_ATTACHED_SHADERS"},
        {GL_ACTIVE_ATTRIBUTES, "GL_ACTIVE_ATTRIBUTES"},
        {GL_ACTIVE_ATTRIBUTE_MAX_LENGTH, "GL_ACTIVE_ATTRIBUTE_MAX_LENGTH"},
        {GL_ACTIVE_UNIFORMS, "GL_ACTIVE_UNIFORMS"},
        {GL_ACTIVE_UNIFORM_MAX_LENGTH, "GL_ACTIVE_UNIFORM_MAX_LENGTH"},
        {GL_BLEND, "GL_BLEND"},
        {GL_CULL_FACE, "GL_CULL_FACE"},
        {GL_DEPTH_TEST, "GL_DEPTH_TEST"},
        {GL_DITHER, "GL_DITHER"},
        {GL_SCISSOR_TEST, "GL_SCISSOR_TEST"},
        {GL_STENCIL_TEST, "GL_STENCIL_TEST"},
        {GL_PACK_ALIGNMENT, "GL_PACK_ALIGNMENT"},
        {GL_PACK_ROW_LENGTH, "GL_PACK_ROW_LENGTH"},
        {GL_PACK_SKIP_PIXELS, "GL_PACK_SKIP_PIXELS"},
        {GL_PACK_SKIP_ROWS, "GL_PACK_SKIP_ROWS"},
        {GL_UNPACK_ALIGNMENT, "GL_UNPACK_ALIGNMENT"},
        {GL_UNPACK_ROW_LENGTH, "GL_UNPACK_ROW_LENGTH"},
        {GL_UNPACK_SKIP_PIXELS, "GL_UNPACK_SKIP_PIXELS"},
        {GL_UNPACK_SKIP_ROWS, "GL_UNPACK_SKIP_ROWS"},
        {GL_MAX_TEXTURE_SIZE, "GL_MAX_TEXTURE_SIZE"},
        {GL_MAX_TEXTURE_IMAGE_UNITS, "GL_MAX_TEXTURE_IMAGE_UNITS"},
        {GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, "GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS"},
        {GL_MAX_VERTEX_ATTRIBS, "GL_MAX_VERTEX_ATTRIBS"},
        {GL_VERTEX_ATTRIB_ARRAY_ENABLED, "GL_VERTEX_ATTRIB_ARRAY_ENABLED"},
        {GL_SAMPLER_BINDING, "GL_SAMPLER_BINDING"},
        {GL_COLOR_WRITEMASK, "GL_COLOR_WRITEMASK"},
        {GL_RASTERIZER_DISCARD, "GL_RASTERIZER_DISCARD"},
        {GL_MAX_VIEWPORT_DIMS, "GL_MAX_VIEWPORT_DIMS"},
        {GL_MAX_RENDERBUFFER_SIZE, "GL_MAX_RENDERBUFFER_SIZE"},
        {GL_IMPLEMENTATION_COLOR_READ_FORMAT, "GL_IMPLEMENTATION_COLOR_READ_FORMAT"},
        {GL_IMPLEMENTATION_COLOR_READ_TYPE, "GL_IMPLEMENTATION_COLOR_READ_TYPE"},
        {GL_VIEWPORT, "GL_VIEWPORT"},
        {GL_SCISSOR_BOX, "GL_SCISSOR_BOX"},
        {GL_TEXTURE_BINDING_2D, "GL_TEXTURE_BINDING_2D"},
        {GL_FRAMEBUFFER_BINDING, "GL_FRAMEBUFFER_BINDING"},
        {GL_READ_FRAMEBUFFER_BINDING, "GL_READ_FRAMEBUFFER_BINDING"},
        {GL_CURRENT_PROGRAM, "GL_CURRENT_PROGRAM"},
        {GL_ACTIVE_TEXTURE, "GL_ACTIVE_TEXTURE"},
        {GL_ARRAY_BUFFER_BINDING, "GL_ARRAY_BUFFER_BINDING"},
        {GL_ELEMENT_ARRAY_BUFFER_BINDING, "GL_ELEMENT_ARRAY_BUFFER_BINDING"},
        {GL_PIXEL_PACK_BUFFER_BINDING, "GL_PIXEL_PACK_BUFFER_BINDING"},
        {GL_PIXEL_UNPACK_BUFFER_BINDING, "GL_PIXEL_UNPACK_BUFFER_BINDING"},
        {GL_VENDOR, "GL_VENDOR"},
        {GL_RENDERER, "GL_RENDERER"},
        {GL_VERSION, "GL_VERSION"},
        {GL_SHADING_LANGUAGE_VERSION, "GL_SHADING_LANGUAGE_VERSION"},
        {GL_EXTENSIONS, "GL_EXTENSIONS"},
        {GL_INVALID_ENUM, "GL_INVALID_ENUM"},
        {GL_INVALID_VALUE, "GL_INVALID_VALUE"},
        {GL_INVALID_OPERATION, "GL_INVALID_OPERATION"},
        {GL_INVALID_FRAMEBUFFER_OPERATION, "GL_INVALID_FRAMEBUFFER_OPERATION"},
        {GL_OUT_OF_MEMORY, "GL_OUT_OF_MEMORY"},
        {GL_LOW_FLOAT, "GL_LOW_FLOAT"},
        {GL_MEDIUM_FLOAT, "GL_MEDIUM_FLOAT"},
        {GL_HIGH_FLOAT, "GL_HIGH_FLOAT"},
    };
    return names;
}

std::string hexadecimal(GLenum value) {
    std::ostringstream text;
    text << "0x" << std::hex << value;
    return text.str();
}

std::string bitNames(GLbitfield value, std::vector<std::pair<GLbitfield, char const*>> const& names) {
    std::string text;
    for (auto const& [bit, name] : names) {
        if ((value & bit) == 0) continue;
        text += (text.empty() ? "" : " | ") + std::string(name);
        value &= ~bit;
    }
    if (value != 0) text += (text.empty() ? "" : " | ") + hexadecimal(value);
    return text.empty() ? "0" : text;
}

} // namespace

std::string enumName(GLenum value) {
    if (value >= GL_TEXTURE0 && value <= GL_TEXTURE31) return "GL_TEXTURE" + std::to_string(value - GL_TEXTURE0);
    auto const found = enumNames().find(value);
    return found == enumNames().end() ? hexadecimal(value) : found->second;
}

RecordingGl::Argument argument(Enum value) {
    return {enumName(value.value), static_cast<double>(value.value)};
}

RecordingGl::Argument argument(Mode value) {
    static Names const names{{GL_POINTS, "GL_POINTS"},
                             {GL_LINES, "GL_LINES"},
                             {GL_LINE_LOOP, "GL_LINE_LOOP"},
                             {GL_LINE_STRIP, "GL_LINE_STRIP"},
                             {GL_TRIANGLES, "GL_TRIANGLES"},
                             {GL_TRIANGLE_STRIP, "GL_TRIANGLE_STRIP"},
                             {GL_TRIANGLE_FAN, "GL_TRIANGLE_FAN"}};
    auto const found = names.find(value.value);
    return {found == names.end() ? hexadecimal(value.value) : found->second, static_cast<double>(value.value)};
}

RecordingGl::Argument argument(Boolean value) {
    return {value.value == GL_FALSE ? "GL_FALSE" : "GL_TRUE", static_cast<double>(value.value)};
}

RecordingGl::Argument argument(ClearMask value) {
    return {bitNames(value.value, {{GL_COLOR_BUFFER_BIT, "GL_COLOR_BUFFER_BIT"},
                                   {GL_DEPTH_BUFFER_BIT, "GL_DEPTH_BUFFER_BIT"},
                                   {GL_STENCIL_BUFFER_BIT, "GL_STENCIL_BUFFER_BIT"}}),
            static_cast<double>(value.value)};
}

RecordingGl::Argument argument(MapAccess value) {
    return {bitNames(value.value, {{GL_MAP_READ_BIT, "GL_MAP_READ_BIT"},
                                   {GL_MAP_WRITE_BIT, "GL_MAP_WRITE_BIT"},
                                   {GL_MAP_INVALIDATE_RANGE_BIT, "GL_MAP_INVALIDATE_RANGE_BIT"},
                                   {GL_MAP_INVALIDATE_BUFFER_BIT, "GL_MAP_INVALIDATE_BUFFER_BIT"},
                                   {GL_MAP_FLUSH_EXPLICIT_BIT, "GL_MAP_FLUSH_EXPLICIT_BIT"},
                                   {GL_MAP_UNSYNCHRONIZED_BIT, "GL_MAP_UNSYNCHRONIZED_BIT"}}),
            static_cast<double>(value.value)};
}

RecordingGl::Argument argument(NameList value) {
    std::string list;
    for (GLsizei i = 0; i < value.count; ++i)
        list += (i == 0 ? "" : ", ") + std::to_string(value.names[i]);
    auto const first = value.count == 0 ? 0 : static_cast<double>(value.names[0]);
    return {value.count == 1 ? list : "{" + list + "}", first};
}

RecordingGl::Argument argument(Pointer value) {
    auto const number = static_cast<double>(reinterpret_cast<std::uintptr_t>(value.value));
    if (value.offset) return {"offset " + std::to_string(reinterpret_cast<std::uintptr_t>(value.value)), number};
    return {value.value == nullptr ? "null" : "data", number};
}

RecordingGl::Argument argument(float value) {
    std::array<char, 64> text{};
    auto const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {std::string(text.data(), end), static_cast<double>(value)};
}

RecordingGl::Argument argument(char const* value) {
    return {"\"" + std::string(value) + "\"", 0};
}

} // namespace recording
