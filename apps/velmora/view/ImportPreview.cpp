#include "apps/velmora/view/ImportPreview.h"

#include "host/image/PixelBands.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

class Watched final : public PixelSource {
public:
    Watched(std::shared_ptr<ImportPreview> growing, std::unique_ptr<PixelSource> source)
        : growing_(std::move(growing)), source_(std::move(source)) {}

    size_t width() const override { return source_->width(); }
    size_t height() const override { return source_->height(); }
    size_t bands() const override { return source_->bands(); }
    size_t sampleBytes() const override { return source_->sampleBytes(); }
    double pixelsPerMillimetreX() const override { return source_->pixelsPerMillimetreX(); }
    double pixelsPerMillimetreY() const override { return source_->pixelsPerMillimetreY(); }
    std::string description() const override { return source_->description(); }
    Selection selection() override { return source_->selection(); }
    Lost lost() const override { return source_->lost(); }
    PictureMetadata metadata() override { return source_->metadata(); }

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override {
        size_t const rowBytes = region.width * bands() * sampleBytes();
        size_t const rows = kPartPixels / region.width + 1;
        for (size_t done = 0; done < region.height; done += rows) {
            Region const part{region.x, region.y + done, region.width, std::min(rows, region.height - done)};
            source_->read(part, buffer_);
            std::copy(buffer_.begin(), buffer_.end(), pixels + done * rowBytes);
            growing_->enter(*source_, part, buffer_.data());
        }
    }

private:
    // What is read at once: a fraction of a second's work for any picture, and enough to keep a few threads busy.
    static constexpr size_t kPartPixels = 256 * 1024;

    std::shared_ptr<ImportPreview> growing_;
    std::unique_ptr<PixelSource> source_;
    std::vector<std::uint8_t> buffer_;
};

std::uint8_t byteOf(std::uint8_t const* sample, size_t sampleBytes) {
    if (sampleBytes == 1) return *sample;
    std::uint16_t value = 0;
    std::memcpy(&value, sample, sizeof(value));
    return static_cast<std::uint8_t>(value >> 8);
}

void toRgba(std::uint8_t const* pixel, PixelSource const& source, std::uint8_t* rgba) {
    size_t const bands = source.bands();
    auto const band = [&](size_t index) { return byteOf(pixel + index * source.sampleBytes(), source.sampleBytes()); };
    for (size_t colour = 0; colour < 3; ++colour)
        rgba[colour] = band(pixelbands::isGrey(bands) ? 0 : colour);
    rgba[3] = pixelbands::hasAlpha(bands) ? band(bands - 1) : 255;
}

// Index of the first preview pixel at or after picture pixel `pixel`.
size_t firstFrom(size_t pixel, size_t distance) {
    return (pixel + distance - 1) / distance;
}

} // namespace

ImportPreview::Image ImportPreview::takeNew(size_t& seen) const {
    std::lock_guard const lock(mutex_);
    if (seen == version_) return {};
    seen = version_;
    return image_;
}

std::unique_ptr<PixelSource> ImportPreview::watch(std::shared_ptr<ImportPreview> growing,
                                                  std::unique_ptr<PixelSource> source) {
    return std::make_unique<Watched>(std::move(growing), std::move(source));
}

void ImportPreview::start(PixelSource const& source) {
    image_.picture = {source.width(), source.height()};
    size_t const longer = std::max(source.width(), source.height());
    image_.distance = (longer + kMaxSide - 1) / kMaxSide;
    image_.width = firstFrom(source.width(), image_.distance);
    image_.height = firstFrom(source.height(), image_.distance);
    image_.rgba.assign(image_.width * image_.height * pixelbands::kTexelBytes, 0);
}

void ImportPreview::enter(PixelSource const& source, Region const& region, std::uint8_t const* pixels) {
    std::lock_guard const lock(mutex_);
    if (image_.rgba.empty()) start(source);
    size_t const end = firstFrom(region.y + region.height, image_.distance);
    for (size_t row = firstFrom(region.y, image_.distance); row < end; ++row)
        enterRow(source, region, pixels, row);
    ++version_;
}

void ImportPreview::enterRow(PixelSource const& source, Region const& region, std::uint8_t const* pixels, size_t row) {
    size_t const pixelBytes = source.bands() * source.sampleBytes();
    std::uint8_t const* const from = pixels + (row * image_.distance - region.y) * region.width * pixelBytes;
    size_t const end = firstFrom(region.x + region.width, image_.distance);
    for (size_t column = firstFrom(region.x, image_.distance); column < end; ++column)
        toRgba(from + (column * image_.distance - region.x) * pixelBytes, source,
               &image_.rgba[(row * image_.width + column) * pixelbands::kTexelBytes]);
}
