#include "gles3renderbackend/resources/Gles3Shader.h"

#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/ShaderFixture.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/PixelMatchers.h"

#include <gmock/gmock.h>

namespace {

using Bytes = std::vector<std::uint8_t>;
using ::testing::EndsWith;
using ::testing::StartsWith;

char const* const kOneInput = "#version 100\n"
                              "uniform highp vec4 a_geometry;\n"
                              "uniform highp vec4 a_texRange00;\n"
                              "attribute highp vec2 a_position;\n"
                              "attribute highp vec2 a_texturecoordinates00;\n"
                              "varying highp vec2 v_texCoord00;\n"
                              "void main() {\n"
                              "    v_texCoord00 = a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy;\n"
                              "    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);\n"
                              "}\n";

char const* const kThreeInputs = "#version 100\n"
                                 "uniform highp vec4 a_geometry;\n"
                                 "uniform highp vec4 a_texRange00;\n"
                                 "uniform highp vec4 a_texRange01;\n"
                                 "uniform highp vec4 a_texRange02;\n"
                                 "attribute highp vec2 a_position;\n"
                                 "attribute highp vec2 a_texturecoordinates00;\n"
                                 "attribute highp vec2 a_texturecoordinates01;\n"
                                 "attribute highp vec2 a_texturecoordinates02;\n"
                                 "varying highp vec2 v_texCoord00;\n"
                                 "varying highp vec2 v_texCoord01;\n"
                                 "varying highp vec2 v_texCoord02;\n"
                                 "void main() {\n"
                                 "    v_texCoord00 = a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy;\n"
                                 "    v_texCoord01 = a_texRange01.zw * a_texturecoordinates01 + a_texRange01.xy;\n"
                                 "    v_texCoord02 = a_texRange02.zw * a_texturecoordinates02 + a_texRange02.xy;\n"
                                 "    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);\n"
                                 "}\n";

class Gles3ShaderGLTest : public ::testing::Test {
protected:
    size_t source(Picture const& picture) {
        auto const id = backend_.makeTarget(picture.width, picture.height);
        backend_->target(id).setPixels(picture.bytes, {picture.width, picture.height, 4});
        return id;
    }

    Bytes run(Gles3Shader& shader, DrawCall const& call) {
        backend_->clear(call.destination, {0, 0, 0, 0});
        shader.draw(call.sources, call.inputW, call.inputH, call.destination, call.clip[0], call.clip[1], call.clip[2],
                    call.clip[3], SingleFilterParameters(), call.offset, *backend_, filter_);
        auto const& target = backend_->target(call.destination);
        Bytes pixels;
        target.getPixels(pixels, 0, 0, target.width(), target.height());
        return pixels;
    }

    std::string textOfFailure(std::string const& vertex, std::string const& fragment) {
        return thrownBy<VelmoraException>([&] { Gles3Shader(vertex, fragment, filter_); });
    }

