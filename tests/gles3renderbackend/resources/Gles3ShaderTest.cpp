#include "gles3renderbackend/resources/Gles3Shader.h"

#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/ShaderFixture.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using Texts = std::vector<std::string>;
using ::testing::EndsWith;

// The recorder numbers uniforms in the order of declaration, from 0.
char const* const kVertex = "#version 100\n"
                            "uniform highp vec4 a_geometry;\n"
                            "uniform highp mat2 a_modelView;\n"
                            "uniform highp vec4 a_texRange00;\n"
                            "attribute vec2 a_position;\n"
                            "attribute vec2 a_texturecoordinates00;\n";
char const* const kFragment = "#version 100\n"
                              "precision mediump float;\n"
                              "uniform sampler2D s_texture00;\n"
                              "uniform float a_weights[3];\n"
                              "void main() {}\n";

std::string failure(std::string const& name) {
    return "#Name:" + name + "#Location:Gles3Shader::Gles3Shader(std::string const&, std::string const&)";
}

class Gles3ShaderTest : public RecordingGlTest {
protected:
    std::unique_ptr<Gles3Shader> make(std::string const& vertex = kVertex, std::string const& fragment = kFragment) {
        return std::make_unique<Gles3Shader>(vertex, fragment, filter_);
    }

    std::string textOfFailure(std::string const& vertex = kVertex, std::string const& fragment = kFragment) {
        return thrownBy<VelmoraException>([&] { make(vertex, fragment); });
    }

    void expectNothingLives() { EXPECT_EQ(gl.living(), Texts{}); }

    Filter filter_ = filterWithBorders(1, 2, 3, 4);
};

TEST_F(Gles3ShaderTest, ConstructionCallsGlInThisOrder) {
    auto const shader = make();
    EXPECT_EQ(gl.texts(), (Texts{"glGenBuffers(1, data)",
                                 "glGenBuffers(1, data)",
                                 "glCreateShader(GL_FRAGMENT_SHADER)",
                                 "glShaderSource(3, 1, data, null)",
                                 "glCompileShader(3)",
                                 "glGetShaderiv(3, GL_COMPILE_STATUS, data)",
                                 "glCreateShader(GL_VERTEX_SHADER)",
                                 "glShaderSource(4, 1, data, null)",
                                 "glCompileShader(4)",
                                 "glGetShaderiv(4, GL_COMPILE_STATUS, data)",
                                 "glCreateProgram()",
                                 "glAttachShader(5, 3)",
                                 "glAttachShader(5, 4)",
                                 "glLinkProgram(5)",
                                 "glGetProgramiv(5, GL_LINK_STATUS, data)",
                                 "glGetProgramiv(5, GL_ACTIVE_ATTRIBUTES, data)",
                                 "glGetProgramiv(5, GL_ACTIVE_ATTRIBUTE_MAX_LENGTH, data)",
                                 "glGetActiveAttrib(5, 0, 24, data, data, data, data)",
                                 "glGetAttribLocation(5, \"a_position\")",
                                 "glGetActiveAttrib(5, 1, 24, data, data, data, data)",
                                 "glGetAttribLocation(5, \"a_texturecoordinates00\")",
                                 "glGetProgramiv(5, GL_ACTIVE_UNIFORMS, data)",
                                 "glGetProgramiv(5, GL_ACTIVE_UNIFORM_MAX_LENGTH, data)",
                                 "glGetActiveUniform(5, 0, 14, data, data, data, data)",
                                 "glGetUniformLocation(5, \"a_geometry\")",
                                 "glGetActiveUniform(5, 1, 14, data, data, data, data)",
                                 "glGetUniformLocation(5, \"a_modelView\")",
                                 "glGetActiveUniform(5, 2, 14, data, data, data, data)",
                                 "glGetUniformLocation(5, \"a_texRange00\")",
                                 "glGetActiveUniform(5, 3, 14, data, data, data, data)",
                                 "glGetUniformLocation(5, \"s_texture00\")",
                                 "glGetActiveUniform(5, 4, 14, data, data, data, data)",
                                 "glGetUniformLocation(5, \"a_weights[0]\")",
                                 "glDetachShader(5, 3)",
                                 "glDetachShader(5, 4)",
                                 "glDeleteShader(4)",
                                 "glDeleteShader(3)",
                                 "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 1)",
                                 "glBufferData(GL_ELEMENT_ARRAY_BUFFER, 12, data, GL_STATIC_DRAW)",
                                 "glBindBuffer(GL_ARRAY_BUFFER, 2)",
                                 "glBufferData(GL_ARRAY_BUFFER, 64, data, GL_STATIC_DRAW)",
                                 "glUseProgram(5)",
                                 "glUniform4f(2, 0, 0, 1, 1)"}));
    EXPECT_EQ(shader->program(), 5U);
    EXPECT_EQ(gl.living(), (Texts{"buffer 1", "buffer 2", "program 5"}));
}

