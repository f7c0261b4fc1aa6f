#include "host/image/PnmHeader.h"

#include <cctype>
#include <charconv>
#include <stdexcept>

namespace {

constexpr size_t kBlockBytes = 64 * 1024;
// More than any picture has, and small enough that products of two do not overflow.
constexpr size_t kMaxSide = size_t{1} << 31;
constexpr size_t kMaxDepth = 65535;
constexpr size_t kMaxSample = 65535;

std::string word(FileCharacters& characters) {
    constexpr size_t kMaxWord = 64;
    characters.skipBlanks();
    std::string text;
    while (characters.peek() > ' ' && text.size() < kMaxWord)
        text += static_cast<char>(characters.next());
    return text;
}

size_t number(std::string const& text, size_t largest) {
    size_t value = 0;
    auto const end = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size() || value == 0 || value > largest)
        throw std::invalid_argument("its header says '" + text + "' where a number from 1 to " +
                                    std::to_string(largest) + " belongs");
    return value;
}

// A negative scale marks little-endian samples.
bool isNegative(std::string const& scale) {
    double value = 0;
    auto const end = std::from_chars(scale.data(), scale.data() + scale.size(), value);
    if (end.ec != std::errc() || end.ptr != scale.data() + scale.size() || value == 0)
        throw std::invalid_argument("its header says '" + scale + "' where a scale belongs");
    return value < 0;
}

void readPam(FileCharacters& characters, PnmHeader& header) {
    header.depth = header.largest = 0;
    for (std::string key = word(characters); key != "ENDHDR"; key = word(characters)) {
        if (key == "WIDTH")
            header.width = number(word(characters), kMaxSide);
        else if (key == "HEIGHT")
            header.height = number(word(characters), kMaxSide);
        else if (key == "DEPTH")
            header.depth = number(word(characters), kMaxDepth);
        else if (key == "MAXVAL")
            header.largest = number(word(characters), kMaxSample);
        else if (key == "TUPLTYPE")
            header.tuple += word(characters);
        else
            throw std::invalid_argument("its header has a line '" + key + "'");
    }
    if (header.width == 0 || header.height == 0 || header.depth == 0 || header.largest == 0)
        throw std::invalid_argument("its header lacks WIDTH, HEIGHT, DEPTH or MAXVAL");
}

void readOthers(FileCharacters& characters, PnmHeader& header) {
    header.width = number(word(characters), kMaxSide);
    header.height = number(word(characters), kMaxSide);
    header.depth = header.kind == '3' || header.kind == '6' || header.kind == 'F' ? 3 : 1;
    if (header.isFloat()) {
        header.largest = 0;
        header.littleEndian = isNegative(word(characters));
    } else if (!header.isBitmap()) {
        header.largest = number(word(characters), kMaxSample);
    }
}

} // namespace

int FileCharacters::next() {
    if (at_ == block_.size() && !fill()) return -1;
    return static_cast<unsigned char>(block_[at_++]);
}

int FileCharacters::peek() {
    if (at_ == block_.size() && !fill()) return -1;
    return static_cast<unsigned char>(block_[at_]);
}

void FileCharacters::skipBlanks() {
    while (true) {
        while (peek() >= 0 && std::isspace(peek()) != 0)
            next();
        if (peek() != '#') return;
        while (peek() >= 0 && peek() != '\n')
            next();
    }
}

bool FileCharacters::fill() {
    blockStart_ += block_.size();
    at_ = 0;
    block_.resize(kBlockBytes);
    auto const got = file_.readAt(blockStart_, block_.data(), block_.size());
    file_.rethrow();
    block_.resize(static_cast<size_t>(got));
    return got > 0;
}

PnmHeader PnmHeader::read(InputFile& file, std::uint64_t offset) {
    FileCharacters characters(file, offset);
    PnmHeader header;
    characters.next(); // skips the P
    header.kind = static_cast<char>(characters.next());
    try {
        if (header.kind == '7')
            readPam(characters, header);
        else
            readOthers(characters, header);
        // Exactly one blank: the next byte may look like one and be a sample.
        int const blank = characters.next();
        if (blank < 0 || std::isspace(blank) == 0)
            throw std::invalid_argument("its header does not end where its pixels begin");
    } catch (std::invalid_argument const& error) {
        throw unreadableImage(file.path(), error.what());
    }
    header.pixels = characters.position();
    return header;
}
