#include "host/PictureWriter.h"

#include "host/PngWriter.h"
#include "host/TiffWriter.h"

#include <algorithm>
#include <filesystem>

namespace {

char lowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

PictureWriter::~PictureWriter() = default;

bool namesTiff(std::string const& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), lowerCase);
    return extension == ".tif" || extension == ".tiff";
}

std::unique_ptr<PictureWriter> makePictureWriter(std::string const& path, size_t width, size_t height, size_t bands,
                                                 size_t bits) {
    if (!namesTiff(path)) return std::make_unique<PngWriter>(path, width, height, bands, bits);
    TiffWriter::Format format;
    format.width = width;
    format.height = height;
    format.bands = bands;
    format.bits = bits;
    return std::make_unique<TiffWriter>(path, format);
}
