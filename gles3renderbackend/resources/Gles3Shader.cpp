#include "gles3renderbackend/resources/Gles3Shader.h"

#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "gles3renderbackend/resources/EnabledArrays.h"
#include "gles3renderbackend/resources/FixedState.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "gles3renderbackend/resources/OutputExtent.h"
#include "gles3renderbackend/resources/ShaderCompiler.h"
#include "gles3renderbackend/resources/TextureRanges.h"
#include "gles3renderbackend/resources/UnitQuad.h"
#include "renderbackend/Precondition.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>
#include <utility>

namespace {

// Number of inputs whose locations are looked up at construction: more than any built-in filter has.
constexpr size_t kPreparedInputs = 4;

std::string suffix(size_t input) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::setfill('0') << std::setw(2) << input;
    return text.str();
}

GLint find(std::map<std::string, GLint> const& locations, std::string const& name) {
    auto const found = locations.find(name);
    return found == locations.end() ? -1 : found->second;
}

// The surface of a minimised window may have size 0: nothing is drawn, and the division must not trap.
size_t quotient(size_t dividend, size_t divisor) {
    return divisor == 0 ? 0 : dividend / divisor;
}

GLfloat toFloat(size_t value) {
    return static_cast<GLfloat>(value);
}

std::vector<float> const kUpright = {1, 0, 0, 1};
std::vector<float> const kMirrored = {1, 0, 0, -1};

} // namespace

Gles3Shader::Gles3Shader(std::string const& vertexSource, std::string const& fragmentSource, Filter& filter)
    : Filter(filter), indexBuffer_(GL_ELEMENT_ARRAY_BUFFER), vertexBuffer_(GL_ARRAY_BUFFER) {
    CompiledProgram compiled = compileProgram(vertexSource, fragmentSource);
    program_ = std::move(compiled.program);
    attributes_ = std::move(compiled.attributes);
    uniforms_ = std::move(compiled.uniforms);
    prepareLocations();
    unitQuad::uploadIndices(indexBuffer_);
    unitQuad::uploadVertices(vertexBuffer_);
    if (geometry_ > 0) setGeometry(0, 0, 1, 1);
    setTexRange(0, 0, 1, 1, 0);
}

Gles3Shader::Gles3Shader(Filter& filter)
    : Filter(filter), indexBuffer_(GL_ARRAY_BUFFER), vertexBuffer_(GL_ARRAY_BUFFER) {}

Gles3Shader::~Gles3Shader() = default;

GLint Gles3Shader::attributeLocation(std::string const& name) const {
    return find(attributes_, name);
}

GLint Gles3Shader::uniformLocation(std::string const& name) const {
    return find(uniforms_, name);
}

Gles3Shader::InputLocations Gles3Shader::lookUpInput(size_t input) const {
    std::string const digits = suffix(input);
    return {uniformLocation("s_texture" + digits), uniformLocation("a_texRange" + digits),
            uniformLocation("a_texscale" + digits), attributeLocation("a_texturecoordinates" + digits)};
}

Gles3Shader::InputLocations Gles3Shader::inputLocations(size_t input) const {
    return input < inputs_.size() ? inputs_[input] : lookUpInput(input);
}

void Gles3Shader::prepareLocations() {
    geometry_ = uniformLocation("a_geometry");
    modelView_ = uniformLocation("a_modelView");
    outputSize_ = uniformLocation("a_outputSize");
    position_ = attributeLocation("a_position");
    for (size_t input = 0; input < kPreparedInputs; ++input)
        inputs_.push_back(lookUpInput(input));
    while (inputLocations(sampledInputs_).sampler != -1)
        ++sampledInputs_;
}

void Gles3Shader::requireSources(size_t sources, Filter const& filter, char const* location) const {
    if (sources < std::min(filter.numTexturesIn(), sampledInputs_))
        throw VelmoraException("fewer sources than the filter has inputs", location);
}

void Gles3Shader::requireProgram(char const* location) const {
    if (program() == 0) throw VelmoraException("a filter without a program draws no tiles", location);
}

void Gles3Shader::setGeometry(double x, double y, double w, double h) {
    glUseProgram(program());
    glUniform4f(geometry_, static_cast<GLfloat>(x), static_cast<GLfloat>(y), static_cast<GLfloat>(w),
                static_cast<GLfloat>(h));
}

void Gles3Shader::setModelView(std::vector<float> const& m) {
    glUseProgram(program());
    // Deliberate, do not "repair": tests against 0, not -1, so a uniform at location 0 is never set.
    if (modelView_ != 0) glUniformMatrix2fv(modelView_, 1, GL_FALSE, m.data());
}

void Gles3Shader::setTexRange(double offsetX, double offsetY, double scaleX, double scaleY, size_t input) {
    setTexRange({offsetX, offsetY, scaleX, scaleY}, inputLocations(input).texRange);
}

