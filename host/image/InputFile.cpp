#include "host/image/InputFile.h"

#include "host/Failures.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace {

// Throws if it is not a regular file.
void requireRegular(std::string const& path, mode_t mode, HostError::Kind kind) {
    if (S_ISREG(mode)) return;
    std::string const what =
        S_ISDIR(mode) ? "it is a folder; name a file" : "it is not a regular file; copy what it gives into one";
    throw HostError(kind, "cannot read '" + path + "': " + what);
}

} // namespace

void requireRegularFile(std::string const& path, HostError::Kind kind) {
    struct stat status {};
    // A missing file is reported by the code that opens it.
    if (stat(path.c_str(), &status) == 0) requireRegular(path, status.st_mode, kind);
}

InputFile::InputFile(std::string path, Check check) : path_(std::move(path)), check_(std::move(check)) {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0) throw failures::cannotOpen(path_, failures::reasonOf(errno));
    requireRegular(path_, status.st_mode, HostError::Kind::UnreadableImage);
    // The file may have been replaced by a pipe meanwhile: opening one must not block.
    descriptor_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) throw failures::cannotOpen(path_, failures::reasonOf(errno));
    try {
        if (fstat(descriptor_, &status) != 0) throw failures::cannotOpen(path_, failures::reasonOf(errno));
        requireRegular(path_, status.st_mode, HostError::Kind::UnreadableImage);
    } catch (...) {
        close(descriptor_);
        throw;
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
}

InputFile::~InputFile() {
    close(descriptor_);
}

std::int64_t InputFile::readAt(std::uint64_t offset, void* bytes, size_t count) noexcept {
    try {
        if (failure_) return -1;
        check();
        auto* const to = static_cast<char*>(bytes);
        size_t done = 0;
        while (done < count) {
            ssize_t const got = pread(descriptor_, to + done, count - done, static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR) {
                check();
                continue;
            }
            if (got < 0) throw readFailure(path_, std::strerror(errno));
            if (got == 0) break;
            done += static_cast<size_t>(got);
        }
        return static_cast<std::int64_t>(done);
    } catch (...) {
        failure_ = std::current_exception();
        return -1;
    }
}

void InputFile::readAll(std::uint64_t offset, void* bytes, size_t count) {
    std::int64_t const got = readAt(offset, bytes, count);
    rethrow();
    if (got < 0 || static_cast<size_t>(got) < count)
        throw unreadableImage(path_, "the file ends before its picture does");
}

void InputFile::rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
}

void InputFile::check() const {
    if (check_) check_();
}

HostError readFailure(std::string const& path, std::string const& reason) {
    return HostError(HostError::Kind::MissingFile,
                     "cannot read '" + path + "': " + reason + "; check the disk that the file lies on");
}

HostError unreadableImage(std::string const& path, std::string const& reason) {
    return HostError(HostError::Kind::UnreadableImage,
                     "cannot read '" + path + "': " + reason +
                         "; check that it is an undamaged image in a format that is read");
}

HostError imageNotRead(std::string const& path, std::string const& reason) {
    return HostError(HostError::Kind::UnreadableImage, "cannot read '" + path + "': " + reason);
}
