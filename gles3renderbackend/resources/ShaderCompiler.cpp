#include "gles3renderbackend/resources/ShaderCompiler.h"

#include "renderbackend/VelmoraException.h"

#include <iomanip>
#include <sstream>
#include <vector>

namespace {

constexpr char const* kLocation = "Gles3Shader::Gles3Shader(std::string const&, std::string const&)";

struct Stage {
    GLenum type;
    char const* notCreated;
    char const* notCompiled;
};

constexpr Stage kFragment = {GL_FRAGMENT_SHADER, "Error creating fragment shader object",
                             "Error compiling fragment shader"};
constexpr Stage kVertex = {GL_VERTEX_SHADER, "Error creating vertex shader object", "Error compiling vertex shader"};

// A compiled stage: deleted when the program is linked, or when that fails.
class StageObject {
public:
    explicit StageObject(Stage const& stage) : name_(glCreateShader(stage.type)) {
        if (name_ == 0) throw VelmoraException(stage.notCreated, kLocation);
    }
    StageObject(StageObject const&) = delete;
    StageObject& operator=(StageObject const&) = delete;
    ~StageObject() { glDeleteShader(name_); }

    GLuint name() const { return name_; }

private:
    GLuint name_;
};

using GetParameter = void (*)(GLuint, GLenum, GLint*);
using GetLog = void (*)(GLuint, GLsizei, GLsizei*, GLchar*);

std::string infoLog(GLuint object, GetParameter getParameter, GetLog getLog) {
    GLint length = 0; // including the terminating zero
    getParameter(object, GL_INFO_LOG_LENGTH, &length);
    if (length <= 1) return {};
    std::vector<GLchar> log(static_cast<size_t>(length));
    getLog(object, length, nullptr, log.data());
    return {log.data(), log.size() - 1};
}

void shaderParameter(GLuint shader, GLenum what, GLint* value) {
    glGetShaderiv(shader, what, value);
}

void programParameter(GLuint program, GLenum what, GLint* value) {
    glGetProgramiv(program, what, value);
}

// 001 #version 100
// 002 precision mediump float;
std::string numberedLines(std::string const& source) {
    std::istringstream lines(source);
    std::ostringstream listing;
    listing.imbue(std::locale::classic());
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number)
        listing << std::setfill('0') << std::setw(3) << number << ' ' << line << '\n';
    return listing.str();
}

void compile(StageObject const& object, Stage const& stage, std::string const& source) {
    GLchar const* const text = source.c_str();
    glShaderSource(object.name(), 1, &text, nullptr);
    glCompileShader(object.name());
    GLint compiled = 0;
    glGetShaderiv(object.name(), GL_COMPILE_STATUS, &compiled);
    if (compiled != 0) return;
    std::string const log =
        infoLog(object.name(), shaderParameter, [](GLuint shader, GLsizei size, GLsizei* length, GLchar* buffer) {
            glGetShaderInfoLog(shader, size, length, buffer);
        });
    throw VelmoraException(stage.notCompiled, kLocation, log + "\n" + numberedLines(source));
}

void link(GLuint program) {
    glLinkProgram(program);
    GLint linked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked != 0) return;
    std::string const log =
        infoLog(program, programParameter, [](GLuint object, GLsizei size, GLsizei* length, GLchar* buffer) {
            glGetProgramInfoLog(object, size, length, buffer);
        });
    throw VelmoraException("Error linking shader program", kLocation, log);
}

// Calls visit(index, buffer size, &name length, buffer) for every active variable and collects the locations.
template <class GetActive, class Locate>
std::map<std::string, GLint> activeVariables(GLuint program, GLenum countName, GLenum lengthName, GetActive getActive,
                                             Locate locate) {
    GLint count = 0;
    GLint longest = 0;
    glGetProgramiv(program, countName, &count);
    glGetProgramiv(program, lengthName, &longest);
    std::vector<GLchar> buffer(static_cast<size_t>(longest) + 1);
    std::map<std::string, GLint> locations;
    for (GLint i = 0; i < count; ++i) {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        getActive(program, static_cast<GLuint>(i), static_cast<GLsizei>(buffer.size()), &length, &size, &type,
                  buffer.data());
        std::string const name(buffer.data(), static_cast<size_t>(length));
        locations[name] = locate(program, name.c_str());
    }
    return locations;
}

std::map<std::string, GLint> activeAttributes(GLuint program) {
    return activeVariables(
        program, GL_ACTIVE_ATTRIBUTES, GL_ACTIVE_ATTRIBUTE_MAX_LENGTH,
        [](auto... arguments) { glGetActiveAttrib(arguments...); },
        [](GLuint object, GLchar const* name) { return glGetAttribLocation(object, name); });
}

std::map<std::string, GLint> activeUniforms(GLuint program) {
    return activeVariables(
        program, GL_ACTIVE_UNIFORMS, GL_ACTIVE_UNIFORM_MAX_LENGTH,
        [](auto... arguments) { glGetActiveUniform(arguments...); },
        [](GLuint object, GLchar const* name) { return glGetUniformLocation(object, name); });
}

} // namespace

CompiledProgram compileProgram(std::string const& vertexSource, std::string const& fragmentSource) {
    StageObject const fragment(kFragment);
    compile(fragment, kFragment, fragmentSource);
    StageObject const vertex(kVertex);
    compile(vertex, kVertex, vertexSource);

    CompiledProgram compiled;
    compiled.program = makeProgramName();
    GLuint const program = *compiled.program;
    glAttachShader(program, fragment.name());
    glAttachShader(program, vertex.name());
    link(program);
    compiled.attributes = activeAttributes(program);
    compiled.uniforms = activeUniforms(program);
    glDetachShader(program, fragment.name());
    glDetachShader(program, vertex.name());
    return compiled;
}
