#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// Writes a PNG file row by row, so that a picture of any size passes through.
///
/// The rows go into a temporary file in the target's folder, which takes the target's name in finish() only: under the
/// final name there is either what was there before or the whole picture. A writer that is destroyed before finish()
/// removes its temporary file. One thread at a time.
class PngWriter {
public:
    /// bands: 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA, 8 bits each. Throws HostError (unwritable output), also where the
    /// name is that of something other than a regular file.
    PngWriter(std::string const& path, size_t width, size_t height, size_t bands);
    ~PngWriter();

    PngWriter(PngWriter const&) = delete;
    PngWriter& operator=(PngWriter const&) = delete;

    /// The next `count` rows from the top, interleaved and tightly packed. Throws HostError (unwritable output).
    void writeRows(std::uint8_t const* rows, size_t count);

    /// After the last row: writes everything to the disk and gives the file its name. Throws HostError.
    void finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};
