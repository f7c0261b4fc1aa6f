#include "tests/support/GlErrors.h"

#include <EGL/egl.h>
#include <GLES2/gl2ext.h>

#include <set>
#include <sstream>

namespace {

// Limits the loop: a driver that lost its context reports errors for ever.
constexpr size_t kMostErrors = 64;

struct Expectations {
    std::set<GLenum> announced;
    std::vector<std::string> messages;
};

Expectations& expectations() {
    static Expectations instance;
    return instance;
}

std::string errorName(GLenum code) {
    switch (code) {
    case GL_INVALID_ENUM:
        return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE:
        return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION:
        return "GL_INVALID_OPERATION";
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return "GL_INVALID_FRAMEBUFFER_OPERATION";
    case GL_OUT_OF_MEMORY:
        return "GL_OUT_OF_MEMORY";
    default:
        break;
    }
    std::ostringstream text;
    text << "GL error 0x" << std::hex << code;
    return text.str();
}

void GL_APIENTRY onMessage(GLenum, GLenum type, GLuint, GLenum, GLsizei length, GLchar const* message, void const*) {
    if (type != GL_DEBUG_TYPE_ERROR_KHR) return;
    auto& messages = expectations().messages;
    if (messages.size() < kMostErrors) messages.emplace_back(message, message + length);
}

bool hasDebugMessages() {
    GLint count = 0;
    glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i) {
        auto const* const name = glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i));
        if (std::string(reinterpret_cast<char const*>(name)) == "GL_KHR_debug") return true;
    }
    return false;
}

std::string driversWords() {
    std::string text;
    for (auto const& message : expectations().messages)
        text += "\n  driver: " + message;
    return text;
}

} // namespace

void expectGlError(GLenum code) {
    expectations().announced.insert(code);
}

void gl_errors::installDebugCallback() {
    if (!hasDebugMessages()) return;
    auto const install =
        reinterpret_cast<PFNGLDEBUGMESSAGECALLBACKKHRPROC>(eglGetProcAddress("glDebugMessageCallbackKHR"));
    if (install == nullptr) return;
    install(onMessage, nullptr);
    glEnable(GL_DEBUG_OUTPUT_KHR);
    glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS_KHR);
}

std::vector<std::string> gl_errors::findings() {
    std::set<GLenum> came;
    for (size_t i = 0; i < kMostErrors; ++i) {
        auto const code = glGetError();
        if (code == GL_NO_ERROR) break;
        came.insert(code);
    }
    auto& [announced, messages] = expectations();
    std::vector<std::string> result;
    for (auto const code : came)
        if (announced.count(code) == 0) result.push_back("unexpected " + errorName(code) + driversWords());
    for (auto const code : announced)
        if (came.count(code) == 0) result.push_back("the expected " + errorName(code) + " did not come");
    announced.clear();
    messages.clear();
    return result;
}
