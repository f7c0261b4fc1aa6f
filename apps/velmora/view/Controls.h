#pragma once

#include "host/view/Camera.h"

#include <SDL.h>

#include <cstdint>
#include <map>
#include <optional>

/// Turns mouse, wheel, touch and key events into camera moves and commands. Needs no window.
class Controls {
public:
    enum class Command {
        None,
        Quit,
        Leave, ///< what lies over the picture, or else the window
        Open,
        Save,
        Copy,
        Ruler,
        Properties,
        Help,
        Theme,
        Tiles,
        Mask,
        Annotations,
        Smooth,
        Sharpen,
        Gamma,
        Equalise,
        NextSlice,
        PreviousSlice,
        NextTime,
        PreviousTime
    };

    /// camera: null where there is nothing to move yet. pixelsPerUnit: of the window, see Window. overlayHasMouse:
    /// the cursor is over something that takes clicks and the wheel itself.
    Command handle(SDL_Event const& event, Camera* camera, double pixelsPerUnit, bool overlayHasMouse);

    /// Where the mouse is, in pixels of the frame; nothing while it is outside of the window.
    std::optional<Place> const& cursor() const { return cursor_; }

private:
    static Command keyPressed(SDL_Keysym const& key, Camera* camera);
    static bool moveByKey(SDL_Keycode key, Camera& camera);
    void mouseMoved(Place const& to, Camera* camera);
    void touch(SDL_TouchFingerEvent const& finger, Camera* camera);
    void fingerMoved(SDL_FingerID id, Place const& to, Camera& camera);

    std::optional<Place> cursor_;
    bool dragging_ = false;
    std::map<SDL_FingerID, Place> fingers_;
};