void Gles3Shader::setTexRange(TextureRange const& range, GLint location) const {
    glUseProgram(program());
    // Deliberate, do not "repair": tests against 0, not -1, so a uniform at location 0 is never set.
    if (location != 0)
        glUniform4f(location, static_cast<GLfloat>(range.offsetX), static_cast<GLfloat>(range.offsetY),
                    static_cast<GLfloat>(range.scaleX), static_cast<GLfloat>(range.scaleY));
}

void Gles3Shader::uploadParameters(SingleFilterParameters const& /*params*/) {}

void Gles3Shader::draw(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination,
                       size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, std::vector<size_t> const& offset,
                       Gles3RenderBackendInstance& instance, Filter const& filter) {
    precondition(offset.size() >= 2, "draw: an offset has two values");
    Gles3Target const& target = instance.target(destination);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer());
    vertexBuffer_.bind();
    indexBuffer_.bind();
    glUseProgram(program());
    // The host's surface has its origin at the top, targets keep GL's order: only the surface is mirrored.
    bool const hostSurface = target.ownSurface() == 0;
    setModelView(hostSurface ? kMirrored : kUpright);
    setFixedState();

    Extent const size = physicalSize(destination, target, instance);
    Extent const reference = referenceSize(target, size);
    auto const [outputW, outputH] = outputExtent(filter, inputW, inputH, clipLeft + clipRight, clipTop + clipBottom);
    glViewport(0, 0, static_cast<GLsizei>(size[0]), static_cast<GLsizei>(size[1]));
    setOutputGeometry(size, quotient(outputW * size[0], reference[0]), quotient(outputH * size[1], reference[1]),
                      offset);

    // Deliberate: without "a_position" this passes -1 on, as an index that GL refuses.
    unitQuad::pointAttribute(position_, unitQuad::kPositionByte);
    EnabledArray const position(position_);
    EnabledArrays inputs; // disabled before the position
    TextureRanges const ranges(*this, inputW, inputH, clipLeft, clipRight, clipTop, clipBottom);
    for (size_t i = 0; i < sources.size(); ++i)
        bindInput(i, sources[i], ranges, inputs, instance);
    if (outputSize_ != -1)
        glUniform4f(outputSize_, toFloat(quotient(size[0] * clipLeft, reference[0])),
                    toFloat(quotient(size[1] * clipTop, reference[1])), toFloat(size[0]), toFloat(size[1]));

    uploadParameters(params);
    unitQuad::draw();
}

void Gles3Shader::setOutputGeometry(std::array<size_t, 2> const& targetSize, size_t outputW, size_t outputH,
                                    std::vector<size_t> const& offset) {
    auto const w = static_cast<double>(targetSize[0]);
    auto const h = static_cast<double>(targetSize[1]);
    setGeometry(2.0 * static_cast<double>(offset[0]) / w - 1.0, 2.0 * static_cast<double>(offset[1]) / h - 1.0,
                2.0 * static_cast<double>(outputW) / w, 2.0 * static_cast<double>(outputH) / h);
}

// Every draw asks for them: the backend's own targets are answered here.
Gles3Shader::Extent Gles3Shader::physicalSize(size_t id, Gles3Target const& target,
                                              Gles3RenderBackendInstance& instance) {
    if (target.ownSurface() != 0) return {target.Gles3Texture::width(), target.Gles3Texture::height()};
    return instance.physicalSize(id, target);
}

Gles3Shader::Extent Gles3Shader::referenceSize(Gles3Target const& target, Extent const& physical) {
    if (target.ownSurface() == 0) return physical;
    return {target.logicalSize()[0], target.logicalSize()[1]};
}

void Gles3Shader::bindInput(size_t input, FilterSource const& source, TextureRanges const& ranges,
                            EnabledArrays& arrays, Gles3RenderBackendInstance& instance) {
    Gles3Target const& target = instance.target(source.target);
    Extent const size = physicalSize(source.target, target, instance);
    TextureRange const range =
        source.wholeTexture ? TextureRange() : ranges.of(source.x, source.y, referenceSize(target, size));
    InputLocations const locations = inputLocations(input);
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(input));
    glBindTexture(GL_TEXTURE_2D, target.texture());
    glUniform1i(locations.sampler, static_cast<GLint>(input));
    setTexRange(range, locations.texRange);
    if (locations.texScale != -1)
        glUniform2f(locations.texScale, static_cast<GLfloat>(1.0 / static_cast<double>(size[0])),
                    static_cast<GLfloat>(1.0 / static_cast<double>(size[1])));
    if (locations.textureCoordinates == -1) return;
    unitQuad::pointAttribute(locations.textureCoordinates, unitQuad::kTextureCoordinateByte);
    arrays.enable(locations.textureCoordinates);
}
