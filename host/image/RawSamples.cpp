#include "host/image/RawSamples.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

bool isBigEndianMachine() {
    std::uint16_t const one = 1;
    std::uint8_t first = 0;
    std::memcpy(&first, &one, 1);
    return first == 0;
}

void swapBytes(std::uint8_t* samples, size_t count, size_t sampleBytes) {
    for (size_t i = 0; i < count; ++i, samples += sampleBytes)
        std::reverse(samples, samples + sampleBytes);
}

} // namespace

std::uint64_t rowOffset(RawLayout const& raw, size_t height, size_t y) {
    return raw.offset + raw.rowBytes * (raw.bottomUp ? height - 1 - y : y);
}

void requireRows(InputFile const& file, SampleFormat const& layout, RawLayout const& raw, std::uint64_t lastRowBytes) {
    // Divisions, because products of a header's untrusted sizes may overflow.
    bool const fits = raw.offset <= file.size() && lastRowBytes <= file.size() - raw.offset &&
                      (layout.height - 1) <= (file.size() - raw.offset - lastRowBytes) / raw.rowBytes;
    if (fits) return;
    throw unreadableImage(file.path(), "its header says " + std::to_string(layout.width) + " x " +
                                           std::to_string(layout.height) +
                                           " pixels, which are more than the file holds");
}

RawSamples::RawSamples(std::shared_ptr<InputFile> file, ImageFacts facts, RawLayout layout)
    : file_(std::move(file)), facts_(std::move(facts)), raw_(std::move(layout)) {
    requireRows(*file_, facts_.layout, raw_, facts_.layout.rowBytes());
}

void RawSamples::read(Region const& region, std::uint8_t* samples) {
    size_t const pixelBytes = facts_.layout.pixelBytes();
    size_t const rowBytes = region.width * pixelBytes;
    for (size_t row = 0; row < region.height; ++row)
        file_->readAll(rowOffset(raw_, facts_.layout.height, region.y + row) + region.x * pixelBytes,
                       samples + row * rowBytes, rowBytes);
    size_t const sampleBytes = bytesOf(facts_.layout.type);
    if (sampleBytes > 1 && raw_.bigEndian != isBigEndianMachine())
        swapBytes(samples, region.height * rowBytes / sampleBytes, sampleBytes);
    if (!raw_.bandOrder.empty()) order(samples, region.width * region.height);
}

void RawSamples::order(std::uint8_t* samples, size_t pixels) const {
    // Only files of bytes have a band order of their own.
    size_t const bands = facts_.layout.bands;
    std::vector<std::uint8_t> pixel(bands);
    for (size_t i = 0; i < pixels; ++i, samples += bands) {
        for (size_t band = 0; band < bands; ++band)
            pixel[band] = samples[raw_.bandOrder[band]];
        std::copy(pixel.begin(), pixel.end(), samples);
    }
}

IndexedSamples::IndexedSamples(std::shared_ptr<InputFile> file, ImageFacts facts, RawLayout layout, size_t bits,
                               std::vector<std::uint8_t> colours)
    : file_(std::move(file)),
      facts_(std::move(facts)),
      raw_(std::move(layout)),
      bits_(bits),
      colours_(std::move(colours)) {
    // Numbers beyond the palette are black.
    colours_.resize((size_t{1} << bits_) * facts_.layout.bands);
    requireRows(*file_, facts_.layout, raw_, (facts_.layout.width * bits_ + 7) / 8);
}

void IndexedSamples::read(Region const& region, std::uint8_t* samples) {
    size_t const bands = facts_.layout.bands;
    size_t const firstByte = region.x * bits_ / 8;
    row_.resize(((region.x + region.width) * bits_ + 7) / 8 - firstByte);
    for (size_t row = 0; row < region.height; ++row) {
        file_->readAll(rowOffset(raw_, facts_.layout.height, region.y + row) + firstByte, row_.data(), row_.size());
        for (size_t x = region.x; x < region.x + region.width; ++x, samples += bands) {
            size_t const bit = x * bits_ - firstByte * 8;
            size_t const index = size_t{row_[bit / 8]} >> (8 - bits_ - bit % 8) & ((size_t{1} << bits_) - 1);
            std::copy_n(&colours_[index * bands], bands, samples);
        }
    }
}
