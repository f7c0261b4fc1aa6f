// The backend, its targets and its failures on a real GL.
#include "gles3renderbackend/Gl.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "tests/gles3renderbackend/BackendGLTest.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace backendtest;

class BrokenFilter final : public Gles3Shader {
public:
    explicit BrokenFilter(Filter& filter)
        : Gles3Shader("#version 100\nvoid main() { gl_Position = vec4(0.0); }\n",
                      "#version 100\nvoid main() { gl_FragColor = nothing; }\n", filter) {}
};

class UnlinkableFilter final : public Gles3Shader {
public:
    explicit UnlinkableFilter(Filter& filter)
        : Gles3Shader(
              "#version 100\nvarying highp vec2 v_a;\nvoid main() { gl_Position = vec4(0.0); v_a = vec2(0.0); }\n",
              "#version 100\nvarying highp vec4 v_a;\nvoid main() { gl_FragColor = v_a; }\n", filter) {}
};

class Gles3RenderBackendGLTest : public BackendGLTest {
protected:
    size_t create(Sizes const& size, size_t bits, RenderBackend::ImageFormatType format) const {
        return instance->createTarget(size, bits, false, RenderBackend::NEAREST, format);
    }

    static Picture filled(size_t width, size_t height, Bytes const& texel) {
        Picture picture(width, height, texel.size());
        for (size_t i = 0; i < picture.bytes.size(); ++i)
            picture.bytes[i] = texel[i % texel.size()];
        return picture;
    }
};

TEST_F(Gles3RenderBackendGLTest, InstancesComeAndGoWithoutATrace) {
    for (size_t id = 0; id < 3; ++id) {
        EXPECT_EQ(InstanceId::of(*instance), id);
        instance->setTile(1, {}, {64, 64, 4}, 0);
        instance->eraseTarget(targetOf(noise(8, 8, 4, 1)));
        instantiated("BlitFilter1x16");
        instance.reset();
        instance = backend.createInstance(surface);
    }
}

TEST_F(Gles3RenderBackendGLTest, ClearFillsATargetAndTheHostsSurface) {
    for (size_t const target : {size_t{0}, create({9, 7}, 32, RenderBackend::RGBA32)}) {
        instance->clear(target, {10, 20, 30, 40});
        Picture const picture = read(target);
        EXPECT_TRUE(
            pixelsEqual(picture.bytes, filled(picture.width, picture.height, {10, 20, 30, 40}).bytes, picture.width));
        instance->clear(target, {10, 20, 30});
        EXPECT_TRUE(pixelsEqual(read(target).bytes, filled(picture.width, picture.height, {10, 20, 30, 255}).bytes,
                                picture.width));
    }
}

TEST_F(Gles3RenderBackendGLTest, ClearFillsAnRgbTarget) {
    size_t const target = create({9, 7}, 24, RenderBackend::RGB24);
    instance->clear(target, {10, 20, 30, 40});
    EXPECT_TRUE(pixelsEqual(read(target).bytes, filled(9, 7, {10, 20, 30}).bytes, 9, 3));
}

TEST_F(Gles3RenderBackendGLTest, ClearRectFillsTheRectangleAlone) {
    size_t const target = create({20, 15}, 32, RenderBackend::RGBA32);
    instance->clear(target, {1, 2, 3, 4});
    instance->clearRect(target, {10, 20, 30, 40}, {3, 5, 7, 2});
    Picture expected = filled(20, 15, {1, 2, 3, 4});
    Picture const one = filled(1, 1, {10, 20, 30, 40});
    for (size_t y = 5; y < 7; ++y)
        for (size_t x = 3; x < 10; ++x)
            copyTexel(one, 0, 0, expected, x, y);
    EXPECT_TRUE(pixelsEqual(read(target).bytes, expected.bytes, 20));
}

TEST_F(Gles3RenderBackendGLTest, ClearRectOfAPackedTargetClearsItsTexels) {
    size_t const target = create({20, 15}, 16, RenderBackend::RGBA32); // ten texels
    Picture const before = noise(10, 15, 4, 1);
    fill(target, before, 20);
    instance->clearRect(target, {0, 0, 0, 0}, {5, 4, 3, 6});
    Picture expected = before;
    for (size_t y = 4; y < 10; ++y)
        for (size_t x = 2; x < 4; ++x) // from 5 / 2, 3 / 2 rounded up
            copyTexel(Picture(1, 1, 4), 0, 0, expected, x, y);
    EXPECT_TRUE(pixelsEqual(read(target).bytes, expected.bytes, 10));
}

TEST_F(Gles3RenderBackendGLTest, GetPixelsReadsAPartOfATarget) {
    Picture const picture = noise(20, 15, 4, 1);
    size_t const target = targetOf(picture);
    Picture expected(7, 4, 4);
    for (size_t y = 0; y < 4; ++y)
        for (size_t x = 0; x < 7; ++x)
            copyTexel(picture, x + 3, y + 5, expected, x, y);
    EXPECT_TRUE(pixelsEqual(instance->getPixels(target, {3, 7, 5, 4}), expected.bytes, 7));
    Bytes buffer(expected.bytes.size());
    EXPECT_EQ(instance->getPixels(buffer.data(), buffer.size(), target, {3, 7, 5, 4}), buffer.size());
    EXPECT_TRUE(pixelsEqual(buffer, expected.bytes, 7));
}

