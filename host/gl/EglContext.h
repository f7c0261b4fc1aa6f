#pragma once

#include <cstddef>
#include <memory>

/// An OpenGL ES 3 context without a window. Framebuffer 0 is a pbuffer of the given size in pixels.
///
/// Displays are tried in this order: ANGLE (Vulkan, on SwiftShader if ANGLE offers it), Mesa's surfaceless platform,
/// the first device, the default display. The first that initialises is taken, so that the same code runs with whatever
/// libEGL is loaded.
class EglContext {
public:
    /// Makes the context current on the calling thread. Throws std::runtime_error that names the EGL step which failed.
    explicit EglContext(size_t width = 16, size_t height = 16);
    ~EglContext();

    EglContext(EglContext const&) = delete;
    EglContext& operator=(EglContext const&) = delete;

    /// Makes the context current on the calling thread. Throws std::runtime_error, for instance while another thread
    /// holds it.
    void makeCurrent();

    size_t width() const;
    size_t height() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};
