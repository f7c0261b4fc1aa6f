// Loads the backend through a plugin with RTLD_LOCAL, as scripting languages and large programs load plugins, and
// catches its exceptions by type.
#include "HostContext.h"

#include "renderbackend/VelmoraException.h"

#include <dlfcn.h>

#include <string>

int main() {
    HostGl const gl;
    if (!gl.current()) return withoutContext();

    void* const plugin = dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (plugin == nullptr) {
        std::fprintf(stderr, "failed: %s\n", dlerror());
        return EXIT_FAILURE;
    }
    Checks checks;
    checks.expect(dlsym(RTLD_DEFAULT, "_ZTI18Gles3RenderBackend") == nullptr, "the backend's symbols stay local");

    HostSurface const surface;
    auto* const pluginCatchesByType =
        reinterpret_cast<bool (*)(RenderContext const&)>(dlsym(plugin, "pluginCatchesByType"));
    checks.expect(pluginCatchesByType(surface), "the plugin catches VelmoraException");

    auto* const clearUnknownTarget =
        reinterpret_cast<void (*)(RenderContext const&)>(dlsym(plugin, "clearUnknownTarget"));
    bool caught = false;
    try {
        clearUnknownTarget(surface);
    } catch (VelmoraException const& exception) {
        caught = std::string(exception.what()).find("#Name:Target does not exist#Location:") == 0;
    } catch (...) {
        checks.expect(false, "the exception has its type outside the plugin");
    }
    checks.expect(caught, "clearing an unknown target throws VelmoraException");
    // The plugin is not unloaded: leak and race reports at exit name its functions.
    return checks.exitCode();
}
