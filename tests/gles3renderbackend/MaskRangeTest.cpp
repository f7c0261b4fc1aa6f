#include "gles3renderbackend/Gles3DataEnvelopes.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"
#include "tests/gles3renderbackend/FailingAllocation.h"

namespace {

using namespace backendtest;

constexpr char const* kMaskRange =
    "#Location:void Gles3RenderBackendInstance::maskRange(size_t source, size_t target, Filter const& maskShader, "
    "std::vector<size_t> const& range, SingleFilterParameters const& params)";
constexpr char const* kNotAvailable = "#Name:Instance for Filter <MaskFilter4x8> not available";
constexpr char const* kBadCast = "#Name:bad parameters cast";

using Values = std::vector<float>;

class MaskRangeTest : public BackendRecordingTest {
protected:
    MaskRangeTest() {
        instance->createFilterInstance(mask);
        program = gl.currentProgram();
    }

    // Two rectangles, so that the indices are not those of a single quad.
    MaskFilterParams shape() const {
        DataEnvelopes::Data const data = {{{}, {{0, 0}, {1, 0}}}, {{}, {{5, 5}}}};
        return shapeOf(data);
    }

    MaskFilterParams shapeOf(DataEnvelopes::Data const& data) const {
        instance->dataEnvelopes(Bytes{1}, data);
        MaskFilterParams params;
        params.envelopes = std::const_pointer_cast<DataEnvelopes>(instance->dataEnvelopes(Bytes{1}));
        return params;
    }

    static Gles3DataEnvelopes const& meshOf(MaskFilterParams const& params) {
        return dynamic_cast<Gles3DataEnvelopes const&>(*params.envelopes);
    }

