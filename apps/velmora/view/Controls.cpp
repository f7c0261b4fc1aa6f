#include "apps/velmora/view/Controls.h"

#include <cmath>

namespace {

constexpr int kQuarterOctavesPerKey = 2;
constexpr int kQuarterOctavesPerNotch = 1;

// Whole pixels that lie between two places: added up, those of many small movements are those of the large one.
void pan(Camera& camera, Place const& from, Place const& to) {
    camera.pan(std::llround(to.x) - std::llround(from.x), std::llround(to.y) - std::llround(from.y));
}

// What a touch screen's fingers do arrives as events of a mouse once more.
bool isOfTouch(SDL_Event const& event) {
    switch (event.type) {
    case SDL_MOUSEMOTION:
        return event.motion.which == SDL_TOUCH_MOUSEID;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        return event.button.which == SDL_TOUCH_MOUSEID;
    case SDL_MOUSEWHEEL:
        return event.wheel.which == SDL_TOUCH_MOUSEID;
    default:
        return false;
    }
}

Controls::Command commandOf(SDL_Keycode key) {
    switch (key) {
    case SDLK_q:
        return Controls::Command::Quit;
    case SDLK_ESCAPE:
        return Controls::Command::Leave;
    case SDLK_o:
        return Controls::Command::Open;
    case SDLK_s:
        return Controls::Command::Save;
    case SDLK_r:
        return Controls::Command::Ruler;
    case SDLK_p:
        return Controls::Command::Properties;
    case SDLK_QUESTION:
    case SDLK_SLASH: // with shift, on many keyboards
    case SDLK_h:
        return Controls::Command::Help;
    case SDLK_l:
        return Controls::Command::Theme;
    case SDLK_d:
        return Controls::Command::Tiles;
    case SDLK_m:
        return Controls::Command::Mask;
    case SDLK_a:
        return Controls::Command::Annotations;
    case SDLK_b:
        return Controls::Command::Smooth;
    case SDLK_e:
        return Controls::Command::Sharpen;
    case SDLK_g:
        return Controls::Command::Gamma;
    case SDLK_c:
        return Controls::Command::Equalise;
    case SDLK_PAGEDOWN:
        return Controls::Command::NextSlice;
    case SDLK_PAGEUP:
        return Controls::Command::PreviousSlice;
    case SDLK_PERIOD:
        return Controls::Command::NextTime;
    case SDLK_COMMA:
        return Controls::Command::PreviousTime;
    default:
        return Controls::Command::None;
    }
}

Controls::Command commandWithControl(SDL_Keycode key) {
    switch (key) {
    case SDLK_o:
        return Controls::Command::Open;
    case SDLK_s:
        return Controls::Command::Save;
    case SDLK_c:
        return Controls::Command::Copy;
    case SDLK_q:
        return Controls::Command::Quit;
    default:
        return Controls::Command::None;
    }
}

double distance(Place const& a, Place const& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

Place between(Place const& a, Place const& b) {
    return {(a.x + b.x) / 2, (a.y + b.y) / 2};
}

} // namespace

Controls::Command Controls::handle(SDL_Event const& event, Camera* camera, double pixelsPerUnit, bool overlayHasMouse) {
    if (isOfTouch(event)) return Command::None;
    switch (event.type) {
    case SDL_QUIT:
        return Command::Quit;
    case SDL_KEYDOWN:
        return keyPressed(event.key.keysym, camera);
    case SDL_MOUSEMOTION:
        mouseMoved({event.motion.x * pixelsPerUnit, event.motion.y * pixelsPerUnit}, camera);
        break;
    case SDL_MOUSEBUTTONDOWN:
        if (event.button.button == SDL_BUTTON_LEFT) dragging_ = !overlayHasMouse;
        break;
    case SDL_MOUSEBUTTONUP:
        if (event.button.button == SDL_BUTTON_LEFT) dragging_ = false;
        break;
    case SDL_MOUSEWHEEL:
        if (camera != nullptr && !overlayHasMouse)
            camera->zoomByQuarterOctaves(event.wheel.y * kQuarterOctavesPerNotch, cursor_.value_or(camera->middle()));
        break;
    case SDL_WINDOWEVENT:
        if (event.window.event == SDL_WINDOWEVENT_LEAVE) cursor_.reset();
        break;
    case SDL_FINGERDOWN:
    case SDL_FINGERMOTION:
    case SDL_FINGERUP:
        touch(event.tfinger, camera);
        break;
    default:
        break;
    }
    return Command::None;
}

Controls::Command Controls::keyPressed(SDL_Keysym const& key, Camera* camera) {
    // Keys with Alt or GUI are the desktop's shortcuts, not ours.
    if ((key.mod & (KMOD_ALT | KMOD_GUI)) != 0) return Command::None;
    if ((key.mod & KMOD_CTRL) != 0) return commandWithControl(key.sym);
    if (camera != nullptr && moveByKey(key.sym, *camera)) return Command::None;
    return commandOf(key.sym);
}

bool Controls::moveByKey(SDL_Keycode key, Camera& camera) {
    auto const right = static_cast<std::int64_t>(camera.frame().width / 8);
    auto const down = static_cast<std::int64_t>(camera.frame().height / 8);
    switch (key) {
    case SDLK_i:
    case SDLK_PLUS:
    case SDLK_EQUALS: // with shift, on many keyboards
    case SDLK_KP_PLUS:
        camera.zoomByQuarterOctaves(kQuarterOctavesPerKey, camera.middle());
        return true;
    case SDLK_MINUS:
    case SDLK_KP_MINUS:
        camera.zoomByQuarterOctaves(-kQuarterOctavesPerKey, camera.middle());
        return true;
    case SDLK_1:
    case SDLK_KP_1:
        camera.magnifyTo(1, camera.middle());
        return true;
    case SDLK_f:
        camera.fit();
        return true;
    // The window goes where the arrow points: the picture the other way.
    case SDLK_LEFT:
        camera.pan(right, 0);
        return true;
    case SDLK_RIGHT:
        camera.pan(-right, 0);
        return true;
    case SDLK_UP:
        camera.pan(0, down);
        return true;
    case SDLK_DOWN:
        camera.pan(0, -down);
        return true;
    default:
        return false;
    }
}

void Controls::mouseMoved(Place const& to, Camera* camera) {
    if (dragging_ && camera != nullptr && cursor_) pan(*camera, *cursor_, to);
    cursor_ = to;
}

void Controls::touch(SDL_TouchFingerEvent const& finger, Camera* camera) {
    if (finger.type == SDL_FINGERUP) {
        fingers_.erase(finger.fingerId);
        return;
    }
    if (camera == nullptr) return;
    // They come as shares of the window.
    Place const to{static_cast<double>(finger.x) * static_cast<double>(camera->frame().width),
                   static_cast<double>(finger.y) * static_cast<double>(camera->frame().height)};
    if (finger.type == SDL_FINGERMOTION) fingerMoved(finger.fingerId, to, *camera);
    fingers_[finger.fingerId] = to;
}

void Controls::fingerMoved(SDL_FingerID id, Place const& to, Camera& camera) {
    auto const before = fingers_.find(id);
    if (before == fingers_.end() || fingers_.size() > 2) return;
    if (fingers_.size() == 1) {
        pan(camera, before->second, to);
        return;
    }
    Place const& other = (before == fingers_.begin() ? std::next(before) : fingers_.begin())->second;
    pan(camera, between(before->second, other), between(to, other));
    double const apart = distance(before->second, other);
    if (apart > 0 && distance(to, other) > 0) camera.magnify(distance(to, other) / apart, between(to, other));
}
