#pragma once

#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/RecordingGlTest.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// One instance of an RGBA32 backend on a surface of 640 x 480, over the recording GL.
class BackendRecordingTest : public RecordingGlTest {
protected:
    /// The first living object of a kind, in the order of creation, that a test looks for.
    template <class Wanted>
    GLuint firstLiving(std::string const& kind, Wanted const& wanted) const {
        for (auto const& object : gl.living()) {
            if (object.rfind(kind + " ", 0) != 0) continue;
            auto const name = static_cast<GLuint>(std::stoul(object.substr(kind.size() + 1)));
            if (wanted(name)) return name;
        }
        throw std::runtime_error("no such " + kind);
    }

    /// The buffers that every tile is drawn with: made before those of any filter.
    GLuint sharedBuffer(size_t bytes) const {
        return firstLiving("buffer", [&](GLuint name) { return gl.buffer(name).bytes.size() == bytes; });
    }
    GLuint sharedIndexBuffer() const { return sharedBuffer(12); }
    GLuint sharedVertexBuffer() const { return sharedBuffer(64); }
    GLuint transparentBlack() const {
        return firstLiving("texture", [&](GLuint name) {
            auto const& levels = gl.texture(name).levels;
            return levels.count(0) != 0 && levels.at(0).pixels == backendtest::Bytes{0, 0, 0, 0};
        });
    }

    Gles3RenderBackendInstance& gles() const { return backendtest::gles3(instance); }

    /// A target of 8-bit RGBA pixels.
    size_t rgbaTarget(size_t width, size_t height) const {
        return instance->createTarget({width, height}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    }

    bool targetExists(size_t target) const {
        try {
            instance->clear(target, {0, 0, 0});
        } catch (VelmoraException const&) {
            return false;
        }
        return true;
    }

    backendtest::Surface surface{640, 480};
    Gles3RenderBackend backend{RenderBackend::RGBA32, backendtest::kDefaultBudget};
    std::shared_ptr<RenderBackendInstance> instance = backend.createInstance(surface);
};
