// System calls that fail: loaded before the C library, it counts the calls on files and makes chosen ones fail, as the
// environment says. tests/apps/velmora/Faults.h makes that environment.
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
#include <dirent.h>
#include <sys/uio.h>

namespace {

char const* environment(char const* name) {
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

struct Plan {
    char const* calls = environment("VELMORA_FAULT_CALLS");      // names of the counted calls; empty: all but Reading
    char const* missing = environment("VELMORA_FAULT_MISSING");  // names of calls that this system lacks
    char const* folder = environment("VELMORA_FAULT_FOLDER");    // counts only calls on files in it; empty: on all
    long first = std::atol(environment("VELMORA_FAULT_FIRST"));  // first failing call, from 1; 0: none
    long last = std::atol(environment("VELMORA_FAULT_LAST"));    // last failing call
    int reason = std::atoi(environment("VELMORA_FAULT_ERRNO"));  // of the failure; 0: the process is killed, or waits
    bool shortens = *environment("VELMORA_FAULT_SHORT") != '\0'; // instead, half of the bytes are read or written
    char const* wait = environment("VELMORA_FAULT_WAIT");        // file that the process waits for
    char const* counted = environment("VELMORA_FAULT_COUNTED");  // file that receives a line per call, see note()
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

// What gcov has counted, which is no file of the program's.
bool isOfGcov(char const* path) {
    constexpr char const* kEnding = ".gcda";
    size_t const length = path == nullptr ? 0 : std::strlen(path);
    return length > std::strlen(kEnding) && std::strcmp(path + length - std::strlen(kEnding), kEnding) == 0;
}

bool counts(char const* path) {
    return !isOfGcov(path) && (*plan().folder == '\0' || liesInFolder(path));
}

bool counts(int descriptor) {
    std::array<char, 64> link{};
    std::array<char, 4096> path{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    bool const known = readlink(link.data(), path.data(), path.size() - 1) > 0;
    return known ? counts(path.data()) : *plan().folder == '\0';
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

// Lines: "read short" for a call that may give fewer bytes than asked for, "open room" for one that a full disk fails.
void note(char const* call, bool room, bool shortens) {
    if (*plan().counted == '\0') return;
    std::array<char, 64> line{};
    int const length =
        std::snprintf(line.data(), line.size(), "%s%s%s\n", call, room ? " room" : "", shortens ? " short" : "");
    auto const file = syscall(SYS_openat, AT_FDCWD, plan().counted, O_WRONLY | O_CREAT | O_APPEND, 0600);
    syscall(SYS_write, file, line.data(), length);
    syscall(SYS_close, file);
}

// A full disk still permits opening files, changing their permissions and removing them. Reading: the call neither
// writes nor names files.
enum class Room { Needed, NotNeeded, Reading };

// True if the call is to fail; errno says why. `bytes`: of a call that may read or write fewer than it was asked to.
template <class File>
bool fails(char const* call, File file, Room room, size_t* bytes = nullptr) {
    Plan const& chosen = plan();
    if (isIn(chosen.missing, call)) {
        errno = EINVAL;
        return true;
    }
    bool const chooses = *chosen.calls == '\0' ? room != Room::Reading : isIn(chosen.calls, call);
    if (!chooses || !counts(file)) return false;
    if (chosen.reason == ENOSPC && room != Room::Needed) return false;
    bool const shortens = bytes != nullptr && *bytes > 1;
    if (chosen.shortens && !shortens) return false;
    long const number = ++count;
    note(call, room == Room::Needed, shortens);
    if (chosen.first == 0 || number < chosen.first || number > chosen.last) return false;
    if (*chosen.wait != '\0') {
        waitForFile();
        return false;
    }
    if (chosen.shortens) {
        *bytes /= 2;
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

} // namespace

// One function for each name under which such a call is imported. The C library calls its own past these: fopen and
// opendir are calls of their own.
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

int openat64(int folder, char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = modeOf(flags, arguments);
    va_end(arguments);
    return fails("openat", path, roomFor(flags)) ? -1 : next(&openat64, "openat64")(folder, path, flags, mode);
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

FILE* fopen(char const* path, char const* mode) {
    return fails("fopen", path, Room::Reading) ? nullptr : next(&fopen, "fopen")(path, mode);
}

FILE* fopen64(char const* path, char const* mode) {
    return fails("fopen", path, Room::Reading) ? nullptr : next(&fopen64, "fopen64")(path, mode);
}

DIR* opendir(char const* path) {
    return fails("opendir", path, Room::Reading) ? nullptr : next(&opendir, "opendir")(path);
}

int stat(char const* path, struct stat* status) noexcept {
    return fails("stat", path, Room::Reading) ? -1 : next(&stat, "stat")(path, status);
}

int stat64(char const* path, struct stat64* status) noexcept {
    return fails("stat", path, Room::Reading) ? -1 : next(&stat64, "stat64")(path, status);
}

int lstat(char const* path, struct stat* status) noexcept {
    return fails("lstat", path, Room::Reading) ? -1 : next(&lstat, "lstat")(path, status);
}

int lstat64(char const* path, struct stat64* status) noexcept {
    return fails("lstat", path, Room::Reading) ? -1 : next(&lstat64, "lstat64")(path, status);
}

int fstat(int file, struct stat* status) noexcept {
    return fails("fstat", file, Room::Reading) ? -1 : next(&fstat, "fstat")(file, status);
}

int fstat64(int file, struct stat64* status) noexcept {
    return fails("fstat", file, Room::Reading) ? -1 : next(&fstat64, "fstat64")(file, status);
}

ssize_t read(int file, void* bytes, size_t size) {
    return fails("read", file, Room::Reading, &size) ? -1 : next(&read, "read")(file, bytes, size);
}

ssize_t pread(int file, void* bytes, size_t size, off_t at) {
    return fails("pread", file, Room::Reading, &size) ? -1 : next(&pread, "pread")(file, bytes, size, at);
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t at) {
    return fails("pread", file, Room::Reading, &size) ? -1 : next(&pread64, "pread64")(file, bytes, size, at);
}

ssize_t write(int file, void const* bytes, size_t size) {
    return fails("write", file, Room::Needed, &size) ? -1 : next(&write, "write")(file, bytes, size);
}

ssize_t writev(int file, iovec const* parts, int number) {
    return fails("write", file, Room::Needed) ? -1 : next(&writev, "writev")(file, parts, number);
}

ssize_t pwrite(int file, void const* bytes, size_t size, off_t at) {
    return fails("pwrite", file, Room::Needed, &size) ? -1 : next(&pwrite, "pwrite")(file, bytes, size, at);
}

ssize_t pwrite64(int file, void const* bytes, size_t size, off64_t at) {
    return fails("pwrite", file, Room::Needed, &size) ? -1 : next(&pwrite64, "pwrite64")(file, bytes, size, at);
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

int unlinkat(int folder, char const* path, int flags) noexcept {
    return fails("unlink", path, Room::NotNeeded) ? -1 : next(&unlinkat, "unlinkat")(folder, path, flags);
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
