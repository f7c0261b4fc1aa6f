// State, queries, vertex attributes and draw calls of the recording GL.
#include "tests/support/RecordingGlState.h"

#include <algorithm>
#include <cstring>

using recording::Boolean;
using recording::ClearMask;
using recording::Enum;
using recording::Mode;
using recording::Pointer;
using recording::record;
using recording::state;

namespace {

bool attributeExists(GLuint index) {
    if (index < static_cast<GLuint>(state().integers.at(GL_MAX_VERTEX_ATTRIBS).front())) return true;
    state().raise(GL_INVALID_VALUE, "no such attribute");
    return false;
}

// -1, for a missing location, reads better than 4294967295.
GLint signedIndex(GLuint index) {
    return static_cast<GLint>(index);
}

void setRectangle(GLenum name, GLint x, GLint y, GLsizei width, GLsizei height) {
    if (width < 0 || height < 0) return state().raise(GL_INVALID_VALUE, "negative size");
    state().integers[name] = {x, y, width, height};
}

bool attributesReadable(std::map<GLuint, RecordingGl::VertexAttribute> const& attributes) {
    return std::all_of(attributes.begin(), attributes.end(), [](auto const& entry) {
        if (!entry.second.enabled) return true;
        auto const buffer = state().buffers.find(entry.second.buffer);
        return buffer != state().buffers.end() && !buffer->second.mapped;
    });
}

void rememberDraw(GLsizei count) {
    auto const& s = state();
    RecordingGl::Draw draw;
    draw.program = s.currentProgram;
    draw.framebuffer = s.drawFramebuffer;
    draw.count = count;
    draw.textures = s.boundTextures;
    draw.viewport = s.integers.at(GL_VIEWPORT);
    draw.enabled = s.enabled;
    for (auto const& [index, attribute] : s.attributes)
        if (attribute.enabled) draw.attributes[index] = attribute;
    auto const& program = s.programs.at(s.currentProgram);
    for (auto const& uniform : program.uniforms) {
        auto const value = program.values.find(uniform.location);
        if (value != program.values.end()) draw.uniforms[uniform.name] = value->second;
    }
    state().draws.push_back(draw);
}

bool draw(GLsizei count) {
    auto const refused = [](GLenum error, char const* reason) {
        state().raise(error, reason);
        return false;
    };
    if (count < 0) return refused(GL_INVALID_VALUE, "negative count");
    if (state().currentProgram == 0) return refused(GL_NO_ERROR, "no program is in use");
    if (!attributesReadable(state().attributes))
        return refused(GL_INVALID_OPERATION, "an enabled attribute has no readable buffer");
    rememberDraw(count);
    return true;
}

} // namespace

GLenum glGetError() {
    auto const recorded = record("glGetError");
    auto& s = state();
    if (s.verdict == recording::Verdict::Lost) return GlFaultPlan::kContextLost;
    auto const answer = s.flag;
    if (s.flagMisuse) s.errors[*s.flagMisuse].read = true;
    s.flag = GL_NO_ERROR;
    s.flagMisuse.reset();
    return answer;
}

void glGetIntegerv(GLenum name, GLint* values) {
    auto const recorded = record("glGetIntegerv", Enum{name}, Pointer{values});
    if (state().fails("glGetIntegerv")) {
        auto const small = name == GL_MAX_TEXTURE_SIZE && state().verdict == recording::Verdict::Refused;
        if (small) *values = GlFaultPlan::kSmallTexture;
        return;
    }
    auto const answer = state().integersOf(name);
    if (answer.empty()) return state().raise(GL_INVALID_ENUM, "this integer is not recorded");
    std::copy(answer.begin(), answer.end(), values);
}

void glGetFloatv(GLenum name, GLfloat* values) {
    auto const recorded = record("glGetFloatv", Enum{name}, Pointer{values});
    if (name == GL_COLOR_CLEAR_VALUE)
        std::copy(state().clearColor.begin(), state().clearColor.end(), values);
    else
        state().raise(GL_INVALID_ENUM, "this number is not recorded");
}

void glGetBooleanv(GLenum name, GLboolean* value) {
    auto const recorded = record("glGetBooleanv", Enum{name}, Pointer{value});
    if (name == GL_DEPTH_WRITEMASK)
        *value = state().depthMask ? GL_TRUE : GL_FALSE;
    else if (name == GL_COLOR_WRITEMASK)
        std::copy(state().colorMask.begin(), state().colorMask.end(), value);
    else
        state().raise(GL_INVALID_ENUM, "this truth is not recorded");
}

GLubyte const* glGetString(GLenum name) {
    auto const recorded = record("glGetString", Enum{name});
    auto const found = state().strings.find(name);
    if (found != state().strings.end()) return reinterpret_cast<GLubyte const*>(found->second.c_str());
    state().raise(GL_INVALID_ENUM, "no such text");
    return nullptr;
}