TEST_F(Gles3ShaderTest, BothStagesGetTheirOwnSource) {
    gl.failCompile(GL_VERTEX_SHADER, "x");
    EXPECT_THAT(textOfFailure("vertex text", "fragment text"), EndsWith("001 vertex text\n"));
    gl.failCompile(GL_FRAGMENT_SHADER, "x");
    EXPECT_THAT(textOfFailure("vertex text", "fragment text"), EndsWith("001 fragment text\n"));
}

TEST_F(Gles3ShaderTest, LocationsComeFromTheMapsWithoutAGlCall) {
    auto const shader = make();
    gl.forgetCalls();
    EXPECT_EQ(shader->attributeLocation("a_position"), 0);
    EXPECT_EQ(shader->attributeLocation("a_texturecoordinates00"), 1);
    EXPECT_EQ(shader->attributeLocation("a_texturecoordinates01"), -1);
    EXPECT_EQ(shader->attributeLocation("a_geometry"), -1);
    EXPECT_EQ(shader->uniformLocation("a_geometry"), 0);
    EXPECT_EQ(shader->uniformLocation("s_texture00"), 3);
    EXPECT_EQ(shader->uniformLocation("a_weights[0]"), 4) << "an array has the name that GL reports";
    EXPECT_EQ(shader->uniformLocation("a_weights"), -1);
    EXPECT_EQ(shader->uniformLocation(""), -1);
    EXPECT_EQ(shader->uniforms().size(), 5U);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3ShaderTest, AProgramWithoutActiveVariablesIsBuilt) {
    gl.scriptProgram({}, {});
    auto const shader = make();
    EXPECT_TRUE(shader->uniforms().empty());
    EXPECT_EQ(shader->attributeLocation("a_position"), -1);
}

TEST_F(Gles3ShaderTest, TheFilterDescriptionIsCopied) {
    auto const shader = make();
    EXPECT_EQ(shader->name(), "test");
    EXPECT_EQ(shader->invalidLeft(), 1U);
    EXPECT_EQ(shader->invalidBottom(), 4U);
}

TEST_F(Gles3ShaderTest, GeometryIsInitialisedWhereItsLocationIsGreaterThanZero) {
    gl.placeUniform("a_geometry", 2);
    gl.placeUniform("a_texRange00", 1);
    auto const shader = make();
    EXPECT_EQ(gl.program(shader->program()).value("a_geometry"), (std::vector<float>{0, 0, 1, 1}));
    auto const texts = gl.texts();
    EXPECT_EQ(Texts(texts.end() - 4, texts.end()),
              (Texts{"glUseProgram(5)", "glUniform4f(2, 0, 0, 1, 1)", "glUseProgram(5)", "glUniform4f(1, 0, 0, 1, 1)"}))
        << "geometry first, then the texture range";
}

TEST_F(Gles3ShaderTest, GeometryAtLocationZeroIsNotInitialised) {
    auto const shader = make();
    EXPECT_EQ(gl.count("glUniform4f"), 1U) << "the texture range alone";
}

TEST_F(Gles3ShaderTest, AMissingGeometryIsNotInitialised) {
    gl.scriptProgram({{"a_position"}}, {{"a_texRange00", 5}});
    auto const shader = make();
    EXPECT_EQ(gl.count("glUniform4f"), 1U);
    EXPECT_EQ(gl.last("glUniform4f").text(), "glUniform4f(5, 0, 0, 1, 1)");
}

TEST_F(Gles3ShaderTest, TheTextureRangeOfInputZeroIsAlwaysSetAtConstruction) {
    gl.scriptProgram({}, {{"a_other", 3}});
    auto const shader = make();
    EXPECT_EQ(gl.last("glUniform4f").text(), "glUniform4f(-1, 0, 0, 1, 1)") << "a missing one reaches GL as -1";
}

// Failures.

