#include "apps/velmora/view/Window.h"

#include "gles3renderbackend/Gl.h"
#include "host/Failures.h"
#include "host/HostError.h"

#include <algorithm>

namespace {

// In units of the window system; a window that was asked for smaller may stay so.
constexpr int kLeastWidth = 160;
constexpr int kLeastHeight = 120;

HostError noDisplay(std::string const& reason) {
    return {HostError::Kind::NoDisplay,
            "no display to open a window on: " + reason + "; velmora render needs none and writes a PNG file"};
}

HostError noContext() {
    return failures::noGlContextForWindow(SDL_GetError());
}

// SDL takes these for the next window and context.
void wishForGles3() {
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_ES);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 0);
    for (SDL_GLattr const colour : {SDL_GL_RED_SIZE, SDL_GL_GREEN_SIZE, SDL_GL_BLUE_SIZE})
        SDL_GL_SetAttribute(colour, 8);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 0);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
}

// Started once and never ended: with its end SDL unloads the GL driver, and LeakSanitizer would report what the driver
// keeps.
void startSdl() {
    // On X11 too the context comes from EGL, as the backend's GL library does.
    SDL_SetHint(SDL_HINT_VIDEO_X11_FORCE_EGL, "1");
    // Signals are the program's own.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    if (SDL_Init(SDL_INIT_VIDEO) != 0) throw noDisplay(SDL_GetError());
    // Without X11 or Wayland SDL falls back to its offscreen driver; accept that only when SDL_VIDEODRIVER asks for it.
    std::string const driver = SDL_GetCurrentVideoDriver();
    bool const unseen = driver == "offscreen" || driver == "dummy";
    if (unseen && SDL_GetHint(SDL_HINT_VIDEODRIVER) == nullptr) throw noDisplay("neither X11 nor Wayland answers");
    wishForGles3();
    if (SDL_GL_LoadLibrary(nullptr) != 0) throw noContext();
}

} // namespace

Window::Window(std::string const& title, Size const& size) {
    startSdl();
    window_.reset(SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                   static_cast<int>(size.width), static_cast<int>(size.height),
                                   SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI));
    if (!window_) throw noContext();
    SDL_SetWindowMinimumSize(window_.get(), std::min(static_cast<int>(size.width), kLeastWidth),
                             std::min(static_cast<int>(size.height), kLeastHeight));
    context_ = SDL_GL_CreateContext(window_.get());
    if (context_ == nullptr) throw noContext();
    // A driver that cannot wait for the screen draws at once.
    SDL_GL_SetSwapInterval(1);
}

Window::~Window() {
    if (context_ != nullptr) SDL_GL_DeleteContext(context_);
}

Size Window::pixels() const {
    if (minimised_) return {};
    int width = 0;
    int height = 0;
    SDL_GL_GetDrawableSize(window_.get(), &width, &height);
    return {static_cast<size_t>(width), static_cast<size_t>(height)};
}

double Window::pixelsPerUnit() const {
    int pixels = 0;
    int units = 0;
    SDL_GL_GetDrawableSize(window_.get(), &pixels, nullptr);
    SDL_GetWindowSize(window_.get(), &units, nullptr);
    return units > 0 && pixels > 0 ? static_cast<double>(pixels) / units : 1;
}

void Window::note(SDL_Event const& event) {
    if (event.type != SDL_WINDOWEVENT) return;
    switch (event.window.event) {
    case SDL_WINDOWEVENT_MINIMIZED:
    case SDL_WINDOWEVENT_HIDDEN:
        minimised_ = true;
        return;
    case SDL_WINDOWEVENT_RESTORED:
    case SDL_WINDOWEVENT_MAXIMIZED:
    case SDL_WINDOWEVENT_SHOWN:
        minimised_ = false;
        return;
    default:
        return;
    }
}

void Window::resize(Size const& size) {
    SDL_SetWindowSize(window_.get(), static_cast<int>(size.width), static_cast<int>(size.height));
}

void Window::setTitle(std::string const& title) {
    SDL_SetWindowTitle(window_.get(), title.c_str());
}

void Window::hide() {
    SDL_HideWindow(window_.get());
}

void Window::swap() {
    SDL_GL_SwapWindow(window_.get());
}

std::vector<std::uint8_t> Window::readPixels() const {
    Size const size = pixels();
    std::vector<std::uint8_t> rgba(4 * size.width * size.height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, static_cast<GLsizei>(size.width), static_cast<GLsizei>(size.height), GL_RGBA, GL_UNSIGNED_BYTE,
                 rgba.data());
    std::vector<std::uint8_t> rgb;
    rgb.reserve(3 * size.width * size.height);
    for (size_t y = size.height; y-- > 0;)
        for (size_t x = 0; x < size.width; ++x) {
            std::uint8_t const* const texel = &rgba[4 * (y * size.width + x)];
            rgb.insert(rgb.end(), texel, texel + 3);
        }
    return rgb;
}
