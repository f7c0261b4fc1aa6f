#include "apps/velmora/shared/ImportCache.h"

#include "host/Failures.h"
#include "host/Fnv1a.h"
#include "host/HostError.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr auto kAdvice = "; name another in XDG_CACHE_HOME, or import the picture with velmora import";

HostError unusable(fs::path const& folder, std::string const& reason) {
    return HostError(HostError::Kind::UnwritableOutput,
                     "cannot keep stores in the folder '" + folder.string() + "': " + reason + kAdvice);
}

// Creates the folder and its parents. Returns 0 or a value of errno.
int make(fs::path const& folder) {
    if (mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST) return 0;
    if (errno != ENOENT || !folder.has_relative_path()) return errno;
    if (int const reason = make(folder.parent_path()); reason != 0) return reason;
    return mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST ? 0 : errno;
}

} // namespace

void importcache::makePrivate(fs::path const& folder) {
    struct stat status {};
    int reason = make(folder);
    if (reason == 0 && lstat(folder.c_str(), &status) != 0) reason = errno;
    if (reason != 0) throw unusable(folder, std::generic_category().message(reason));
    if (!S_ISDIR(status.st_mode)) throw unusable(folder, "it is no folder, or a link to one");
    if (status.st_uid != geteuid()) throw unusable(folder, "it belongs to another user");
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw unusable(folder, "others may write to it; take that from them, chmod go-w");
    // The store's names tell which pictures the user has opened. Some file systems have no permissions.
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) chmod(folder.c_str(), S_IRWXU);
}

fs::path importcache::folder(std::string const& cacheHome, std::string const& home) {
    // The standard says that relative paths there are to be ignored.
    if (fs::path(cacheHome).is_absolute()) return fs::path(cacheHome) / "velmora";
    if (fs::path(home).is_absolute()) return fs::path(home) / ".cache" / "velmora";
    return {};
}

std::string importcache::storeName(std::string const& stem, std::string const& identity) {
    std::array<char, 32> digits{};
    std::snprintf(digits.data(), digits.size(), "%016" PRIx64, fnv1a(identity));
    return stem + "-" + digits.data() + ".vlm";
}

std::string importcache::storeName(fs::path const& picture, ImageSelection const& selection) {
    std::error_code failed;
    fs::path const absolute = fs::canonical(picture, failed);
    auto const size = failed ? 0 : fs::file_size(absolute, failed);
    auto const time = failed ? fs::file_time_type() : fs::last_write_time(absolute, failed);
    if (failed) throw failures::cannotOpen(picture.string(), failures::reasonOf(failed.value()));
    // Unambiguous: a path holds no byte 0.
    std::string const separator(1, '\0');
    // File systems allow names of 255 bytes.
    constexpr size_t kMaxStem = 200;
    return storeName(absolute.stem().string().substr(0, kMaxStem),
                     absolute.string() + separator + std::to_string(size) + separator +
                         std::to_string(time.time_since_epoch().count()) + separator + selection.identity());
}
