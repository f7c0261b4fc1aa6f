#include "tests/support/EnabledVertexArrays.h"

#include "gles3renderbackend/Gl.h"

std::vector<std::string> enabled_vertex_arrays::findings() {
    GLint arrays = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &arrays);
    std::vector<std::string> result;
    for (GLuint index = 0; index < static_cast<GLuint>(arrays); ++index) {
        GLint enabled = GL_FALSE;
        glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        if (enabled == GL_FALSE) continue;
        result.push_back("vertex attribute array " + std::to_string(index) + " was left enabled");
        glDisableVertexAttribArray(index);
    }
    return result;
}
