// What a layer gives to be drawn, against one painter that paints the whole frame.
#include "apps/velmora/view/AnnotationLayer.h"

#include "gles3renderbackend/Gl.h"
#include "host/HostError.h"
#include "tests/host/view/PictureViewFixture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace std::chrono_literals;

constexpr auto kShapes = R"({"type":"FeatureCollection","features":[
 {"type":"Feature","geometry":{"type":"Polygon","coordinates":[[[100,100],[900,150],[800,700],[120,600]]]},
  "properties":{"name":"Region","color":[255,200,0]}},
 {"type":"Feature","geometry":{"type":"Polygon","coordinates":[[[300,300],[340,300],[340,340],[300,340]]]},
  "properties":{"classification":{"name":"Cell"}}},
 {"type":"Feature","geometry":{"type":"LineString","coordinates":[[0,0],[1000,900]]},"properties":{}},
 {"type":"Feature","geometry":null,"properties":{}}]})";

class AnnotationLayerGLTest : public PictureViewFixture {
protected:
    static constexpr size_t kWidth = 700;
    static constexpr size_t kHeight = 500;

    void SetUp() override {
        info_.width = 1200;
        info_.height = 1000;
        info_.levels = 3;
        camera_ = std::make_unique<Camera>(info_, Size{kWidth, kHeight});
        layer_ = std::make_unique<AnnotationLayer>(written(kShapes));
    }
    void TearDown() override { layer_.reset(); }

    std::string written(std::string const& content) {
        writeFile(folder_.path("shapes.geojson"), content);
        return folder_.path("shapes.geojson");
    }

    void read() {
        while (!layer_->advance())
            layer_->wait(10ms);
    }

    std::vector<AnnotationLayer::Placed> drawn(std::optional<Place> const& cursor = {}) {
        auto placed = layer_->draw(*camera_, {}, cursor, 2);
        while (!layer_->complete())
            placed = layer_->draw(*camera_, {}, cursor, 2);
        return placed;
    }

    // RGBA of the frame, of parts that lie on whole pixels.
    static std::vector<std::uint8_t> frameOf(std::vector<AnnotationLayer::Placed> const& placed) {
        std::vector<std::uint8_t> frame(4 * kWidth * kHeight);
        for (AnnotationLayer::Placed const& part : placed) {
            Size const size = part.texture->size();
            std::vector<std::uint8_t> const texels = texelsOf(*part.texture);
            auto const left = std::llround(part.from.x);
            auto const top = std::llround(part.from.y);
            auto const texelX = std::llround(part.textureFrom.x * static_cast<double>(size.width));
            auto const texelY = std::llround(part.textureFrom.y * static_cast<double>(size.height));
            auto const across = std::llround(part.to.x) - left;
            auto const down = std::llround(part.to.y) - top;
            EXPECT_EQ(across, std::llround((part.textureTo.x - part.textureFrom.x) * static_cast<double>(size.width)));
            EXPECT_EQ(down, std::llround((part.textureTo.y - part.textureFrom.y) * static_cast<double>(size.height)));
            for (long long y = 0; y < down; ++y)
                for (long long x = 0; x < across; ++x) {
                    if (left + x < 0 || top + y < 0 || left + x >= static_cast<long long>(kWidth) ||
                        top + y >= static_cast<long long>(kHeight))
                        continue;
                    auto const to = 4 * (static_cast<size_t>(top + y) * kWidth + static_cast<size_t>(left + x));
                    auto const from =
                        4 * (static_cast<size_t>(texelY + y) * size.width + static_cast<size_t>(texelX + x));
                    for (size_t i = 0; i < 4; ++i)
                        frame[to + i] = texels[from + i];
                }
        }
        return frame;
    }

    static std::vector<std::uint8_t> texelsOf(OverlayTexture const& texture) {
        std::vector<std::uint8_t> rgba(4 * texture.size().width * texture.size().height);
        GLuint framebuffer = 0;
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, static_cast<GLsizei>(texture.size().width), static_cast<GLsizei>(texture.size().height),
                     GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        return rgba;
    }

    std::vector<std::uint8_t> expected() {
        auto content = geojson::read(folder_.path("shapes.geojson"));
        AnnotationPainter painter(std::make_shared<Annotations const>(std::move(content.annotations)));
        return painter.paint(camera_->view(), {}, 2).rgba();
    }

    TemporaryFolder folder_;
    PictureInfo info_;
    std::unique_ptr<Camera> camera_;
    std::unique_ptr<AnnotationLayer> layer_;
};

} // namespace

