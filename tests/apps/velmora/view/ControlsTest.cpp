#include "apps/velmora/view/Controls.h"

#include "tests/host/view/StoreInfoOf.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

class ControlsTest : public testing::Test {
protected:
    void SetUp() override { camera_.magnifyTo(1, camera_.middle()); }

    Controls::Command handle(SDL_Event const& event) { return controls_.handle(event, &camera_, 1, false); }

    static SDL_Event key(SDL_Keycode code, Uint16 modifiers = KMOD_NONE) {
        SDL_Event event{};
        event.type = SDL_KEYDOWN;
        event.key.keysym.sym = code;
        event.key.keysym.mod = modifiers;
        return event;
    }

    static SDL_Event motion(int x, int y, Uint32 which = 0) {
        SDL_Event event{};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = x;
        event.motion.y = y;
        event.motion.which = which;
        return event;
    }

    static SDL_Event button(Uint32 type, Uint8 index = SDL_BUTTON_LEFT, Uint32 which = 0) {
        SDL_Event event{};
        event.type = type;
        event.button.button = index;
        event.button.which = which;
        return event;
    }

    static SDL_Event wheel(int notches) {
        SDL_Event event{};
        event.type = SDL_MOUSEWHEEL;
        event.wheel.y = notches;
        return event;
    }

    static SDL_Event finger(Uint32 type, SDL_FingerID id, float x, float y) {
        SDL_Event event{};
        event.type = type;
        event.tfinger.fingerId = id;
        event.tfinger.x = x;
        event.tfinger.y = y;
        return event;
    }

    // What a movement has done to the view, as a hand sees the picture move.
    Place movedSince(View const& before) const {
        return {static_cast<double>(before.x - camera_.view().x), static_cast<double>(before.y - camera_.view().y)};
    }

    Camera camera_{storeInfoOf(10000, 8000), {800, 600}};
    Controls controls_;
};

} // namespace

TEST_F(ControlsTest, ADragMovesThePicture) {
    View const before = camera_.view();
    for (SDL_Event const& event : {motion(100, 100), button(SDL_MOUSEBUTTONDOWN), motion(107, 90), motion(150, 60),
                                   button(SDL_MOUSEBUTTONUP), motion(700, 500)})
        EXPECT_EQ(handle(event), Controls::Command::None);
    EXPECT_EQ(movedSince(before).x, 50);
    EXPECT_EQ(movedSince(before).y, -40);
    EXPECT_EQ(controls_.cursor()->x, 700);
}

TEST_F(ControlsTest, OtherButtonsDoNotDrag) {
    View const before = camera_.view();
    for (Uint8 const index : {Uint8{SDL_BUTTON_RIGHT}, Uint8{SDL_BUTTON_MIDDLE}})
        for (SDL_Event const& event :
             {motion(100, 100), button(SDL_MOUSEBUTTONDOWN, index), motion(200, 200), button(SDL_MOUSEBUTTONUP, index)})
            handle(event);
    EXPECT_EQ(movedSince(before).x, 0);
}

TEST_F(ControlsTest, PositionsCountInUnitsOfTheWindow) {
    View const before = camera_.view();
    for (SDL_Event const& event : {motion(100, 100), button(SDL_MOUSEBUTTONDOWN), motion(101, 102), motion(103, 103)})
        controls_.handle(event, &camera_, 1.5, false);
    EXPECT_EQ(movedSince(before).x, std::round(103 * 1.5) - 150) << "fractions of pixels are not lost";
    EXPECT_EQ(movedSince(before).y, std::round(103 * 1.5) - 150);
    EXPECT_EQ(controls_.cursor()->x, 154.5);
}

TEST_F(ControlsTest, WhatIsOverThePictureKeepsItsMouse) {
    View const before = camera_.view();
    for (SDL_Event const& event : {motion(100, 100), button(SDL_MOUSEBUTTONDOWN), motion(200, 200), wheel(3)})
        controls_.handle(event, &camera_, 1, true);
    EXPECT_EQ(movedSince(before).x, 0);
    EXPECT_EQ(camera_.zoom(), before.zoom);
}

TEST_F(ControlsTest, ADragThatBeganOverThePictureGoesOnOverTheOverlay) {
    View const before = camera_.view();
    handle(motion(100, 100));
    handle(button(SDL_MOUSEBUTTONDOWN));
    controls_.handle(motion(300, 100), &camera_, 1, true);
    EXPECT_EQ(movedSince(before).x, 200);
}

