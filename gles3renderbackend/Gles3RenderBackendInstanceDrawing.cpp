#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/Caches.h"
#include "gles3renderbackend/ExpectedState.h"
#include "gles3renderbackend/Gles3SharedResources.h"
#include "gles3renderbackend/resources/EnabledArrays.h"
#include "gles3renderbackend/resources/FixedState.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "gles3renderbackend/resources/UnitQuad.h"
#include "renderbackend/Precondition.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>
#include <array>

namespace {

constexpr char const* kDrawTiles =
    "void Gles3RenderBackendInstance::drawTiles(size_t target, Filter const& tileShader, "
    "std::vector<size_t> const& range, std::vector<size_t> const& canvasRange, std::vector<size_t> const& tileSize, "
    "std::vector<std::vector<size_t>> const& blockCoords, std::vector<size_t> const& blocks, "
    "std::vector<size_t> const& offsets)";

std::vector<float> const kIdentity = {1, 0, 0, 1};

// Number of tiles whose textures are looked up before they are drawn. Single lookups would each wait for memory;
// together they wait once.
constexpr size_t kLookedUpAtOnce = 32;

struct PlacedTile {
    double x;
    double y;
    GLuint texture;
};

void requireValues(std::vector<size_t> const& values, size_t count, char const* name) {
    if (values.size() < count) throw VelmoraException(name, kDrawTiles);
}

size_t valueOrZero(std::vector<size_t> const& values, size_t index) {
    return index < values.size() ? values[index] : 0;
}

// Returns logical * physicalSize / logicalSize, which must be a whole number of texels.
size_t wholeTexels(size_t logical, size_t physicalSize, size_t logicalSize) {
    if (logical * physicalSize % logicalSize != 0)
        throw VelmoraException("No integer physical coordinate for logical coordinate", kDrawTiles);
    return logical * physicalSize / logicalSize;
}

struct Viewport {
    size_t x;
    size_t y;
    size_t width;
    size_t height;

    void set() const {
        glViewport(static_cast<GLint>(x), static_cast<GLint>(y), static_cast<GLsizei>(width),
                   static_cast<GLsizei>(height));
    }
};

// One axis of the transform from logical pixels to clip space, -1 to 1 over the range.
struct ClipAxis {
    double scale;
    double origin;

    ClipAxis(size_t rangeStart, size_t rangeExtent, size_t gridStart)
        : scale(2.0 / static_cast<double>(rangeExtent)),
          // Subtracted in double: a region may start left of the grid.
          origin(-1.0 - (static_cast<double>(rangeStart) - static_cast<double>(gridStart)) * scale) {}

    double position(size_t logicalFromGrid) const { return origin + static_cast<double>(logicalFromGrid) * scale; }
    double extent(size_t logical) const { return static_cast<double>(logical) * scale; }
};

} // namespace

void Gles3RenderBackendInstance::drawTiles(size_t target, Filter const& tileShader, std::vector<size_t> const& range,
                                           std::vector<size_t> const& canvasRange, std::vector<size_t> const& tileSize,
                                           std::vector<std::vector<size_t>> const& blockCoords,
                                           std::vector<size_t> const& blocks, std::vector<size_t> const& offsets) {
    expectedState::forDrawing(1);
    Gles3Target const& destination = existingTarget(target, kDrawTiles);
    requireValues(range, 4, "a range needs four values: x0, x1, y0, y1");
    requireValues(canvasRange, 3, "a canvas range needs its origin: values 0 and 2");
    requireValues(tileSize, 2, "a tile size needs two values: width, height");
    precondition(blockCoords.size() >= blocks.size(), "drawTiles: every block has its coordinates");

    glBindFramebuffer(GL_FRAMEBUFFER, destination.framebuffer());
    sharedResources_->vertexBuffer().bind();
    sharedResources_->indexBuffer().bind();
    Gles3Shader* const shader = findShader(tileShader);
    if (shader == nullptr)
        throw VelmoraException("Instance for Filter <" + tileShader.name() + "> not available", kDrawTiles);
    shader->requireProgram(kDrawTiles);
    shader->requireSources(1, tileShader, kDrawTiles);
    glUseProgram(shader->program());
    shader->setModelView(kIdentity);
    setFixedState();

    std::vector<size_t> const physical = targetSize(target);
    Extent const logical = referenceSize(target, destination);
    if (logical[0] == 0 || logical[1] == 0) return; // a minimised window
    size_t const rangeWidth = range[1] - range[0] + 1;
    size_t const rangeHeight = range[3] - range[2] + 1;
    Viewport const viewport = {wholeTexels(valueOrZero(offsets, 0), physical[0], logical[0]),
                               wholeTexels(valueOrZero(offsets, 1), physical[1], logical[1]),
                               wholeTexels(rangeWidth, physical[0], logical[0]),
                               wholeTexels(rangeHeight, physical[1], logical[1])};
    wholeTexels(tileSize[0], physical[0], logical[0]);
    wholeTexels(tileSize[1], physical[1], logical[1]);
    viewport.set();

    ClipAxis const x(range[0], rangeWidth, canvasRange[0]);
    ClipAxis const y(range[2], rangeHeight, canvasRange[2]);
    // A filter run with the same program may have left another range.
    shader->setTexRange(0, 0, 1, 1, 0);
    glActiveTexture(GL_TEXTURE0);
    glUniform1i(shader->uniformLocation("s_texture00"), 0);
    GLint const position = shader->attributeLocation("a_position");
    GLint const textureCoordinates = shader->attributeLocation("a_texturecoordinates00");
    unitQuad::pointAttribute(position, unitQuad::kPositionByte);
    unitQuad::pointAttribute(textureCoordinates, unitQuad::kTextureCoordinateByte);
    EnabledArrays arrays;
    arrays.enable(position);
    arrays.enable(textureCoordinates);

    double const tileWidth = x.extent(tileSize[0]);
    double const tileHeight = y.extent(tileSize[1]);
    std::array<PlacedTile, kLookedUpAtOnce> tiles{};
    for (size_t first = 0; first < blocks.size(); first += tiles.size()) {
        size_t const count = std::min(tiles.size(), blocks.size() - first);
        for (size_t i = 0; i < count; ++i) {
            std::vector<size_t> const& cell = blockCoords[first + i];
            Gles3Texture const* const tile = textureCache_->find({id(), blocks[first + i]});
            tiles[i] = {x.position(cell[0] * tileSize[0]), y.position(cell[1] * tileSize[1]),
                        (tile != nullptr ? *tile : sharedResources_->transparentBlack()).texture()};
        }
        for (size_t i = 0; i < count; ++i) {
            shader->setGeometry(tiles[i].x, tiles[i].y, tileWidth, tileHeight);
            glBindTexture(GL_TEXTURE_2D, tiles[i].texture);
            unitQuad::draw();
        }
    }
}
