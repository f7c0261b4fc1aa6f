#include "gles3renderbackend/resources/Gles3Shader.h"
#include "tests/gles3renderbackend/resources/ShaderFixture.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

namespace {

using Texts = std::vector<std::string>;
using Values = std::vector<float>;

// Locations by the order of declaration: a_geometry 0, a_modelView 1, a_texRange00 2, a_texscale00 3, a_texRange01 4,
// s_texture00 5, s_texture01 6, a_outputSize 7, a_gain 8.
char const* const kVertex = "#version 100\n"
                            "uniform vec4 a_geometry;\n"
                            "uniform mat2 a_modelView;\n"
                            "uniform vec4 a_texRange00;\n"
                            "uniform vec2 a_texscale00;\n"
                            "uniform vec4 a_texRange01;\n"
                            "attribute vec2 a_position;\n"
                            "attribute vec2 a_texturecoordinates00;\n";
char const* const kFragment = "#version 100\n"
                              "uniform sampler2D s_texture00;\n"
                              "uniform sampler2D s_texture01;\n"
                              "uniform vec4 a_outputSize;\n"
                              "uniform float a_gain;\n";

class GainShader : public Gles3Shader {
public:
    explicit GainShader(Filter& filter) : Gles3Shader(kVertex, kFragment, filter) {}

    void uploadParameters(SingleFilterParameters const& params) override {
        glUniform1f(uniformLocation("a_gain"), static_cast<float>(params.shiftBits));
    }
};

class Gles3ShaderDrawTest : public RecordingGlTest {
protected:
    Gles3ShaderDrawTest() : backend_(std::make_unique<TestInstance>()) { gl.forgetCalls(); }

    template <class Shader>
    std::unique_ptr<Shader> make(Filter filter = plainFilter()) {
        auto shader = std::make_unique<Shader>(filter);
        vertexBuffer_ = gl.boundBuffer(GL_ARRAY_BUFFER);
        indexBuffer_ = gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER);
        return shader;
    }

    /// The caller's filter may differ from the shader's own.
    void draw(Gles3Shader& shader, DrawCall const& run, Filter const& filter = plainFilter()) {
        SingleFilterParameters params;
        params.shiftBits = 5;
        gl.forgetCalls();
        shader.draw(run.sources, run.inputW, run.inputH, run.destination, run.clip[0], run.clip[1], run.clip[2],
                    run.clip[3], params, run.offset, **backend_, filter);
    }

    Values uniform(std::string const& name) const { return gl.draws().back().uniforms.at(name); }

    std::unique_ptr<TestInstance> backend_;
    GLuint vertexBuffer_ = 0;
    GLuint indexBuffer_ = 0;
};

std::string number(GLuint value) {
    return std::to_string(value);
}

TEST_F(Gles3ShaderDrawTest, ADrawCallsGlInThisOrder) {
    auto const destination = backend_->makeTarget(8, 4);
    auto const source = backend_->makeTarget(16, 8);
    auto const shader = make<GainShader>();
    draw(*shader, {{{source, 2, 1, false}, {source, 0, 0, true}}, 8, 4, destination, {1, 0, 1, 0}, {2, 1}});

    auto const program = number(shader->program());
    auto const texture = number((*backend_)->target(source).texture());
    auto const use = "glUseProgram(" + program + ")";
    EXPECT_EQ(gl.texts(),
              (Texts{
                  "glBindFramebuffer(GL_FRAMEBUFFER, " + number((*backend_)->target(destination).framebuffer()) + ")",
                  "glBindBuffer(GL_ARRAY_BUFFER, " + number(vertexBuffer_) + ")",
                  "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, " + number(indexBuffer_) + ")",
                  use,
                  use,
                  "glUniformMatrix2fv(1, 1, GL_FALSE, data)",
                  "glDepthMask(GL_FALSE)",
                  "glDisable(GL_CULL_FACE)",
                  "glDisable(GL_DEPTH_TEST)",
                  "glDisable(GL_STENCIL_TEST)",
                  "glDisable(GL_SCISSOR_TEST)",
                  "glViewport(0, 0, 8, 4)",
                  use,
                  "glUniform4f(0, -0.5, -0.5, 1.75, 1.5)",
                  "glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 16, offset 0)",
                  "glEnableVertexAttribArray(0)",
                  "glActiveTexture(GL_TEXTURE0)",
                  "glBindTexture(GL_TEXTURE_2D, " + texture + ")",
                  "glUniform1i(5, 0)",
                  use,
                  "glUniform4f(2, 0.1875, 0.25, 0.4375, 0.375)",
                  "glUniform2f(3, 0.0625, 0.125)",
                  "glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 16, offset 8)",
                  "glEnableVertexAttribArray(1)",
                  "glActiveTexture(GL_TEXTURE1)",
                  "glBindTexture(GL_TEXTURE_2D, " + texture + ")",
                  "glUniform1i(6, 1)",
                  use,
                  "glUniform4f(4, 0, 0, 1, 1)",
                  "glUniform4f(7, 1, 1, 8, 4)",
                  "glUniform1f(8, 5)",
                  "glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, offset 0)",
                  "glDisableVertexAttribArray(1)",
                  "glDisableVertexAttribArray(0)",
              }));
    EXPECT_EQ(gl.currentProgram(), shader->program());
    EXPECT_EQ(gl.boundFramebuffer(), (*backend_)->target(destination).framebuffer());
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), vertexBuffer_);
    EXPECT_EQ(gl.boundTexture(1), (*backend_)->target(source).texture());
}

