#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "host/gl/EglContext.h"
#include "renderbackend/Filter.h"
#include "renderbackend/RenderContext.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The OpenGL ES 3 context of the whole run.
class GlBenchContext final : public RenderContext {
public:
    /// Throws std::runtime_error where there is no such context.
    GlBenchContext();

    size_t width() const override { return egl_.width(); }
    size_t height() const override { return egl_.height(); }

    /// Renderer and version, as GL names them.
    std::string description() const;
    /// Mesa with GALLIUM_NOOP=1: calls run through the whole GL library and end before a pixel is drawn. What remains
    /// is the cost of the calls.
    bool nullDriver() const;
    /// llvmpipe: pixels are drawn by threads of this process.
    bool drawsOnProcessor() const;
    /// Waits until everything is drawn, so that a measurement pays for its own pixels. Nothing to wait for on the null
    /// driver.
    void finish() const;

private:
    EglContext egl_;
    bool nullDriver_;
};

/// A backend with one instance. The instance is declared last, so it goes first.
struct BenchBackend {
    explicit BenchBackend(GlBenchContext const& context);

    Gles3RenderBackend backend;
    std::shared_ptr<Gles3RenderBackendInstance> instance;
};

/// What two ways of drawing left in a framebuffer that was cleared before each.
struct TwoPictures {
    std::vector<std::uint8_t> ours;
    std::vector<std::uint8_t> raw;
};

/// A comparison with calls that do less would be worth nothing: throws std::runtime_error where the raw calls give
/// another picture than the operation, or it gives none. The null driver draws nothing to compare.
void requireSamePicture(GlBenchContext const& context, std::string const& operation, TwoPictures const& pictures);

/// A copying filter on 8-bit pixels, instantiated.
Filter blitFilter(RenderBackendInstance& instance);
