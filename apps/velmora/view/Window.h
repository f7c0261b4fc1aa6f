#pragma once

#include "host/Geometry.h"
#include "renderbackend/RenderContext.h"

#include <SDL.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A window with an OpenGL ES 3 context, current on the thread that made it. That thread only.
///
/// Sizes are pixels of the drawing surface. On screens of high density a unit of the window system, in which the
/// positions of events come, is several pixels.
class Window final : public RenderContext {
public:
    /// size: in units of the window system. Throws HostError: no display, no GL context.
    Window(std::string const& title, Size const& size);
    ~Window() override;
    Window(Window const&) = delete;
    Window& operator=(Window const&) = delete;

    size_t width() const override { return pixels().width; }
    size_t height() const override { return pixels().height; }
    /// Empty while the window is minimised.
    Size pixels() const;
    double pixelsPerUnit() const;

    /// To be told of every event, to know whether it is minimised.
    void note(SDL_Event const& event);
    void resize(Size const& size);
    void setTitle(std::string const& title);
    void hide();
    /// Shows what has been drawn.
    void swap();
    /// What has been drawn since swap(): RGB, rows from the top.
    std::vector<std::uint8_t> readPixels() const;

private:
    struct Closer {
        void operator()(SDL_Window* window) const { SDL_DestroyWindow(window); }
    };
    std::unique_ptr<SDL_Window, Closer> window_;
    SDL_GLContext context_ = nullptr;
    bool minimised_ = false;
};