TEST_F(AnnotationLayerGLTest, UntilItIsReadNothingIsShown) {
    EXPECT_FALSE(layer_->isRead());
    EXPECT_EQ(layer_->state(), "annotations: loading");
    EXPECT_TRUE(layer_->draw(*camera_, {}, std::nullopt, 2).empty());
    read();
    EXPECT_FALSE(layer_->advance()) << "once";
    EXPECT_EQ(layer_->state(), "3 annotations");
    EXPECT_EQ(layer_->note(), "'shapes.geojson' has 1 feature without a geometry, which cannot be shown");
    EXPECT_FALSE(drawn().empty());
}

TEST_F(AnnotationLayerGLTest, TilesAreTheWholeFrameAtEveryPlaceAndZoom) {
    read();
    EXPECT_TRUE(frameOf(drawn()) == expected());
    for (double const zoom : {1.0, 0.7, 2.0, 0.3}) {
        camera_->magnifyTo(zoom, camera_->middle());
        EXPECT_TRUE(frameOf(drawn()) == expected()) << zoom;
        for (int i = 0; i < 6; ++i) {
            camera_->pan(i % 2 == 0 ? 190 : -77, -130 + 60 * i);
            EXPECT_TRUE(frameOf(drawn()) == expected()) << zoom << ", " << i;
        }
    }
}

TEST_F(AnnotationLayerGLTest, WhatTheCursorIsOverIsNamedAndDrawnOnTop) {
    read();
    camera_->magnifyTo(1, camera_->middle());
    camera_->lookAt({320, 320});
    drawn();
    EXPECT_EQ(layer_->textUnderCursor(), "");
    size_t const parts = drawn().size();
    EXPECT_EQ(drawn(camera_->frameAt({310, 330})).size(), parts + 1);
    EXPECT_EQ(layer_->textUnderCursor(), "Cell");
    drawn(camera_->frameAt({200, 400}));
    EXPECT_EQ(layer_->textUnderCursor(), "Region");
    EXPECT_EQ(drawn(camera_->frameAt({200, 50})).size(), parts);
    EXPECT_EQ(layer_->textUnderCursor(), "");
}

TEST_F(AnnotationLayerGLTest, NothingIsLookedForBelowAMovingPicture) {
    read();
    Place const cursor = camera_->frameAt({310, 330});
    drawn(cursor);
    ASSERT_NE(layer_->textUnderCursor(), "");
    camera_->magnifyTo(1, camera_->middle());
    layer_->draw(*camera_, {}, camera_->frameAt({310, 330}), 2);
    EXPECT_EQ(layer_->textUnderCursor(), "");
    EXPECT_FALSE(layer_->complete()) << "another frame is needed";
}

TEST_F(AnnotationLayerGLTest, SwitchedOffNothingIsShown) {
    read();
    drawn();
    layer_->toggle();
    EXPECT_TRUE(drawn(camera_->frameAt({310, 330})).empty());
    EXPECT_EQ(layer_->textUnderCursor(), "");
    EXPECT_EQ(layer_->state(), "3 annotations, off (a)");
    layer_->toggle();
    EXPECT_TRUE(frameOf(drawn()) == expected());
}

TEST_F(AnnotationLayerGLTest, ManyTilesAreNotKept) {
    read();
    camera_->magnifyTo(4, camera_->middle());
    for (int i = 0; i < 40; ++i) {
        camera_->pan(i < 20 ? 200 : -200, i % 2 == 0 ? 350 : -330);
        drawn();
    }
    EXPECT_TRUE(frameOf(drawn()) == expected());
}

TEST_F(AnnotationLayerGLTest, InTheLargestFramesPartsAreWholeTiles) {
    // At a zoom of 4 a point in every second block.
    std::string points;
    for (int y = 0; y < 162; ++y)
        for (int x = 0; x < 81; ++x)
            points +=
                (points.empty() ? "[" : ",[") + std::to_string(16 * x + 4) + "," + std::to_string(8 * y + 4) + "]";
    layer_ = std::make_unique<AnnotationLayer>(written(R"({"type":"MultiPoint","coordinates":[)" + points + "]}"));
    read();
    info_.width = info_.height = 1300;
    camera_ = std::make_unique<Camera>(info_, Size{5200, 5200});
    camera_->magnifyTo(4, camera_->middle());
    std::vector<AnnotationLayer::Placed> const placed = drawn();
    EXPECT_GE(placed.size(), 400U);
    EXPECT_LE(placed.size(), 450U);
    for (AnnotationLayer::Placed const& part : placed) {
        ASSERT_EQ(part.to.x - part.from.x, 256);
        ASSERT_EQ(part.to.y - part.from.y, 256);
        ASSERT_EQ(part.textureTo.x, 1);
    }
}

TEST_F(AnnotationLayerGLTest, WhatCannotBeReadIsThrown) {
    layer_ = std::make_unique<AnnotationLayer>(written("{}"));
    EXPECT_THROW(read(), HostError);
}
