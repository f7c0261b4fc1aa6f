#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/ExpectedState.h"
#include "gles3renderbackend/Gles3DataEnvelopes.h"
#include "gles3renderbackend/resources/EnabledArrays.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/FilterParameters.h"
#include "renderbackend/VelmoraException.h"

namespace {

constexpr char const* kMaskRange =
    "void Gles3RenderBackendInstance::maskRange(size_t source, size_t target, Filter const& maskShader, "
    "std::vector<size_t> const& range, SingleFilterParameters const& params)";
constexpr GLsizei kMeshVertexBytes = 8; // two floats

} // namespace

void Gles3RenderBackendInstance::maskRange(size_t source, size_t target, Filter const& maskShader,
                                           std::vector<size_t> const& range, SingleFilterParameters const& params) {
    expectedState::forMasking();
    Gles3Shader* const shader = findShader(maskShader);
    if (shader == nullptr)
        throw VelmoraException("Instance for Filter <" + maskShader.name() + "> not available", kMaskRange);
    if (range.size() < 3) throw VelmoraException("a range needs its start: values 0 and 2", kMaskRange);
    shader->requireProgram(kMaskRange);
    shader->requireSources(1, maskShader, kMaskRange);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, findOrMakeTarget(source).texture());
    // Deliberate: set before the program is made current, so it lands in whichever program is; hosts rely on the order.
    glUniform1i(shader->uniformLocation("s_texture00"), 0);

    std::vector<size_t> const size = targetSize(target);
    Extent const reference = referenceSize(target, findOrMakeTarget(target));
    double offsetX{};
    double offsetY{};
    double scaleX{};
    double scaleY{};
    inputTextureRange({source, 0, 0, false}, maskShader, reference[0], reference[1], 0, 0, 0, 0, offsetX, offsetY,
                      scaleX, scaleY);
    shader->setTexRange(offsetX, offsetY, scaleX, scaleY, 0);
    Gles3Target const& destination = findOrMakeTarget(target);
    glBindFramebuffer(GL_FRAMEBUFFER, destination.framebuffer());

    auto const* const envelopes =
        dynamic_cast<Gles3DataEnvelopes const*>(params.as<MaskFilterParams>().envelopes.get());
    if (envelopes == nullptr) throw VelmoraException("bad parameters cast", kMaskRange);
    envelopes->vertexBuffer().bind();
    envelopes->indexBuffer().bind();
    glUseProgram(shader->program());
    GLint const position = shader->attributeLocation("a_position");
    glVertexAttribPointer(static_cast<GLuint>(position), 2, GL_FLOAT, GL_FALSE, kMeshVertexBytes, nullptr);
    EnabledArray const enabled(position);

    auto const w = static_cast<double>(size[0]);
    auto const h = static_cast<double>(size[1]);
    glViewport(0, 0, static_cast<GLsizei>(size[0]), static_cast<GLsizei>(size[1]));
    // Image pixel (px, py) lands at (-1 + 2 * (px - xStart) / W, -1 + 2 * (py - yStart) / H).
    shader->setGeometry(-1.0 - 2.0 * static_cast<double>(range[0]) / w, -1.0 - 2.0 * static_cast<double>(range[2]) / h,
                        2.0 / w, 2.0 / h);
    bool const hostSurface = destination.ownSurface() == 0;
    shader->setModelView({1, 0, 0, hostSurface ? -1.0F : 1.0F});
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(envelopes->indexCount()), GL_UNSIGNED_SHORT, nullptr);
}