TEST_F(Gles3RenderBackendGLTest, RecycledTargetKeepsItsOldPixels) {
    Picture const picture = noise(20, 15, 4, 1);
    instance->eraseTarget(targetOf(picture));
    size_t const target = create({12, 10}, 32, RenderBackend::RGBA32);
    EXPECT_TRUE(pixelsEqual(read(target).bytes, picture.bytes, 20));
}

TEST_F(Gles3RenderBackendGLTest, GreyTargetCannotBeRenderedTo) {
    try {
        create({16, 16}, 8, RenderBackend::GRAY8);
        ADD_FAILURE() << "nothing was thrown";
    } catch (VelmoraException const& failure) {
        ADD_FAILURE() << "one of our own exceptions: " << failure.what();
    } catch (std::exception const& failure) {
        EXPECT_STREQ(failure.what(), "#Name:Failed to setup render to texture#Location:void "
                                     "Gles3Target::bindTextureToFrameBuffer() const");
    }
    EXPECT_EQ(create({16, 16}, 32, RenderBackend::RGBA32), 1U) << "nothing has changed";
}

TEST_F(Gles3RenderBackendGLTest, TooLargeTargetNamesTheLimitsOfThisGl) {
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    auto const texels = static_cast<size_t>(limit);
    auto const thousands = [](size_t n) { return std::to_string(n / 1000 * 1000); };
    std::string const text = "#Name:Requested size exceeds GLES3Backend capabilities#Location:void "
                             "Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, std::vector<size_t> const& "
                             "size)#Description:Maximum GLES3 supported range size = width: ";
    EXPECT_EQ(failureOf([&] {
                  create({texels + 1, 1}, 32, RenderBackend::RGBA32);
              }),
              text + thousands(texels) + " & height: " + thousands(texels));
    EXPECT_EQ(failureOf([&] {
                  create({3 * texels + 3, 1}, 8, RenderBackend::RGB24);
              }),
              text + thousands(3 * texels) + " & height: " + thousands(texels));
    EXPECT_EQ(failureOf([&] {
                  create({texels, 1}, 48, RenderBackend::RGB24);
              }),
              text + thousands(texels / 2) + " & height: " + thousands(texels));
}

TEST_F(Gles3RenderBackendGLTest, FilterThatDoesNotBuildLeavesNothingBehind) {
    Gles3RenderBackend::FilterRegistry registry;
    using Registry = Gles3RenderBackend::FilterRegistry;
    registry.registerFactory("Broken", std::make_shared<Registry::SpecializedFactory<BrokenFilter>>());
    registry.registerFactory("Unlinkable", std::make_shared<Registry::SpecializedFactory<UnlinkableFilter>>());
    Gles3RenderBackend other(registry, RenderBackend::RGBA32, kDefaultBudget);
    auto const host = other.createInstance(surface);
    std::string const location = "#Location:Gles3Shader::Gles3Shader(std::string const&, std::string const&)";

    Filter broken = namedFilter("Broken");
    std::string const text = failureOf([&] { host->createFilterInstance(broken); });
    EXPECT_EQ(text.find("#Name:Error compiling fragment shader" + location + "#Description:"), 0U) << text;
    std::string const listing = "\n001 #version 100\n002 void main() { gl_FragColor = nothing; }\n";
    EXPECT_NE(text.find(listing), std::string::npos) << text;
    EXPECT_EQ(broken.instanceKey(), nullptr);

    Filter unlinkable = namedFilter("Unlinkable");
    EXPECT_EQ(failureOf([&] {
                  host->createFilterInstance(unlinkable);
              }).find("#Name:Error linking shader program" + location),
              0U);
    Filter fine = namedFilter("BlitFilter4x8");
    host->createFilterInstance(fine);
    EXPECT_EQ(*fine.instanceKey(), 0U);
}

TEST_F(Gles3RenderBackendGLTest, EvictedTileIsTransparentBlackAgain) {
    instance.reset();
    Gles3RenderBackend small(RenderBackend::RGBA32, 2 * 8 * 8 * 4);
    instance = small.createInstance(surface);
    Picture const tile = noise(8, 8, 4, 1);
    Filter const blit = instantiated("BlitFilter4x8");
    size_t const target = create({24, 8}, 32, RenderBackend::RGBA32);
    instance->clear(target, {1, 2, 3, 4});
    for (size_t id = 1; id < 4; ++id)
        instance->setTile(id, tile.bytes, {8, 8, 4}, 0); // the third one evicts the first
    instance->drawTiles(target, blit, {0, 23, 0, 7}, {0, 23, 0, 7}, {8, 8}, {{0, 0}, {1, 0}, {2, 0}}, {1, 2, 3}, {});
    Picture expected(24, 8, 4);
    for (size_t y = 0; y < 8; ++y)
        for (size_t x = 8; x < 24; ++x)
            copyTexel(tile, x % 8, y, expected, x, y);
    EXPECT_TRUE(pixelsEqual(read(target).bytes, expected.bytes, 24));
    instance.reset();
}

} // namespace