void glGetShaderPrecisionFormat(GLenum shaderType, GLenum precision, GLint* range, GLint* bits) {
    auto const recorded =
        record("glGetShaderPrecisionFormat", Enum{shaderType}, Enum{precision}, Pointer{range}, Pointer{bits});
    range[0] = range[1] = 127;
    *bits = 23;
}

void glEnable(GLenum capability) {
    auto const recorded = record("glEnable", Enum{capability});
    state().enabled.insert(capability);
}

void glDisable(GLenum capability) {
    auto const recorded = record("glDisable", Enum{capability});
    state().enabled.erase(capability);
}

GLboolean glIsEnabled(GLenum capability) {
    auto const recorded = record("glIsEnabled", Enum{capability});
    return state().enabled.count(capability) != 0 ? GL_TRUE : GL_FALSE;
}

void glDepthMask(GLboolean flag) {
    auto const recorded = record("glDepthMask", Boolean{flag});
    state().depthMask = flag != GL_FALSE;
}

void glColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) {
    auto const recorded = record("glColorMask", Boolean{red}, Boolean{green}, Boolean{blue}, Boolean{alpha});
    state().colorMask = {red, green, blue, alpha};
}

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    auto const recorded = record("glViewport", x, y, width, height);
    setRectangle(GL_VIEWPORT, x, y, width, height);
}

void glScissor(GLint x, GLint y, GLsizei width, GLsizei height) {
    auto const recorded = record("glScissor", x, y, width, height);
    setRectangle(GL_SCISSOR_BOX, x, y, width, height);
}

void glClearColor(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) {
    auto const recorded = record("glClearColor", red, green, blue, alpha);
    state().clearColor = {red, green, blue, alpha};
}

void glClear(GLbitfield mask) {
    auto const recorded = record("glClear", ClearMask{mask});
    if (state().fails("glClear")) return;
    if (state().digests) recording::digestClear();
}
void glFlush() {
    auto const recorded = record("glFlush");
}
void glFinish() {
    auto const recorded = record("glFinish");
}

void glVertexAttribPointer(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride,
                           void const* pointer) {
    auto const buffer = state().boundBuffer(GL_ARRAY_BUFFER);
    auto const recorded = record("glVertexAttribPointer", signedIndex(index), size, Enum{type}, Boolean{normalized},
                                 stride, Pointer{pointer, buffer != 0});
    if (!attributeExists(index)) return;
    if (buffer == 0) return state().raise(GL_NO_ERROR, "vertices come from a buffer here");
    auto& attribute = state().attributes[index];
    attribute = {attribute.enabled, size, type, stride, reinterpret_cast<std::uintptr_t>(pointer), buffer};
}

void glGetVertexAttribiv(GLuint index, GLenum name, GLint* value) {
    auto const recorded = record("glGetVertexAttribiv", signedIndex(index), Enum{name}, Pointer{value});
    if (!attributeExists(index)) return;
    if (name != GL_VERTEX_ATTRIB_ARRAY_ENABLED) return state().raise(GL_INVALID_ENUM, "this property is not recorded");
    auto const found = state().attributes.find(index);
    *value = found != state().attributes.end() && found->second.enabled ? GL_TRUE : GL_FALSE;
}

void glEnableVertexAttribArray(GLuint index) {
    auto const recorded = record("glEnableVertexAttribArray", signedIndex(index));
    if (attributeExists(index)) state().attributes[index].enabled = true;
}

void glDisableVertexAttribArray(GLuint index) {
    auto const recorded = record("glDisableVertexAttribArray", signedIndex(index));
    if (attributeExists(index)) state().attributes[index].enabled = false;
}

void glDrawElements(GLenum mode, GLsizei count, GLenum type, void const* indices) {
    auto const recorded = record("glDrawElements", Mode{mode}, count, Enum{type},
                                 Pointer{indices, state().boundBuffer(GL_ELEMENT_ARRAY_BUFFER) != 0});
    if (state().fails("glDrawElements")) return;
    if (state().boundBuffer(GL_ELEMENT_ARRAY_BUFFER) == 0)
        return state().raise(GL_NO_ERROR, "indices come from a buffer here");
    auto const indexBytes = type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : 4;
    auto const bytes = static_cast<size_t>(std::max(count, 0) * indexBytes);
    auto const* const memory = recording::pixelMemory(GL_ELEMENT_ARRAY_BUFFER, indices, bytes);
    if (memory == nullptr || !draw(count)) return;
    if (state().digests) recording::digestDraw(count, memory, bytes);
}

void glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    auto const recorded = record("glDrawArrays", Mode{mode}, first, count);
    draw(count);
}
