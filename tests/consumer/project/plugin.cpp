// A plugin on top of the backend. The program that loads it shares only librenderbackend with it.
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/VelmoraException.h"

/// Throws out of libgles3renderbackend, through this plugin, into the program.
extern "C" __attribute__((visibility("default"))) void clearUnknownTarget(RenderContext const& surface) {
    Gles3RenderBackend backend;
    backend.createInstance(surface)->clear(77, {0, 0, 0});
}

/// Whether the plugin itself can catch the exception by its type.
extern "C" __attribute__((visibility("default"))) bool pluginCatchesByType(RenderContext const& surface) {
    try {
        clearUnknownTarget(surface);
    } catch (VelmoraException const&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}