TEST_F(Gles3ShaderTest, AFragmentShaderThatCannotBeCreatedThrows) {
    gl.failNext("glCreateShader");
    EXPECT_EQ(textOfFailure(), failure("Error creating fragment shader object"));
    EXPECT_EQ(gl.count("glCreateShader"), 1U);
    EXPECT_EQ(gl.count("glDeleteShader"), 0U);
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, AFragmentShaderThatDoesNotCompileThrowsTheLogAndTheNumberedSource) {
    gl.failCompile(GL_FRAGMENT_SHADER, "0:2: 'wrong' : undeclared");
    EXPECT_EQ(textOfFailure(kVertex, "#version 100\n\nwrong;"), failure("Error compiling fragment shader") +
                                                                    "#Description:0:2: 'wrong' : undeclared\n"
                                                                    "001 #version 100\n"
                                                                    "002 \n"
                                                                    "003 wrong;\n");
    EXPECT_EQ(gl.count("glCreateShader"), 1U) << "the vertex shader is never created";
    EXPECT_EQ(gl.count("glCreateProgram"), 0U);
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, ASourceThatEndsInALineFeedHasNoLineBehindIt) {
    gl.failCompile(GL_FRAGMENT_SHADER, "log");
    EXPECT_EQ(textOfFailure(kVertex, "one\ntwo\n"),
              failure("Error compiling fragment shader") + "#Description:log\n001 one\n002 two\n");
}

TEST_F(Gles3ShaderTest, AnEmptyLogIsNotFetched) {
    gl.failCompile(GL_FRAGMENT_SHADER, "");
    EXPECT_EQ(textOfFailure(kVertex, "x"), failure("Error compiling fragment shader") + "#Description:\n001 x\n");
    EXPECT_EQ(gl.count("glGetShaderInfoLog"), 0U);
    gl.failLink("");
    EXPECT_EQ(textOfFailure(), failure("Error linking shader program") + "#Description:");
    EXPECT_EQ(gl.count("glGetProgramInfoLog"), 0U);
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, LineNumbersHaveThreeDigitsOrMore) {
    gl.failCompile(GL_FRAGMENT_SHADER, "log");
    std::string source;
    for (int i = 0; i < 1000; ++i)
        source += "a\n";
    source += "b";
    auto const text = textOfFailure(kVertex, source);
    EXPECT_THAT(text, EndsWith("\n998 a\n999 a\n1000 a\n1001 b\n"));
    EXPECT_NE(text.find("\n009 a\n010 a\n"), std::string::npos);
    EXPECT_NE(text.find("\n099 a\n100 a\n"), std::string::npos);
}

TEST_F(Gles3ShaderTest, AVertexShaderThatCannotBeCreatedThrows) {
    gl.failNext("glCreateShader", GL_NO_ERROR, 1);
    EXPECT_EQ(textOfFailure(), failure("Error creating vertex shader object"));
    EXPECT_EQ(gl.count("glDeleteShader"), 1U) << "the fragment shader goes";
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, AVertexShaderThatDoesNotCompileThrowsItsOwnSource) {
    gl.failCompile(GL_VERTEX_SHADER, "bad");
    EXPECT_EQ(textOfFailure("v1\nv2", kFragment),
              failure("Error compiling vertex shader") + "#Description:bad\n001 v1\n002 v2\n");
    EXPECT_EQ(gl.count("glCreateProgram"), 0U);
    EXPECT_EQ(gl.count("glDeleteShader"), 2U);
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, AFragmentFailureIsReportedBeforeAVertexFailure) {
    gl.failCompile(GL_FRAGMENT_SHADER, "fragment");
    gl.failCompile(GL_VERTEX_SHADER, "vertex");
    EXPECT_EQ(textOfFailure("v", "f"), failure("Error compiling fragment shader") + "#Description:fragment\n001 f\n");
    EXPECT_EQ(textOfFailure("v", "f"), failure("Error compiling vertex shader") + "#Description:vertex\n001 v\n");
}

TEST_F(Gles3ShaderTest, AProgramThatDoesNotLinkThrowsTheLogAlone) {
    gl.failLink("varying v_a is not written");
    EXPECT_EQ(textOfFailure(), failure("Error linking shader program") + "#Description:varying v_a is not written");
    EXPECT_EQ(gl.count("glGetActiveUniform"), 0U);
    EXPECT_EQ(gl.count("glDeleteProgram"), 1U);
    EXPECT_EQ(gl.count("glDeleteShader"), 2U);
    EXPECT_EQ(gl.count("glDeleteBuffers"), 2U);
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, AProgramThatCannotBeCreatedDoesNotLink) {
    gl.failNext("glCreateProgram", GL_OUT_OF_MEMORY);
    gl.expectError(GL_INVALID_VALUE);
    EXPECT_EQ(textOfFailure(), failure("Error linking shader program") + "#Description:");
    expectNothingLives();
}

// Setters.

