// A host that links the two shared libraries and nothing else of ours: draws, reads back, catches exceptions of the
// library.
#include "HostContext.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

void clearedTargetIsReadBack(Checks& checks, RenderBackendInstance& instance) {
    size_t const target = instance.createTarget({4, 3}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    instance.clear(target, {255, 0, 51, 128});

    std::vector<unsigned char> expected;
    for (int texel = 0; texel < 12; ++texel)
        expected.insert(expected.end(), {255, 0, 51, 128});
    checks.expect(instance.getPixels(target, {0, 4, 0, 3}) == expected,
                  "the target holds the colour it was cleared to");
    checks.expect(instance.targetSize(target) == std::vector<size_t>{4, 3}, "the target has the size asked for");
}

void exceptionIsCaughtByType(Checks& checks, RenderBackendInstance& instance) {
    bool caught = false;
    try {
        instance.clear(77, {0, 0, 0});
    } catch (VelmoraException const& exception) {
        caught = formatExceptionMessage(exception).find("Target does not exist") == 0;
    } catch (...) {
        checks.expect(false, "the exception has its type outside the library");
    }
    checks.expect(caught, "clearing an unknown target throws VelmoraException");
}

void secondInstanceIsRefused(Checks& checks, RenderBackend& backend, RenderContext const& surface) {
    bool caught = false;
    try {
        backend.createInstance(surface);
    } catch (VelmoraException const&) {
        caught = true;
    }
    checks.expect(caught, "a second instance throws VelmoraException");
}

} // namespace

int main() {
    HostGl const gl;
    if (!gl.current()) return withoutContext();

    Checks checks;
    HostSurface const surface;
    Gles3RenderBackend backend;
    auto const instance = backend.createInstance(surface);
    checks.expect(instance->targetSize(0) == std::vector<size_t>{640, 480}, "target 0 is the host's surface");
    checks.expect(instance->pixelSize() == 1 && instance->pixelTypeid() == typeid(unsigned char), "a sample is a byte");
    clearedTargetIsReadBack(checks, *instance);
    exceptionIsCaughtByType(checks, *instance);
    secondInstanceIsRefused(checks, backend, surface);
    return checks.exitCode();
}
