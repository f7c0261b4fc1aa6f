#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Files that cannot be built by hand and that libvips' writers do not make.
namespace testcodecs {

struct Jpeg2000 {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 8;
    bool isSigned = false;
    std::vector<std::vector<int>> components;
};

/// A lossless codestream.
std::string jpeg2000(std::string const& path, Jpeg2000 const& picture);

/// A box of a JPEG 2000 file: its length, its name, its content.
std::string box(std::string const& name, std::string const& content);

/// A big-endian number of `count` bytes.
std::string number(std::uint64_t value, size_t bytes);

/// A file around a codestream: `boxes` lie in its header, after the size of the picture and its colour space.
std::string jp2File(std::string const& codestream, Jpeg2000 const& picture, std::string const& boxes);

struct JpegXl {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t colours = 3;
    std::uint32_t bits = 8; ///< 32: floats
    bool alpha = false;
    bool otherChannel = false;
    int orientation = 1;
    std::vector<std::vector<std::uint8_t>>
        frames; ///< interleaved samples in the machine's byte order; more than one: an animation
};

/// Lossless JPEG XL.
std::string jpegXl(JpegXl const& picture);

} // namespace testcodecs
