#pragma once

#include "host/output/OutputFile.h"

#include <cstddef>
#include <filesystem>
#include <string>

/// A file that takes its name only when it is complete.
///
/// It is made under another name in the target's folder; finish() gives it the target's name: under that name there is
/// either what was there before or the whole file. One that is destroyed before finish() is removed; one whose process
/// is killed is removed by the next one for the same target. A link as target stays a link, and what it points to is
/// replaced.
class TemporaryOutput {
public:
    /// Throws what requireUsable throws, and HostError (unwritable output).
    explicit TemporaryOutput(OutputFile file);
    ~TemporaryOutput();
    TemporaryOutput(TemporaryOutput const&) = delete;
    TemporaryOutput& operator=(TemporaryOutput const&) = delete;

    /// The file to write to, for as long as finish() has not been called: open for writing, and by its name.
    int descriptor() const { return descriptor_; }
    std::string const& temporaryName() const { return temporary_; }

    /// Writes on where the last write has ended. Throws HostError.
    void write(void const* bytes, size_t count);

    /// Writes everything to the disk and gives the file its name, then sees the name to the disk. Throws HostError,
    /// also where in the meantime a file has come to have the name that is not to be replaced.
    void finish();

    /// The error to throw where writing failed: names the target and what to do.
    template <class Reason>
    HostError failure(Reason const& reason) const {
        return file_.failure(reason);
    }

private:
    void create();
    bool isHeld() const;
    void discard();
    void limitPermissions(mode_t always) const;
    void takeFreeName();
    void replaceFile();
    int syncFolder() const;

    OutputFile file_;
    std::filesystem::path target_;
    std::string temporary_; // empty: nothing to remove
    int descriptor_ = -1;
};
