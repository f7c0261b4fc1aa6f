#include "gles3renderbackend/Gles3RenderBackend.h"

#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <cstring>

namespace {

using namespace backendtest;

constexpr char const* kSecondInstance =
    "#Name:Can only create one instance per backend for now#Location:std::shared_ptr<RenderBackendInstance> "
    "Gles3RenderBackend::createInstance(RenderContext const& context)";

class Gles3RenderBackendTest : public RecordingGlTest {
protected:
    // Tiles of half the default budget each: two of them fit, one byte more does not.
    void setHalfBudgetTile(RenderBackendInstance& instance, size_t tile) {
        gl.setInteger(GL_MAX_TEXTURE_SIZE, 16000);
        gl.failNext("glTexImage2D", GL_OUT_OF_MEMORY); // the pixels are not needed
        instance.setTile(tile, {}, {16000, 8000, 1}, 0);
    }

    void expectTwoHalvesAndNoMore(RenderBackendInstance& instance) {
        setHalfBudgetTile(instance, 1);
        setHalfBudgetTile(instance, 2);
        EXPECT_TRUE(instance.tileSet(1));
        instance.setTile(3, {}, {1, 1, 3}, 0);
        EXPECT_FALSE(instance.tileSet(1));
        EXPECT_TRUE(instance.tileSet(2));
        EXPECT_TRUE(instance.tileSet(3));
    }

    Surface surface{640, 480};
};

class Gles3RenderBackendSharingTest : public BackendRecordingTest {
protected:
    // Without targets the first instance no longer stands in the way of a second one.
    std::shared_ptr<RenderBackendInstance> secondInstance() {
        instance->eraseTarget(0);
        return backend.createInstance(surface);
    }
};

TEST_F(Gles3RenderBackendTest, ConstructingABackendMakesNoGlCall) {
    Gles3RenderBackend const backend;
    Gles3RenderBackend const withFormat(RenderBackend::RGB24, 1000);
    Gles3RenderBackend const withRegistry(Gles3RenderBackend::FilterRegistry(), RenderBackend::RGB24, 1000);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendTest, DefaultBackendIsRGBA32With256000000Bytes) {
    Gles3RenderBackend backend;
    auto const instance = backend.createInstance(surface);
    auto const target = instance->createTarget({10, 10}, 32, false, RenderBackend::NEAREST, RenderBackend::UNDEFINED);
    EXPECT_EQ(gles3(instance).target(target).format(), RenderBackend::RGBA32);
    expectTwoHalvesAndNoMore(*instance);
}

TEST_F(Gles3RenderBackendTest, BackendOfRGBA32And256000000BytesBehavesLikeTheDefaultOne) {
    Gles3RenderBackend backend(RenderBackend::RGBA32, 256000000);
    auto const instance = backend.createInstance(surface);
    expectTwoHalvesAndNoMore(*instance);
}

TEST_F(Gles3RenderBackendTest, InstancesAreCountedFromZero) {
    Gles3RenderBackend backend;
    auto instance = backend.createInstance(surface);
    EXPECT_EQ(InstanceId::of(*instance), 0U);
    instance.reset();
    instance = backend.createInstance(surface);
    EXPECT_EQ(InstanceId::of(*instance), 1U);
}

TEST_F(Gles3RenderBackendTest, SecondInstanceIsRefusedWhileTheFirstLives) {
    Gles3RenderBackend backend;
    auto first = backend.createInstance(surface);
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] { backend.createInstance(surface); }), kSecondInstance);
    EXPECT_TRUE(gl.calls().empty());
    first.reset();
    EXPECT_EQ(InstanceId::of(*backend.createInstance(surface)), 1U) << "a refused instance is not counted";
}

