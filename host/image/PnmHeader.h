#pragma once

#include "host/image/InputFile.h"

#include <cstdint>
#include <string>

/// The header of one of Netpbm's pictures.
struct PnmHeader {
    char kind = 0; ///< of the magic "P6": '1' to '7', 'F' or 'f'
    size_t width = 0;
    size_t height = 0;
    size_t depth = 1;   ///< samples per pixel
    size_t largest = 1; ///< the value of white; 0 for floats
    bool littleEndian = false;
    std::string tuple;        ///< meaning of a PAM's samples: "RGB_ALPHA"
    std::uint64_t pixels = 0; ///< offset in the file

    bool isText() const { return kind >= '1' && kind <= '3'; }
    bool isBitmap() const { return kind == '1' || kind == '4'; }
    bool isFloat() const { return kind == 'F' || kind == 'f'; }

    /// Reads the header at an offset of the file. Throws HostError (unreadable image).
    static PnmHeader read(InputFile& file, std::uint64_t offset);
};

/// The characters of a file, one after the other. A class of its own because pictures in text form use it too.
class FileCharacters {
public:
    FileCharacters(InputFile& file, std::uint64_t offset) : file_(file), blockStart_(offset) {}

    /// -1 at the end of the file.
    int next();
    int peek();
    /// Offset of the next character in the file.
    std::uint64_t position() const { return blockStart_ + at_; }
    /// Skips blanks and comments, which go from "#" to the end of the line.
    void skipBlanks();

private:
    bool fill();

    InputFile& file_;
    std::uint64_t blockStart_;
    std::string block_;
    size_t at_ = 0;
};