TEST_F(ControlsTest, TheWheelZoomsAboutTheCursor) {
    handle(motion(200, 500));
    Place const before = camera_.pictureAt({200, 500});
    handle(wheel(5));
    EXPECT_GT(camera_.zoom().value(), 2);
    EXPECT_NEAR(camera_.frameAt(before).x, 200, 0.5 + 1e-6);
    EXPECT_NEAR(camera_.frameAt(before).y, 500, 0.5 + 1e-6);
    handle(wheel(-9));
    EXPECT_LT(camera_.zoom().value(), 1);
}

TEST_F(ControlsTest, KeysMoveTheView) {
    View const before = camera_.view();
    handle(key(SDLK_RIGHT));
    EXPECT_EQ(movedSince(before).x, -100) << "an eighth of the frame";
    handle(key(SDLK_LEFT));
    handle(key(SDLK_DOWN));
    EXPECT_EQ(movedSince(before).x, 0);
    EXPECT_EQ(movedSince(before).y, -75);
    handle(key(SDLK_UP));
    EXPECT_EQ(movedSince(before).y, 0);
}

TEST_F(ControlsTest, KeysZoom) {
    for (SDL_Keycode const code : {SDLK_i, SDLK_PLUS, SDLK_EQUALS, SDLK_KP_PLUS}) {
        double const before = camera_.zoom().value();
        handle(key(code));
        EXPECT_GT(camera_.zoom().value(), before);
    }
    for (SDL_Keycode const code : {SDLK_MINUS, SDLK_KP_MINUS}) {
        double const before = camera_.zoom().value();
        handle(key(code));
        EXPECT_LT(camera_.zoom().value(), before);
    }
    handle(key(SDLK_f));
    EXPECT_LE(camera_.size().height, 600u);
    handle(key(SDLK_1));
    EXPECT_EQ(camera_.zoom().value(), 1);
}

TEST_F(ControlsTest, KeysGiveCommands) {
    using Command = Controls::Command;
    EXPECT_EQ(handle(key(SDLK_q)), Command::Quit);
    EXPECT_EQ(handle(key(SDLK_ESCAPE)), Command::Leave);
    EXPECT_EQ(handle(key(SDLK_QUESTION)), Command::Help);
    EXPECT_EQ(handle(key(SDLK_SLASH, KMOD_LSHIFT)), Command::Help);
    EXPECT_EQ(handle(key(SDLK_d)), Command::Tiles);
    EXPECT_EQ(handle(key(SDLK_m)), Command::Mask);
    EXPECT_EQ(handle(key(SDLK_b)), Command::Smooth);
    EXPECT_EQ(handle(key(SDLK_e)), Command::Sharpen);
    EXPECT_EQ(handle(key(SDLK_o)), Command::Open);
    EXPECT_EQ(handle(key(SDLK_s)), Command::Save);
    EXPECT_EQ(handle(key(SDLK_r)), Command::Ruler);
    EXPECT_EQ(handle(key(SDLK_p)), Command::Properties);
    EXPECT_EQ(handle(key(SDLK_l)), Command::Theme);
    EXPECT_EQ(handle(key(SDLK_g)), Command::Gamma);
    EXPECT_EQ(handle(key(SDLK_c)), Command::Equalise);
    EXPECT_EQ(handle(key(SDLK_PAGEDOWN)), Command::NextSlice);
    EXPECT_EQ(handle(key(SDLK_PAGEUP)), Command::PreviousSlice);
    EXPECT_EQ(handle(key(SDLK_PERIOD)), Command::NextTime);
    EXPECT_EQ(handle(key(SDLK_COMMA)), Command::PreviousTime);
    EXPECT_EQ(handle(key(SDLK_x)), Command::None);
    EXPECT_EQ(handle(key(SDLK_o, KMOD_LCTRL)), Command::Open);
    EXPECT_EQ(handle(key(SDLK_s, KMOD_RCTRL)), Command::Save);
    EXPECT_EQ(handle(key(SDLK_c, KMOD_LCTRL)), Command::Copy);
    EXPECT_EQ(handle(key(SDLK_q, KMOD_LCTRL)), Command::Quit);
    EXPECT_EQ(handle(key(SDLK_g, KMOD_LCTRL)), Command::None);
    EXPECT_EQ(handle(key(SDLK_q, KMOD_LALT)), Command::None) << "the desktop's";
    EXPECT_EQ(handle(key(SDLK_c, static_cast<Uint16>(KMOD_LCTRL | KMOD_LGUI))), Command::None);
    SDL_Event quit{};
    quit.type = SDL_QUIT;
    EXPECT_EQ(handle(quit), Command::Quit);
}