TEST_F(Gles3RenderBackendTest, SecondInstanceIsRefusedWhileTheFirstHasAnyTarget) {
    Gles3RenderBackend backend;
    auto const first = backend.createInstance(surface);
    first->createTarget({10, 10}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    first->eraseTarget(0);
    EXPECT_EQ(failureOf([&] { backend.createInstance(surface); }), kSecondInstance);
    first->eraseTarget(1);
    EXPECT_NO_THROW(backend.createInstance(surface));
}

TEST_F(Gles3RenderBackendTest, TargetZeroExistsFromTheStartAndIsTheHostsSurface) {
    Gles3RenderBackend backend;
    auto const instance = backend.createInstance(surface);
    auto const& target = gles3(instance).target(0);
    EXPECT_EQ(target.ownSurface(), 0U);
    EXPECT_EQ(target.framebuffer(), 0U);
    EXPECT_EQ(target.format(), RenderBackend::RGBA32);
    EXPECT_EQ(target.filtering(), RenderBackend::NEAREST);
    EXPECT_EQ(target.logicalSize(), (Sizes{0, 0}));
    EXPECT_NO_THROW(instance->clear(0, {0, 0, 0}));
}

TEST_F(Gles3RenderBackendTest, UploadRingIsFourStreamBuffersOf4MiBOfWhichTheFirstIsMapped) {
    Gles3RenderBackend backend;
    auto const instance = backend.createInstance(surface);
    std::vector<bool> mapped;
    for (auto const& object : gl.living()) {
        if (object.rfind("buffer ", 0) != 0) continue;
        auto const& buffer = gl.buffer(static_cast<GLuint>(std::stoul(object.substr(7))));
        if (buffer.usage != GL_STREAM_DRAW) continue;
        EXPECT_EQ(buffer.bytes.size(), 4194304U);
        mapped.push_back(buffer.mapped);
    }
    EXPECT_EQ(mapped, (std::vector<bool>{true, false, false, false}));
    EXPECT_EQ(gl.count("glMapBufferRange"), 1U);
    EXPECT_EQ(gl.last("glMapBufferRange").text(), "glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 4194304, "
                                                  "GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT)");
}

TEST_F(Gles3RenderBackendTest, CreatingAnInstanceLeavesNoBufferBound) {
    Gles3RenderBackend backend;
    auto const instance = backend.createInstance(surface);
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), 0U);
    EXPECT_EQ(gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER), 0U);
    EXPECT_EQ(gl.boundBuffer(GL_PIXEL_UNPACK_BUFFER), 0U);
}

