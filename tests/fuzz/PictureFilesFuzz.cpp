// An input is a picture's size, bands, bits and format, and its samples. It is written to a file and read back.
#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "host/output/PictureWriter.h"
#include "host/output/TiffWriter.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>

namespace {

using Bytes = std::vector<std::uint8_t>;
using fuzz::require;

struct Picture {
    TiffWriter::Format format;
    Bytes samples;

    size_t rowBytes() const { return format.width * format.bands * format.bits / 8; }
};

double anySize(fuzz::Input& input) {
    switch (input.below(4)) {
    case 0:
        return 0;
    case 1:
        return std::abs(input.number<double>());
    default:
        return static_cast<double>(input.number<std::uint16_t>()) / 100;
    }
}

Picture anyPicture(fuzz::Input& input) {
    Picture picture;
    picture.format.width = input.within(1, 70);
    picture.format.height = input.within(1, 70);
    picture.format.bands = input.within(1, 4);
    picture.format.bits = input.flag() ? 16 : 8;
    picture.format.micronsPerPixelX = anySize(input);
    picture.format.micronsPerPixelY = anySize(input);
    size_t const count = picture.rowBytes() * picture.format.height;
    Bytes const given = input.bytes(count);
    // What was given, again and again.
    for (size_t i = 0; i < count; ++i)
        picture.samples.push_back(given.empty() ? 0 : static_cast<std::uint8_t>(given[i % given.size()] + i / 251));
    return picture;
}

std::unique_ptr<PictureWriter> writerOf(Picture const& picture, std::string const& path, bool withSize) {
    OutputFile file(path);
    file.replace = true;
    TiffWriter::Format const& format = picture.format;
    if (withSize) return std::make_unique<TiffWriter>(file, format);
    return makePictureWriter(file, format.width, format.height, format.bands, format.bits);
}

void write(Picture const& picture, PictureWriter& writer, fuzz::Input& input) {
    for (size_t row = 0; row < picture.format.height;) {
        size_t const rows = std::min(picture.format.height - row, input.within(1, 40));
        writer.writeRows(&picture.samples[row * picture.rowBytes()], rows);
        row += rows;
    }
    writer.finish();
}

void requireSame(Picture const& picture, std::string const& path, fuzz::Input& input) {
    ImageReader::Options options;
    options.samples = ImageReader::Samples::kAsStored;
    options.lossless = true;
    ImageReader reader(path, options);
    require(reader.width() == picture.format.width && reader.height() == picture.format.height &&
                reader.bands() == picture.format.bands && 8 * reader.sampleBytes() == picture.format.bits,
            "a picture has the size that was written");
    Bytes all;
    Bytes part;
    for (size_t row = 0; row < picture.format.height;) {
        size_t const rows = std::min(picture.format.height - row, input.within(1, 40));
        reader.read({0, row, picture.format.width, rows}, part);
        all.insert(all.end(), part.begin(), part.end());
        row += rows;
    }
    require(all == picture.samples, "samples come back as they were");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    static TemporaryFolder const kFolder;
    fuzz::Input input(bytes, size);
    constexpr char const* kNames[] = {"picture.png", "picture.tif", "picture.TIFF"};
    std::string const path = kFolder.path(kNames[input.below(3)]);
    bool const withSize = namesTiff(path) && input.flag();
    Picture const picture = anyPicture(input);
    write(picture, *writerOf(picture, path, withSize), input);
    requireSame(picture, path, input);
    return 0;
}
