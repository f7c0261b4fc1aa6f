#include "gles3renderbackend/resources/Gles3Texture.h"

#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <limits>
#include <memory>

namespace {

using Texts = std::vector<std::string>;

constexpr auto kNoFormat = static_cast<RenderBackend::ImageFormatType>(9);

char const* const kTooLarge = "#Name:requested buffer size exceeds maximum supported size"
                              "#Location:void Gles3Texture::resize(size_t width, size_t height)";

class Gles3TextureTest : public RecordingGlTest {};

Gles3Texture texture(size_t width, size_t height, RenderBackend::ImageFormatType format = RenderBackend::RGBA32) {
    return {{}, {width, height}, format, RenderBackend::NEAREST};
}

TEST_F(Gles3TextureTest, DefaultConstructedHasANameAndNothingElse) {
    Gles3Texture const empty;
    EXPECT_EQ(gl.texts(), Texts{"glGenTextures(1, data)"});
    EXPECT_EQ(empty.texture(), 1U);
    EXPECT_EQ(empty.width(), 0U);
    EXPECT_EQ(empty.height(), 0U);
    EXPECT_EQ(empty.format(), RenderBackend::RGBA32);
    EXPECT_EQ(empty.filtering(), RenderBackend::NEAREST);
}

TEST_F(Gles3TextureTest, SizeZeroMakesANameWithoutAnImage) {
    for (auto const& size : std::vector<std::vector<size_t>>{{0, 0}, {0, 5}, {5, 0}}) {
        gl.forgetCalls();
        Gles3Texture const empty({1, 2, 3, 4}, size, RenderBackend::GRAY8, RenderBackend::LINEAR);
        EXPECT_EQ(gl.texts(), Texts{"glGenTextures(1, data)"});
        EXPECT_NE(empty.texture(), 0U);
        EXPECT_TRUE(gl.texture(empty.texture()).levels.empty());
        EXPECT_EQ(empty.width(), 0U);
        EXPECT_EQ(empty.height(), 0U);
        EXPECT_EQ(empty.format(), RenderBackend::GRAY8);
        EXPECT_EQ(empty.filtering(), RenderBackend::LINEAR);
    }
}

TEST_F(Gles3TextureTest, SizeZeroIsLookedAtBeforeTheFormat) {
    Gles3Texture const empty({}, {0, 4}, kNoFormat, RenderBackend::NEAREST);
    EXPECT_EQ(empty.format(), kNoFormat);
}

TEST_F(Gles3TextureTest, ConstructorUploadsInThisOrder) {
    Gles3Texture const made(numberedBytes(24), {2, 3}, RenderBackend::RGBA32, RenderBackend::LINEAR);
    EXPECT_EQ(gl.texts(),
              (Texts{"glGenTextures(1, data)", "glBindTexture(GL_TEXTURE_2D, 1)", "glBindTexture(GL_TEXTURE_2D, 1)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
                     "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)", "glGetIntegerv(GL_MAX_TEXTURE_SIZE, data)",
                     "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 3, 0, GL_RGBA, GL_UNSIGNED_BYTE, data)"}));
    EXPECT_EQ(gl.texture(1).image().pixels, numberedBytes(24));
    EXPECT_EQ(gl.boundTexture(), 1U);
    EXPECT_EQ(made.width(), 2U);
    EXPECT_EQ(made.height(), 3U);
}

TEST_F(Gles3TextureTest, ConstructorTakesTheBytesATexelFromTheFormatAndNotFromTheSize) {
    struct Row {
        RenderBackend::ImageFormatType format;
        GLenum gl;
        size_t bytes;
    };
    for (auto const& row : {Row{RenderBackend::RGB24, GL_RGB, 3}, Row{RenderBackend::RGBA32, GL_RGBA, 4},
                            Row{RenderBackend::GRAY8, GL_LUMINANCE, 1}}) {
        auto const pixels = numberedBytes(6 * row.bytes);
        Gles3Texture const made(pixels, {3, 2, 77}, row.format, RenderBackend::NEAREST);
        auto const& image = gl.texture(made.texture()).image();
        EXPECT_EQ(image.internalFormat, row.gl);
        EXPECT_EQ(image.format, row.gl);
        EXPECT_EQ(image.type, static_cast<GLenum>(GL_UNSIGNED_BYTE));
        EXPECT_EQ(image.pixels, pixels);
        EXPECT_EQ(made.format(), row.format);
    }
}

TEST_F(Gles3TextureTest, ConstructorWithoutPixelsAllocatesAnUnfilledImage) {
    Gles3Texture const made = texture(5, 4);
    EXPECT_EQ(gl.last("glTexImage2D").text(),
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)");
    EXPECT_EQ(made.width(), 5U);
    EXPECT_EQ(made.height(), 4U);
}

TEST_F(Gles3TextureTest, ConstructorRefusesAnUnknownFormatAfterBindingAndReleasesTheName) {
    for (auto const format : {RenderBackend::UNDEFINED, kNoFormat}) {
        gl.reset();
        EXPECT_EQ(thrownBy<VelmoraException>([&] { texture(1, 1, format); }),
                  "#Name:Gles3Texture::Gles3Texture: invalid texture format"
                  "#Location:Gles3Texture::Gles3Texture(std::vector<uint8_t> const& pixels, std::vector<size_t> const& "
                  "size, RenderBackend::ImageFormatType textureFormat, RenderBackend::ImageFiltering filtering)");
        EXPECT_EQ(gl.texts(),
                  (Texts{"glGenTextures(1, data)", "glBindTexture(GL_TEXTURE_2D, 1)", "glDeleteTextures(1, 1)"}));
        EXPECT_TRUE(gl.living().empty());
    }
}

TEST_F(Gles3TextureTest, ConstructorReleasesTheNameWhenTheUploadIsRefused) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    EXPECT_THROW(texture(65, 1), VelmoraRangeException);
    EXPECT_THROW(Gles3Texture({}, {200, 128}, RenderBackend::RGBA32, RenderBackend::TRILINEAR), VelmoraException);
    EXPECT_THROW(Gles3Texture({1, 2, 3}, {1, 1}, RenderBackend::RGBA32, RenderBackend::NEAREST), VelmoraException);
    EXPECT_THROW(Gles3Texture({}, {4}, RenderBackend::RGBA32, RenderBackend::NEAREST), VelmoraException);
    EXPECT_TRUE(gl.living().empty());
}

