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

/// The OpenGL ES 3 context of all benchmarks.
class GlBenchContext final : public RenderContext {
public:
    /// Throws std::runtime_error if there is no such context.
    GlBenchContext();

    size_t width() const override { return egl_.width(); }
    size_t height() const override { return egl_.height(); }

    /// Renderer and version, in GL's words.
    std::string description() const;
    /// Mesa with GALLIUM_NOOP=1: calls run through the whole GL library, but no pixel is drawn. The rest is the cost of
    /// the calls.
    bool nullDriver() const;
    /// llvmpipe: pixels are drawn by threads of this process.
    bool drawsOnProcessor() const;
    /// Waits until everything is drawn, so that a measurement includes its own pixels. Does nothing on the null driver.
    void finish() const;

private:
    EglContext egl_;
    bool nullDriver_;
};

/// A backend with one instance. The instance is declared last, so it is destroyed first.
struct BenchBackend {
    explicit BenchBackend(GlBenchContext const& context);

    Gles3RenderBackend backend;
    std::shared_ptr<Gles3RenderBackendInstance> instance;
};

/// The pictures of two ways of drawing in a framebuffer that was cleared before each.
struct TwoPictures {
    std::vector<std::uint8_t> ours;
    std::vector<std::uint8_t> raw;
};

/// A comparison with calls that do less would be worthless: throws std::runtime_error if the raw calls give another
/// picture than the operation, or if that is empty. The null driver draws nothing to compare.
void requireSamePicture(GlBenchContext const& context, std::string const& operation, TwoPictures const& pictures);

/// A copying filter on 8-bit pixels, instantiated.
Filter blitFilter(RenderBackendInstance& instance);
