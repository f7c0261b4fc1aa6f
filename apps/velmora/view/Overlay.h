#pragma once

#include "apps/velmora/view/OverlayTexture.h"
#include "host/view/Camera.h"

#include <SDL.h>

#include <array>
#include <cstddef>
#include <memory>

class Lettering;

/// Dear ImGui over a window's picture, in pixels of the frame. One at a time, on the GL thread, with the context
/// current.
///
/// It is told of mouse and keys by events alone, so that those of a script do what those of a hand do. It writes no
/// file.
class Overlay {
public:
    Overlay();
    ~Overlay();
    Overlay(Overlay const&) = delete;
    Overlay& operator=(Overlay const&) = delete;

    void handle(SDL_Event const& event, double pixelsPerUnit);
    /// Whether the mouse is over something that takes it, as of the last frame.
    bool hasMouse() const;
    /// Whether keys are typed into one of its fields, as of the last frame.
    bool hasKeys() const;
    /// The field is gone: the next key is none of its.
    void leaveField();

    /// Light panels, or dark ones, from the next frame on.
    void setTheme(bool isLight);
    /// Whether the last frame lacked letters that the next one has.
    bool lacksLetters() const;

    /// From here to end() ImGui's functions draw.
    void begin(Size const& frame, double pixelsPerUnit, double secondsSinceLast);
    /// Draws over the host's surface. Leaves framebuffer 0 bound, and the rest of GL's state as it was.
    void end();

private:
    static constexpr size_t kButtons = 3;

    void setKey(SDL_Keysym const& key, bool isDown);
    void prepareLetters(double pixelsPerUnit);

    std::unique_ptr<Lettering> lettering_;
    bool hasLetters_ = false;
    bool isLight_ = false;
    bool isStyled_ = false; // as the theme asks for
    std::array<float, 2> mouse_;
    std::array<bool, kButtons> down_{};
    std::array<bool, kButtons> pressed_{}; // since the last frame, for clicks that are shorter than one
    float wheel_ = 0;
    std::array<bool, SDL_NUM_SCANCODES> keysDown_{};
    std::array<bool, SDL_NUM_SCANCODES> keysPressed_{}; // since the last frame
};
