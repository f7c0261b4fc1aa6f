#pragma once

#include "tests/support/GlFaultPlan.h"
#include "tests/support/RecordingGl.h"
#include "tests/support/RecordingGlNames.h"

#include <array>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// The recorder's state, shared by the gl* functions of this folder. Tests read it through RecordingGl.
namespace recording {

using Verdict = GlFaultPlan::Verdict;

struct Error {
    GLenum code = GL_NO_ERROR; // GL_NO_ERROR: GL itself ignores the call, but no correct program makes it
    std::string text;
    bool read = false;
};

struct Failure {
    std::string name;
    GLenum error = GL_NO_ERROR;
    size_t skip = 0;
};

struct ProgramScript {
    std::vector<RecordingGl::Active> attributes;
    std::vector<RecordingGl::Active> uniforms;
};

struct State {
    std::thread::id thread = std::this_thread::get_id();
    std::vector<RecordingGl::Call> calls;
    RecordingGl::Call current;        // also if it is not among the calls
    Verdict verdict = Verdict::Right; // of the GlFaultPlan on it
    std::vector<RecordingGl::Draw> draws;

    std::vector<Error> errors;
    GLenum flag = GL_NO_ERROR;        // the next answer of glGetError
    std::optional<size_t> flagMisuse; // index into errors; a scripted error has none
    std::set<GLenum> expected;

    std::vector<Failure> failures;
    std::map<GLenum, std::deque<std::string>> compileFailures;
    std::deque<std::string> linkFailures;
    std::deque<ProgramScript> programScripts;
    std::map<std::string, GLint> places;
    GLenum framebufferStatus = GL_FRAMEBUFFER_COMPLETE;
    std::vector<std::uint8_t> readPixels;
    bool digests = false;
    RecordingGl::Image surface{16, 16, GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE, std::vector<std::uint8_t>(16 * 16 * 4)};

    GLuint nextName = 1; // one counter for all kinds, so that a name of the wrong kind is never valid by accident
    std::map<GLuint, RecordingGl::Texture> textures;
    std::map<GLuint, RecordingGl::Buffer> buffers;
    std::map<GLuint, RecordingGl::Framebuffer> framebuffers;
    std::map<GLuint, RecordingGl::Shader> shaders;
    std::map<GLuint, RecordingGl::Program> programs;

    GLuint activeUnit = 0;
    std::map<GLuint, GLuint> boundTextures; // by unit
    std::map<GLuint, GLuint> boundSamplers; // by unit; never generated, any name is accepted
    std::map<GLenum, GLuint> boundBuffers;
    GLuint readFramebuffer = 0;
    GLuint drawFramebuffer = 0;
    GLuint currentProgram = 0;
    std::set<GLenum> enabled{GL_DITHER};
    std::map<GLenum, GLint> pixelStore{{GL_PACK_ALIGNMENT, 4},     {GL_PACK_ROW_LENGTH, 0},  {GL_PACK_SKIP_PIXELS, 0},
                                       {GL_PACK_SKIP_ROWS, 0},     {GL_UNPACK_ALIGNMENT, 4}, {GL_UNPACK_ROW_LENGTH, 0},
                                       {GL_UNPACK_SKIP_PIXELS, 0}, {GL_UNPACK_SKIP_ROWS, 0}};
    std::map<GLenum, std::vector<GLint>> integers{{GL_MAX_TEXTURE_SIZE, {4096}},
                                                  {GL_MAX_TEXTURE_IMAGE_UNITS, {16}},
                                                  {GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, {32}},
                                                  {GL_MAX_VERTEX_ATTRIBS, {16}},
                                                  {GL_MAX_RENDERBUFFER_SIZE, {4096}},
                                                  {GL_MAX_VIEWPORT_DIMS, {4096, 4096}},
                                                  {GL_IMPLEMENTATION_COLOR_READ_FORMAT, {GL_RGBA}},
                                                  {GL_IMPLEMENTATION_COLOR_READ_TYPE, {GL_UNSIGNED_BYTE}},
                                                  {GL_VIEWPORT, {0, 0, 16, 16}},
                                                  {GL_SCISSOR_BOX, {0, 0, 16, 16}}};
    std::map<GLenum, std::string> strings{{GL_VENDOR, "Velmora tests"},
                                          {GL_RENDERER, "recording"},
                                          {GL_VERSION, "OpenGL ES 3.0 recording"},
                                          {GL_SHADING_LANGUAGE_VERSION, "OpenGL ES GLSL ES 3.00 recording"},
                                          {GL_EXTENSIONS, ""}};
    std::map<GLuint, RecordingGl::VertexAttribute> attributes;
    std::vector<float> clearColor{0, 0, 0, 0};
    bool depthMask = true;
    std::array<GLboolean, 4> colorMask{GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};

    void record(char const* name, std::vector<RecordingGl::Argument> arguments);
    /// Whether the GlFaultPlan or a script makes this call of the function fail; raises the script's error. Call it
    /// right after record().
    bool fails(char const* name);
    /// Raises an error for the call recorded last.
    void raise(GLenum code, std::string const& reason);
    void raiseScripted(GLenum code);

    std::vector<GLint> integersOf(GLenum name) const;
    GLuint boundTexture() const;
    GLuint boundBuffer(GLenum target) const;
};

State& state();
void forgetState();

/// Lives while the recorder answers a call: RecordingGl::atWork() on this thread.
class [[nodiscard]] AtWork {
public:
    AtWork();
    AtWork(AtWork&& other) noexcept;
    AtWork(AtWork const&) = delete;
    AtWork& operator=(AtWork const&) = delete;
    ~AtWork();

    /// What the call still does is forgotten when it returns, and it finds no object: the context is lost.
    void leaveNoTrace();

private:
    bool counted_ = true;
};

/// The first statement of each gl* function, which keeps the result until it returns.
template <class... Arguments>
AtWork record(char const* name, Arguments const&... arguments) {
    AtWork atWork;
    state().record(name, {argument(arguments)...});
    if (state().verdict == Verdict::Lost) atWork.leaveNoTrace();
    return atWork;
}

/// Null and an error if no living program has this name.
RecordingGl::Program* findProgram(GLuint name);

// Where digests are drawn: of the bound framebuffer's texture.
void digestDraw(GLsizei count, std::uint8_t const* indices, size_t indexBytes);
void digestClear();
/// The texel at (x, y), four bytes; zeros outside.
std::array<std::uint8_t, 4> digestedTexel(size_t x, size_t y);

/// `size` bytes of memory at `pointer`: client memory, or bytes of the buffer bound to `target`. Null and an error if
/// GL would refuse.
std::uint8_t* pixelMemory(GLenum target, void const* pointer, size_t size);

} // namespace recording
