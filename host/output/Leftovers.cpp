#include "host/output/Leftovers.h"

#include "host/Fnv1a.h"
#include "host/output/FileLock.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Marks temporary files of this program alone: rsync names incoming files ".NAME.XXXXXX".
constexpr auto kMark = ".velmora-";
constexpr size_t kDigits = 8;

std::string hex(std::uint64_t number, int digits) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%0*" PRIx64, digits, number);
    return text.data();
}

// The prefix of the names of a target's temporary files.
std::string prefixOf(fs::path const& target) {
    constexpr size_t kMaxName = 200; // below the 255 bytes that file systems allow
    std::string const name = target.filename().string();
    bool const fits = name.size() <= kMaxName;
    return "." + (fits ? name : name.substr(0, kMaxName - 17) + "-" + hex(fnv1a(name), 16)) + kMark;
}

bool isTemporary(std::string const& name) {
    size_t const mark = name.rfind(kMark);
    if (name.front() != '.' || mark == std::string::npos) return false;
    std::string const end = name.substr(mark + std::string(kMark).size());
    return end.size() == kDigits && end.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// A file that can be locked has no writer any more. It is locked while it is removed: a writer that has only just
// created it waits for the lock.
void removeLeftover(fs::path const& path) {
    int const descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return;
    struct stat status {};
    bool const isFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (isFile && filelock::take(descriptor, filelock::Kind::Shared)) unlink(path.c_str());
    close(descriptor);
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// Not by std::filesystem: its non-throwing iterator ends the program if memory runs out.
void removeIn(fs::path const& folder, std::string const& prefix) {
    std::unique_ptr<DIR, CloseFolder> const entries(opendir(folder.c_str()));
    if (!entries) return;
    while (dirent const* const entry = readdir(entries.get())) {
        std::string const name = entry->d_name;
        if (isTemporary(name) && name.rfind(prefix, 0) == 0) removeLeftover(folder / name);
    }
}

} // namespace

fs::path leftovers::temporaryName(fs::path const& target) {
    return target.parent_path() / (prefixOf(target) + hex(std::random_device()(), kDigits));
}

bool leftovers::hold(int descriptor) {
    if (!filelock::await(descriptor, filelock::Kind::Exclusive) && !filelock::isMissing(errno))
        throw std::system_error(errno, std::generic_category());
    struct stat status {};
    if (fstat(descriptor, &status) != 0) throw std::system_error(errno, std::generic_category());
    return status.st_nlink > 0;
}

void leftovers::removeOf(fs::path const& target) {
    removeIn(target.has_parent_path() ? target.parent_path() : fs::path("."), prefixOf(target));
}

void leftovers::removeAll(fs::path const& folder) {
    removeIn(folder, "");
}
