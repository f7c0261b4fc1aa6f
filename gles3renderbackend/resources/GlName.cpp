#include "gles3renderbackend/resources/GlName.h"

namespace {

// The holder exists before GL makes the name, so no name is lost when memory runs out.
template <class Delete>
GlName holder(Delete deleteName) {
    return GlName(new GLuint(0), [deleteName](GLuint const* name) {
        std::unique_ptr<GLuint const> const owned(name);
        if (*owned != 0) deleteName(*owned);
    });
}

} // namespace

GlName makeTextureName() {
    GlName name = holder([](GLuint texture) { glDeleteTextures(1, &texture); });
    glGenTextures(1, name.get());
    return name;
}

GlName makeFramebufferName() {
    GlName name = holder([](GLuint framebuffer) { glDeleteFramebuffers(1, &framebuffer); });
    glGenFramebuffers(1, name.get());
    return name;
}

GlName makeBufferName() {
    GlName name = holder([](GLuint buffer) { glDeleteBuffers(1, &buffer); });
    glGenBuffers(1, name.get());
    return name;
}

GlName makeProgramName() {
    GlName name = holder([](GLuint program) { glDeleteProgram(program); });
    *name = glCreateProgram();
    return name;
}

GlName defaultFramebufferName() {
    return std::make_shared<GLuint>(0);
}

GlName noBufferName() {
    return std::make_shared<GLuint>(0);
}