    size_t threeChannel16Target(size_t width, size_t height) const {
        return instance->createTarget({width, height}, 64, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    }

    std::string failureToMask(SingleFilterParameters const& params) {
        size_t const source = rgbaTarget(64, 32);
        size_t const target = rgbaTarget(64, 32);
        gl.forgetCalls();
        return failureOf([&] { instance->maskRange(source, target, mask, {0, 63, 0, 31}, params); });
    }

    Filter mask = namedFilter("MaskFilter4x8");
    GLuint program = 0;
};

TEST_F(MaskRangeTest, CallsComeInTheirOrderAndThereAreNoOthers) {
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    MaskFilterParams const params = shape();
    gl.forgetCalls();
    instance->maskRange(source, target, mask, {16, 79, 8, 39}, params);

    auto const name = [](GLuint object) { return std::to_string(object); };
    std::string const use = "glUseProgram(" + name(program) + ")";
    std::vector<std::string> const expected = {
        "glActiveTexture(GL_TEXTURE0)",
        "glBindTexture(GL_TEXTURE_2D, " + name(gles().target(source).texture()) + ")",
        "glUniform1i(3, 0)", // s_texture00
        use,
        "glUniform4f(2, 0, 0, 1, 1)", // a_texRange00
        "glBindFramebuffer(GL_FRAMEBUFFER, " + name(gles().target(target).framebuffer()) + ")",
        "glBindBuffer(GL_ARRAY_BUFFER, " + name(meshOf(params).vertexBuffer().buffer()) + ")",
        "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, " + name(meshOf(params).indexBuffer().buffer()) + ")",
        use,
        "glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 8, offset 0)",
        "glEnableVertexAttribArray(0)",
        "glViewport(0, 0, 64, 32)",
        use,
        "glUniform4f(0, -1.5, -1.5, 0.03125, 0.0625)", // a_geometry
        use,
        "glUniformMatrix2fv(1, 1, GL_FALSE, data)", // a_modelView
        "glDrawElements(GL_TRIANGLES, 12, GL_UNSIGNED_SHORT, offset 0)",
        "glDisableVertexAttribArray(0)",
    };
    EXPECT_EQ(gl.texts(), expected);
}

TEST_F(MaskRangeTest, DrawSeesTheMeshTheSourceAndTheTarget) {
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    MaskFilterParams const params = shape();
    instance->maskRange(source, target, mask, {0, 63, 0, 31}, params);
    ASSERT_EQ(gl.draws().size(), 1U);
    auto const& draw = gl.draws().back();
    EXPECT_EQ(draw.program, program);
    EXPECT_EQ(draw.framebuffer, gles().target(target).framebuffer());
    EXPECT_EQ(draw.textures.at(0), gles().target(source).texture());
    EXPECT_EQ(draw.count, 12);
    ASSERT_EQ(draw.attributes.size(), 1U);
    EXPECT_EQ(draw.attributes.at(0).buffer, meshOf(params).vertexBuffer().buffer());
    EXPECT_EQ(draw.uniforms.at("a_geometry"), (Values{-1, -1, 2.0F / 64, 2.0F / 32}));
    EXPECT_EQ(draw.uniforms.at("a_modelView"), (Values{1, 0, 0, 1}));
    EXPECT_FALSE(gl.attributes().at(0).enabled) << "afterwards";
}

// Deliberate: hosts rely on the order, so the sampler's unit goes to the program that was current before.
TEST_F(MaskRangeTest, SamplerIsSetInTheProgramThatWasCurrentBefore) {
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    MaskFilterParams const params = shape();
    Filter blit = namedFilter("BlitFilter4x8");
    instance->createFilterInstance(blit);
    GLuint const before = gl.currentProgram();
    ASSERT_NE(before, program);
    ASSERT_EQ(gl.program(before).values.count(3), 0U);
    instance->maskRange(source, target, mask, {0, 63, 0, 31}, params);
    EXPECT_EQ(gl.program(before).values.at(3), (Values{0}));
    EXPECT_EQ(gl.program(program).values.count(3), 0U);
}

TEST_F(MaskRangeTest, SamplerLeavesAGlErrorWhereNoProgramIsCurrent) {
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    MaskFilterParams const params = shape();
    glUseProgram(0);
    gl.expectError(GL_INVALID_OPERATION);
    instance->maskRange(source, target, mask, {0, 63, 0, 31}, params);
    EXPECT_EQ(gl.draws().size(), 1U) << "it is drawn all the same";
}

TEST_F(MaskRangeTest, OnlyTheStartsOfTheRangeCount) {
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    MaskFilterParams const params = shape();
    instance->maskRange(source, target, mask, {16, 999, 8, 0}, params);
    EXPECT_EQ(gl.draws().back().uniforms.at("a_geometry"), (Values{-1.5F, -1.5F, 0.03125F, 0.0625F}));
    instance->maskRange(source, target, mask, {16, 0, 8}, params);
    EXPECT_EQ(gl.draws().back().uniforms.at("a_geometry"), (Values{-1.5F, -1.5F, 0.03125F, 0.0625F}));
}

TEST_F(MaskRangeTest, HostsSurfaceIsMirroredAndAsLargeAsTheContextSays) {
    size_t const source = rgbaTarget(640, 480);
    instance->maskRange(source, 0, mask, {0, 639, 0, 479}, shape());
    auto const& draw = gl.draws().back();
    EXPECT_EQ(draw.framebuffer, 0U);
    EXPECT_EQ(draw.viewport, (std::vector<GLint>{0, 0, 640, 480}));
    EXPECT_EQ(draw.uniforms.at("a_modelView"), (Values{1, 0, 0, -1}));
    EXPECT_EQ(draw.uniforms.at("a_texRange00"), (Values{0, 0, 1, 1}));
    EXPECT_EQ(draw.uniforms.at("a_geometry"), (Values{-1, -1, 2.0F / 640, 2.0F / 480}));
}

TEST_F(MaskRangeTest, TextureRangeIsThatOfTheTargetInTheSource) {
    size_t const source = rgbaTarget(128, 128);
    size_t const target = rgbaTarget(64, 32);
    instance->maskRange(source, target, mask, {0, 63, 0, 31}, shape());
    EXPECT_EQ(gl.draws().back().uniforms.at("a_texRange00"), (Values{0, 0, 0.5F, 0.25F}));
}

// The texture range is measured in logical pixels, geometry and viewport in texels.
TEST_F(MaskRangeTest, PackedTargetsAreMeasuredByTheirLogicalSize) {
    size_t const source = threeChannel16Target(64, 32);
    size_t const target = threeChannel16Target(32, 32);
    ASSERT_EQ(instance->targetSize(target), (Sizes{64, 32}));
    instance->maskRange(source, target, mask, {0, 63, 0, 31}, shape());
    auto const& draw = gl.draws().back();
    EXPECT_EQ(draw.uniforms.at("a_texRange00"), (Values{0, 0, 0.5F, 1}));
    EXPECT_EQ(draw.uniforms.at("a_geometry"), (Values{-1, -1, 2.0F / 64, 2.0F / 32}));
    EXPECT_EQ(draw.viewport, (std::vector<GLint>{0, 0, 64, 32}));
}

TEST_F(MaskRangeTest, InvalidBordersOfTheFilterShiftTheTextureRange) {
    Filter bordered("MaskFilter4x8", 8, 8, 4, 4, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    instance->createFilterInstance(bordered);
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    instance->maskRange(source, target, bordered, {0, 63, 0, 31}, shape());
    EXPECT_EQ(gl.draws().back().uniforms.at("a_texRange00"), (Values{0.125F, 0.125F, 0.75F, 0.75F}));
}

TEST_F(MaskRangeTest, EmptyShapeBindsAndSetsEverythingAndDrawsNoTriangle) {
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    MaskFilterParams const params = shapeOf({});
    gl.forgetCalls();
    instance->maskRange(source, target, mask, {0, 63, 0, 31}, params);
    EXPECT_EQ(gl.last("glDrawElements").text(), "glDrawElements(GL_TRIANGLES, 0, GL_UNSIGNED_SHORT, offset 0)");
    EXPECT_EQ(gl.boundFramebuffer(), gles().target(target).framebuffer());
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), meshOf(params).vertexBuffer().buffer());
    EXPECT_EQ(gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER), meshOf(params).indexBuffer().buffer());
    EXPECT_EQ(gl.currentProgram(), program);
    EXPECT_EQ(gl.integers(GL_VIEWPORT), (std::vector<GLint>{0, 0, 64, 32}));
}

