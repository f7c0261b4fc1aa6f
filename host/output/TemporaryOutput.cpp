#include "host/output/TemporaryOutput.h"

#include "host/output/Leftovers.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

constexpr mode_t kEverybody = 0666;
constexpr mode_t kOwner = 0600;
constexpr mode_t kOwnerReads = 0400;
constexpr mode_t kOthers = 0006;

// The permissions that all sources share. If the output has another group than a source, members of either group count
// as others for one of the two files: group and others then get what both have there.
mode_t permissionsOf(std::vector<std::string> const& sources, gid_t group) {
    mode_t permissions = kEverybody;
    for (std::string const& source : sources) {
        struct stat status {};
        if (stat(source.c_str(), &status) != 0) continue;
        mode_t const both = (status.st_mode >> 3) & status.st_mode & kOthers;
        mode_t const asOthers = (status.st_mode & kOwner) | (both << 3) | both;
        permissions &= status.st_gid == group ? status.st_mode : asOthers;
    }
    return permissions;
}

bool renameFree(char const* from, char const* to) {
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0;
}

bool exchange(char const* one, char const* other) {
    return renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE) == 0;
}

// For file systems that can do nothing else atomically: an empty placeholder, created exclusively, reserves the name.
bool renameOverPlaceholder(char const* from, char const* to) {
    int const placeholder = open(to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwner);
    if (placeholder < 0) return false;
    close(placeholder);
    if (std::rename(from, to) == 0) return true;
    int const reason = errno;
    unlink(to);
    errno = reason;
    return false;
}

} // namespace

TemporaryOutput::TemporaryOutput(OutputFile file) : file_(std::move(file)), target_(file_.target()) {
    requireUsable(file_);
    leftovers::removeOf(target_);
    try {
        create();
    } catch (...) {
        discard();
        throw;
    }
}

TemporaryOutput::~TemporaryOutput() {
    discard();
}

void TemporaryOutput::create() {
    do {
        discard();
        std::string name = leftovers::temporaryName(target_).string();
        // During the writing it has at most its final permissions; the owner has to write to it.
        mode_t const mode = permissionsOf(file_.sources, getegid()) | kOwner;
        descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (descriptor_ < 0 && errno != EEXIST) throw failure(errno);
        if (descriptor_ >= 0) temporary_ = std::move(name); // move: an allocation could fail
    } while (descriptor_ < 0 || !isHeld());
    limitPermissions(kOwner);
}

bool TemporaryOutput::isHeld() const {
    try {
        return leftovers::hold(descriptor_);
    } catch (std::system_error const& error) {
        throw failure(error.code().value());
    }
}

// The name is removed before the lock: nobody then takes the file for a leftover. A failed removal is tried again at
// the end.
void TemporaryOutput::discard() {
    if (temporary_.empty() || unlink(temporary_.c_str()) == 0 || errno == ENOENT) temporary_.clear();
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
}

void TemporaryOutput::limitPermissions(mode_t always) const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) throw failure(errno);
    mode_t const before = status.st_mode & 0777;
    mode_t const wanted = before & (permissionsOf(file_.sources, status.st_gid) | always);
    if (wanted == before || fchmod(descriptor_, wanted) == 0) return;
    // The file is ours, so the file system has no permissions.
    if (errno != EPERM && errno != ENOTSUP) throw failure(errno);
}

void TemporaryOutput::write(void const* bytes, size_t count) {
    auto const* rest = static_cast<char const*>(bytes);
    while (count > 0) {
        ssize_t const written = ::write(descriptor_, rest, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw failure(errno);
        rest += written;
        count -= static_cast<size_t>(written);
    }
}

void TemporaryOutput::finish() {
    requireUsable(file_); // the conditions may have changed since the beginning
    limitPermissions(kOwnerReads);
    // The data must be on the disk before the name is: a power cut may otherwise leave a named, empty file.
    if (fsync(descriptor_) != 0) throw failure(errno);
    if (file_.replace)
        replaceFile();
    else
        takeFreeName();
    discard();
}

// Atomic, so that of two that finish at once the later one finds the name taken. Some file systems can neither rename
// like that nor make links.
void TemporaryOutput::takeFreeName() {
    char const* const from = temporary_.c_str();
    char const* const to = target_.c_str();
    bool done = renameFree(from, to);
    bool const linked = !done && errno != EEXIST && link(from, to) == 0;
    done = done || linked || (errno != EEXIST && renameOverPlaceholder(from, to));
    if (!done) {
        int const reason = errno;
        if (reason == EEXIST) requireUsable(file_);
        throw failure(reason);
    }
    if (!linked) temporary_.clear();
    if (int const reason = syncFolder(); reason != 0) {
        unlink(to);
        throw failure(reason);
    }
}

// The old file keeps the temporary name until the new one has its own for good.
void TemporaryOutput::replaceFile() {
    char const* const from = temporary_.c_str();
    char const* const to = target_.c_str();
    bool const exchanged = exchange(from, to);
    // There is no old file, or the file system cannot exchange names.
    if (!exchanged && std::rename(from, to) != 0) throw failure(errno);
    int const reason = syncFolder();
    if (!exchanged) temporary_.clear();
    if (reason == 0) return;
    if (exchanged) exchange(from, to); // back
    throw failure(reason);
}

// Returns a value of errno; 0 also if a folder cannot be read or synchronised at all.
int TemporaryOutput::syncFolder() const {
    std::filesystem::path const parent = target_.parent_path();
    int const folder = open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return errno == EACCES ? 0 : errno;
    int const reason = fsync(folder) == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
    close(folder);
    return reason;
}
