#include "tests/support/GlImplementation.h"

#include "gles3renderbackend/Gl.h"

#include <fnmatch.h>

#include <cstdlib>
#include <stdexcept>

namespace {

std::string environment(char const* name) {
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string text(GLenum name) {
    return reinterpret_cast<char const*>(glGetString(name));
}

} // namespace

GlImplementation GlImplementation::open() {
    setenv("LP_NUM_THREADS", "0", 0);
    GlImplementation result;
    try {
        result.context = std::make_unique<EglContext>();
    } catch (std::runtime_error const& error) {
        result.description = std::string("no OpenGL ES 3 context: ") + error.what();
        return result;
    }
    auto const expected = environment("VELMORA_EXPECT_RENDERER");
    if (!expected.empty() && fnmatch(expected.c_str(), text(GL_RENDERER).c_str(), 0) != 0) {
        result.description = "no OpenGL ES 3 context on " + expected + ": the renderer is " + text(GL_RENDERER);
        result.context.reset();
        return result;
    }
    result.description = text(GL_RENDERER) + ", " + text(GL_VERSION);
    return result;
}

int GlImplementation::exitCodeWhenMissing() {
    return environment("VELMORA_REQUIRE_GL") == "1" ? EXIT_FAILURE : kSkipped;
}