TEST_F(ControlsTest, OneFingerPans) {
    View const before = camera_.view();
    handle(finger(SDL_FINGERDOWN, 7, 0.25F, 0.5F));
    handle(finger(SDL_FINGERMOTION, 7, 0.375F, 0.25F));
    handle(finger(SDL_FINGERUP, 7, 0.375F, 0.25F));
    handle(finger(SDL_FINGERMOTION, 7, 0.5F, 0.5F));
    EXPECT_EQ(movedSince(before).x, 100);
    EXPECT_EQ(movedSince(before).y, -150);
    EXPECT_EQ(camera_.zoom(), before.zoom);
}

TEST_F(ControlsTest, TwoFingersPinch) {
    handle(finger(SDL_FINGERDOWN, 7, 0.25F, 0.5F));
    handle(finger(SDL_FINGERDOWN, 9, 0.5F, 0.5F));
    Place const underFirst = camera_.pictureAt({200, 300});
    Place const underSecond = camera_.pictureAt({400, 300});
    // The second goes on in small steps until it is three times as far away.
    for (int i = 1; i <= 100; ++i)
        handle(finger(SDL_FINGERMOTION, 9, 0.5F + 0.5F * static_cast<float>(i) / 100, 0.5F));
    EXPECT_EQ(camera_.zoom().value(), 3);
    EXPECT_NEAR(camera_.frameAt(underFirst).x, 200, 60) << "zooms are whole numbers, so fingers slide a little";
    EXPECT_NEAR(camera_.frameAt(underSecond).x, 800, 60);
}

TEST_F(ControlsTest, AThirdFingerDoesNothing) {
    View const before = camera_.view();
    for (SDL_FingerID id : {1, 2, 3})
        handle(finger(SDL_FINGERDOWN, id, 0.1F * static_cast<float>(id), 0.5F));
    handle(finger(SDL_FINGERMOTION, 3, 0.9F, 0.9F));
    EXPECT_EQ(movedSince(before).x, 0);
    EXPECT_EQ(camera_.zoom(), before.zoom);
}

TEST_F(ControlsTest, TheMouseThatSdlMakesOfFingersIsIgnored) {
    View const before = camera_.view();
    for (SDL_Event const& event :
         {motion(100, 100, SDL_TOUCH_MOUSEID), button(SDL_MOUSEBUTTONDOWN, SDL_BUTTON_LEFT, SDL_TOUCH_MOUSEID),
          motion(300, 100, SDL_TOUCH_MOUSEID)})
        handle(event);
    EXPECT_EQ(movedSince(before).x, 0);
    EXPECT_FALSE(controls_.cursor());
}

TEST_F(ControlsTest, OutsideOfTheWindowThereIsNoCursor) {
    handle(motion(100, 100));
    ASSERT_TRUE(controls_.cursor());
    SDL_Event leave{};
    leave.type = SDL_WINDOWEVENT;
    leave.window.event = SDL_WINDOWEVENT_LEAVE;
    handle(leave);
    EXPECT_FALSE(controls_.cursor());
}

TEST_F(ControlsTest, WithoutAPictureOnlyCommandsAreTaken) {
    for (SDL_Event const& event : {motion(100, 100), button(SDL_MOUSEBUTTONDOWN), motion(200, 200), wheel(3),
                                   finger(SDL_FINGERDOWN, 7, 0.25F, 0.5F), finger(SDL_FINGERMOTION, 7, 0.5F, 0.5F)})
        EXPECT_EQ(controls_.handle(event, nullptr, 1, false), Controls::Command::None);
    EXPECT_EQ(controls_.handle(key(SDLK_f), nullptr, 1, false), Controls::Command::None);
    EXPECT_EQ(controls_.handle(key(SDLK_q), nullptr, 1, false), Controls::Command::Quit);
}
