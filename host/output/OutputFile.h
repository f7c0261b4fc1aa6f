#pragma once

#include "host/HostError.h"

#include <filesystem>
#include <string>
#include <vector>

/// A file to be written, and whether it may replace existing files.
struct OutputFile {
    /// The permitted endings of its name: .png, .tif and .tiff, in any case; for a store any but a picture's.
    enum class Ending { Any, Png, Tiff, PngOrTiff, NotOfAPicture };

    // Implicit: often the name says everything.
    OutputFile(std::string path_) : path(std::move(path_)) {}

    std::string path;     ///< as the user wrote it
    bool replace = false; ///< an existing file of that name
    std::vector<std::string>
        sources; ///< files that it is made from: never replaced, and a user who may not read one of them may
                 ///< not read the output either

    /// The file that the name refers to, links followed to the end. Throws HostError if it has no name of its own, like
    /// the standard output.
    std::filesystem::path target() const;

    /// The error to throw if writing fails: names the file and says what to do.
    HostError failure(std::string const& reason) const;
    /// failure() for a value of errno.
    HostError failure(int errorNumber) const;
};

/// Throws HostError if the file must not or cannot be written. Unwritable output: a source, an existing file without
/// `replace`, the name of something other than a regular file, a folder that is missing or write-protected. Usage: an
/// ending that does not fit.
void requireUsable(OutputFile const& file, OutputFile::Ending ending = OutputFile::Ending::Any);

/// Whether the name ends in .tif or .tiff.
bool namesTiff(std::string const& path);
