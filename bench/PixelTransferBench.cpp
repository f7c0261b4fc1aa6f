// setTile and getPixels beside glTexImage2D and glReadPixels.
//
// setTile replaces eight permanent tiles in turn. The raw side uploads the same pixels into the same eight textures:
// bind, unpack alignment, glTexImage2D. It neither sets the sampling again nor checks anything.
//
// getPixels reads a whole target into a buffer that is kept. The raw side binds the same framebuffer, sets the pack
// alignment and reads into a kept buffer of its own. getPixelsVector is the form that returns a new vector; there the
// raw side makes one too. OpenGL ES reads an RGB target as RGBA; the raw side then drops the alpha bytes with a plain
// loop, as any host that needs RGB has to, reading into a second buffer that it keeps. Nothing is drawn, so everything
// happens on the calling thread. getPixels/.../rgbNoDrop leaves out the loop on the raw side: the difference is the
// cost of the conversion.
#include "bench/Benchmarks.h"
#include "bench/GlBenchContext.h"
#include "bench/RawGl.h"
#include "gles3renderbackend/resources/Gles3Target.h"

#include <stdexcept>

namespace {

using Bytes = std::vector<unsigned char>;

struct Layout {
    char const* name;
    size_t bytes;
    GLenum glFormat;
    RenderBackend::ImageFormatType format;
};

constexpr Layout kRgba = {"rgba", 4, GL_RGBA, RenderBackend::RGBA32};
constexpr Layout kRgb = {"rgb", 3, GL_RGB, RenderBackend::RGB24};

Bytes somePixels(size_t count) {
    Bytes pixels(count);
    for (size_t i = 0; i < count; ++i)
        pixels[i] = static_cast<unsigned char>(i * 7 + i / 1021);
    return pixels;
}

class Upload {
public:
    Upload(GlBenchContext const& context, Layout const& layout, size_t extent)
        : backend_(context),
          layout_(layout),
          size_({extent, extent, layout.bytes}),
          pixels_(somePixels(extent * extent * layout.bytes)) {
        for (unsigned& texture : textures_) {
            replaceOurs();
            texture = rawGl::currentTexture();
        }
        replaceRaw();
        rawGl::requireNoError();
    }

    void replaceOurs() { backend_.instance->setTile(nextTile(), pixels_, size_, 0); }

    void replaceRaw() {
        glBindTexture(GL_TEXTURE_2D, textures_[nextTile()]);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(layout_.glFormat), static_cast<GLsizei>(size_[0]),
                     static_cast<GLsizei>(size_[1]), 0, layout_.glFormat, GL_UNSIGNED_BYTE, pixels_.data());
    }

    size_t bytes() const { return pixels_.size(); }

private:
    size_t nextTile() { return next_++ % textures_.size(); }

    BenchBackend backend_;
    Layout layout_;
    std::vector<size_t> const size_;
    Bytes const pixels_;
    std::array<GLuint, 8> textures_{};
    size_t next_ = 0;
};

class Download {
public:
    Download(GlBenchContext const& context, Layout const& layout, size_t extent)
        : backend_(context),
          layout_(layout),
          extent_(extent),
          rect_({0, extent, 0, extent}),
          pixels_(extent * extent * layout.bytes),
          rgba_(extent * extent * 4) {
        target_ = backend_.instance->createTarget({extent, extent}, layout.bytes * 8, false, RenderBackend::NEAREST,
                                                  layout.format);
        fillTarget();
        framebuffer_ = backend_.instance->target(target_).framebuffer();
        requireSamePixels(context);
    }

    void readOurs() { backend_.instance->getPixels(pixels_.data(), pixels_.size(), target_, rect_); }
    void readRaw() { readRawInto(pixels_); }

    void readOursAsVector() { benchmark::DoNotOptimize(backend_.instance->getPixels(target_, rect_).data()); }
    void readRawAsVector() {
        Bytes pixels(pixels_.size());
        readRawInto(pixels);
        benchmark::DoNotOptimize(pixels.data());
    }

    void readRawWithoutDrop() { readRgba(rgba_); }

    size_t bytes() const { return pixels_.size(); }

private:
    void readRgba(Bytes& rgba) const {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glReadPixels(0, 0, static_cast<GLsizei>(extent_), static_cast<GLsizei>(extent_), GL_RGBA, GL_UNSIGNED_BYTE,
                     rgba.data());
    }

    void readRawInto(Bytes& pixels) {
        if (layout_.bytes == 4) {
            readRgba(pixels);
            return;
        }
        readRgba(rgba_);
        unsigned char const* from = rgba_.data();
        unsigned char* to = pixels.data();
        for (unsigned char const* const end = from + rgba_.size(); from != end; from += 4, to += 3) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
        }
    }

    void fillTarget() {
        glBindTexture(GL_TEXTURE_2D, backend_.instance->target(target_).texture());
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(extent_), static_cast<GLsizei>(extent_),
                        layout_.glFormat, GL_UNSIGNED_BYTE, somePixels(pixels_.size()).data());
    }

    void requireSamePixels(GlBenchContext const& context) {
        readOurs();
        Bytes const ours = pixels_;
        readRaw();
        rawGl::requireNoError();
        if (context.nullDriver()) return;
        if (ours != pixels_ || ours != backend_.instance->getPixels(target_, rect_) || ours != somePixels(ours.size()))
            throw std::runtime_error("getPixels and glReadPixels do not both deliver the target's pixels");
    }

    BenchBackend backend_;
    Layout layout_;
    size_t extent_;
    std::vector<size_t> const rect_;
    Bytes pixels_;
    Bytes rgba_;
    size_t target_ = 0;
    GLuint framebuffer_ = 0;
};

template <class Scene>
void add(GlBenchContext const& context, std::string const& what, std::string const& who, std::string const& caseName,
         Layout const& layout, size_t extent, void (Scene::*step)()) {
    std::string const name = what + "/" + who + "/" + caseName + "/" + std::to_string(extent);
    registerGl(Clock::Cpu, name, [&context, layout, extent, step](benchmark::State& state) {
        Scene scene(context, layout, extent);
        for (auto _ : state)
            (scene.*step)();
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(scene.bytes()));
    });
}

} // namespace

void registerPixelTransfer(GlBenchContext const& context) {
    for (size_t const extent : {size_t{256}, size_t{512}, size_t{1024}}) {
        for (Layout const& layout : {kRgba, kRgb}) {
            add(context, "setTile", "ours", layout.name, layout, extent, &Upload::replaceOurs);
            add(context, "setTile", "raw", layout.name, layout, extent, &Upload::replaceRaw);
            add(context, "getPixels", "ours", layout.name, layout, extent, &Download::readOurs);
            add(context, "getPixels", "raw", layout.name, layout, extent, &Download::readRaw);
            add(context, "getPixelsVector", "ours", layout.name, layout, extent, &Download::readOursAsVector);
            add(context, "getPixelsVector", "raw", layout.name, layout, extent, &Download::readRawAsVector);
        }
        add(context, "getPixels", "ours", "rgbNoDrop", kRgb, extent, &Download::readOurs);
        add(context, "getPixels", "raw", "rgbNoDrop", kRgb, extent, &Download::readRawWithoutDrop);
    }
}
