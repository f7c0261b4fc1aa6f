#include "tests/host/store/TestPictures.h"

#include <cstring>
#include <random>

using testpictures::Content;
using testpictures::Picture;

namespace {

class MemorySource final : public PixelSource {
public:
    explicit MemorySource(Picture picture) : picture_(std::move(picture)) {}

    size_t width() const override { return picture_.width; }
    size_t height() const override { return picture_.height; }
    size_t bands() const override { return picture_.bands; }
    size_t sampleBytes() const override { return picture_.bits / 8; }
    std::string description() const override { return "a picture in memory"; }
    PictureMetadata metadata() override { return {picture_.metadata, {}}; }

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override {
        size_t const pixelBytes = bands() * sampleBytes();
        for (size_t row = 0; row < region.height; ++row)
            std::memcpy(pixels + row * region.width * pixelBytes,
                        &picture_.bytes[((region.y + row) * width() + region.x) * pixelBytes],
                        region.width * pixelBytes);
    }

private:
    Picture picture_;
};

// Signs of the taps of the filter that makes a level 2 coefficient, high along one axis, which lie 8 apart from the
// next ones: L's taps (-1, 2, 6, 2, -1) / 8, then H's (-1, 0, 2, 0, -1) / 2.
bool positiveTap(size_t i) {
    constexpr bool kPositive[8] = {true, true, false, false, true, false, false, true};
    return kPositive[i % 8];
}

unsigned sampleOf(size_t x, size_t y, size_t band, unsigned highest, Content content, std::mt19937& random) {
    switch (content) {
    case Content::Noise:
        return static_cast<unsigned>(random()) & highest;
    case Content::Ramp:
        return static_cast<unsigned>(x * 3 + y * 5 + band * 40) & highest;
    case Content::Flat:
        return (highest / 3 + static_cast<unsigned>(band) * 7) & highest;
    case Content::Checkerboard:
        return (x + y + band) % 2 == 0 ? 0 : highest;
    case Content::Resonance: {
        bool const high = positiveTap(x) == positiveTap(y);
        return high == (band == 0) ? highest : 0;
    }
    }
    return 0;
}

} // namespace

bool testpictures::Picture::operator==(Picture const& other) const {
    return width == other.width && height == other.height && bands == other.bands && bits == other.bits &&
           bytes == other.bytes;
}

Picture testpictures::picture(size_t width, size_t height, size_t bands, size_t bits, Content content) {
    std::mt19937 random(static_cast<unsigned>(width * 31 + height));
    Picture picture{width, height, bands, bits, {}};
    unsigned const highest = (1u << bits) - 1;
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
            for (size_t band = 0; band < bands; ++band) {
                auto const sample = static_cast<std::uint16_t>(sampleOf(x, y, band, highest, content, random));
                std::uint8_t bytes[2];
                std::memcpy(bytes, &sample, 2);
                if (bits == 16)
                    picture.bytes.insert(picture.bytes.end(), bytes, bytes + 2);
                else
                    picture.bytes.push_back(static_cast<std::uint8_t>(sample));
            }
    return picture;
}

std::unique_ptr<PixelSource> testpictures::source(Picture const& picture) {
    return std::make_unique<MemorySource>(picture);
}

StoreInfo testpictures::import(Picture const& picture, std::string const& path, ImportOptions const& options) {
    return importStore([&] { return source(picture); }, path, options, [](size_t, size_t) {});
}
