#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// Writes a TIFF file row by row, compressed without loss (deflate with horizontal prediction), as BigTIFF where it may
/// pass 4 GiB. The file takes its name in finish() only, as PngWriter's does. One thread at a time.
class TiffWriter {
public:
    struct Format {
        size_t width = 0;
        size_t height = 0;
        size_t bands = 0;            ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
        size_t bits = 8;             ///< of a sample: 8 or 16
        double micronsPerPixelX = 0; ///< 0: unknown
        double micronsPerPixelY = 0;
    };

    /// Throws HostError (unwritable output), also where the name is that of something other than a regular file.
    TiffWriter(std::string const& path, Format const& format);
    ~TiffWriter();
    TiffWriter(TiffWriter const&) = delete;
    TiffWriter& operator=(TiffWriter const&) = delete;

    /// The next row from the top: interleaved samples, 16 bits in the machine's byte order. Throws HostError.
    void writeRow(std::uint8_t const* row);

    /// After the last row. Throws HostError (unwritable output).
    void finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};
