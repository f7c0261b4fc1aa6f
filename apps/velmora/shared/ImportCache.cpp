#include "apps/velmora/shared/ImportCache.h"

#include "host/Failures.h"
#include "host/Fnv1a.h"
#include "host/HostError.h"
#include "host/output/FileLock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <numeric>
#include <sys/stat.h>
#include <system_error>
#include <tuple>
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

constexpr auto kEnding = ".vlm";
constexpr size_t kHashDigits = 16;

// As storeName() makes them.
bool isStoreName(std::string const& name) {
    size_t const end = std::string(kEnding).size() + kHashDigits;
    if (name.size() <= end || name.front() == '.' || name.substr(name.size() - end + kHashDigits) != kEnding)
        return false;
    return name[name.size() - end - 1] == '-' &&
           name.substr(name.size() - end, kHashDigits).find_first_not_of("0123456789abcdef") == std::string::npos;
}

// A descriptor that is closed with its last owner.
std::shared_ptr<int const> opened(fs::path const& path, int flags) {
    int const descriptor = open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    return {new int(descriptor), [](int const* held) {
                close(*held);
                delete held;
            }};
}

// Whether it is gone. It is locked while it is removed, so that nobody who is about to use it loses it.
bool removeUnused(fs::path const& store) {
    auto const descriptor = opened(store, O_RDWR);
    if (!descriptor) return false;
    bool const free = filelock::take(*descriptor, filelock::Kind::Exclusive) || filelock::isMissing(errno);
    return free && unlink(store.c_str()) == 0;
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
    return stem + "-" + digits.data() + kEnding;
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

std::shared_ptr<void const> importcache::use(fs::path const& store) {
    auto descriptor = opened(store, O_RDONLY);
    if (!descriptor || !filelock::take(*descriptor, filelock::Kind::Shared)) return nullptr;
    // File systems seldom keep the time of the last access.
    std::array<timespec, 2> const now{{{0, UTIME_NOW}, {0, UTIME_NOW}}};
    futimens(*descriptor, now.data());
    return descriptor;
}

std::vector<importcache::Store> importcache::stores(fs::path const& folder) {
    std::vector<Store> found;
    std::unique_ptr<DIR, int (*)(DIR*)> const entries(opendir(folder.c_str()), closedir);
    while (dirent const* const entry = entries ? readdir(entries.get()) : nullptr) {
        struct stat status {};
        fs::path const path = folder / entry->d_name;
        if (!isStoreName(entry->d_name) || lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        auto const used =
            std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
        found.push_back({path, static_cast<std::uint64_t>(status.st_size),
                         std::chrono::system_clock::time_point(
                             std::chrono::duration_cast<std::chrono::system_clock::duration>(used))});
    }
    std::sort(found.begin(), found.end(),
              [](Store const& a, Store const& b) { return std::tie(a.used, a.path) < std::tie(b.used, b.path); });
    return found;
}

std::vector<importcache::Store> importcache::trim(fs::path const& folder, std::uint64_t bytes) {
    std::vector<Store> const all = stores(folder);
    std::uint64_t left = bytesOf(all);
    std::vector<Store> gone;
    for (Store const& store : all) {
        if (left <= bytes) break;
        if (!removeUnused(store.path)) continue;
        left -= store.bytes;
        gone.push_back(store);
    }
    return gone;
}

std::uint64_t importcache::bytesOf(std::vector<Store> const& stores) {
    return std::accumulate(stores.begin(), stores.end(), std::uint64_t{0},
                           [](std::uint64_t sum, Store const& store) { return sum + store.bytes; });
}
