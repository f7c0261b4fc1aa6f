// drawTiles beside a hand-written loop of GL calls.
//
// Both draw the same textures with the same program into the same framebuffer: tiles of 16 x 16 texels, one texel per
// pixel, small so that calls dominate and not pixels. The raw side makes exactly the GL calls of drawTiles, the state
// at the start of each call included, with every argument computed beforehand. An iteration is one picture; if pixels
// are drawn it ends with glFinish.
#include "bench/Benchmarks.h"
#include "bench/GlBenchContext.h"
#include "bench/RawGl.h"
#include "gles3renderbackend/resources/Gles3Target.h"

#include <cmath>

namespace {

constexpr size_t kTileTexels = 16;
constexpr std::array<GLfloat, 4> kUpright = {1, 0, 0, 1};

struct RawTile {
    GLuint texture;
    std::array<GLfloat, 4> geometry;
};

class TileScene {
public:
    TileScene(GlBenchContext const& context, size_t tiles) : context_(context), backend_(context) {
        layOut(tiles);
        createTarget();
        for (size_t i = 0; i < tiles; ++i)
            addTile(i);
        takeProgram();
        requireSamePicture();
    }

    void drawOurs() {
        backend_.instance->drawTiles(target_, filter_, range_, range_, tileSize_, blockCoords_, blocks_, offsets_);
    }

    void drawRaw() const {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
        quad_.bind();
        glUseProgram(program_);
        glUseProgram(program_);
        glUniformMatrix2fv(modelView_, 1, GL_FALSE, kUpright.data());
        rawGl::setFixedState();
        glViewport(0, 0, static_cast<GLsizei>(width_), static_cast<GLsizei>(height_));
        glUseProgram(program_);
        glUniform4f(texRange_, 0, 0, 1, 1);
        glActiveTexture(GL_TEXTURE0);
        glUniform1i(sampler_, 0);
        rawGl::Quad::pointPositions(position_);
        rawGl::Quad::pointTextureCoordinates(textureCoordinates_);
        glEnableVertexAttribArray(static_cast<GLuint>(position_));
        glEnableVertexAttribArray(static_cast<GLuint>(textureCoordinates_));
        for (RawTile const& tile : rawTiles_) {
            glUseProgram(program_);
            glUniform4f(geometry_, tile.geometry[0], tile.geometry[1], tile.geometry[2], tile.geometry[3]);
            glBindTexture(GL_TEXTURE_2D, tile.texture);
            rawGl::Quad::draw();
        }
        glDisableVertexAttribArray(static_cast<GLuint>(position_));
        glDisableVertexAttribArray(static_cast<GLuint>(textureCoordinates_));
    }

private:
    // As square as whole columns allow; the last row may be short.
    void layOut(size_t tiles) {
        columns_ = static_cast<size_t>(std::ceil(std::sqrt(static_cast<double>(tiles))));
        rows_ = (tiles + columns_ - 1) / columns_;
        width_ = columns_ * kTileTexels;
        height_ = rows_ * kTileTexels;
        range_ = {0, width_ - 1, 0, height_ - 1};
    }

    void createTarget() {
        target_ = backend_.instance->createTarget({width_, height_}, 32, false, RenderBackend::NEAREST,
                                                  RenderBackend::RGBA32);
        framebuffer_ = backend_.instance->target(target_).framebuffer();
        filter_ = blitFilter(*backend_.instance);
    }

    void addTile(size_t i) {
        std::vector<unsigned char> pixels(kTileTexels * kTileTexels * 4);
        for (size_t byte = 0; byte < pixels.size(); ++byte)
            pixels[byte] = static_cast<unsigned char>(i * 31 + byte * 7);
        backend_.instance->setTile(i, pixels, {kTileTexels, kTileTexels, 4}, 0);
        size_t const column = i % columns_;
        size_t const row = i / columns_;
        blockCoords_.push_back({column, row});
        blocks_.push_back(i);

        auto const w = 2 / static_cast<float>(columns_);
        auto const h = 2 / static_cast<float>(rows_);
        rawTiles_.push_back(
            {rawGl::currentTexture(), {static_cast<float>(column) * w - 1, static_cast<float>(row) * h - 1, w, h}});
    }

    void takeProgram() {
        drawOurs();
        program_ = rawGl::currentProgram();
        geometry_ = glGetUniformLocation(program_, "a_geometry");
        modelView_ = glGetUniformLocation(program_, "a_modelView");
        texRange_ = glGetUniformLocation(program_, "a_texRange00");
        sampler_ = glGetUniformLocation(program_, "s_texture00");
        position_ = glGetAttribLocation(program_, "a_position");
        textureCoordinates_ = glGetAttribLocation(program_, "a_texturecoordinates00");
    }

    void requireSamePicture() {
        auto const picture = [this](auto draw) {
            backend_.instance->clear(target_, {0, 0, 0, 0});
            draw();
            return rawGl::read(framebuffer_, static_cast<GLsizei>(width_), static_cast<GLsizei>(height_));
        };
        ::requireSamePicture(context_, "drawTiles", {picture([this] { drawOurs(); }), picture([this] { drawRaw(); })});
    }

    GlBenchContext const& context_;
    BenchBackend backend_;
    size_t columns_ = 0;
    size_t rows_ = 0;
    size_t width_ = 0;
    size_t height_ = 0;
    size_t target_ = 0;

    // The host's arguments of drawTiles, kept from one picture to the next.
    Filter filter_;
    std::vector<size_t> range_;
    std::vector<size_t> const tileSize_ = {kTileTexels, kTileTexels};
    std::vector<std::vector<size_t>> blockCoords_;
    std::vector<size_t> blocks_;
    std::vector<size_t> const offsets_ = {0, 0};

    // The raw loop's arguments of GL calls.
    rawGl::Quad quad_;
    std::vector<RawTile> rawTiles_;
    GLuint framebuffer_ = 0;
    GLuint program_ = 0;
    GLint geometry_ = -1;
    GLint modelView_ = -1;
    GLint texRange_ = -1;
    GLint sampler_ = -1;
    GLint position_ = -1;
    GLint textureCoordinates_ = -1;
};

template <class Draw>
void measure(benchmark::State& state, GlBenchContext const& context, size_t tiles, Draw draw) {
    TileScene scene(context, tiles);
    for (auto _ : state) {
        draw(scene);
        context.finish();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(tiles));
}

} // namespace

void registerDrawTiles(GlBenchContext const& context) {
    Clock const clock = context.nullDriver() ? Clock::Cpu : Clock::Wall;
    for (size_t const tiles : {size_t{1}, size_t{100}, size_t{2000}}) {
        std::string const tail = "/" + std::to_string(tiles);
        registerGl(clock, "drawTiles/ours" + tail, [&context, tiles](benchmark::State& state) {
            measure(state, context, tiles, [](TileScene& scene) { scene.drawOurs(); });
        });
        registerGl(clock, "drawTiles/raw" + tail, [&context, tiles](benchmark::State& state) {
            measure(state, context, tiles, [](TileScene& scene) { scene.drawRaw(); });
        });
    }
}
