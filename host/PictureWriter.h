#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// Writes a picture file row by row, so that a picture of any size passes through.
///
/// The rows go into a temporary file in the target's folder, which takes the target's name in finish() only: under the
/// final name there is either what was there before or the whole picture. A writer that is destroyed before finish()
/// removes its temporary file. One thread at a time.
class PictureWriter {
public:
    PictureWriter() = default;
    PictureWriter(PictureWriter const&) = delete;
    PictureWriter& operator=(PictureWriter const&) = delete;
    virtual ~PictureWriter();

    /// The next `count` rows from the top, interleaved and tightly packed; samples of 16 bits in the machine's byte
    /// order. Throws HostError (unwritable output).
    virtual void writeRows(std::uint8_t const* rows, size_t count) = 0;

    /// After the last row: writes everything to the disk and gives the file its name. Throws HostError.
    virtual void finish() = 0;
};

/// Whether a picture of that name is to be a TIFF: it ends in .tif or .tiff, in any case.
bool namesTiff(std::string const& path);

/// A TIFF where the name is that of one, else a PNG. bands: 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA; bits: 8 or 16. Throws
/// HostError (unwritable output), also where the name is that of something other than a regular file.
std::unique_ptr<PictureWriter> makePictureWriter(std::string const& path, size_t width, size_t height, size_t bands,
                                                 size_t bits = 8);
