// The properties of an instance's targets, clearing them and reading them.
#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <functional>

namespace {

using namespace backendtest;

// clearRect reports under this location as well.
constexpr char const* kClear =
    "#Location:void Gles3RenderBackendInstance::clear(size_t target, std::vector<size_t> const& color)";

class Gles3RenderBackendInstanceTargetAccessTest : public BackendRecordingTest {
protected:
    size_t create(Sizes const& size, size_t bits, RenderBackend::ImageFormatType format) const {
        return instance->createTarget(size, bits, false, RenderBackend::NEAREST, format);
    }
};

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, LookingUpAnUnknownIdMakesAnEmptyTarget) {
    struct Row {
        char const* name;
        std::function<void(size_t)> lookUp;
    };
    Bytes buffer(100);
    std::vector<Row> const rows = {
        {"target", [&](size_t id) { gles().target(id); }},
        {"targetSize", [&](size_t id) { instance->targetSize(id); }},
        {"targetAlignment", [&](size_t id) { instance->targetAlignment(id); }},
        {"targetFiltering", [&](size_t id) { instance->targetFiltering(id); }},
        {"getPixels, buffer form",
         [&](size_t id) {
             instance->getPixels(buffer.data(), buffer.size(), id, {0, 1, 0, 1});
         }},
        {"getPixels, vector form",
         [&](size_t id) {
             instance->getPixels(id, {0, 1, 0, 1});
         }},
        {"getPixelsBufferSize",
         [&](size_t id) {
             instance->getPixelsBufferSize(id, {0, 1, 0, 1});
         }},
    };
    size_t id = 77;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        ++id;
        ASSERT_FALSE(targetExists(id));
        row.lookUp(id);
        EXPECT_TRUE(targetExists(id));
        auto const& target = gles().target(id);
        EXPECT_EQ(target.ownSurface(), 0U);
        EXPECT_EQ(target.framebuffer(), 0U);
        EXPECT_EQ(target.width(), 0U);
        EXPECT_EQ(target.height(), 0U);
        EXPECT_EQ(target.format(), RenderBackend::RGBA32);
        EXPECT_EQ(target.filtering(), RenderBackend::NEAREST);
    }
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ErasingAnUnknownIdPutsAnEmptyTargetIntoThePool) {
    auto const before = gl.living();
    instance->eraseTarget(77);
    EXPECT_FALSE(targetExists(77));
    EXPECT_EQ(gl.living().size(), before.size() + 1);
    instance->clearTargets();
    EXPECT_EQ(gl.living(), before);
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, UnknownTargetIsAsLargeAsTheSurface) {
    EXPECT_EQ(instance->targetSize(77), (Sizes{640, 480}));
    EXPECT_TRUE(targetExists(77));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, SizeOfTargetZeroFollowsTheSurface) {
    EXPECT_EQ(instance->targetSize(0), (Sizes{640, 480}));
    surface.widthTexels = 800;
    surface.heightTexels = 0;
    EXPECT_EQ(instance->targetSize(0), (Sizes{800, 0}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, SizeOfATargetCountsTexels) {
    EXPECT_EQ(instance->targetSize(create({99, 50}, 8, RenderBackend::RGB24)), (Sizes{33, 50}));
    EXPECT_EQ(instance->targetSize(create({10, 10}, 48, RenderBackend::RGB24)), (Sizes{20, 10}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, AlignmentIsPixelsATexelAndZeroForSpreadPixels) {
    EXPECT_EQ(instance->targetAlignment(rgbaTarget(10, 10)), (Sizes{1, 1}));
    EXPECT_EQ(instance->targetAlignment(create({99, 50}, 8, RenderBackend::RGB24)), (Sizes{3, 1}));
    EXPECT_EQ(instance->targetAlignment(create({10, 10}, 16, RenderBackend::RGBA32)), (Sizes{2, 1}));
    EXPECT_EQ(instance->targetAlignment(create({10, 10}, 48, RenderBackend::RGB24)), (Sizes{0, 1}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, AlignmentIsOneOnAnAxisWithoutTexels) {
    EXPECT_EQ(instance->targetAlignment(0), (Sizes{1, 1}));
    EXPECT_EQ(instance->targetAlignment(77), (Sizes{1, 1}));
    EXPECT_EQ(instance->targetAlignment(create({0, 10}, 16, RenderBackend::RGBA32)), (Sizes{1, 1}));
    EXPECT_EQ(instance->targetAlignment(create({10, 0}, 16, RenderBackend::RGBA32)), (Sizes{1, 1}))
        << "a target without an image has neither width nor height";
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, FilteringIsTheOneOfTheRequest) {
    size_t const linear = instance->createTarget({64, 64}, 32, false, RenderBackend::LINEAR, RenderBackend::RGBA32);
    size_t const mipmapped =
        instance->createTarget({64, 64}, 32, false, RenderBackend::TRILINEAR, RenderBackend::RGBA32);
    EXPECT_EQ(instance->targetFiltering(linear), RenderBackend::LINEAR);
    EXPECT_EQ(instance->targetFiltering(mipmapped), RenderBackend::TRILINEAR);
    EXPECT_EQ(instance->targetFiltering(0), RenderBackend::NEAREST);
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, TargetsAreAlwaysReadyAndWaitingDoesNothing) {
    gl.forgetCalls();
    EXPECT_TRUE(instance->targetReady(0));
    EXPECT_TRUE(instance->targetReady(77));
    instance->waitForTarget(77);
    instance->finalizeDrawSequence();
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_FALSE(targetExists(77));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearFillsWithPartsOf255AndAnAlphaOfOne) {
    size_t const target = rgbaTarget(10, 10);
    gl.forgetCalls();
    instance->clear(target, {255, 51, 0});
    EXPECT_EQ(gl.names(), (std::vector<std::string>{"glBindFramebuffer", "glClearColor", "glClear"}));
    EXPECT_EQ(gl.boundFramebuffer(), gles().target(target).framebuffer());
    EXPECT_EQ(gl.clearColor(), (std::vector<float>{1.0F, 0.2F, 0.0F, 1.0F}));
    EXPECT_EQ(gl.last("glClear").text(), "glClear(GL_COLOR_BUFFER_BIT)");
    instance->clear(target, {0, 0, 102, 153});
    EXPECT_EQ(gl.clearColor(), (std::vector<float>{0.0F, 0.0F, 0.4F, 0.6F}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearDoesNotClampColours) {
    instance->clear(0, {510, 255, 0, 1020});
    EXPECT_EQ(gl.clearColor(), (std::vector<float>{2.0F, 1.0F, 0.0F, 4.0F}));
    EXPECT_EQ(gl.boundFramebuffer(), 0U);
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearTestsTargetThenColour) {
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] { instance->clear(77, {1, 2}); }), std::string("#Name:Target does not exist") + kClear);
    for (Sizes const& color : {Sizes{}, Sizes{1, 2}, Sizes{1, 2, 3, 4, 5}})
        EXPECT_EQ(failureOf([&] { instance->clear(0, color); }), std::string("#Name:Invalid color") + kClear);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_FALSE(targetExists(77)) << "clearing does not make a target";
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearRectTestsTargetColourAndRectangleUnderClearsLocation) {
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] {
                  instance->clearRect(77, {1, 2}, {1, 2, 3});
              }),
              std::string("#Name:Target does not exist") + kClear);
    EXPECT_EQ(failureOf([&] {
                  instance->clearRect(0, {1, 2}, {1, 2, 3});
              }),
              std::string("#Name:Invalid color") + kClear);
    for (Sizes const& rect : {Sizes{}, Sizes{1, 2, 3}, Sizes{1, 2, 3, 4, 5}})
        EXPECT_EQ(failureOf([&] {
                      instance->clearRect(0, {1, 2, 3}, rect);
                  }),
                  std::string("#Name:Invalid rectangle") + kClear);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_FALSE(targetExists(77));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearRectTakesXYWidthHeight) {
    size_t const target = rgbaTarget(100, 80);
    gl.forgetCalls();
    instance->clearRect(target, {255, 0, 0}, {10, 20, 30, 40});
    EXPECT_EQ(gl.texts(),
              (std::vector<std::string>{
                  "glEnable(GL_SCISSOR_TEST)", "glScissor(10, 20, 30, 40)",
                  "glBindFramebuffer(GL_FRAMEBUFFER, " + std::to_string(gles().target(target).framebuffer()) + ")",
                  "glClearColor(1, 0, 0, 1)", "glClear(GL_COLOR_BUFFER_BIT)", "glDisable(GL_SCISSOR_TEST)"}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearRectConvertsLogicalPixelsToTexels) {
    instance->clearRect(create({99, 50}, 8, RenderBackend::RGB24), {0, 0, 0}, {10, 5, 4, 7});
    EXPECT_EQ(gl.last("glScissor").text(), "glScissor(3, 5, 2, 7)") << "10 / 3 truncated, 4 / 3 rounded up";
    instance->clearRect(create({40, 50}, 48, RenderBackend::RGB24), {0, 0, 0}, {10, 5, 4, 7});
    EXPECT_EQ(gl.last("glScissor").text(), "glScissor(20, 5, 8, 7)");
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ClearRectUsesTheRectangleAsItStandsOnTheHostsSurface) {
    instance->clearRect(0, {255, 0, 0}, {10, 20, 30, 40});
    EXPECT_EQ(gl.last("glScissor").text(), "glScissor(10, 20, 30, 40)");
    EXPECT_EQ(gl.boundFramebuffer(), 0U);
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, PackedTargetsAreClearedToBlackOnly) {
    std::string const refused =
        "#Name:Cannot clear buffer#Location:void Gles3Target::clear(float r, float g, float b, float a) const";
    for (size_t const bits : {8U, 48U}) {
        size_t const target = create({99, 50}, bits, RenderBackend::RGB24);
        EXPECT_NO_THROW(instance->clear(target, {0, 0, 0, 77}));
        EXPECT_EQ(failureOf([&] { instance->clear(target, {0, 0, 1, 255}); }), refused);
        EXPECT_EQ(failureOf([&] { instance->clearRect(target, {1, 0, 0}, {0, 0, 3, 3}); }), refused);
        EXPECT_FALSE(gl.enabled(GL_SCISSOR_TEST)) << "off again, also where clearing is refused";
    }
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, GetPixelsTakesXWidthYHeight) {
    size_t const target = rgbaTarget(100, 80);
    Bytes buffer(30 * 40 * 4);
    EXPECT_EQ(instance->getPixels(buffer.data(), buffer.size(), target, {10, 30, 20, 40}), 4800U);
    EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(10, 20, 30, 40, GL_RGBA, GL_UNSIGNED_BYTE, data)");
    EXPECT_EQ(gl.boundFramebuffer(), gles().target(target).framebuffer());
    EXPECT_EQ(instance->getPixels(target, {10, 30, 20, 40}).size(), 4800U);
    EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(10, 20, 30, 40, GL_RGBA, GL_UNSIGNED_BYTE, data)");
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, GetPixelsRoundsPackedWidthsUpAndPassesPositionsOn) {
    size_t const target = create({200, 80}, 16, RenderBackend::RGBA32); // two pixels per texel
    EXPECT_EQ(instance->getPixels(target, {11, 101, 7, 2}).size(), 51U * 2 * 4);
    EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(11, 7, 51, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)");
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, GetPixelsDeliversWhatWasRead) {
    size_t const rgba = rgbaTarget(2, 1);
    size_t const rgb = create({2, 1}, 24, RenderBackend::RGB24);
    gl.setReadPixels({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(instance->getPixels(rgba, {0, 2, 0, 1}), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(instance->getPixels(rgb, {0, 2, 0, 1}), (Bytes{1, 2, 3, 5, 6, 7}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, GreyPixelsAreCutToTheBytesWritten) {
    size_t const target = create({5, 2}, 8, RenderBackend::GRAY8);
    gl.setInteger(GL_IMPLEMENTATION_COLOR_READ_FORMAT, GL_ALPHA);
    gl.setReadPixels({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_EQ(instance->getPixels(target, {0, 5, 0, 2}), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, BufferIsCheckedWithThreeBytesATexelWhateverTheFormat) {
    size_t const target = rgbaTarget(100, 80);
    Bytes buffer(10 * 5 * 4);
    EXPECT_EQ(instance->getPixels(buffer.data(), 150, target, {0, 10, 0, 5}), 200U);
    EXPECT_EQ(failureOf([&] {
                  instance->getPixels(buffer.data(), 149, target, {0, 10, 0, 5});
              }),
              "#Name:buffer too small provided 149 required : 150#Location:size_t Gles3Target:: getPixels(void* "
              "buffer, size_t n, size_t x, size_t y, size_t width, size_t height) const");
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, BufferSizeIsThreeBytesATexelWhateverTheFormat) {
    EXPECT_EQ(instance->getPixelsBufferSize(rgbaTarget(100, 80), {1, 10, 2, 5}), 150U);
    EXPECT_EQ(instance->getPixelsBufferSize(create({200, 80}, 16, RenderBackend::RGBA32), {0, 101, 0, 2}), 306U);
    EXPECT_EQ(instance->getPixelsBufferSize(create({40, 50}, 48, RenderBackend::RGB24), {0, 10, 0, 2}), 120U);
    EXPECT_EQ(instance->getPixelsBufferSize(create({40, 50}, 8, RenderBackend::GRAY8), {0, 10, 0, 2}), 60U);
    EXPECT_EQ(instance->getPixelsBufferSize(0, {0, 10, 0, 2}), 60U);
}

TEST_F(Gles3RenderBackendInstanceTargetAccessTest, ReadingRefusesAShortRectangle) {
    Bytes buffer(100);
    EXPECT_THROW(instance->getPixels(buffer.data(), buffer.size(), 0, {0, 1, 0}), VelmoraException);
    EXPECT_THROW(instance->getPixels(0, {0, 1, 0}), VelmoraException);
    EXPECT_THROW(instance->getPixelsBufferSize(0, {0, 1, 0}), VelmoraException);
    EXPECT_EQ(gl.count("glReadPixels"), 0U);
}

} // namespace