TEST_F(Gles3ShaderTest, SetGeometryReachesGlWhateverTheLocationIs) {
    auto const atZero = make();
    gl.forgetCalls();
    atZero->setGeometry(0.25, -1, 2, 1e10);
    EXPECT_EQ(gl.texts(), (Texts{"glUseProgram(5)", "glUniform4f(0, 0.25, -1, 2, 1e+10)"}));

    gl.scriptProgram({}, {});
    auto const missing = make();
    missing->setGeometry(1, 2, 3, 4);
    EXPECT_EQ(gl.last("glUniform4f").text(), "glUniform4f(-1, 1, 2, 3, 4)");
}

TEST_F(Gles3ShaderTest, SetModelViewPassesFourValuesColumnByColumn) {
    auto const shader = make();
    gl.forgetCalls();
    shader->setModelView({1, 2, 3, 4});
    EXPECT_EQ(gl.texts(), (Texts{"glUseProgram(5)", "glUniformMatrix2fv(1, 1, GL_FALSE, data)"}));
    EXPECT_EQ(gl.program(shader->program()).value("a_modelView"), (std::vector<float>{1, 2, 3, 4}));
}

// Required: the test is against location 0, not against -1.
TEST_F(Gles3ShaderTest, AModelViewAtLocationZeroIsNeverSetAndAMissingOneReachesGl) {
    gl.placeUniform("a_modelView", 0);
    auto const atZero = make();
    gl.forgetCalls();
    atZero->setModelView({1, 2, 3, 4});
    EXPECT_EQ(gl.texts(), Texts{"glUseProgram(5)"});

    gl.scriptProgram({}, {});
    auto const missing = make();
    missing->setModelView({1, 2, 3, 4});
    EXPECT_EQ(gl.last("glUniformMatrix2fv").text(), "glUniformMatrix2fv(-1, 1, GL_FALSE, data)");
}

TEST_F(Gles3ShaderTest, ATextureRangeAtLocationZeroIsNeverSet) {
    gl.placeUniform("a_texRange00", 0);
    auto const shader = make();
    EXPECT_EQ(gl.program(shader->program()).values.count(0), 0U) << "not by the construction either";
    gl.forgetCalls();
    shader->setTexRange(1, 2, 3, 4, 0);
    EXPECT_EQ(gl.texts(), Texts{"glUseProgram(5)"});
}

TEST_F(Gles3ShaderTest, TextureRangesAreNamedByTheInputWithTwoDigitsOrMore) {
    gl.scriptProgram({}, {{"a_texRange00", 10},
                          {"a_texRange01", 11},
                          {"a_texRange09", 12},
                          {"a_texRange10", 13},
                          {"a_texRange100", 14},
                          {"a_texRange1", 15}});
    auto const shader = make();
    gl.forgetCalls();
    for (auto const& [input, location] :
         {std::pair<size_t, int>{0, 10}, {1, 11}, {9, 12}, {10, 13}, {100, 14}, {2, -1}, {11, -1}}) {
        shader->setTexRange(0.5, 0.25, 2, 4, input);
        EXPECT_EQ(gl.last("glUniform4f").text(), "glUniform4f(" + std::to_string(location) + ", 0.5, 0.25, 2, 4)");
    }
    EXPECT_EQ(gl.count("glUseProgram"), 7U);
}

TEST_F(Gles3ShaderTest, UploadParametersDoesNothing) {
    auto const shader = make();
    gl.forgetCalls();
    shader->uploadParameters(SingleFilterParameters());
    EXPECT_TRUE(gl.calls().empty());
}

// Life.

TEST_F(Gles3ShaderTest, DestructionDeletesTheProgramThenTheBuffers) {
    auto shader = make();
    gl.forgetCalls();
    shader.reset();
    EXPECT_EQ(gl.count("glDeleteProgram"), 1U);
    EXPECT_EQ(gl.count("glDeleteBuffers"), 2U);
    EXPECT_EQ(gl.calls().size(), 3U);
    expectNothingLives();
}

TEST_F(Gles3ShaderTest, AShaderWithoutAProgramHasTwoVertexBuffersAndCompilesNothing) {
    auto shader = std::make_unique<Gles3Shader>(filter_);
    EXPECT_EQ(gl.texts(), (Texts{"glGenBuffers(1, data)", "glGenBuffers(1, data)"}));
    EXPECT_EQ(shader->program(), 0U);
    EXPECT_EQ(shader->attributeLocation("a_position"), -1);
    EXPECT_EQ(shader->invalidRight(), 2U);
    gl.forgetCalls();
    shader.reset();
    EXPECT_EQ(gl.count("glDeleteBuffers"), 2U);
    EXPECT_EQ(gl.count("glDeleteProgram"), 0U);
}

} // namespace
