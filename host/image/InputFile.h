#pragma once

#include "host/HostError.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <utility>

/// Throws a HostError of this kind where there is something under the name that is no regular file: opening a pipe
/// waits for somebody who writes to it, and what libraries read has to be sought in.
void requireRegularFile(std::string const& path, HostError::Kind kind);

/// A regular file that is read at any place.
///
/// It serves libraries that call back: readAt() lets no exception out. What kept it from reading is thrown by
/// rethrow(), once the library has come back with an error of its own. One thread at a time.
class InputFile {
public:
    /// Called before each reading; may throw to stop it.
    using Check = std::function<void()>;

    /// Throws HostError: missing file (it cannot be opened), unreadable image (it is no regular file).
    explicit InputFile(std::string path, Check check = {});
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;
    ~InputFile();

    std::string const& path() const { return path_; }
    std::uint64_t size() const { return size_; }

    /// Bytes that have been read: fewer than `count` only at the end of the file, -1 after a failure.
    std::int64_t readAt(std::uint64_t offset, void* bytes, size_t count) noexcept;
    /// All of them. Throws HostError: missing file where the system cannot read them, unreadable image where the file
    /// ends before; and what the check throws.
    void readAll(std::uint64_t offset, void* bytes, size_t count);

    /// Throws what kept readAt() from reading, where it has ever failed.
    void rethrow() const;
    void setCheck(Check check) { check_ = std::move(check); }
    /// Calls the check: for long work between two readings.
    void check() const;

private:
    std::string path_;
    Check check_;
    int descriptor_;
    std::uint64_t size_ = 0;
    std::exception_ptr failure_;
};

/// A failure of the system to read the file, which says nothing of what the file holds.
HostError readFailure(std::string const& path, std::string const& reason);
/// The file holds no image, or a damaged one.
HostError unreadableImage(std::string const& path, std::string const& reason);
/// The file is as it should be, but of a kind that is not read. The text says what is to be done where something is.
HostError imageNotRead(std::string const& path, std::string const& reason);