TEST_F(Gles3ShaderDrawTest, ATargetIsDrawnUprightAndTheHostsOwnSurfaceMirrored) {
    auto const destination = backend_->makeTarget(8, 4);
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 8, 4, destination});
    EXPECT_EQ(uniform("a_modelView"), (Values{1, 0, 0, 1}));
    draw(*shader, {{}, 8, 4, 0});
    EXPECT_EQ(uniform("a_modelView"), (Values{1, 0, 0, -1}));
    EXPECT_EQ(gl.draws().back().framebuffer, 0U);
}

TEST_F(Gles3ShaderDrawTest, AFullDrawCoversTheViewport) {
    auto const destination = backend_->makeTarget(8, 4);
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 8, 4, destination});
    EXPECT_EQ(uniform("a_geometry"), (Values{-1, -1, 2, 2}));
    EXPECT_EQ(gl.draws().back().viewport, (std::vector<GLint>{0, 0, 8, 4}));
}

TEST_F(Gles3ShaderDrawTest, TheHostsOwnSurfaceHasTheSizeOfTheContext) {
    backend_->surface.surfaceWidth = 20;
    backend_->surface.surfaceHeight = 10;
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 5, 5, 0, {1, 0, 2, 0}, {10, 5}});
    EXPECT_EQ(gl.draws().back().viewport, (std::vector<GLint>{0, 0, 20, 10}));
    EXPECT_EQ(uniform("a_geometry"), (Values{0, 0, 0.4F, 0.6F}));
    EXPECT_EQ(uniform("a_outputSize"), (Values{1, 2, 20, 10}));
}

TEST_F(Gles3ShaderDrawTest, ASurfaceOfSizeZeroDoesNotTrap) {
    backend_->surface.surfaceWidth = 0;
    backend_->surface.surfaceHeight = 0;
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 5, 5, 0});
    EXPECT_EQ(gl.draws().size(), 1U);
    EXPECT_EQ(uniform("a_outputSize"), (Values{0, 0, 0, 0}));
}

TEST_F(Gles3ShaderDrawTest, BordersScalesAndClipsGiveTheExtentOfTheOutput) {
    auto const destination = backend_->makeTarget(64, 64);
    auto const shader = make<GainShader>();
    Filter const filter("test", 1, 2, 3, 4, 0, 2, 0, 1, 3, 2, 2, 1, 1, RenderBackend::NEAREST);
    // Width: 11 * 3 / 2 = 16, less 2 + 1 + 3 + 4 = 6. Height: 9 * 2 = 18, less 4 + 3 + 1 + 2 = 8.
    draw(*shader, {{}, 11, 9, destination, {3, 4, 1, 2}, {8, 16}}, filter);
    EXPECT_EQ(uniform("a_geometry"), (Values{2.0F * 8 / 64 - 1, 2.0F * 16 / 64 - 1, 2.0F * 6 / 64, 2.0F * 8 / 64}));
}

TEST_F(Gles3ShaderDrawTest, TheExtentFollowsTheCallersFilterAndTheTextureRangeTheShadersOwn) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<GainShader>(filterWithBorders(2, 0, 1, 0));
    draw(*shader, {{{source, 0, 0, false}}, 8, 8, destination}, filterWithBorders(0, 4, 0, 4));
    EXPECT_EQ(uniform("a_geometry"), (Values{-1, -1, 1, 1}));
    EXPECT_EQ(uniform("a_texRange00"), (Values{0.25F, 0.125F, 0.75F, 0.875F}));
}

