#pragma once

#include "host/HostError.h"

#include <filesystem>
#include <string>
#include <vector>

/// A file that is to be made, and what may happen to files that are there.
struct OutputFile {
    /// What its name may end in: .png, .tif and .tiff, in any case; of a store anything but the ending of a picture.
    enum class Ending { Any, Png, Tiff, PngOrTiff, NotOfAPicture };

    // Implicit: where there is nothing else to say of a file, its name is enough.
    OutputFile(std::string path_) : path(std::move(path_)) {}

    std::string path;     ///< as the user wrote it
    bool replace = false; ///< a file that has the name already
    std::vector<std::string>
        sources; ///< files that it is made of: never replaced, and who may not read one of them may
                 ///< not read the output either

    /// The file that the name stands for: where it is a link, what that points to in the end. Throws HostError where
    /// that has no name of its own, as the standard output.
    std::filesystem::path target() const;

    /// The error to throw where writing failed: names the file and says what to do.
    HostError failure(std::string const& reason) const;
    /// The same for a value of errno.
    HostError failure(int errorNumber) const;
};

/// Throws HostError where the file must not be made, or cannot be: a source, a file that is not to be replaced, the
/// name of something other than a regular file, a folder that is not there or may not be written to (all: unwritable
/// output); an ending that does not fit (usage).
void requireUsable(OutputFile const& file, OutputFile::Ending ending = OutputFile::Ending::Any);

/// Whether the name ends in .tif or .tiff.
bool namesTiff(std::string const& path);
