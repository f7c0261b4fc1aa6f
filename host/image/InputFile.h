#pragma once

#include "host/HostError.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <utility>

/// Throws a HostError of this kind if the name exists and is not a regular file: opening a pipe would block until it
/// has a writer, and libraries have to seek in files.
void requireRegularFile(std::string const& path, HostError::Kind kind);

/// A regular file, read at any offset.
///
/// For libraries that call back: readAt() throws nothing; rethrow() throws what made it fail, once the library has
/// returned its own error. One thread at a time.
class InputFile {
public:
    /// Called before each read; may throw to stop it.
    using Check = std::function<void()>;

    /// Throws HostError: missing file (it cannot be opened), unreadable image (it is no regular file).
    explicit InputFile(std::string path, Check check = {});
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;
    ~InputFile();

    std::string const& path() const { return path_; }
    std::uint64_t size() const { return size_; }

    /// Number of bytes read: fewer than `count` only at the end of the file, -1 after a failure.
    std::int64_t readAt(std::uint64_t offset, void* bytes, size_t count) noexcept;
    /// Reads all `count` bytes. Throws HostError: missing file if the system cannot read them, unreadable image if the
    /// file is shorter; and what the check throws.
    void readAll(std::uint64_t offset, void* bytes, size_t count);

    /// Throws the exception of the failed readAt(), if there was one.
    void rethrow() const;
    void setCheck(Check check) { check_ = std::move(check); }
    /// Calls the check: for long work between two reads.
    void check() const;

private:
    std::string path_;
    Check check_;
    int descriptor_;
    std::uint64_t size_ = 0;
    std::exception_ptr failure_;
};

/// The system failed to read the file; its content may be intact.
HostError readFailure(std::string const& path, std::string const& reason);
/// The file holds no image, or a damaged one.
HostError unreadableImage(std::string const& path, std::string const& reason);
/// The file is intact, but of a kind that is not read. The reason says what to do, if there is a way.
HostError imageNotRead(std::string const& path, std::string const& reason);