TEST_F(Gles3ShaderDrawTest, OnAPackedTargetExtentAndClipsConvertToTexelsAndTheOffsetIsInTexels) {
    auto const destination = backend_->makeTarget(16, 8, 16); // 8 texels wide
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 12, 8, destination, {3, 0, 2, 0}, {1, 1}});
    // 9 logical pixels are 9 * 8 / 16 = 4 texels, truncated; 3 of clip are 1 texel.
    EXPECT_EQ(uniform("a_geometry"), (Values{2.0F / 8 - 1, 2.0F / 8 - 1, 2.0F * 4 / 8, 2.0F * 6 / 8}));
    EXPECT_EQ(uniform("a_outputSize"), (Values{1, 2, 8, 8}));
    EXPECT_EQ(gl.draws().back().viewport, (std::vector<GLint>{0, 0, 8, 8}));
}

TEST_F(Gles3ShaderDrawTest, OnASpreadTargetExtentAndClipsConvertToTexels) {
    auto const destination = backend_->makeTarget(8, 8, 64); // 16 texels wide
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 5, 8, destination, {1, 0, 0, 0}, {2, 0}});
    EXPECT_EQ(uniform("a_geometry"), (Values{2.0F * 2 / 16 - 1, -1, 2.0F * 8 / 16, 2}));
    EXPECT_EQ(uniform("a_outputSize"), (Values{2, 0, 16, 8}));
}

TEST_F(Gles3ShaderDrawTest, TheTexelSizeOfASpreadSourceIsThatOfItsTexels) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 4, 64); // 16 texels wide
    auto const shader = make<GainShader>();
    draw(*shader, {{{source, 2, 1, false}}, 4, 2, destination});
    EXPECT_EQ(uniform("a_texscale00"), (Values{1.0F / 16, 1.0F / 4}));
    EXPECT_EQ(uniform("a_texRange00"), (Values{0.25F, 0.25F, 0.5F, 0.5F})) << "in logical pixels";
}

// Borders wider than the input wrap as unsigned numbers, and these convert exactly.
TEST_F(Gles3ShaderDrawTest, ExtentsBeyondTwoToThe63AreConvertedAsUnsigned) {
    auto const destination = backend_->makeTarget(1, 1);
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 1, 1, destination, {2, 0, 0, 2}, {(size_t{1} << 63U) + (size_t{1} << 62U), 0}});
    EXPECT_EQ(uniform("a_geometry"),
              (Values{27670116110564327424.0F, -1, 36893488147419103232.0F, 36893488147419103232.0F}));
}

TEST_F(Gles3ShaderDrawTest, WholeTextureTakesTheWholeTextureWhateverThePositionIs) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<GainShader>(filterWithBorders(1, 1, 1, 1));
    draw(*shader, {{{source, 3, 4, true}}, 8, 8, destination, {1, 1, 1, 1}});
    EXPECT_EQ(uniform("a_texRange00"), (Values{0, 0, 1, 1}));
}

TEST_F(Gles3ShaderDrawTest, ASourceOfTheHostsOwnSurfaceIsMeasuredByTheContext) {
    backend_->surface.surfaceWidth = 20;
    backend_->surface.surfaceHeight = 10;
    auto const destination = backend_->makeTarget(8, 8);
    auto const shader = make<GainShader>();
    draw(*shader, {{{0, 5, 5, false}}, 5, 5, destination});
    EXPECT_EQ(uniform("a_texRange00"), (Values{0.25F, 0.5F, 0.25F, 0.5F}));
    EXPECT_EQ(uniform("a_texscale00"), (Values{0.05F, 0.1F}));
}

class BareShader : public Gles3Shader {
public:
    explicit BareShader(Filter& filter)
        : Gles3Shader("uniform vec4 a_geometry; attribute vec2 a_position;", "uniform sampler2D s_texture00;", filter) {
    }
};

TEST_F(Gles3ShaderDrawTest, StepsOfNamesThatTheProgramLacksAreSkippedOrPassedOnAsMinusOne) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<BareShader>();
    draw(*shader, {{{source, 0, 0, true}, {source, 0, 0, true}}, 8, 8, destination});
    EXPECT_EQ(gl.count("glUniform2f"), 0U);
    EXPECT_EQ(gl.count("glVertexAttribPointer"), 1U);
    EXPECT_EQ(gl.count("glEnableVertexAttribArray"), 1U);
    EXPECT_EQ(gl.count("glDisableVertexAttribArray"), 1U);
    EXPECT_EQ(gl.last("glUniformMatrix2fv").text(), "glUniformMatrix2fv(-1, 1, GL_FALSE, data)");
    EXPECT_EQ(gl.last("glUniform1i").text(), "glUniform1i(-1, 1)") << "samplers are set whatever the location is";
    EXPECT_EQ(gl.last("glUniform4f").text(), "glUniform4f(-1, 0, 0, 1, 1)") << "the range of input 1";
    EXPECT_EQ(gl.count("glUniform4f"), 3U) << "no output size";
    EXPECT_EQ(gl.draws().size(), 1U);
}

