// The program in use and its uniforms, of the recording GL.
#include "tests/support/RecordingGlState.h"

#include <algorithm>

using recording::Boolean;
using recording::Pointer;
using recording::record;
using recording::state;

namespace {

// Stores the numbers with the call and as the uniform's last value.
void set(GLint location, std::vector<float> const& values) {
    auto& s = state();
    s.calls.back().values = values;
    if (s.currentProgram == 0) return s.raise(GL_INVALID_OPERATION, "no program is in use");
    if (location == -1) return; // GL ignores it silently
    auto& program = s.programs.at(s.currentProgram);
    auto const inside = [&](auto const& active) {
        return location >= active.location && location < active.location + active.size;
    };
    if (std::none_of(program.uniforms.begin(), program.uniforms.end(), inside))
        return s.raise(GL_INVALID_OPERATION, "the program has no uniform at this location");
    program.values[location] = values;
}

void setArray(GLint location, GLsizei count, size_t components, GLfloat const* values) {
    if (count < 0) return state().raise(GL_INVALID_VALUE, "negative count");
    set(location, std::vector<float>(values, values + static_cast<size_t>(count) * components));
}

} // namespace

void glUseProgram(GLuint program) {
    auto const recorded = record("glUseProgram", program);
    if (program != 0) {
        auto const* const found = recording::findProgram(program);
        if (found == nullptr) return;
        if (!found->linked) return state().raise(GL_INVALID_OPERATION, "the program is not linked");
    }
    state().currentProgram = program;
}

void glUniform1i(GLint location, GLint x) {
    auto const recorded = record("glUniform1i", location, x);
    set(location, {static_cast<float>(x)});
}

void glUniform1f(GLint location, GLfloat x) {
    auto const recorded = record("glUniform1f", location, x);
    set(location, {x});
}

void glUniform2f(GLint location, GLfloat x, GLfloat y) {
    auto const recorded = record("glUniform2f", location, x, y);
    set(location, {x, y});
}

void glUniform3f(GLint location, GLfloat x, GLfloat y, GLfloat z) {
    auto const recorded = record("glUniform3f", location, x, y, z);
    set(location, {x, y, z});
}

void glUniform4f(GLint location, GLfloat x, GLfloat y, GLfloat z, GLfloat w) {
    auto const recorded = record("glUniform4f", location, x, y, z, w);
    set(location, {x, y, z, w});
}

void glUniform1fv(GLint location, GLsizei count, GLfloat const* values) {
    auto const recorded = record("glUniform1fv", location, count, Pointer{values});
    setArray(location, count, 1, values);
}

void glUniform2fv(GLint location, GLsizei count, GLfloat const* values) {
    auto const recorded = record("glUniform2fv", location, count, Pointer{values});
    setArray(location, count, 2, values);
}

void glUniform3fv(GLint location, GLsizei count, GLfloat const* values) {
    auto const recorded = record("glUniform3fv", location, count, Pointer{values});
    setArray(location, count, 3, values);
}

void glUniform4fv(GLint location, GLsizei count, GLfloat const* values) {
    auto const recorded = record("glUniform4fv", location, count, Pointer{values});
    setArray(location, count, 4, values);
}

void glUniformMatrix2fv(GLint location, GLsizei count, GLboolean transpose, GLfloat const* values) {
    auto const recorded = record("glUniformMatrix2fv", location, count, Boolean{transpose}, Pointer{values});
    setArray(location, count, 4, values);
}

void glUniformMatrix3fv(GLint location, GLsizei count, GLboolean transpose, GLfloat const* values) {
    auto const recorded = record("glUniformMatrix3fv", location, count, Boolean{transpose}, Pointer{values});
    setArray(location, count, 9, values);
}

void glUniformMatrix4fv(GLint location, GLsizei count, GLboolean transpose, GLfloat const* values) {
    auto const recorded = record("glUniformMatrix4fv", location, count, Boolean{transpose}, Pointer{values});
    setArray(location, count, 16, values);
}
