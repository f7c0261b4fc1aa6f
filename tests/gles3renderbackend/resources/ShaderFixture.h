#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/RenderContext.h"

#include <cstddef>
#include <memory>
#include <vector>

/// A host's surface of a size that tests may change.
struct TestSurface : RenderContext {
    size_t surfaceWidth = 16;
    size_t surfaceHeight = 16;

    size_t width() const override { return surfaceWidth; }
    size_t height() const override { return surfaceHeight; }
};

/// An instance with its targets, for tests of shaders that draw into them.
struct TestInstance {
    TestSurface surface;
    Gles3RenderBackend backend;
    std::shared_ptr<Gles3RenderBackendInstance> instance =
        std::dynamic_pointer_cast<Gles3RenderBackendInstance>(backend.createInstance(surface));

    Gles3RenderBackendInstance& operator*() const { return *instance; }
    Gles3RenderBackendInstance* operator->() const { return instance.get(); }

    /// An RGBA32 target of logical pixels that take `bits` bits each.
    size_t makeTarget(size_t width, size_t height, size_t bits = 32,
                      RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const {
        return instance->createTarget({width, height}, bits, false, filtering, RenderBackend::RGBA32);
    }
};

/// A filter description with borders (left, right, top, bottom) and nothing else of its own.
inline Filter filterWithBorders(size_t left, size_t right, size_t top, size_t bottom) {
    return {"test", left, right, top, bottom, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST};
}

inline Filter plainFilter() {
    return filterWithBorders(0, 0, 0, 0);
}

/// The arguments of one draw.
struct DrawCall {
    std::vector<FilterSource> sources;
    size_t inputW = 8;
    size_t inputH = 4;
    size_t destination = 0;
    std::vector<size_t> clip = {0, 0, 0, 0}; // left, right, top, bottom
    std::vector<size_t> offset = {0, 0};
};
