#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <vector>

using ::testing::ElementsAre;

namespace {

constexpr char const* kVertex = R"(#version 100
attribute vec2 a_position; // attribute vec2 a_comment;
attribute highp vec2 a_second;
uniform vec4 a_geometry, a_range;
uniform mat2 a_modelView;
void main() { gl_Position = vec4(a_position, 0.0, 1.0); }
)";
constexpr char const* kFragment = R"(#version 100
precision mediump float;
/* uniform vec4 a_hidden; */
uniform vec4 a_range;
uniform highp sampler2D s_texture00;
uniform vec4 a_weights[3];
void main() { gl_FragColor = a_range; }
)";

class RecorderProgramTest : public RecordingGlTest {
public:
    ~RecorderProgramTest() override { glDeleteProgram(program); }

protected:
    GLuint shader(GLenum type, char const* source) {
        auto const name = glCreateShader(type);
        glShaderSource(name, 1, &source, nullptr);
        glCompileShader(name);
        return name;
    }

    // Built in the usual way: the shaders are deleted once the program is linked.
    void link() {
        std::array<GLuint, 2> const shaders{shader(GL_FRAGMENT_SHADER, kFragment), shader(GL_VERTEX_SHADER, kVertex)};
        program = glCreateProgram();
        for (auto const name : shaders)
            glAttachShader(program, name);
        glLinkProgram(program);
        for (auto const name : shaders)
            glDeleteShader(name);
        for (auto const name : shaders)
            glDetachShader(program, name);
    }

    GLint property(GLenum name) const {
        GLint value = -1;
        glGetProgramiv(program, name, &value);
        return value;
    }

    GLuint program = 0;
};

} // namespace

TEST_F(RecorderProgramTest, AProgramHasWhatItsSourcesDeclareVertexStageFirst) {
    link();
    std::vector<std::string> uniforms;
    for (auto const& uniform : gl.program(program).uniforms)
        uniforms.push_back(uniform.name + " " + std::to_string(uniform.location) + " " + std::to_string(uniform.size));
    EXPECT_THAT(uniforms,
                ElementsAre("a_geometry 0 1", "a_range 1 1", "a_modelView 2 1", "s_texture00 3 1", "a_weights[0] 4 3"));
    EXPECT_EQ(glGetAttribLocation(program, "a_second"), 1);
    EXPECT_EQ(glGetAttribLocation(program, "a_comment"), -1);
    EXPECT_EQ(glGetUniformLocation(program, "a_weights"), 4);
    EXPECT_EQ(property(GL_ACTIVE_UNIFORMS), 5);
    EXPECT_EQ(property(GL_ACTIVE_UNIFORM_MAX_LENGTH), 13);
}

TEST_F(RecorderProgramTest, ShadersLiveUntilTheyAreDeletedAndDetached) {
    link();
    EXPECT_THAT(gl.living(), ElementsAre("program 3"));
}

TEST_F(RecorderProgramTest, AnActiveUniformIsReportedWithNameSizeAndType) {
    link();
    std::array<char, 14> name{};
    GLsizei length = 0;
    GLint size = 0;
    GLenum type = 0;
    glGetActiveUniform(program, 4, static_cast<GLsizei>(name.size()), &length, &size, &type, name.data());
    EXPECT_EQ(std::string(name.data()), "a_weights[0]");
    EXPECT_EQ(length, 12);
    EXPECT_EQ(size, 3);
    EXPECT_EQ(type, static_cast<GLenum>(GL_FLOAT_VEC4));
}

TEST_F(RecorderProgramTest, AUniformIsPlacedWhereTheTestWantsIt) {
    gl.placeUniform("a_modelView", 0);
    link();
    EXPECT_EQ(glGetUniformLocation(program, "a_modelView"), 0);
    EXPECT_EQ(glGetUniformLocation(program, "a_geometry"), 2);
}

TEST_F(RecorderProgramTest, AScriptedProgramHasWhatTheScriptSays) {
    gl.scriptProgram({{"a_position", 5}}, {{"a_odd", 9, GL_FLOAT, 1}});
    link();
    EXPECT_EQ(glGetAttribLocation(program, "a_position"), 5);
    EXPECT_EQ(glGetUniformLocation(program, "a_odd"), 9);
    EXPECT_EQ(glGetUniformLocation(program, "a_geometry"), -1);
}

TEST_F(RecorderProgramTest, AUniformKeepsItsLastValue) {
    link();
    glUseProgram(program);
    glUniform4f(1, 1, 2, 3, 4);
    glUniform4f(-1, 9, 9, 9, 9);
    EXPECT_THAT(gl.program(program).value("a_range"), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(gl.last("glUniform4f").values, ElementsAre(9, 9, 9, 9));
}

TEST_F(RecorderProgramTest, AUniformWithoutAProgramOrAtNoLocationIsRefused) {
    link();
    glUniform1f(0, 1);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    glUseProgram(program);
    glUniform1f(77, 1);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
}

TEST_F(RecorderProgramTest, AFailureToCompileHitsItsStageAloneAndCarriesItsLog) {
    gl.failCompile(GL_VERTEX_SHADER, "bad");
    auto const fragment = shader(GL_FRAGMENT_SHADER, kFragment);
    auto const vertex = shader(GL_VERTEX_SHADER, kVertex);
    EXPECT_TRUE(gl.shader(fragment).compiled);
    EXPECT_FALSE(gl.shader(vertex).compiled);
    GLint length = 0;
    glGetShaderiv(vertex, GL_INFO_LOG_LENGTH, &length);
    std::array<char, 4> log{};
    glGetShaderInfoLog(vertex, length, nullptr, log.data());
    EXPECT_EQ(length, 4);
    EXPECT_STREQ(log.data(), "bad");
    glDeleteShader(fragment);
    glDeleteShader(vertex);
}

TEST_F(RecorderProgramTest, AFailureToLinkLeavesAProgramThatCannotBeUsed) {
    gl.failLink("no main");
    link();
    EXPECT_EQ(property(GL_LINK_STATUS), GL_FALSE);
    EXPECT_EQ(property(GL_INFO_LOG_LENGTH), 8);
    glUseProgram(program);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
}

TEST_F(RecorderProgramTest, ADrawRemembersWhatItSaw) {
    link();
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer);
    glBufferData(GL_ARRAY_BUFFER, 64, nullptr, GL_STATIC_DRAW);
    glUseProgram(program);
    glUniform4f(0, 1, 2, 3, 4);
    glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 16, reinterpret_cast<void const*>(std::uintptr_t{8}));
    glEnableVertexAttribArray(1);
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
    glUniform4f(0, 5, 6, 7, 8);

    ASSERT_EQ(gl.draws().size(), 1U);
    auto const& draw = gl.draws().front();
    EXPECT_THAT(draw.uniforms.at("a_geometry"), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(draw.attributes.at(1).offset, 8U);
    EXPECT_EQ(draw.count, 6);
    EXPECT_EQ(gl.last("glDrawElements").text(), "glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, offset 0)");

    glDrawElements(GL_TRIANGLES, 33, GL_UNSIGNED_SHORT, nullptr);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION)) << "66 bytes of indices in a buffer of 64";
    glDisableVertexAttribArray(1);
    glDeleteBuffers(1, &buffer);
}

TEST_F(RecorderProgramTest, AnAttributeAtNoLocationIsAnInvalidValue) {
    glEnableVertexAttribArray(static_cast<GLuint>(-1));
    EXPECT_EQ(gl.call(0), "glEnableVertexAttribArray(-1)");
    gl.expectError(GL_INVALID_VALUE);
}
