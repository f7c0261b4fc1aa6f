#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <algorithm>

namespace {

using namespace backendtest;

constexpr char const* kDrawTiles =
    "#Location:void Gles3RenderBackendInstance::drawTiles(size_t target, Filter const& tileShader, "
    "std::vector<size_t> const& range, std::vector<size_t> const& canvasRange, std::vector<size_t> const& tileSize, "
    "std::vector<std::vector<size_t>> const& blockCoords, std::vector<size_t> const& blocks, "
    "std::vector<size_t> const& offsets)";
constexpr char const* kNoWholeTexel = "#Name:No integer physical coordinate for logical coordinate";

using Geometry = std::vector<float>;

// The surface whose size is another one than its target's texels: drawing asks through the interface.
class HalfAsWide final : public Gles3RenderBackendInstance {
public:
    using Gles3RenderBackendInstance::Gles3RenderBackendInstance;

    Sizes targetSize(size_t target) override {
        Sizes const size = Gles3RenderBackendInstance::targetSize(target);
        return {size[0] / 2, size[1]};
    }
};

// The surface that says it has texels whatever its target has.
class NeverEmpty final : public Gles3RenderBackendInstance {
public:
    using Gles3RenderBackendInstance::Gles3RenderBackendInstance;

    Sizes targetSize(size_t) override { return {10, 10}; }
};

class Gles3RenderBackendInstanceDrawingTest : public BackendRecordingTest {
protected:
    Gles3RenderBackendInstanceDrawingTest() { instance->createFilterInstance(blit); }

    // The whole of a 512 x 512 image, in tiles of 256 x 256.
    void drawFourTiles(size_t target, std::vector<Sizes> const& blockCoords, Sizes const& blocks,
                       Sizes const& offsets = {}) {
        instance->drawTiles(target, blit, {0, 511, 0, 511}, {0, 511, 0, 511}, {256, 256}, blockCoords, blocks, offsets);
    }

    // Draws tile 0 at cell 0, 0.
    void drawOne(size_t target, Sizes const& range, Sizes const& tileSize, Sizes const& offsets) {
        instance->drawTiles(target, blit, range, range, tileSize, {{0, 0}}, {0}, offsets);
    }

    std::string failureToDraw(size_t target, Sizes const& range, Sizes const& tileSize, Sizes const& offsets) {
        return failureOf([&] { drawOne(target, range, tileSize, offsets); });
    }

    // A range and a cell in clip space; the grid's origin is (gridX, gridY).
    Geometry geometryOf(Sizes const& range, Sizes const& canvasRange, Sizes const& tileSize, Sizes const& cell) {
        instance->drawTiles(rgbaTarget(1000, 1000), blit, range, canvasRange, tileSize, {cell}, {0}, {});
        return gl.draws().back().uniforms.at("a_geometry");
    }

    size_t packedTarget() {
        return instance->createTarget({99, 30}, 8, false, RenderBackend::NEAREST, RenderBackend::RGB24);
    }

    GLuint tileTexture(size_t tile) {
        instance->setTile(tile, {}, {2, 2, 4}, 0);
        return gl.boundTexture();
    }

    // The calls so far without the glUseProgram of each uniform setter; it must be the same program every time.
    std::vector<std::string> callsWithOneProgram() {
        auto texts = gl.texts();
        std::string const use = gl.last("glUseProgram").text();
        auto const first = std::find(texts.begin(), texts.end(), use);
        texts.erase(std::remove(first + 1, texts.end(), use), texts.end());
        EXPECT_EQ(std::count_if(texts.begin(), texts.end(),
                                [](auto const& text) { return text.rfind("glUseProgram", 0) == 0; }),
                  1);
        return texts;
    }