TEST_F(Gles3RenderBackendTest, EveryGlObjectGoesWithTheInstance) {
    Gles3RenderBackend backend;
    auto instance = backend.createInstance(surface);
    Filter filter = namedFilter("BlitFilter4x8");
    instance->createFilterInstance(filter);
    instance->setTile(5, {}, {2, 2, 4}, 0);
    instance->createTarget({10, 10}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    instance->eraseTarget(instance->createTarget({20, 20}, 32, false, RenderBackend::LINEAR, RenderBackend::RGB24));
    EXPECT_FALSE(gl.living().empty());
    instance.reset();
    EXPECT_EQ(gl.living(), std::vector<std::string>());
}

TEST_F(Gles3RenderBackendTest, BackendMayGoBeforeItsInstance) {
    auto backend = std::make_unique<Gles3RenderBackend>();
    auto const instance = backend->createInstance(surface);
    size_t const objects = gl.living().size();
    backend.reset();
    EXPECT_EQ(gl.living().size(), objects);
    Filter filter = namedFilter("BlitFilter4x8");
    EXPECT_NO_THROW(instance->createFilterInstance(filter)) << "the registries are shared with the instance";
}

TEST_F(Gles3RenderBackendTest, MovedBackendTakesInstanceCounterAndRegistriesAlong) {
    Gles3RenderBackend source(RenderBackend::RGB24, 1000);
    auto first = source.createInstance(surface);
    Gles3RenderBackend backend(std::move(source));
    EXPECT_EQ(failureOf([&] { backend.createInstance(surface); }), kSecondInstance);
    first.reset();
    auto const second = backend.createInstance(surface);
    EXPECT_EQ(InstanceId::of(*second), 1U);
    auto const target = second->createTarget({10, 10}, 24, false, RenderBackend::NEAREST, RenderBackend::UNDEFINED);
    EXPECT_EQ(gles3(second).target(target).format(), RenderBackend::RGB24);
    Filter filter = namedFilter("BlitFilter3x8");
    EXPECT_NO_THROW(second->createFilterInstance(filter));
}

TEST_F(Gles3RenderBackendTest, MovedFromBackendHasNeitherHandlesNorFilters) {
    Gles3RenderBackend source(RenderBackend::RGB24, 1000);
    auto const first = source.createInstance(surface);
    size_t const objects = gl.living().size();
    Gles3RenderBackend const backend(std::move(source));
    auto const other = source.createInstance(surface); // NOLINT(bugprone-use-after-move): the state it must be in
    EXPECT_EQ(gl.living().size(), 2 * objects) << "nothing is shared with the first instance";
    auto const target = other->createTarget({10, 10}, 24, false, RenderBackend::NEAREST, RenderBackend::UNDEFINED);
    EXPECT_EQ(gles3(other).target(target).format(), RenderBackend::RGB24) << "the format is copied";
    Filter filter = namedFilter("BlitFilter3x8");
    EXPECT_EQ(failureOf([&] { other->createFilterInstance(filter); }),
              "#Name:Filter <BlitFilter3x8> not available#Location:std::string "
              "Gles3RenderBackendInstance::createShaderInstance(Filter const& filter)");
}

TEST_F(Gles3RenderBackendTest, MovedInstanceWorksOn) {
    Gles3RenderBackend backend;
    auto source = backend.createInstance(surface);
    source->setTile(5, {}, {2, 2, 4}, 0);
    gl.forgetCalls();
    Gles3RenderBackendInstance instance(std::move(gles3(source)));
    source.reset();
    EXPECT_TRUE(gl.calls().empty()) << "a moved-from instance owns nothing";
    EXPECT_TRUE(instance.tileSet(5));
    EXPECT_EQ(instance.targetSize(0), (Sizes{640, 480}));
    EXPECT_EQ(failureOf([&] { backend.createInstance(surface); }), kSecondInstance);
}

TEST_F(Gles3RenderBackendTest, PixelIsThreeBytesWhateverTheFormat) {
    for (auto const format :
         {RenderBackend::RGB24, RenderBackend::RGBA32, RenderBackend::GRAY8, RenderBackend::UNDEFINED}) {
        Gles3RenderBackend backend(format, 0);
        auto const instance = backend.createInstance(surface);
        EXPECT_EQ(instance->pixelTypeid(), typeid(unsigned char));
        EXPECT_EQ(instance->pixelSize(), 1U);
        EXPECT_EQ(instance->numComponents(), 3U);
    }
}

TEST_F(Gles3RenderBackendSharingTest, SharedDrawingResourcesAreTheUnitQuadAndATransparentBlackTexel) {
    auto const& indices = gl.buffer(sharedIndexBuffer());
    std::array<GLushort, 6> index{};
    std::memcpy(index.data(), indices.bytes.data(), sizeof index);
    EXPECT_EQ(index, (std::array<GLushort, 6>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(indices.usage, static_cast<GLenum>(GL_STATIC_DRAW));

    auto const& vertices = gl.buffer(sharedVertexBuffer());
    std::array<float, 16> vertex{};
    std::memcpy(vertex.data(), vertices.bytes.data(), sizeof vertex);
    EXPECT_EQ(vertex, (std::array<float, 16>{0, 0, 0, 0, 1, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0, 1}));
    EXPECT_EQ(vertices.usage, static_cast<GLenum>(GL_STATIC_DRAW));

    auto const& image = gl.texture(transparentBlack()).image();
    EXPECT_EQ(image.width, 1U);
    EXPECT_EQ(image.height, 1U);
    EXPECT_EQ(image.internalFormat, static_cast<GLenum>(GL_RGBA));
}

TEST_F(Gles3RenderBackendSharingTest, SecondInstanceSharesEveryResourceOfALivingOneWithoutTargets) {
    auto const before = gl.living();
    instance->eraseTarget(0);
    gl.forgetCalls();
    auto const second = backend.createInstance(surface);
    EXPECT_EQ(gl.names(), std::vector<std::string>{"glGenTextures"}) << "target 0 alone is new";
    EXPECT_EQ(InstanceId::of(*second), 1U);
    EXPECT_EQ(gl.living().size(), before.size() + 1);
}

TEST_F(Gles3RenderBackendSharingTest, RingBufferIsNotMappedAgainWhenASecondInstanceJoins) {
    auto const second = secondInstance();
    EXPECT_EQ(gl.count("glMapBufferRange"), 1U);
}

TEST_F(Gles3RenderBackendSharingTest, InstancesSharingACacheKeepTheirTilesApart) {
    auto const second = secondInstance();
    instance->setTile(5, {}, {2, 2, 4}, 0);
    EXPECT_FALSE(second->tileSet(5));
    second->setTile(5, {}, {2, 3, 4}, 0);
    second->setTile(6, {}, {2, 3, 4}, 0);
    EXPECT_EQ(instance->clearTiles(), 16U);
    EXPECT_FALSE(instance->tileSet(5));
    EXPECT_TRUE(second->tileSet(5));
    EXPECT_EQ(second->eraseTiles(0, 100), 48U);
}

TEST_F(Gles3RenderBackendSharingTest, InstancesShareOneTileBudget) {
    Gles3RenderBackend small(RenderBackend::RGBA32, 32);
    auto const first = small.createInstance(surface);
    first->eraseTarget(0);
    auto const second = small.createInstance(surface);
    first->setTile(1, {}, {2, 2, 4}, 0);
    second->setTile(1, {}, {2, 2, 4}, 0);
    second->setTile(2, {}, {2, 2, 4}, 0);
    EXPECT_FALSE(first->tileSet(1));
    EXPECT_TRUE(second->tileSet(1));
    EXPECT_TRUE(second->tileSet(2));
}

TEST_F(Gles3RenderBackendSharingTest, InstancesShareTargetsPoolAndFilters) {
    size_t const erased = rgbaTarget(40, 30);
    GLuint const framebuffer = gles().target(erased).framebuffer();
    instance->eraseTarget(erased);
    auto const second = secondInstance();
    size_t const target = second->createTarget({40, 30}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    EXPECT_EQ(gles3(second).target(target).framebuffer(), framebuffer) << "from the first instance's pool";
    EXPECT_EQ(instance->targetSize(target), (Sizes{40, 30})) << "in the first instance's table as well";

    Filter filter = namedFilter("BlitFilter4x8");
    instance->createFilterInstance(filter);
    EXPECT_NO_THROW(second->drawTiles(target, filter, {0, 39, 0, 29}, {0, 39, 0, 29}, {40, 30}, {}, {}, {}));
}

TEST_F(Gles3RenderBackendSharingTest, SharedResourcesLiveAsLongAsTheLastInstance) {
    auto second = secondInstance();
    second->setTile(5, {}, {2, 2, 4}, 0);
    instance.reset();
    EXPECT_TRUE(second->tileSet(5));
    EXPECT_EQ(second->targetSize(0), (Sizes{640, 480}));
    EXPECT_EQ(failureOf([&] { backend.createInstance(surface); }), kSecondInstance);
    second.reset();
    EXPECT_EQ(gl.living(), std::vector<std::string>());
    EXPECT_EQ(InstanceId::of(*backend.createInstance(surface)), 2U);
}

TEST_F(Gles3RenderBackendSharingTest, LaterInstanceNeverFindsTheTilesOfAnEarlierOne) {
    instance->setTile(5, {}, {2, 2, 4}, 0);
    auto const second = secondInstance();
    instance.reset(); // the cache lives on with the second instance
    EXPECT_FALSE(second->tileSet(5));
    EXPECT_EQ(second->clearTiles(), 0U);
}

} // namespace
