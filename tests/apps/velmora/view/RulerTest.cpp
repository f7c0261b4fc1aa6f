#include "apps/velmora/view/Ruler.h"

#include "tests/host/view/StoreInfoOf.h"

#include <gtest/gtest.h>

namespace {

class RulerTest : public testing::Test {
protected:
    void SetUp() override { camera_.magnifyTo(2, camera_.middle()); }

    static SDL_Event button(Uint32 type, int x, int y, Uint8 index = SDL_BUTTON_LEFT) {
        SDL_Event event{};
        event.type = type;
        event.button.button = index;
        event.button.x = x;
        event.button.y = y;
        return event;
    }

    static SDL_Event motion(int x, int y) {
        SDL_Event event{};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = x;
        event.motion.y = y;
        return event;
    }

    bool handle(SDL_Event const& event, bool overlayHasMouse = false) {
        return ruler_.handle(event, camera_, 1, overlayHasMouse);
    }

    Camera camera_{storeInfoOf(10000, 8000), {800, 600}};
    Ruler ruler_;
};

} // namespace

TEST_F(RulerTest, ADragDrawsALineInThePicture) {
    EXPECT_FALSE(handle(button(SDL_MOUSEBUTTONDOWN, 100, 100))) << "it is not out";
    ruler_.toggle();
    EXPECT_TRUE(handle(button(SDL_MOUSEBUTTONDOWN, 100, 100)));
    EXPECT_FALSE(handle(motion(160, 180))) << "the cursor is followed by others, too";
    EXPECT_TRUE(handle(button(SDL_MOUSEBUTTONUP, 160, 180)));
    handle(motion(500, 500));
    ASSERT_TRUE(ruler_.line());
    Ruler::Line const line = *ruler_.line();
    EXPECT_EQ(line.to.x - line.from.x, 30);
    EXPECT_EQ(line.to.y - line.from.y, 40);
    camera_.pan(50, 60);
    EXPECT_EQ(camera_.frameAt(ruler_.line()->from).x, 150) << "it stays with the picture";
    ruler_.toggle();
    EXPECT_FALSE(ruler_.line());
}

TEST_F(RulerTest, OtherButtonsAndPanelsDrawNone) {
    ruler_.toggle();
    EXPECT_FALSE(handle(button(SDL_MOUSEBUTTONDOWN, 1, 1, SDL_BUTTON_RIGHT)));
    EXPECT_FALSE(handle(button(SDL_MOUSEBUTTONDOWN, 1, 1), true));
    EXPECT_FALSE(handle(motion(9, 9)));
    EXPECT_FALSE(handle(button(SDL_MOUSEBUTTONUP, 9, 9)));
    EXPECT_FALSE(ruler_.line());
}

TEST_F(RulerTest, LengthsAreThoseOfTheObject) {
    PictureInfo info;
    Ruler::Line const line{{10, 10}, {40, 50}};
    EXPECT_EQ(Ruler::lengthOf(line, info), "50 px");
    info.micronsPerPixelX = 0.25;
    EXPECT_EQ(Ruler::lengthOf(line, info), "50 px") << "the other side is not known";
    info.micronsPerPixelY = 0.25;
    EXPECT_EQ(Ruler::lengthOf(line, info), "12.5 \xC2\xB5m");
    info.micronsPerPixelX = 2;
    info.micronsPerPixelY = 2;
    EXPECT_EQ(Ruler::lengthOf(line, info), "100 \xC2\xB5m");
    info.micronsPerPixelX = 4;
    info.micronsPerPixelY = 0.75;
    EXPECT_EQ(Ruler::lengthOf(line, info), "123.7 \xC2\xB5m") << "120 across, 30 down";
    info.micronsPerPixelX = info.micronsPerPixelY = 30000;
    EXPECT_EQ(Ruler::lengthOf(line, info), "1.5 m");
    info.micronsPerPixelX = info.micronsPerPixelY = 0.001;
    EXPECT_EQ(Ruler::lengthOf(line, info), "50 nm");
    info.micronsPerPixelX = info.micronsPerPixelY = 33;
    EXPECT_EQ(Ruler::lengthOf(line, info), "1.65 mm");
}