    Filter filter_ = plainFilter();
    TestInstance backend_;
};

std::string failure(std::string const& name) {
    return "#Name:" + name + "#Location:Gles3Shader::Gles3Shader(std::string const&, std::string const&)#Description:";
}

TEST_F(Gles3ShaderGLTest, AFragmentSourceThatDoesNotCompileIsListed) {
    auto const text =
        textOfFailure(kOneInput, "#version 100\nprecision mediump float;\nvoid main() {\n  nonsense\n}\n");
    EXPECT_THAT(text, StartsWith(failure("Error compiling fragment shader")));
    EXPECT_THAT(text, EndsWith("\n001 #version 100\n002 precision mediump float;\n003 void main() {\n004   nonsense\n"
                               "005 }\n"));
}

TEST_F(Gles3ShaderGLTest, AVertexSourceThatDoesNotCompileIsListed) {
    auto const text = textOfFailure("#version 100\nwrong", "#version 100\nvoid main() {}\n");
    EXPECT_THAT(text, StartsWith(failure("Error compiling vertex shader")));
    EXPECT_THAT(text, EndsWith("\n001 #version 100\n002 wrong\n"));
}

TEST_F(Gles3ShaderGLTest, AVaryingThatNobodyWritesDoesNotLink) {
    auto const text = textOfFailure(kOneInput, "#version 100\n"
                                               "precision mediump float;\n"
                                               "varying vec4 v_missing;\n"
                                               "void main() { gl_FragColor = v_missing; }\n");
    EXPECT_THAT(text, StartsWith(failure("Error linking shader program")));
    EXPECT_EQ(text.find("001 "), std::string::npos) << "the log alone";
}

TEST_F(Gles3ShaderGLTest, LocationsAreThoseOfGl) {
    Gles3Shader const shader(kOneInput,
                             "#version 100\n"
                             "precision mediump float;\n"
                             "uniform highp sampler2D s_texture00;\n"
                             "uniform float a_weights[3];\n"
                             "varying highp vec2 v_texCoord00;\n"
                             "void main() {\n"
                             "    gl_FragColor = texture2D(s_texture00, v_texCoord00) * a_weights[1] * a_weights[2];\n"
                             "}\n",
                             filter_);
    for (auto const* const name : {"a_geometry", "a_texRange00", "s_texture00", "a_weights[0]"}) {
        EXPECT_NE(shader.uniformLocation(name), -1) << name;
        EXPECT_EQ(shader.uniformLocation(name), glGetUniformLocation(shader.program(), name)) << name;
    }
    for (auto const* const name : {"a_position", "a_texturecoordinates00"}) {
        EXPECT_NE(shader.attributeLocation(name), -1) << name;
        EXPECT_EQ(shader.attributeLocation(name), glGetAttribLocation(shader.program(), name)) << name;
    }
    EXPECT_EQ(shader.uniforms().size(), 4U);
    EXPECT_EQ(shader.uniformLocation("a_modelView"), -1);
}

TEST_F(Gles3ShaderGLTest, ThreeInputsAreSampledEachInItsOwnRange) {
    Gles3Shader shader(kThreeInputs,
                       "#version 100\n"
                       "precision mediump float;\n"
                       "uniform highp sampler2D s_texture00;\n"
                       "uniform highp sampler2D s_texture01;\n"
                       "uniform highp sampler2D s_texture02;\n"
                       "varying highp vec2 v_texCoord00;\n"
                       "varying highp vec2 v_texCoord01;\n"
                       "varying highp vec2 v_texCoord02;\n"
                       "void main() {\n"
                       "    gl_FragColor = vec4(texture2D(s_texture00, v_texCoord00).r,\n"
                       "                        texture2D(s_texture01, v_texCoord01).g,\n"
                       "                        texture2D(s_texture02, v_texCoord02).ba);\n"
                       "}\n",
                       filter_);
    Picture const first(8, 8, numberedBytes(8 * 8 * 4));
    Picture const second(5, 9, numberedBytes(5 * 9 * 4, 60));
    Picture const third(16, 4, numberedBytes(16 * 4 * 4, 130));
    auto const pixels =
        run(shader, {{{source(first), 3, 2, false}, {source(second), 1, 5, false}, {source(third), 9, 0, false}},
                     4,
                     3,
                     backend_.makeTarget(6, 5),
                     {0, 0, 0, 0},
                     {1, 2}});
    auto expected = Picture::filled(6, 5, {0, 0, 0, 0});
    for (size_t y = 0; y < 3; ++y)
        for (size_t x = 0; x < 4; ++x)
            expected.setTexel(1 + x, 2 + y,
                              {first.texel(3 + x, 2 + y)[0], second.texel(1 + x, 5 + y)[1], third.texel(9 + x, y)[2],
                               third.texel(9 + x, y)[3]});
    EXPECT_TRUE(pixelsEqual(pixels, expected.bytes, 6));
}

TEST_F(Gles3ShaderGLTest, TwoInputsOfAProgramWithoutTheSecondCoordinateAndRangeAreDrawn) {
    Gles3Shader shader(kOneInput,
                       "#version 100\n"
                       "precision mediump float;\n"
                       "uniform highp sampler2D s_texture00;\n"
                       "uniform highp sampler2D s_texture01;\n"
                       "varying highp vec2 v_texCoord00;\n"
                       "void main() {\n"
                       "    gl_FragColor = vec4(texture2D(s_texture00, v_texCoord00).rg,\n"
                       "                        texture2D(s_texture01, v_texCoord00).ba);\n"
                       "}\n",
                       filter_);
    Picture const first(4, 4, numberedBytes(4 * 4 * 4));
    Picture const second(4, 4, numberedBytes(4 * 4 * 4, 100));
    auto const pixels =
        run(shader, {{{source(first), 0, 0, false}, {source(second), 0, 0, true}}, 4, 4, backend_.makeTarget(4, 4)});
    auto expected = first;
    for (size_t y = 0; y < 4; ++y)
        for (size_t x = 0; x < 4; ++x) {
            auto const a = first.texel(x, y);
            auto const b = second.texel(x, y);
            expected.setTexel(x, y, {a[0], a[1], b[2], b[3]});
        }
    EXPECT_TRUE(pixelsEqual(pixels, expected.bytes, 4));
}

class ConstantShader : public Gles3Shader {
public:
    explicit ConstantShader(Filter& filter)
        : Gles3Shader(kOneInput,
                      "#version 100\n"
                      "precision mediump float;\n"
                      "uniform vec4 a_constant;\n"
                      "void main() { gl_FragColor = a_constant; }\n",
                      filter) {}

    void uploadParameters(SingleFilterParameters const& /*params*/) override {
        glUniform4f(uniformLocation("a_constant"), 0.2F, 0.4F, 0.6F, 0.8F);
    }
};

TEST_F(Gles3ShaderGLTest, ParametersAreUploadedToTheProgramInUse) {
    ConstantShader shader(filter_);
    auto const pixels = run(shader, {{}, 3, 2, backend_.makeTarget(5, 4), {0, 0, 0, 0}, {1, 1}});
    auto expected = Picture::filled(5, 4, {0, 0, 0, 0});
    expected.copy(Picture::filled(3, 2, {51, 102, 153, 204}), 0, 0, 3, 2, 1, 1);
    EXPECT_TRUE(pixelsEqual(pixels, expected.bytes, 5));
}

TEST_F(Gles3ShaderGLTest, TheOutputSizeReachesTheProgram) {
    Gles3Shader shader(kOneInput,
                       "#version 100\n"
                       "precision highp float;\n"
                       "uniform highp vec4 a_outputSize;\n"
                       "void main() { gl_FragColor = a_outputSize / 255.0; }\n",
                       filter_);
    auto const id = backend_.makeTarget(40, 9, 16); // 20 texels wide
    auto const pixels = run(shader, {{}, 45, 9, id, {5, 0, 3, 0}});
    EXPECT_EQ(Bytes(pixels.begin(), pixels.begin() + 4), (Bytes{2, 3, 20, 9}));
}

} // namespace
