#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Pictures with known samples, and files of them.
namespace testimages {

/// 8-bit samples, interleaved, rows from the top.
struct Pixels {
    size_t width = 0;
    size_t height = 0;
    size_t bands = 0;
    std::vector<std::uint8_t> samples;
};

/// The sample of the test pattern: irregular in both directions and different in each band.
std::uint8_t sample8(size_t x, size_t y, size_t band);
/// The 16-bit sample of the pattern; the lower byte is no function of the upper one.
std::uint16_t sample16(size_t x, size_t y, size_t band);

Pixels pattern8(size_t width, size_t height, size_t bands);
/// The upper bytes of the 16-bit pattern.
Pixels pattern16UpperBytes(size_t width, size_t height, size_t bands);
/// A byte of each sample of the 16-bit pattern: between both ends in proportion, rounded.
Pixels pattern16InRange(size_t width, size_t height, size_t bands, double low, double high);

/// Write the pattern; the format follows from the name's ending, options in libvips' form: "[tile,pyramid]".
void writePattern8(std::string const& path, std::string const& options, size_t width, size_t height, size_t bands);
void writePattern16(std::string const& path, std::string const& options, size_t width, size_t height, size_t bands);

/// A region of an image file, cropped by libvips itself; the upper bytes of 16-bit samples.
Pixels cropByVips(std::string const& path, size_t x, size_t y, size_t width, size_t height);
/// The whole picture of a file.
Pixels readByVips(std::string const& path);
/// Every sample of a 16-bit file; throws if it has another depth.
std::vector<std::uint16_t> read16ByVips(std::string const& path);
/// The 16-bit samples of the pattern.
std::vector<std::uint16_t> pattern16(size_t width, size_t height, size_t bands);

/// A region of a picture.
Pixels crop(Pixels const& pixels, size_t x, size_t y, size_t width, size_t height);

/// Empty if both are equal; else the first difference in words.
std::string difference(Pixels const& actual, Pixels const& expected);

} // namespace testimages
