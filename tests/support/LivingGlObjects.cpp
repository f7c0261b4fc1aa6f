#include "tests/support/LivingGlObjects.h"

#include "gles3renderbackend/Gl.h"

#include <cstdint>
#include <cstdlib>
#include <set>
#include <sstream>
#include <tuple>

namespace {

// Memory for the ledger: tests let every `new` of the program fail, and none of these is to be among them.
template <class T>
struct PlainMemory {
    using value_type = T;

    PlainMemory() = default;
    template <class Other>
    explicit PlainMemory(PlainMemory<Other> const&) {}

    T* allocate(size_t count) {
        void* const memory = std::malloc(count * sizeof(T));
        if (memory == nullptr) std::abort();
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, size_t) { std::free(memory); }

    bool operator==(PlainMemory const&) const { return true; }
    bool operator!=(PlainMemory const&) const { return false; }
};

struct Object {
    char const* kind; // a literal
    std::uintptr_t name;

    bool operator<(Object const& other) const {
        return std::make_tuple(std::string_view(kind), name) <
               std::make_tuple(std::string_view(other.kind), other.name);
    }
};

constexpr char const* kSync = "sync";

struct Ledger {
    std::set<Object, std::less<>, PlainMemory<Object>> living;
    std::multiset<Object, std::less<>, PlainMemory<Object>> deletedInVain;
};

Ledger& ledger() {
    static Ledger instance;
    return instance;
}

std::string textOf(Object const& object) {
    std::ostringstream text;
    text << object.kind << ' ';
    if (std::string_view(object.kind) == kSync) text << "0x" << std::hex;
    text << object.name;
    return text.str();
}

// Name 0: GL made none.
void born(char const* kind, std::uintptr_t name) {
    if (name != 0) ledger().living.insert({kind, name});
}

// Deleting name 0 is permitted and does nothing.
void died(char const* kind, std::uintptr_t name) {
    if (name != 0 && ledger().living.erase({kind, name}) == 0) ledger().deletedInVain.insert({kind, name});
}

void born(char const* kind, GLsizei n, GLuint const* names) {
    for (GLsizei i = 0; i < n; ++i)
        born(kind, names[i]);
}

void died(char const* kind, GLsizei n, GLuint const* names) {
    for (GLsizei i = 0; i < n; ++i)
        died(kind, names[i]);
}

} // namespace

namespace living_gl_objects {

Snapshot snapshot() {
    Snapshot result;
    for (Object const& object : ledger().living)
        result.insert(textOf(object));
    return result;
}

std::vector<std::string> findingsSince(Snapshot const& before) {
    std::vector<std::string> result;
    for (std::string const& name : snapshot())
        if (before.count(name) == 0) result.push_back(name + " was not deleted");
    for (Object const& object : ledger().deletedInVain)
        result.push_back(textOf(object) + " was deleted but did not live");
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
    born("shader", name);
    return name;
}

void __wrap_glDeleteShader(GLuint name) {
    died("shader", name);
    __real_glDeleteShader(name);
}

GLuint __wrap_glCreateProgram() {
    auto const name = __real_glCreateProgram();
    born("program", name);
    return name;
}

void __wrap_glDeleteProgram(GLuint name) {
    died("program", name);
    __real_glDeleteProgram(name);
}

GLsync __wrap_glFenceSync(GLenum condition, GLbitfield flags) {
    auto* const sync = __real_glFenceSync(condition, flags);
    born(kSync, reinterpret_cast<std::uintptr_t>(sync));
    return sync;
}

void __wrap_glDeleteSync(GLsync sync) {
    died(kSync, reinterpret_cast<std::uintptr_t>(sync));
    __real_glDeleteSync(sync);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
