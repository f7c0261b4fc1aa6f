// System calls that fail: loaded before the C library, it counts the calls that write files, or name them, and makes
// chosen ones fail, as the environment says. tests/apps/velmora/Faults.h makes that environment.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

char const* environment(char const* name) {
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

struct Plan {
    char const* calls = environment("VELMORA_FAULT_CALLS");     // names of the counted calls; empty: all
    char const* missing = environment("VELMORA_FAULT_MISSING"); // names of calls that this system lacks
    char const* folder = environment("VELMORA_FAULT_FOLDER");   // counts only calls on files in it; empty: on all
    long first = std::atol(environment("VELMORA_FAULT_FIRST")); // first failing call, from 1; 0: none
    long last = std::atol(environment("VELMORA_FAULT_LAST"));   // last failing call
    int reason = std::atoi(environment("VELMORA_FAULT_ERRNO")); // of the failure; 0: the process is killed, or waits
    char const* wait = environment("VELMORA_FAULT_WAIT");       // file that the process waits for
    char const* counted = environment("VELMORA_FAULT_COUNTED"); // file that receives the number of calls
};

Plan const& plan() {
    static Plan const read;
    return read;
}

std::atomic<long> count{0};

// Names are separated by blanks.
bool isIn(char const* names, char const* name) {
    size_t const length = std::strlen(name);
    for (char const* place = std::strstr(names, name); place != nullptr; place = std::strstr(place + length, name))
        if ((place == names || place[-1] == ' ') && (place[length] == '\0' || place[length] == ' ')) return true;
    return false;
}

bool liesInFolder(char const* path) {
    size_t const length = std::strlen(plan().folder);
    return path != nullptr && std::strncmp(path, plan().folder, length) == 0;
}

bool liesInFolder(int descriptor) {
    std::array<char, 64> link{};
    std::array<char, 4096> path{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    return readlink(link.data(), path.data(), path.size() - 1) > 0 && liesInFolder(path.data());
}

// By raw system calls, which are not counted.
void waitForFile() {
    std::array<char, 4096> reached{};
    std::snprintf(reached.data(), reached.size(), "%s.reached", plan().wait);
    syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, reached.data(), O_WRONLY | O_CREAT, 0600));
    constexpr useconds_t kPause = 2000;
    while (access(plan().wait, F_OK) != 0)
        usleep(kPause);
}

// A full disk still permits opening files, changing their permissions and removing them.
enum class Room { Needed, NotNeeded };

// True if the call is to fail; errno says why.
template <class File>
bool fails(char const* call, File file, Room room) {
    Plan const& chosen = plan();
    if (isIn(chosen.missing, call)) {
        errno = EINVAL;
        return true;
    }
    if (*chosen.calls != '\0' && !isIn(chosen.calls, call)) return false;
    if (*chosen.folder != '\0' && !liesInFolder(file)) return false;
    if (chosen.reason == ENOSPC && room == Room::NotNeeded) return false;
    long const number = ++count;
    if (chosen.first == 0 || number < chosen.first || number > chosen.last) return false;
    if (*chosen.wait != '\0') {
        waitForFile();
        return false;
    }
    if (chosen.reason == 0) kill(getpid(), SIGKILL);
    errno = chosen.reason;
    return true;
}

Room roomFor(int flags) {
    return (flags & O_CREAT) != 0 ? Room::Needed : Room::NotNeeded;
}

template <class Function>
Function next(Function, char const* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

__attribute__((destructor)) void report() {
    if (*plan().counted == '\0') return;
    std::array<char, 32> text{};
    int const length = std::snprintf(text.data(), text.size(), "%ld", count.load());
    auto const file = syscall(SYS_openat, AT_FDCWD, plan().counted, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    syscall(SYS_write, file, text.data(), length);
    syscall(SYS_close, file);
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

int open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = modeOf(flags, arguments);
    va_end(arguments);
    return fails("open", path, roomFor(flags)) ? -1 : next(&open, "open")(path, flags, mode);
}

int open64(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = modeOf(flags, arguments);
    va_end(arguments);
    return fails("open", path, roomFor(flags)) ? -1 : next(&open64, "open64")(path, flags, mode);
}

int openat(int folder, char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = modeOf(flags, arguments);
    va_end(arguments);
    return fails("openat", path, roomFor(flags)) ? -1 : next(&openat, "openat")(folder, path, flags, mode);
}

int fcntl(int file, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fails("fcntl", file, Room::NotNeeded) ? -1 : next(&fcntl, "fcntl")(file, command, argument);
}

int fcntl64(int file, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fails("fcntl", file, Room::NotNeeded) ? -1 : next(&fcntl64, "fcntl64")(file, command, argument);
}

ssize_t write(int file, void const* bytes, size_t size) {
    return fails("write", file, Room::Needed) ? -1 : next(&write, "write")(file, bytes, size);
}

ssize_t pwrite(int file, void const* bytes, size_t size, off_t at) {
    return fails("pwrite", file, Room::Needed) ? -1 : next(&pwrite, "pwrite")(file, bytes, size, at);
}

ssize_t pwrite64(int file, void const* bytes, size_t size, off64_t at) {
    return fails("pwrite", file, Room::Needed) ? -1 : next(&pwrite64, "pwrite64")(file, bytes, size, at);
}

int ftruncate(int file, off_t size) noexcept {
    return fails("ftruncate", file, Room::Needed) ? -1 : next(&ftruncate, "ftruncate")(file, size);
}

int ftruncate64(int file, off64_t size) noexcept {
    return fails("ftruncate", file, Room::Needed) ? -1 : next(&ftruncate64, "ftruncate64")(file, size);
}

int fsync(int file) {
    return fails("fsync", file, Room::Needed) ? -1 : next(&fsync, "fsync")(file);
}

int fdatasync(int file) {
    return fails("fdatasync", file, Room::Needed) ? -1 : next(&fdatasync, "fdatasync")(file);
}

int fchmod(int file, mode_t mode) noexcept {
    return fails("fchmod", file, Room::NotNeeded) ? -1 : next(&fchmod, "fchmod")(file, mode);
}

int mkdir(char const* path, mode_t mode) noexcept {
    return fails("mkdir", path, Room::Needed) ? -1 : next(&mkdir, "mkdir")(path, mode);
}

int rename(char const* from, char const* to) noexcept {
    return fails("rename", from, Room::NotNeeded) ? -1 : next(&rename, "rename")(from, to);
}

int renameat2(int fromFolder, char const* from, int toFolder, char const* to, unsigned flags) noexcept {
    return fails("renameat2", from, Room::NotNeeded)
               ? -1
               : next(&renameat2, "renameat2")(fromFolder, from, toFolder, to, flags);
}

int link(char const* from, char const* to) noexcept {
    return fails("link", from, Room::Needed) ? -1 : next(&link, "link")(from, to);
}

int unlink(char const* path) noexcept {
    return fails("unlink", path, Room::NotNeeded) ? -1 : next(&unlink, "unlink")(path);
}

void* mmap(void* address, size_t size, int protection, int flags, int file, off_t at) noexcept {
    return file >= 0 && fails("mmap", file, Room::NotNeeded)
               ? MAP_FAILED
               : next(&mmap, "mmap")(address, size, protection, flags, file, at);
}

void* mmap64(void* address, size_t size, int protection, int flags, int file, off64_t at) noexcept {
    return file >= 0 && fails("mmap", file, Room::NotNeeded)
               ? MAP_FAILED
               : next(&mmap64, "mmap64")(address, size, protection, flags, file, at);
}

} // extern "C"
#pragma GCC visibility pop