TEST_F(MaskRangeTest, EnvelopesThatWereNeverSetDrawNothingEither) {
    MaskFilterParams params;
    params.envelopes = std::make_shared<Gles3DataEnvelopes>();
    EXPECT_EQ(failureToMask(params), "nothing was thrown");
    EXPECT_EQ(gl.last("glDrawElements").text(), "glDrawElements(GL_TRIANGLES, 0, GL_UNSIGNED_SHORT, offset 0)");
}

TEST_F(MaskRangeTest, MaskNeedsNoEntryInTheCache) {
    MaskFilterParams const params = shape();
    instance->dataEnvelopes(Bytes{1}, {}); // the record keeps the shape that it was given
    size_t const source = rgbaTarget(64, 32);
    instance->maskRange(source, rgbaTarget(64, 32), mask, {0, 63, 0, 31}, params);
    EXPECT_EQ(gl.draws().back().count, 12);
}

TEST_F(MaskRangeTest, DestroyedFilterIsReportedBeforeAnyGlCall) {
    MaskFilterParams const params = shape();
    instance->destroyFilterInstance(mask);
    EXPECT_EQ(failureToMask(params), std::string(kNotAvailable) + kMaskRange);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(MaskRangeTest, FilterThatWasNeverInstantiatedIsReportedBeforeAnyGlCall) {
    MaskFilterParams const params = shape();
    mask = namedFilter("MaskFilter4x8");
    EXPECT_EQ(failureToMask(params), std::string(kNotAvailable) + kMaskRange);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(MaskRangeTest, MissingFilterIsReportedBeforeWrongParameters) {
    instance->destroyFilterInstance(mask);
    EXPECT_EQ(failureToMask(SingleFilterParameters()), std::string(kNotAvailable) + kMaskRange);
}

TEST_F(MaskRangeTest, OtherParametersAreRefusedWithTheTargetBoundAndNothingDrawn) {
    EXPECT_EQ(failureToMask(FilterClaheParams()),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_EQ(gl.calls().back().name, "glBindFramebuffer");
    EXPECT_TRUE(gl.draws().empty());
}

TEST_F(MaskRangeTest, EnvelopesWithoutAMeshAreRefused) {
    MaskFilterParams params;
    params.envelopes = std::make_shared<DataEnvelopes>();
    EXPECT_EQ(failureToMask(params), std::string(kBadCast) + kMaskRange);
    EXPECT_EQ(gl.calls().back().name, "glBindFramebuffer");
    EXPECT_TRUE(gl.draws().empty());
}

TEST_F(MaskRangeTest, EmptyEnvelopesPointerIsRefusedLikeThoseWithoutAMesh) {
    EXPECT_EQ(failureToMask(MaskFilterParams()), std::string(kBadCast) + kMaskRange);
    EXPECT_TRUE(gl.draws().empty());
}

TEST_F(MaskRangeTest, RangeWithoutItsStartsIsRefusedBeforeAnyGlCall) {
    MaskFilterParams const params = shape();
    gl.forgetCalls();
    for (auto const& range : {Sizes{}, Sizes{0, 63}})
        EXPECT_EQ(failureOf([&] { instance->maskRange(0, 0, mask, range, params); }),
                  std::string("#Name:a range needs its start: values 0 and 2") + kMaskRange);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(MaskRangeTest, MaskThatRunsOutOfMemoryLeavesNoAttributeEnabled) {
    MaskFilterParams const params = shape();
    size_t const source = rgbaTarget(64, 32);
    size_t const target = rgbaTarget(64, 32);
    failEachAllocation(
        [&] {
            instance->maskRange(source, target, mask, {0, 63, 0, 31}, params);
        },
        [&] { EXPECT_FALSE(gl.attributes().count(0) != 0 && gl.attributes().at(0).enabled); });
    EXPECT_EQ(gl.draws().size(), 1U);
}

} // namespace
