#include "tests/support/TestImages.h"

#include <algorithm>
#include <cmath>
#include <vips/vips8>

#include <stdexcept>

using vips::VImage;

namespace {

template <class Sample>
std::vector<Sample> pattern(size_t width, size_t height, size_t bands, Sample (*sample)(size_t, size_t, size_t)) {
    std::vector<Sample> samples;
    samples.reserve(width * height * bands);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
            for (size_t band = 0; band < bands; ++band)
                samples.push_back(sample(x, y, band));
    return samples;
}

void startVips() {
    static int const started = VIPS_INIT("velmora-tests");
    if (started != 0) throw std::runtime_error("libvips does not start");
}

// libvips would return the old state of a file that was rewritten under its name. The limit of the cache stays as the
// program sets it, which is tested.
void emptyVipsCache() {
    int const limit = vips_cache_get_max();
    vips_cache_set_max(0);
    vips_cache_set_max(limit);
}

template <class Sample>
void write(std::string const& path, std::string const& options, std::vector<Sample> const& samples, size_t width,
           size_t height, size_t bands, VipsBandFormat format) {
    startVips();
    VImage const image =
        VImage::new_from_memory(const_cast<Sample*>(samples.data()), samples.size() * sizeof(Sample),
                                static_cast<int>(width), static_cast<int>(height), static_cast<int>(bands), format);
    bool const wide = sizeof(Sample) > 1;
    auto const grey = wide ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W;
    auto const colour = wide ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB;
    auto const interpretation = static_cast<int>(bands <= 2 ? grey : colour);
    image.copy(VImage::option()->set("interpretation", interpretation)).write_to_file((path + options).c_str());
}

std::vector<std::uint8_t> upperBytes(std::uint16_t const* samples, size_t count) {
    std::vector<std::uint8_t> bytes;
    for (size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(samples[i] >> 8));
    return bytes;
}

testimages::Pixels toPixels(VImage const& image) {
    testimages::Pixels pixels{static_cast<size_t>(image.width()),
                              static_cast<size_t>(image.height()),
                              static_cast<size_t>(image.bands()),
                              {}};
    size_t bytes = 0;
    void* const memory = image.write_to_memory(&bytes);
    if (image.format() == VIPS_FORMAT_USHORT) {
        pixels.samples = upperBytes(static_cast<std::uint16_t const*>(memory), bytes / 2);
    } else if (image.format() == VIPS_FORMAT_UCHAR) {
        auto const* const first = static_cast<std::uint8_t const*>(memory);
        pixels.samples.assign(first, first + bytes);
    }
    g_free(memory);
    if (pixels.samples.empty()) throw std::runtime_error("neither 8 nor 16 bits per sample");
    return pixels;
}

} // namespace

std::uint8_t testimages::sample8(size_t x, size_t y, size_t band) {
    return static_cast<std::uint8_t>(x * 7 + y * 13 + (x * y) / 31 + band * 83);
}

std::uint16_t testimages::sample16(size_t x, size_t y, size_t band) {
    return static_cast<std::uint16_t>(x * 1571 + y * 3203 + x * y * 5 + band * 21013);
}

testimages::Pixels testimages::pattern8(size_t width, size_t height, size_t bands) {
    return {width, height, bands, pattern<std::uint8_t>(width, height, bands, sample8)};
}

testimages::Pixels testimages::pattern16UpperBytes(size_t width, size_t height, size_t bands) {
    auto const samples = pattern<std::uint16_t>(width, height, bands, sample16);
    return {width, height, bands, upperBytes(samples.data(), samples.size())};
}

testimages::Pixels testimages::pattern16InRange(size_t width, size_t height, size_t bands, double low, double high) {
    Pixels pixels{width, height, bands, {}};
    for (std::uint16_t const sample : pattern<std::uint16_t>(width, height, bands, sample16)) {
        double const share = (sample - low) / (high - low);
        pixels.samples.push_back(
            static_cast<std::uint8_t>(std::floor(255 * std::min(std::max(share, 0.0), 1.0) + 0.5)));
    }
    return pixels;
}

void testimages::writePattern8(std::string const& path, std::string const& options, size_t width, size_t height,
                               size_t bands) {
    auto const samples = pattern<std::uint8_t>(width, height, bands, sample8);
    write(path, options, samples, width, height, bands, VIPS_FORMAT_UCHAR);
}

void testimages::writePattern16(std::string const& path, std::string const& options, size_t width, size_t height,
                                size_t bands) {
    auto const samples = pattern<std::uint16_t>(width, height, bands, sample16);
    write(path, options, samples, width, height, bands, VIPS_FORMAT_USHORT);
}

testimages::Pixels testimages::cropByVips(std::string const& path, size_t x, size_t y, size_t width, size_t height) {
    startVips();
    emptyVipsCache();
    VImage const image = VImage::new_from_file(path.c_str());
    return toPixels(image.extract_area(static_cast<int>(x), static_cast<int>(y), static_cast<int>(width),
                                       static_cast<int>(height)));
}

testimages::Pixels testimages::readByVips(std::string const& path) {
    startVips();
    emptyVipsCache();
    return toPixels(VImage::new_from_file(path.c_str()));
}

std::vector<std::uint16_t> testimages::read16ByVips(std::string const& path) {
    startVips();
    emptyVipsCache();
    VImage const image = VImage::new_from_file(path.c_str());
    if (image.format() != VIPS_FORMAT_USHORT) throw std::runtime_error(path + " has no samples of 16 bits");
    size_t bytes = 0;
    void* const memory = image.write_to_memory(&bytes);
    auto const* const first = static_cast<std::uint16_t const*>(memory);
    std::vector<std::uint16_t> samples(first, first + bytes / 2);
    g_free(memory);
    return samples;
}

std::vector<std::uint16_t> testimages::pattern16(size_t width, size_t height, size_t bands) {
    return pattern<std::uint16_t>(width, height, bands, sample16);
}

testimages::Pixels testimages::crop(Pixels const& pixels, size_t x, size_t y, size_t width, size_t height) {
    Pixels part{width, height, pixels.bands, {}};
    for (size_t row = y; row < y + height; ++row)
        for (size_t i = x * pixels.bands; i < (x + width) * pixels.bands; ++i)
            part.samples.push_back(pixels.samples.at(row * pixels.width * pixels.bands + i));
    return part;
}

std::string testimages::difference(Pixels const& actual, Pixels const& expected) {
    auto const size = [](Pixels const& pixels) {
        return std::to_string(pixels.width) + " x " + std::to_string(pixels.height) + " pixels of " +
               std::to_string(pixels.bands) + " bands";
    };
    if (size(actual) != size(expected)) return size(actual) + " instead of " + size(expected);
    if (actual.samples.size() != expected.samples.size()) return "another number of samples";
    for (size_t i = 0; i < actual.samples.size(); ++i) {
        if (actual.samples[i] == expected.samples[i]) continue;
        size_t const pixel = i / actual.bands;
        return "band " + std::to_string(i % actual.bands) + " at " + std::to_string(pixel % actual.width) + "," +
               std::to_string(pixel / actual.width) + ": " + std::to_string(actual.samples[i]) + " instead of " +
               std::to_string(expected.samples[i]);
    }
    return "";
}
