#pragma once

#include "host/image/PictureMetadata.h"
#include "host/output/OutputFile.h"

#include <string>
#include <utility>
#include <vector>

/// What a store has kept beside its picture, as files of a folder: profile.icc, label.png and so on. Tags of a TIFF are
/// no files: a TIFF holds them.
class MetadataFiles {
public:
    /// Makes the folder if it is missing. `replace`: existing files of it; `source`: the store. Throws what
    /// requireUsable throws for each file, and HostError (unwritable output) for the folder.
    MetadataFiles(std::vector<MetadataItem> const& metadata, std::string const& folder, bool replace,
                  std::string const& source);

    /// Names of the files, in the folder.
    std::vector<std::string> names() const;
    /// Throws HostError (unwritable output); files that were written before stay.
    void write() const;

private:
    std::string nameOf(MetadataItem const& item) const;

    struct File {
        std::string name;
        OutputFile output;
        std::vector<std::uint8_t> bytes;
    };
    std::vector<File> files_;
};