    Filter blit = namedFilter("BlitFilter4x8");
};

TEST_F(Gles3RenderBackendInstanceDrawingTest, CallsComeInTheirOrder) {
    size_t const target = rgbaTarget(512, 512);
    GLuint const first = tileTexture(7);
    GLuint const second = tileTexture(8);
    gl.forgetCalls();
    drawFourTiles(target, {{0, 0}, {1, 0}}, {7, 8});

    auto const name = [](GLuint object) { return std::to_string(object); };
    std::vector<std::string> const expected = {
        "glBindFramebuffer(GL_FRAMEBUFFER, " + name(gles().target(target).framebuffer()) + ")",
        "glBindBuffer(GL_ARRAY_BUFFER, " + name(sharedVertexBuffer()) + ")",
        "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, " + name(sharedIndexBuffer()) + ")",
        "glUseProgram(" + name(gl.currentProgram()) + ")",
        "glUniformMatrix2fv(1, 1, GL_FALSE, data)", // a_modelView
        "glDepthMask(GL_FALSE)",
        "glDisable(GL_CULL_FACE)",
        "glDisable(GL_DEPTH_TEST)",
        "glDisable(GL_STENCIL_TEST)",
        "glDisable(GL_SCISSOR_TEST)",
        "glViewport(0, 0, 512, 512)",
        "glUniform4f(2, 0, 0, 1, 1)", // a_texRange00
        "glActiveTexture(GL_TEXTURE0)",
        "glUniform1i(3, 0)", // s_texture00
        "glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 16, offset 0)",
        "glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 16, offset 8)",
        "glEnableVertexAttribArray(0)",
        "glEnableVertexAttribArray(1)",
        "glUniform4f(0, -1, -1, 1, 1)", // a_geometry
        "glBindTexture(GL_TEXTURE_2D, " + name(first) + ")",
        "glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, offset 0)",
        "glUniform4f(0, 0, -1, 1, 1)",
        "glBindTexture(GL_TEXTURE_2D, " + name(second) + ")",
        "glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, offset 0)",
        "glDisableVertexAttribArray(0)",
        "glDisableVertexAttribArray(1)",
    };
    EXPECT_EQ(callsWithOneProgram(), expected);
    EXPECT_EQ(gl.draws().back().uniforms.at("a_modelView"), (std::vector<float>{1, 0, 0, 1}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, FramebufferProgramViewportAndBuffersStayAsTheyAre) {
    size_t const target = rgbaTarget(512, 512);
    drawFourTiles(target, {{0, 0}}, {7});
    EXPECT_EQ(gl.boundFramebuffer(), gles().target(target).framebuffer());
    EXPECT_NE(gl.currentProgram(), 0U);
    EXPECT_EQ(gl.integers(GL_VIEWPORT), (std::vector<GLint>{0, 0, 512, 512}));
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), sharedVertexBuffer());
    EXPECT_EQ(gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER), sharedIndexBuffer());
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, SecondOfFourTilesCoversTheLowerRightQuarterOfClipSpace) {
    drawFourTiles(rgbaTarget(512, 512), {{1, 0}}, {7});
    EXPECT_EQ(gl.draws().back().uniforms.at("a_geometry"), (Geometry{0, -1, 1, 1}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, TileIsPlacedRelativeToTheRangeAndTheGrid) {
    // Grid at (100, 200): cell (3, 2) starts at (100 + 3 * 50, 200 + 2 * 40) = (250, 280). The range is 200 x 160
    // pixels from (150, 240) on. x = -1 + 2 * (250 - 150) / 200, y = -1 + 2 * (280 - 240) / 160, extent 2 * 50 / 200 by
    // 2 * 40 / 160.
    EXPECT_EQ(geometryOf({150, 349, 240, 399}, {100, 999, 200, 999}, {50, 40}, {3, 2}),
              (Geometry{0, -0.5F, 0.5F, 0.5F}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, OnlyTheOriginOfTheCanvasRangeIsRead) {
    EXPECT_EQ(geometryOf({0, 9, 0, 9}, {5, 0, 5, 0}, {5, 5}, {0, 0}),
              geometryOf({0, 9, 0, 9}, {5, 99, 5}, {5, 5}, {0, 0}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, RangeMayStartLeftOfTheGrid) {
    // 16 pixels wide and high: -1 + 2 * 2 / 16 and -1 + 2 * 4 / 16.
    EXPECT_EQ(geometryOf({10, 25, 10, 25}, {12, 99, 14, 99}, {8, 8}, {0, 0}), (Geometry{-0.75F, -0.5F, 1, 1}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, ViewportIsTheRegionInsideTheTarget) {
    drawOne(rgbaTarget(512, 256), {100, 139, 200, 229}, {10, 10}, {7, 9});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(7, 9, 40, 30)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, MissingOffsetsAreZero) {
    size_t const target = rgbaTarget(512, 256);
    drawOne(target, {0, 39, 0, 29}, {10, 10}, {});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(0, 0, 40, 30)");
    drawOne(target, {0, 39, 0, 29}, {10, 10}, {7});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(7, 0, 40, 30)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, OffsetsOfAPackedTargetCountPixelsAndMustFillTexels) {
    size_t const target = packedTarget(); // 99 pixels in 33 texels
    EXPECT_EQ(failureToDraw(target, {0, 32, 0, 29}, {33, 30}, {10}), std::string(kNoWholeTexel) + kDrawTiles);
    drawOne(target, {0, 32, 0, 29}, {33, 30}, {9});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(3, 0, 11, 30)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, SpreadPixelsWidenTheViewport) {
    size_t const target = instance->createTarget({40, 30}, 48, false, RenderBackend::NEAREST, RenderBackend::RGB24);
    drawOne(target, {0, 9, 0, 4}, {5, 5}, {7, 3});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(14, 3, 20, 5)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, EachOfTheSixQuotientsMustBeWhole) {
    // Three pixels per texel across and, which only a host with targets of its own can have, two rows per texel.
    size_t const target = packedTarget();
    gles().target(target).repack({99, 60}, 3, 1);
    struct Row {
        char const* name;
        Sizes range;
        Sizes tileSize;
        Sizes offsets;
    };
    std::vector<Row> const rows = {
        {"x offset", {0, 32, 0, 29}, {33, 30}, {10, 0}},   {"y offset", {0, 32, 0, 29}, {33, 30}, {9, 3}},
        {"range width", {0, 33, 0, 29}, {33, 30}, {9, 2}}, {"range height", {0, 32, 0, 28}, {33, 30}, {9, 2}},
        {"tile width", {0, 32, 0, 29}, {32, 30}, {9, 2}},  {"tile height", {0, 32, 0, 29}, {33, 31}, {9, 2}},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        gl.forgetCalls();
        EXPECT_EQ(failureToDraw(target, row.range, row.tileSize, row.offsets), std::string(kNoWholeTexel) + kDrawTiles);
        EXPECT_EQ(gl.count("glViewport"), 0U);
        EXPECT_TRUE(gl.draws().empty());
    }
    drawOne(target, {0, 32, 0, 29}, {33, 30}, {9, 2});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(3, 1, 11, 15)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, StateSetBeforeARefusedQuotientStays) {
    size_t const target = packedTarget();
    gl.forgetCalls();
    EXPECT_THROW(drawOne(target, {0, 32, 0, 29}, {33, 30}, {10}), VelmoraException);
    EXPECT_EQ(gl.boundFramebuffer(), gles().target(target).framebuffer());
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), sharedVertexBuffer());
    EXPECT_EQ(gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER), sharedIndexBuffer());
    EXPECT_NE(gl.currentProgram(), 0U);
    EXPECT_FALSE(gl.depthMask());
    EXPECT_EQ(gl.count("glDisable"), 4U);
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, UnknownTargetFailsBeforeAnyGlCall) {
    gl.forgetCalls();
    EXPECT_EQ(failureToDraw(77, {0, 32, 0, 29}, {33, 30}, {}), std::string("#Name:Target does not exist") + kDrawTiles);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_FALSE(targetExists(77)) << "drawing does not make a target";
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, FilterWithoutInstanceFailsAfterTheFramebufferIsBound) {
    size_t const target = rgbaTarget(512, 512);
    Filter const other = namedFilter("BlitFilter3x8");
    instance->clear(0, {0, 0, 0});
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] {
                  instance->drawTiles(target, other, {0, 9, 0, 9}, {0, 9, 0, 9}, {5, 5}, {}, {}, {});
              }),
              std::string("#Name:Instance for Filter <BlitFilter3x8> not available") + kDrawTiles);
    EXPECT_EQ(gl.boundFramebuffer(), gles().target(target).framebuffer());
    EXPECT_EQ(gl.names(), (std::vector<std::string>{"glBindFramebuffer", "glBindBuffer", "glBindBuffer"}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, DestroyedFilterIsNotAvailable) {
    size_t const target = rgbaTarget(512, 512);
    instance->destroyFilterInstance(blit);
    EXPECT_EQ(failureToDraw(target, {0, 9, 0, 9}, {5, 5}, {}),
              std::string("#Name:Instance for Filter <BlitFilter4x8> not available") + kDrawTiles);
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, MissingTileIsDrawnWithTheTransparentBlackTexel) {
    GLuint const texture = tileTexture(7);
    drawFourTiles(rgbaTarget(512, 512), {{0, 0}, {1, 0}, {0, 1}}, {6, 7, 8});
    ASSERT_EQ(gl.draws().size(), 3U);
    EXPECT_EQ(gl.draws()[0].textures.at(0), transparentBlack());
    EXPECT_EQ(gl.draws()[1].textures.at(0), texture);
    EXPECT_EQ(gl.draws()[2].textures.at(0), transparentBlack());
    EXPECT_FALSE(instance->tileSet(6)) << "drawing does not make a tile";
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, TileOfAnotherInstanceCountsAsMissing) {
    size_t const target = rgbaTarget(512, 512);
    tileTexture(7);
    instance->eraseTarget(0);
    instance->eraseTarget(target);
    auto const second = backend.createInstance(surface);
    size_t const secondTarget =
        second->createTarget({512, 512}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    second->drawTiles(secondTarget, blit, {0, 9, 0, 9}, {0, 9, 0, 9}, {5, 5}, {{0, 0}}, {7}, {});
    EXPECT_EQ(gl.draws().back().textures.at(0), transparentBlack());
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, DrawnTileBecomesTheMostRecentlyUsed) {
    instance.reset();
    Gles3RenderBackend small(RenderBackend::RGBA32, 48);
    instance = small.createInstance(surface);
    Filter filter = namedFilter("BlitFilter4x8");
    instance->createFilterInstance(filter);
    size_t const target = rgbaTarget(512, 512);
    for (size_t const tile : {1U, 2U, 3U})
        instance->setTile(tile, {}, {2, 2, 4}, 0); // 16 bytes each
    instance->drawTiles(target, filter, {0, 9, 0, 9}, {0, 9, 0, 9}, {5, 5}, {{0, 0}, {1, 0}}, {2, 1}, {});
    instance->setTile(4, {}, {2, 2, 4}, 0);
    EXPECT_FALSE(instance->tileSet(3));
    instance->setTile(5, {}, {2, 2, 4}, 0);
    EXPECT_FALSE(instance->tileSet(2)) << "drawn before tile 1";
    EXPECT_TRUE(instance->tileSet(1));
    instance.reset();
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, TextureRangeOfAnEarlierRunIsUndone) {
    size_t const target = rgbaTarget(512, 512);
    size_t const source = rgbaTarget(512, 512);
    instance->executeFilter(blit, {{source, 128, 64, false}}, 64, 64, target, 0, 0, 0, 0, SingleFilterParameters(),
                            {0, 0});
    ASSERT_EQ(gl.draws().back().uniforms.at("a_texRange00"), (std::vector<float>{0.25F, 0.125F, 0.125F, 0.125F}));
    drawFourTiles(target, {{0, 0}}, {7});
    EXPECT_EQ(gl.draws().back().uniforms.at("a_texRange00"), (std::vector<float>{0, 0, 1, 1}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, ModelViewOfAnEarlierRunIsUndone) {
    size_t const source = rgbaTarget(64, 64);
    instance->executeFilter(blit, {{source, 0, 0, false}}, 64, 64, 0, 0, 0, 0, 0, SingleFilterParameters(), {0, 0});
    ASSERT_EQ(gl.draws().back().uniforms.at("a_modelView"), (std::vector<float>{1, 0, 0, -1}));
    drawOne(0, {0, 9, 0, 9}, {5, 5}, {});
    EXPECT_EQ(gl.draws().back().uniforms.at("a_modelView"), (std::vector<float>{1, 0, 0, 1}));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, HostsSurfaceIsDrawnOnePixelATexel) {
    drawOne(0, {0, 99, 0, 49}, {25, 25}, {11, 13});
    EXPECT_EQ(gl.boundFramebuffer(), 0U);
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(11, 13, 100, 50)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, TargetWithoutTexelsDrawsNothing) {
    size_t const flat = rgbaTarget(10, 0);
    size_t const narrow = rgbaTarget(0, 10);
    gl.forgetCalls();
    for (size_t const target : {flat, narrow})
        EXPECT_NO_THROW(drawOne(target, {0, 9, 0, 9}, {5, 5}, {}));
    surface.widthTexels = 0;
    EXPECT_NO_THROW(drawOne(0, {0, 9, 0, 9}, {5, 5}, {}));
    surface.widthTexels = 640;
    surface.heightTexels = 0;
    EXPECT_NO_THROW(drawOne(0, {0, 9, 0, 9}, {5, 5}, {}));
    EXPECT_TRUE(gl.draws().empty());
    EXPECT_EQ(gl.count("glEnableVertexAttribArray"), gl.count("glDisableVertexAttribArray"));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, NoBlocksDrawNothing) {
    drawFourTiles(rgbaTarget(512, 512), {{0, 0}, {1, 0}}, {});
    EXPECT_TRUE(gl.draws().empty());
    EXPECT_EQ(gl.count("glEnableVertexAttribArray"), gl.count("glDisableVertexAttribArray"));
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, AnyNumberOfTilesIsDrawnInItsOrder) {
    size_t const target = rgbaTarget(512, 512);
    constexpr size_t kTiles = 200;
    std::vector<GLuint> textures;
    std::vector<Sizes> coordinates;
    Sizes ids;
    for (size_t tile = 0; tile < kTiles; ++tile) {
        bool const missing = tile % 7 == 3;
        textures.push_back(missing ? transparentBlack() : tileTexture(tile));
        coordinates.push_back({tile % 16, tile / 16});
        ids.push_back(tile);
    }
    for (size_t count = 0; count <= kTiles; ++count) {
        gl.forgetCalls();
        Sizes const blocks(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(count));
        instance->drawTiles(target, blit, {0, 511, 0, 511}, {0, 511, 0, 511}, {32, 32}, coordinates, blocks, {});
        ASSERT_EQ(gl.draws().size(), count);
        for (size_t i = 0; i < count; ++i) {
            EXPECT_EQ(gl.draws()[i].textures.at(0), textures[i]) << "tile " << i << " of " << count;
            size_t const column = i % 16;
            size_t const row = i / 16;
            EXPECT_EQ(gl.draws()[i].uniforms.at("a_geometry"),
                      (Geometry{static_cast<float>(column) / 8 - 1, static_cast<float>(row) / 8 - 1, 0.125F, 0.125F}));
        }
    }
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, MoreCoordinatesThanBlocksAreIgnored) {
    drawFourTiles(rgbaTarget(512, 512), {{0, 0}, {1, 0}, {0, 1}}, {1, 2});
    EXPECT_EQ(gl.draws().size(), 2U);
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, PhysicalSizeIsAskedThroughTheInterface) {
    size_t const target = rgbaTarget(100, 50);
    HalfAsWide half(9, surface, backend);
    half.drawTiles(target, blit, {0, 99, 0, 49}, {0, 99, 0, 49}, {50, 50}, {}, {}, {10, 5});
    EXPECT_EQ(gl.last("glViewport").text(), "glViewport(5, 5, 50, 50)");
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, TargetWithoutPixelsDrawsNothingWhateverItsPhysicalSize) {
    NeverEmpty instanceOfTexels(9, surface, backend);
    for (size_t const target : {rgbaTarget(10, 0), rgbaTarget(0, 10)}) {
        EXPECT_NO_THROW(
            instanceOfTexels.drawTiles(target, blit, {0, 9, 0, 9}, {0, 9, 0, 9}, {5, 5}, {{0, 0}}, {1}, {}));
    }
    EXPECT_TRUE(gl.draws().empty());
}

TEST_F(Gles3RenderBackendInstanceDrawingTest, ShortVectorsAreRefusedBeforeAnyGlCall) {
    size_t const target = rgbaTarget(100, 50);
    gl.forgetCalls();
    EXPECT_THROW(instance->drawTiles(target, blit, {0, 9, 0}, {0, 9, 0, 9}, {5, 5}, {}, {}, {}), VelmoraException);
    EXPECT_THROW(instance->drawTiles(target, blit, {0, 9, 0, 9}, {0, 9}, {5, 5}, {}, {}, {}), VelmoraException);
    EXPECT_THROW(instance->drawTiles(target, blit, {0, 9, 0, 9}, {0, 9, 0, 9}, {5}, {}, {}, {}), VelmoraException);
    EXPECT_TRUE(gl.calls().empty());
}

} // namespace
