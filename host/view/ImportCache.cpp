#include "host/view/ImportCache.h"

#include "host/Fnv1a.h"
#include "host/HostError.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <system_error>

namespace fs = std::filesystem;

fs::path importcache::folder(std::string const& cacheHome, std::string const& home) {
    // Relative paths there are to be ignored.
    if (fs::path(cacheHome).is_absolute()) return fs::path(cacheHome) / "velmora";
    if (fs::path(home).is_absolute()) return fs::path(home) / ".cache" / "velmora";
    return fs::temp_directory_path() / "velmora";
}

std::string importcache::storeName(std::string const& stem, std::string const& identity) {
    std::array<char, 32> digits{};
    std::snprintf(digits.data(), digits.size(), "%016" PRIx64, fnv1a(identity));
    return stem + "-" + digits.data() + ".vlm";
}

std::string importcache::storeName(fs::path const& picture) {
    std::error_code failed;
    fs::path const absolute = fs::canonical(picture, failed);
    auto const size = failed ? 0 : fs::file_size(absolute, failed);
    auto const time = failed ? fs::file_time_type() : fs::last_write_time(absolute, failed);
    if (failed)
        throw HostError(HostError::Kind::MissingFile, "cannot open '" + picture.string() + "': " + failed.message());
    // A path holds no byte 0.
    std::string const separator(1, '\0');
    // File systems allow names of 255 bytes.
    constexpr size_t kMaxStem = 200;
    return storeName(absolute.stem().string().substr(0, kMaxStem), absolute.string() + separator +
                                                                       std::to_string(size) + separator +
                                                                       std::to_string(time.time_since_epoch().count()));
}