TEST_F(Gles3TextureTest, CopiesShareTheNameAndTheLastOneDeletesIt) {
    auto original = std::make_unique<Gles3Texture>(texture(4, 4));
    {
        Gles3Texture const copy = *original;
        EXPECT_EQ(copy.texture(), original->texture());
        EXPECT_EQ(copy.width(), 4U);
    }
    EXPECT_EQ(gl.count("glDeleteTextures"), 0U);
    EXPECT_TRUE(gl.isLiving(original->texture()));

    auto last = std::make_unique<Gles3Texture>(*original);
    original.reset();
    EXPECT_EQ(gl.count("glDeleteTextures"), 0U);
    last.reset();
    EXPECT_EQ(gl.count("glDeleteTextures"), 1U);
    EXPECT_EQ(gl.last("glDeleteTextures").text(), "glDeleteTextures(1, 1)");
}

TEST_F(Gles3TextureTest, AssignmentReleasesTheNameThatItReplaces) {
    Gles3Texture first = texture(4, 4);
    Gles3Texture const second = texture(8, 8);
    first = second;
    EXPECT_EQ(gl.living(), Texts{"texture 2"});
    EXPECT_EQ(first.texture(), 2U);
    EXPECT_EQ(first.width(), 8U);
}

TEST_F(Gles3TextureTest, MovingDeletesNothing) {
    Gles3Texture source = texture(4, 4);
    Gles3Texture const moved = std::move(source);
    EXPECT_EQ(moved.texture(), 1U);
    EXPECT_EQ(gl.count("glDeleteTextures"), 0U);
}

TEST_F(Gles3TextureTest, SizeIsReadThroughCanvas) {
    Gles3Texture const made = texture(5, 4);
    Canvas const& canvas = made;
    EXPECT_EQ(canvas.width(), 5U);
    EXPECT_EQ(canvas.height(), 4U);
}

