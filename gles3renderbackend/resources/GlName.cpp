#include "gles3renderbackend/resources/GlName.h"

#include "renderbackend/VelmoraException.h"

#include <utility>

namespace {

// The holder is allocated before GL makes the name, so no name is leaked when memory runs out.
template <class Delete>
GlName holder(Delete deleteName) {
    return GlName(new GLuint(0), [deleteName](GLuint const* name) {
        std::unique_ptr<GLuint const> const owned(name);
        if (*owned != 0) deleteName(*owned);
    });
}

GlName required(GlName name, char const* failure, char const* location) {
    if (*name == 0) throw VelmoraException(failure, location);
    return name;
}

} // namespace

GlName makeTextureName(char const* location) {
    GlName name = holder([](GLuint texture) { glDeleteTextures(1, &texture); });
    glGenTextures(1, name.get());
    return required(std::move(name), "GL made no texture", location);
}

GlName makeFramebufferName(char const* location) {
    GlName name = holder([](GLuint framebuffer) { glDeleteFramebuffers(1, &framebuffer); });
    glGenFramebuffers(1, name.get());
    return required(std::move(name), "GL made no framebuffer", location);
}

GlName makeBufferName(char const* location) {
    GlName name = holder([](GLuint buffer) { glDeleteBuffers(1, &buffer); });
    glGenBuffers(1, name.get());
    return required(std::move(name), "GL made no buffer", location);
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
