#include "tests/apps/velmora/view/XwdImage.h"

#include "tests/support/TemporaryFolder.h"

#include <stdexcept>

namespace {

// Fields of XWDFileHeader, as X11/XWDFile.h counts them: numbers of 32 bits, the highest byte first.
enum Field {
    kHeaderBytes = 0,
    kWidth = 4,
    kHeight = 5,
    kByteOrder = 7,
    kBitsPerPixel = 11,
    kRowBytes = 12,
    kColours = 19
};
constexpr size_t kColourBytes = 12;

size_t field(std::string const& file, Field index) {
    size_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = 256 * value + static_cast<unsigned char>(file.at(4 * static_cast<size_t>(index) + i));
    return value;
}

} // namespace

testimages::Pixels readXwd(std::string const& path) {
    std::string const file = readFile(path);
    if (field(file, kBitsPerPixel) != 32 || field(file, kByteOrder) != 0)
        throw std::runtime_error(path + " does not have pixels of 32 bits, the lowest byte first");
    testimages::Pixels pixels{field(file, kWidth), field(file, kHeight), 3, {}};
    size_t const start = field(file, kHeaderBytes) + field(file, kColours) * kColourBytes;
    for (size_t y = 0; y < pixels.height; ++y)
        for (size_t x = 0; x < pixels.width; ++x)
            for (size_t band = 0; band < 3; ++band) // blue is lowest
                pixels.samples.push_back(
                    static_cast<std::uint8_t>(file.at(start + y * field(file, kRowBytes) + 4 * x + 2 - band)));
    return pixels;
}
