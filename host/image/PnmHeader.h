#pragma once

#include "host/image/InputFile.h"

#include <cstdint>
#include <string>

/// The words before the pixels of one of Netpbm's pictures.
struct PnmHeader {
    char kind = 0; ///< of the magic "P6": '1' to '7', 'F' or 'f'
    size_t width = 0;
    size_t height = 0;
    size_t depth = 1;   ///< samples of a pixel
    size_t largest = 1; ///< the value that is white; of floats 0
    bool littleEndian = false;
    std::string tuple;        ///< what the samples of a PAM are: "RGB_ALPHA"
    std::uint64_t pixels = 0; ///< where they start in the file

    bool isText() const { return kind >= '1' && kind <= '3'; }
    bool isBitmap() const { return kind == '1' || kind == '4'; }
    bool isFloat() const { return kind == 'F' || kind == 'f'; }

    /// The header at a place of the file. Throws HostError (unreadable image).
    static PnmHeader read(InputFile& file, std::uint64_t offset);
};

/// The characters of a file, one after the other. A class of its own for pictures that are written out as decimal
/// numbers.
class FileCharacters {
public:
    FileCharacters(InputFile& file, std::uint64_t offset) : file_(file), blockStart_(offset) {}

    /// -1 at the end of the file.
    int next();
    int peek();
    /// Of the next character, in the file.
    std::uint64_t position() const { return blockStart_ + at_; }
    /// Leaves out blanks and comments, which go from "#" to the end of the line.
    void skipBlanks();

private:
    bool fill();

    InputFile& file_;
    std::uint64_t blockStart_;
    std::string block_;
    size_t at_ = 0;
};
