#pragma once

#include "host/HostError.h"

#include <filesystem>
#include <string>

/// A file that takes its name only when it is complete.
///
/// It is made under another name in the target's folder; finish() gives it the target's name: under that name there is
/// either what was there before or the whole file. One that is destroyed before finish() is removed. A link as target
/// stays a link, and what it points to is replaced.
class TemporaryOutput {
public:
    /// Throws HostError (unwritable output), also where the name is that of something other than a regular file.
    explicit TemporaryOutput(std::string const& path);
    ~TemporaryOutput();
    TemporaryOutput(TemporaryOutput const&) = delete;
    TemporaryOutput& operator=(TemporaryOutput const&) = delete;

    /// The file to write to, for as long as finish() has not been called: open for writing, and by its name.
    int descriptor() const { return descriptor_; }
    std::string const& temporaryName() const { return temporary_; }

    /// Writes everything to the disk and gives the file its name. Throws HostError.
    void finish();

    /// The error to throw where writing failed: names the target and what to do.
    HostError failure(std::string const& reason) const;
    /// The same for a value of errno.
    HostError failure(int errorNumber) const;

private:
    std::string path_; // as the user wrote it, for messages
    std::filesystem::path target_;
    std::string temporary_; // empty: nothing to remove
    int descriptor_ = -1;
};
