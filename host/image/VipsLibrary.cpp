#include "host/image/VipsLibrary.h"

#include "host/HostError.h"

#include <vips/vips8>

#include <stdexcept>

namespace {

// Starts libvips, which lives as long as the process: its types cannot be registered a second time.
class Library {
public:
    Library() {
        if (VIPS_INIT("velmora") != 0)
            throw std::runtime_error("libvips does not start: " + onOneLine(vips_error_buffer()));
        // No operation cache: a file that changes between two readers must be read anew.
        vips_cache_set_max(0);
        vips_operation_block_set("VipsForeignLoad", TRUE);
        for (vipslibrary::Loader const& loader : vipslibrary::kLoaders)
            vips_operation_block_set(loader.className, FALSE);
        // Warnings would be additional lines beside our own message.
        constexpr auto kNotErrors = static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE |
                                                                G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG);
        g_log_set_handler(
            "VIPS", kNotErrors, [](gchar const*, GLogLevelFlags, gchar const*, gpointer) {}, nullptr);
    }
    Library(Library const&) = delete;
    Library& operator=(Library const&) = delete;
    ~Library() { vips_shutdown(); }
};

} // namespace

void vipslibrary::start() {
    static Library const library;
}