class PositionlessShader : public Gles3Shader {
public:
    explicit PositionlessShader(Filter& filter) : Gles3Shader("uniform vec4 a_geometry;", "", filter) {}
};

// Required: GL gets the index -1 and refuses it.
TEST_F(Gles3ShaderDrawTest, AProgramWithoutAPositionPassesMinusOneOn) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const shader = make<PositionlessShader>();
    gl.expectError(GL_INVALID_VALUE);
    draw(*shader, {{}, 8, 8, destination});
    EXPECT_EQ(gl.last("glVertexAttribPointer").text(),
              "glVertexAttribPointer(-1, 2, GL_FLOAT, GL_FALSE, 16, offset 0)");
    EXPECT_EQ(gl.last("glEnableVertexAttribArray").text(), "glEnableVertexAttribArray(-1)");
    EXPECT_EQ(gl.last("glDisableVertexAttribArray").text(), "glDisableVertexAttribArray(-1)");
    EXPECT_EQ(gl.count("glDrawElements"), 1U);
}

class FiveInputShader : public Gles3Shader {
public:
    explicit FiveInputShader(Filter& filter)
        : Gles3Shader("uniform vec4 a_geometry, a_texRange00, a_texRange04; attribute vec2 a_position;"
                      "attribute vec2 a_texturecoordinates00, a_texturecoordinates04;",
                      "uniform sampler2D s_texture04;", filter) {}
};

TEST_F(Gles3ShaderDrawTest, InputsBeyondThoseOfTheCatalogueAreFoundToo) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<FiveInputShader>();
    draw(*shader, {std::vector<FilterSource>(5, {source, 4, 0, false}), 4, 8, destination});
    EXPECT_EQ(uniform("a_texRange04"), (Values{0.5F, 0, 0.5F, 1}));
    EXPECT_EQ(uniform("s_texture04"), (Values{4}));
    EXPECT_EQ(gl.draws().back().attributes.size(), 3U);
    EXPECT_EQ(gl.draws().back().attributes.at(2).offset, 8U);
}

TEST_F(Gles3ShaderDrawTest, NoAttributeStaysEnabled) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<FiveInputShader>();
    draw(*shader, {std::vector<FilterSource>(5, {source, 0, 0, true}), 8, 8, destination});
    for (auto const& [index, attribute] : gl.attributes())
        EXPECT_FALSE(attribute.enabled) << index;
}

class RefusingShader : public Gles3Shader {
public:
    explicit RefusingShader(Filter& filter) : Gles3Shader(kVertex, kFragment, filter) {}

    void uploadParameters(SingleFilterParameters const& /*params*/) override { throw std::runtime_error("refused"); }
};

// The host's next draw would read from buffers that may be gone by then.
TEST_F(Gles3ShaderDrawTest, ARefusedRecordLeavesNoAttributeEnabledAndDrawsNothing) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<RefusingShader>();
    EXPECT_THROW(draw(*shader, {{{source, 0, 0, true}}, 8, 8, destination}), std::runtime_error);
    EXPECT_EQ(gl.count("glEnableVertexAttribArray"), 2U);
    for (auto const& [index, attribute] : gl.attributes())
        EXPECT_FALSE(attribute.enabled) << index;
    EXPECT_EQ(gl.draws().size(), 0U);
}

TEST_F(Gles3ShaderDrawTest, ADrawNeverQueriesGl) {
    auto const destination = backend_->makeTarget(8, 8);
    auto const source = backend_->makeTarget(8, 8);
    auto const shader = make<GainShader>();
    draw(*shader, {{{source, 0, 0, false}}, 8, 8, destination});
    EXPECT_EQ(gl.texts().size(), gl.texts(true).size());
}

TEST_F(Gles3ShaderDrawTest, AnUnknownDestinationBecomesAnEmptyTargetOnTheHostsOwnSurface) {
    auto const shader = make<GainShader>();
    draw(*shader, {{}, 8, 8, 77});
    EXPECT_EQ(gl.draws().back().framebuffer, 0U);
    EXPECT_EQ(gl.draws().back().viewport, (std::vector<GLint>{0, 0, 16, 16}));
}

} // namespace
