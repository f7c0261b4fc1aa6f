#pragma once

#include "host/output/OutputFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/// Writes a picture file row by row, so that pictures of any size need little memory.
///
/// The rows go into a temporary file in the target's folder, which takes the target's name in finish() only: the final
/// name refers to the old file or to the whole picture. A writer that is destroyed before finish() removes its
/// temporary file. One thread at a time.
class PictureWriter {
public:
    PictureWriter() = default;
    PictureWriter(PictureWriter const&) = delete;
    PictureWriter& operator=(PictureWriter const&) = delete;
    virtual ~PictureWriter();

    /// The next `count` rows from the top, interleaved and tightly packed; 16-bit samples in the machine's byte order.
    /// Throws HostError (unwritable output).
    virtual void writeRows(std::uint8_t const* rows, size_t count) = 0;

    /// After the last row: writes everything to the disk and gives the file its name. Throws HostError.
    virtual void finish() = 0;
};

/// A TIFF if the name ends in .tif or .tiff, a PNG if it ends in .png, in any case. bands: 1 grey, 2 grey and alpha, 3
/// RGB, 4 RGBA; bits: 8 or 16. Throws what requireUsable throws, also for any other ending.
std::unique_ptr<PictureWriter> makePictureWriter(OutputFile const& file, size_t width, size_t height, size_t bands,
                                                 size_t bits = 8);
