#pragma once

#include "gles3renderbackend/Gl.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

/// A replacement of the GL library: it defines the gl* functions, records each call, keeps enough state to judge a
/// sequence of calls, and plays scripted answers. Nothing is drawn. One recorder per process, used on the thread that
/// runs the tests. Each call goes through the GlFaultPlan.
///
///     gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY);
///     EXPECT_THROW(pbo.mapRange(0, kRingBufferBytes), VelmoraException);
///     EXPECT_EQ(gl.last("glMapBufferRange").text(),
///               "glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 4194304, "
///               "GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT)");
class RecordingGl {
public:
    struct Argument {
        std::string text;  // GL_TEXTURE_2D, 12, 0.5, null, data (client memory), offset 8 (in the bound buffer)
        double number = 0; // the same as a number; for an array its first element
    };

    struct Call {
        std::string name;
        std::vector<Argument> arguments;
        std::vector<float> values; // the numbers of glUniform*, scalars as well as arrays

        /// glBindTexture(GL_TEXTURE_2D, 1)
        std::string text() const;
        double number(size_t index) const { return arguments.at(index).number; }
    };

    struct Image {
        size_t width = 0;
        size_t height = 0;
        GLenum internalFormat = 0;
        GLenum format = 0;
        GLenum type = 0;
        std::vector<std::uint8_t> pixels; // rows tightly packed; zeros if nothing was uploaded
    };

    struct Texture {
        std::map<GLint, Image> levels;
        std::map<GLenum, GLint> parameters;
        bool mipmapsGenerated = false;

        Image const& image() const { return levels.at(0); }
    };

    struct Buffer {
        std::vector<std::uint8_t> bytes; // mapped memory is this storage
        GLenum usage = 0;
        bool mapped = false;
    };

    struct Framebuffer {
        GLuint colorTexture = 0;
        GLint colorLevel = 0;
    };

    /// An active attribute or uniform of a program.
    struct Active {
        std::string name; // as GL reports it: an array with "[0]"
        GLint location = -1;
        GLenum type = GL_FLOAT_VEC4;
        GLint size = 1;
    };

    struct Shader {
        GLenum type = 0;
        std::string source;
        bool compiled = false;
        std::string infoLog;
        bool deletePending = false; // deleted while attached: lives on until detached
    };

    struct Program {
        std::vector<GLuint> attached;
        std::map<GLenum, std::string> sources; // of the linked stages, by type
        bool linked = false;
        std::string infoLog;
        std::vector<Active> attributes;
        std::vector<Active> uniforms;
        std::map<GLint, std::vector<float>> values; // last value of each uniform location

        /// Throws std::out_of_range if the program has no such uniform or it was never set.
        std::vector<float> const& value(std::string const& uniform) const;
    };

    struct VertexAttribute {
        bool enabled = false;
        GLint size = 4;
        GLenum type = GL_FLOAT;
        GLsizei stride = 0;
        size_t offset = 0;
        GLuint buffer = 0;
    };

    /// The state at a draw call.
    struct Draw {
        GLuint program = 0;
        GLuint framebuffer = 0;
        GLsizei count = 0;
        std::map<GLuint, GLuint> textures; // unit -> texture bound there
        std::map<std::string, std::vector<float>> uniforms;
        std::map<GLuint, VertexAttribute> attributes; // the enabled ones
        std::vector<GLint> viewport;
        std::set<GLenum> enabled;
    };

    static RecordingGl& instance();
    /// Whether a gl* function is executing on this thread. Its allocations are not the library's.
    static bool atWork();

    RecordingGl(RecordingGl const&) = delete;
    RecordingGl& operator=(RecordingGl const&) = delete;

    /// Forgets calls, objects, state and scripts.
    void reset();
    /// Forgets the calls and draws so far, keeps objects, state and scripts.
    void forgetCalls();

    // The recorded calls.
    std::vector<Call> const& calls() const;
    std::string call(size_t index) const;
    std::vector<std::string> names() const;
    /// The calls as texts, without the glGetError and glGet* queries if onlyEffects is set.
    std::vector<std::string> texts(bool onlyEffects = false) const;
    size_t count(std::string const& name) const;
    std::vector<Call> callsOf(std::string const& name) const;
    /// Throws std::out_of_range if the function was never called.
    Call const& last(std::string const& name) const;
    std::vector<Draw> const& draws() const;

    // The living objects: "texture 1", "buffer 2", in the order of creation.
    std::vector<std::string> living() const;
    Texture const& texture(GLuint name) const;
    Buffer const& buffer(GLuint name) const;
    Framebuffer const& framebuffer(GLuint name) const;
    Shader const& shader(GLuint name) const;
    Program const& program(GLuint name) const;
    bool isLiving(GLuint name) const;

    // The current bindings and state.
    GLuint boundTexture(GLuint unit = 0) const;
    GLuint boundBuffer(GLenum target) const;
    GLuint boundFramebuffer(GLenum target = GL_FRAMEBUFFER) const;
    GLuint currentProgram() const;
    GLuint activeUnit() const;
    bool enabled(GLenum capability) const;
    GLint pixelStore(GLenum name) const;
    std::vector<GLint> integers(GLenum name) const;
    std::map<GLuint, VertexAttribute> const& attributes() const;
    bool depthMask() const;
    std::vector<float> const& clearColor() const;

    // Scripts.
    /// The call after the next `skip` calls of the function fails: it does nothing, raises the error (GL_NO_ERROR:
    /// none) and answers null, 0, GL_FALSE, names 0, or, for glCheckFramebufferStatus, GL_FRAMEBUFFER_UNSUPPORTED.
    void failNext(std::string const& name, GLenum error = GL_NO_ERROR, size_t skip = 0);
    /// The next shader of this type does not compile, or the next program does not link, with this log.
    void failCompile(GLenum shaderType, std::string const& infoLog);
    void failLink(std::string const& infoLog);
    /// The answer of glGetIntegerv, for instance GL_MAX_TEXTURE_SIZE, which also bounds glTexImage2D.
    void setInteger(GLenum name, GLint value);
    void setString(GLenum name, std::string const& value);
    void setFramebufferStatus(GLenum status);
    /// The bytes that each glReadPixels delivers from now on, from their start, rows tightly packed. Without a script:
    /// zeros.
    void setReadPixels(std::vector<std::uint8_t> const& pixels);
    /// From now on a draw leaves in its target a digest of all that it read: the program, its uniforms, the vertices,
    /// the textures, the target itself. Clearing fills the target, and glReadPixels delivers its bytes. What is read at
    /// the end tells whether everything before it was the same.
    void drawDigests();
    /// The active variables of the next linked program. Without a script a program has all that its sources declare,
    /// used or not, each kind with locations from 0 in the order of declaration, vertex stage first.
    void scriptProgram(std::vector<Active> const& attributes, std::vector<Active> const& uniforms);
    /// In programs linked from now on the variable of this name is at this location, and swaps places with the one
    /// there.
    void placeUniform(std::string const& name, GLint location);

    // Errors: a call that GL would refuse raises an error here too, and the test fails unless glGetError reads it or
    // the test expects it.
    /// GL_NO_ERROR stands for calls that GL ignores silently but that no correct program makes, such as deleting a name
    /// twice.
    void expectError(GLenum error);
    /// Errors that were neither read nor expected, expected ones that did not occur, vertex attribute arrays left
    /// enabled, unused scripts. Empty: all in order.
    std::vector<std::string> findings() const;

private:
    RecordingGl() = default;
};
