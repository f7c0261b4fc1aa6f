#include "host/output/PictureWriter.h"

#include "host/output/PngWriter.h"
#include "host/output/TiffWriter.h"

PictureWriter::~PictureWriter() = default;

std::unique_ptr<PictureWriter> makePictureWriter(OutputFile const& file, size_t width, size_t height, size_t bands,
                                                 size_t bits) {
    requireUsable(file, OutputFile::Ending::PngOrTiff);
    if (!namesTiff(file.path)) return std::make_unique<PngWriter>(file, width, height, bands, bits);
    TiffWriter::Format format;
    format.width = width;
    format.height = height;
    format.bands = bands;
    format.bits = bits;
    return std::make_unique<TiffWriter>(file, format);
}
