#pragma once

#include "host/output/OutputFile.h"

#include <cstddef>
#include <filesystem>
#include <string>

/// A file that takes its name only when it is complete.
///
/// It is written under another name in the target's folder; finish() renames it to the target's: that name refers to
/// the old file or to the whole new one. A file that is destroyed before finish() is removed; that of a killed process
/// is removed by the next output with the same target. A link as target stays a link, and the file that it points to is
/// replaced.
class TemporaryOutput {
public:
    /// Throws what requireUsable throws, and HostError (unwritable output).
    explicit TemporaryOutput(OutputFile file);
    ~TemporaryOutput();
    TemporaryOutput(TemporaryOutput const&) = delete;
    TemporaryOutput& operator=(TemporaryOutput const&) = delete;

    /// The file to write to, until finish() is called: open for writing, and by its name.
    int descriptor() const { return descriptor_; }
    std::string const& temporaryName() const { return temporary_; }

    /// Appends to the last write. Throws HostError.
    void write(void const* bytes, size_t count);

    /// Writes everything to the disk, gives the file its name, and writes the folder to the disk. Throws HostError,
    /// also if a file that must not be replaced has taken the name meanwhile.
    void finish();

    /// The error to throw if writing fails: names the target and says what to do.
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
