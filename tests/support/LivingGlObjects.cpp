#include "tests/support/LivingGlObjects.h"

#include "gles3renderbackend/Gl.h"

#include <sstream>

namespace {

struct Ledger {
    living_gl_objects::Snapshot living;
    std::vector<std::string> deletedInVain;
};

Ledger& ledger() {
    static Ledger instance;
    return instance;
}

std::string object(std::string const& kind, GLuint name) {
    return kind + " " + std::to_string(name);
}

std::string object(GLsync sync) {
    std::ostringstream text;
    text << "sync " << static_cast<void const*>(sync);
    return text.str();
}

void born(std::string const& name) {
    ledger().living.insert(name);
}

void died(std::string const& name) {
    if (ledger().living.erase(name) == 0) ledger().deletedInVain.push_back(name);
}

// Name 0: GL made none.
void born(std::string const& kind, GLsizei n, GLuint const* names) {
    for (GLsizei i = 0; i < n; ++i)
        if (names[i] != 0) born(object(kind, names[i]));
}

// Deleting name 0 is permitted and does nothing.
void died(std::string const& kind, GLsizei n, GLuint const* names) {
    for (GLsizei i = 0; i < n; ++i)
        if (names[i] != 0) died(object(kind, names[i]));
}

} // namespace

namespace living_gl_objects {

Snapshot snapshot() {
    return ledger().living;
}

std::vector<std::string> findingsSince(Snapshot const& before) {
    std::vector<std::string> result;
    for (auto const& name : ledger().living)
        if (before.count(name) == 0) result.push_back(name + " was not deleted");
    for (auto const& name : ledger().deletedInVain)
        result.push_back(name + " was deleted but did not live");
    ledger().deletedInVain.clear();
    return result;
}

} // namespace living_gl_objects

// The linker redirects each call of glX to __wrap_glX and each call of __real_glX to the GL library, and demands these
// names. NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

void __real_glGenTextures(GLsizei n, GLuint* names);
void __real_glDeleteTextures(GLsizei n, GLuint const* names);
void __real_glGenBuffers(GLsizei n, GLuint* names);
void __real_glDeleteBuffers(GLsizei n, GLuint const* names);
void __real_glGenFramebuffers(GLsizei n, GLuint* names);
void __real_glDeleteFramebuffers(GLsizei n, GLuint const* names);
void __real_glGenRenderbuffers(GLsizei n, GLuint* names);
void __real_glDeleteRenderbuffers(GLsizei n, GLuint const* names);
void __real_glGenSamplers(GLsizei n, GLuint* names);
void __real_glDeleteSamplers(GLsizei n, GLuint const* names);
void __real_glGenVertexArrays(GLsizei n, GLuint* names);
void __real_glDeleteVertexArrays(GLsizei n, GLuint const* names);
void __real_glGenQueries(GLsizei n, GLuint* names);
void __real_glDeleteQueries(GLsizei n, GLuint const* names);
GLuint __real_glCreateShader(GLenum type);
void __real_glDeleteShader(GLuint name);
GLuint __real_glCreateProgram();
void __real_glDeleteProgram(GLuint name);
GLsync __real_glFenceSync(GLenum condition, GLbitfield flags);
void __real_glDeleteSync(GLsync sync);

void __wrap_glGenTextures(GLsizei n, GLuint* names) {
    __real_glGenTextures(n, names);
    born("texture", n, names);
}

void __wrap_glDeleteTextures(GLsizei n, GLuint const* names) {
    died("texture", n, names);
    __real_glDeleteTextures(n, names);
}

void __wrap_glGenBuffers(GLsizei n, GLuint* names) {
    __real_glGenBuffers(n, names);
    born("buffer", n, names);
}

void __wrap_glDeleteBuffers(GLsizei n, GLuint const* names) {
    died("buffer", n, names);
    __real_glDeleteBuffers(n, names);
}

void __wrap_glGenFramebuffers(GLsizei n, GLuint* names) {
    __real_glGenFramebuffers(n, names);
    born("framebuffer", n, names);
}

void __wrap_glDeleteFramebuffers(GLsizei n, GLuint const* names) {
    died("framebuffer", n, names);
    __real_glDeleteFramebuffers(n, names);
}

void __wrap_glGenRenderbuffers(GLsizei n, GLuint* names) {
    __real_glGenRenderbuffers(n, names);
    born("renderbuffer", n, names);
}

void __wrap_glDeleteRenderbuffers(GLsizei n, GLuint const* names) {
    died("renderbuffer", n, names);
    __real_glDeleteRenderbuffers(n, names);
}

void __wrap_glGenSamplers(GLsizei n, GLuint* names) {
    __real_glGenSamplers(n, names);
    born("sampler", n, names);
}

void __wrap_glDeleteSamplers(GLsizei n, GLuint const* names) {
    died("sampler", n, names);
    __real_glDeleteSamplers(n, names);
}

void __wrap_glGenVertexArrays(GLsizei n, GLuint* names) {
    __real_glGenVertexArrays(n, names);
    born("vertex array", n, names);
}

void __wrap_glDeleteVertexArrays(GLsizei n, GLuint const* names) {
    died("vertex array", n, names);
    __real_glDeleteVertexArrays(n, names);
}

void __wrap_glGenQueries(GLsizei n, GLuint* names) {
    __real_glGenQueries(n, names);
    born("query", n, names);
}

void __wrap_glDeleteQueries(GLsizei n, GLuint const* names) {
    died("query", n, names);
    __real_glDeleteQueries(n, names);
}

GLuint __wrap_glCreateShader(GLenum type) {
    auto const name = __real_glCreateShader(type);
    if (name != 0) born(object("shader", name));
    return name;
}

void __wrap_glDeleteShader(GLuint name) {
    if (name != 0) died(object("shader", name));
    __real_glDeleteShader(name);
}

GLuint __wrap_glCreateProgram() {
    auto const name = __real_glCreateProgram();
    if (name != 0) born(object("program", name));
    return name;
}

void __wrap_glDeleteProgram(GLuint name) {
    if (name != 0) died(object("program", name));
    __real_glDeleteProgram(name);
}

GLsync __wrap_glFenceSync(GLenum condition, GLbitfield flags) {
    auto* const sync = __real_glFenceSync(condition, flags);
    if (sync != nullptr) born(object(sync));
    return sync;
}

void __wrap_glDeleteSync(GLsync sync) {
    if (sync != nullptr) died(object(sync));
    __real_glDeleteSync(sync);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
