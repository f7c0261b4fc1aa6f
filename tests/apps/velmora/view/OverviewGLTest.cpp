// The small picture, byte for byte as the wavelet's formulas and the nearest sample give it.
#include "apps/velmora/view/Overview.h"

#include "gles3renderbackend/Gl.h"
#include "host/view/Camera.h"
#include "tests/host/view/PictureViewFixture.h"

#include <gtest/gtest.h>

using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

class OverviewGLTest : public PictureViewFixture {
protected:
    static void complete(Overview& overview) {
        while (!overview.complete())
            overview.advance(100ms);
    }

    static Bytes read(OverlayTexture const& texture) {
        Bytes rgba(4 * texture.size().width * texture.size().height);
        GLuint framebuffer = 0;
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glReadPixels(0, 0, static_cast<GLsizei>(texture.size().width), static_cast<GLsizei>(texture.size().height),
                     GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        return rgba;
    }

    // The whole picture in a frame of its own size.
    static View whole(StoreInfo const& info) {
        Camera const camera(info, {Overview::kMaxSide, Overview::kMaxSide});
        return {camera.zoom(), 0, 0, camera.size().width, camera.size().height, false};
    }
};

} // namespace

TEST_F(OverviewGLTest, ItShowsTheWholePictureOfAnyShape) {
    for (auto const& [width, height] : {std::pair<size_t, size_t>{1301, 900}, {3, 700}, {120, 90}}) {
        Picture const picture = testpictures::picture(width, height, 4, 8, Content::Noise);
        StoreInfo const info = import(picture);
        Overview overview(instance_, path(), options());
        EXPECT_TRUE(overview.texture().empty());
        complete(overview);
        View const view = whole(info);
        EXPECT_LE(std::max(overview.texture().size().width, overview.texture().size().height), Overview::kMaxSide);
        EXPECT_EQ(overview.texture().size().width, view.width);
        EXPECT_EQ(overview.texture().size().height, view.height);
        EXPECT_TRUE(read(overview.texture()) == frameOf(pictureview::levelsOf(picture, info.levels), view));
    }
}

TEST_F(OverviewGLTest, ItIsDrawnOncePerSetOfEnhancements) {
    StoreInfo const info = import(testpictures::picture(1301, 900, 3, 8, Content::Noise));
    PictureView reference(instance_, path(), options());
    Overview overview(instance_, path(), options());
    std::vector<enhancement::Step> const sharpened = {enhancement::Sharpen{2.0}};
    Bytes before;
    for (auto const& steps : {std::vector<enhancement::Step>{}, sharpened, {}}) {
        overview.enhance(steps);
        EXPECT_FALSE(overview.complete());
        if (!before.empty()) {
            EXPECT_TRUE(read(overview.texture()) == before) << "the last one stays meanwhile";
        }
        complete(overview);
        reference.enhance(steps);
        Bytes const expected = completed(reference, whole(info));
        EXPECT_TRUE(read(overview.texture()) == expected);
        EXPECT_FALSE(expected == before);
        EXPECT_FALSE(overview.advance(0ms));
        before = expected;
    }
}

// Tiles out of the upload ring have rows without padding: with an alignment of 4 those of odd widths would be sheared.
TEST_F(OverviewGLTest, ItsTextureLeavesGlAsTheUploadRingNeedsIt) {
    for (Size const& size : {Size{4, 4}, Size{3, 5}}) {
        OverlayTexture texture;
        texture.set(Bytes(4 * size.width * size.height, 200), size);
        GLint alignment = 0;
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
        EXPECT_EQ(alignment, 1);
        for (GLenum const name : std::vector<GLenum>{GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
                                                     GL_PIXEL_UNPACK_BUFFER_BINDING}) {
            GLint value = 1;
            glGetIntegerv(name, &value);
            EXPECT_EQ(value, 0) << name;
        }
        EXPECT_EQ(read(texture), Bytes(4 * size.width * size.height, 200));
    }
}