TEST_F(Gles3TextureTest, ResizeAllocatesInThisOrder) {
    Gles3Texture made = texture(4, 4, RenderBackend::RGB24);
    gl.forgetCalls();
    made.resize(7, 9);
    EXPECT_EQ(gl.texts(), (Texts{"glBindTexture(GL_TEXTURE_2D, 1)", "glGetIntegerv(GL_MAX_TEXTURE_SIZE, data)",
                                 "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 7, 9, 0, GL_RGB, GL_UNSIGNED_BYTE, null)"}));
    EXPECT_EQ(made.width(), 7U);
    EXPECT_EQ(made.height(), 9U);
}

TEST_F(Gles3TextureTest, ResizeUpToTheMaximumIsAccepted) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    Gles3Texture made = texture(4, 4);
    made.resize(64, 64);
    EXPECT_EQ(gl.texture(1).image().width, 64U);
    made.resize(0, 0);
    EXPECT_EQ(made.width(), 0U);
}

TEST_F(Gles3TextureTest, ResizeBeyondTheMaximumThrowsItAndKeepsTheRejectedSize) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    for (auto const& [width, height] : {std::pair<size_t, size_t>{65, 3}, {3, 65}, {1U << 20U, 1U << 20U}}) {
        Gles3Texture made = texture(4, 4);
        gl.forgetCalls();
        try {
            made.resize(width, height);
            ADD_FAILURE() << "no exception";
        } catch (VelmoraRangeException const& exception) {
            EXPECT_STREQ(exception.what(), kTooLarge);
            EXPECT_EQ(exception.limit(), 64U);
            EXPECT_EQ(exception.location(), "void Gles3Texture::resize(size_t width, size_t height)");
        }
        EXPECT_EQ(made.width(), width);
        EXPECT_EQ(made.height(), height);
        EXPECT_EQ(gl.names(), (Texts{"glBindTexture", "glGetIntegerv"}));
        EXPECT_EQ(gl.texture(made.texture()).image().width, 4U) << "the old image stays";
    }
}

// GL counts in signed 32 bits: a size beyond 2^31 is negative and not above any maximum.
TEST_F(Gles3TextureTest, ResizeComparesAsSigned32BitNumbers) {
    Gles3Texture made = texture(4, 4);
    gl.expectError(GL_INVALID_VALUE);
    made.resize(size_t{1} << 31U, 4);
    EXPECT_EQ(gl.last("glTexImage2D").text(),
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, -2147483648, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)");
    EXPECT_EQ(made.width(), size_t{1} << 31U);

    made.resize((size_t{1} << 32U) + 7, 4);
    EXPECT_EQ(gl.last("glTexImage2D").text(),
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 7, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)");
    EXPECT_EQ(made.width(), (size_t{1} << 32U) + 7);

    EXPECT_THROW(made.resize(std::numeric_limits<std::int32_t>::max(), 1), VelmoraRangeException);
}

TEST_F(Gles3TextureTest, ResizeRefusesAnUnknownFormatBeforeItAsksForTheMaximum) {
    Gles3Texture made({}, {0, 0}, kNoFormat, RenderBackend::NEAREST);
    gl.forgetCalls();
    EXPECT_EQ(thrownBy<VelmoraException>([&] { made.resize(4, 5); }),
              "#Name:invalid texture format#Location:void Gles3Texture::resize(size_t width, size_t height)");
    EXPECT_EQ(gl.texts(), Texts{"glBindTexture(GL_TEXTURE_2D, 1)"});
    EXPECT_EQ(made.width(), 4U);
    EXPECT_EQ(made.height(), 5U);
}

TEST_F(Gles3TextureTest, GenerateMipmapsBindsFirst) {
    Gles3Texture made({}, {4, 4}, RenderBackend::RGBA32, RenderBackend::TRILINEAR);
    EXPECT_EQ(gl.count("glGenerateMipmap"), 0U) << "an upload makes no mipmaps by itself";
    gl.forgetCalls();
    made.generateMipmaps();
    EXPECT_EQ(gl.texts(), (Texts{"glBindTexture(GL_TEXTURE_2D, 1)", "glGenerateMipmap(GL_TEXTURE_2D)"}));
}

} // namespace
