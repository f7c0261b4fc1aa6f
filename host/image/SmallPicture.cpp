#include "host/image/SmallPicture.h"

#include "host/image/PixelBands.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <new>

namespace {

constexpr std::uint8_t kOpaque = 0xff;

png_uint_32 formatOf(size_t bands) {
    png_uint_32 const colour = bands >= 3 ? PNG_FORMAT_FLAG_COLOR : 0;
    png_uint_32 const alpha = bands % 2 == 0 ? PNG_FORMAT_FLAG_ALPHA : 0;
    return colour | alpha;
}

// libpng's plain interface, whose failures are return values.
struct Image {
    Image() { value.version = PNG_IMAGE_VERSION; }
    Image(Image const&) = delete;
    Image& operator=(Image const&) = delete;
    ~Image() { png_image_free(&value); }

    png_image value{};
};

// Of a square of pixels, as far as it lies in the picture.
std::array<std::uint8_t, 4> meanOf(SmallPicture const& picture, Region const& square) {
    size_t const colours = pixelbands::isGrey(picture.bands) ? 1 : 3;
    std::array<size_t, 4> sums{};
    size_t count = 0;
    for (size_t y = square.y; y < std::min(square.y + square.height, picture.size.height); ++y)
        for (size_t x = square.x; x < std::min(square.x + square.width, picture.size.width); ++x, ++count) {
            std::uint8_t const* const pixel = &picture.samples[(y * picture.size.width + x) * picture.bands];
            for (size_t band = 0; band < 3; ++band)
                sums.at(band) += pixel[std::min(band, colours - 1)];
            sums[3] += pixelbands::hasAlpha(picture.bands) ? pixel[colours] : kOpaque;
        }
    std::array<std::uint8_t, 4> mean{};
    for (size_t band = 0; band < mean.size(); ++band)
        mean.at(band) = static_cast<std::uint8_t>((2 * sums.at(band) + count) / (2 * count));
    return mean;
}

} // namespace

std::vector<std::uint8_t> smallpicture::toPng(SmallPicture const& picture) {
    Image image;
    image.value.width = static_cast<png_uint_32>(picture.size.width);
    image.value.height = static_cast<png_uint_32>(picture.size.height);
    image.value.format = formatOf(picture.bands);
    png_alloc_size_t bytes = 0;
    void const* const samples = picture.samples.data();
    // Without memory to write to it counts; that bound lets it write into this memory.
    if (png_image_write_to_memory(&image.value, nullptr, &bytes, 0, samples, 0, nullptr) == 0) throw std::bad_alloc();
    std::vector<std::uint8_t> png(bytes);
    if (png_image_write_to_memory(&image.value, png.data(), &bytes, 0, samples, 0, nullptr) == 0)
        throw std::bad_alloc();
    png.resize(bytes);
    return png;
}

std::optional<SmallPicture> smallpicture::fromPng(std::vector<std::uint8_t> const& bytes, size_t mostPixels) {
    Image image;
    if (png_image_begin_read_from_memory(&image.value, bytes.data(), bytes.size()) == 0) return std::nullopt;
    SmallPicture picture{{image.value.width, image.value.height}, PNG_IMAGE_SAMPLE_CHANNELS(image.value.format), {}};
    if (picture.size.height > mostPixels / picture.size.width) return std::nullopt;
    image.value.format = formatOf(picture.bands);
    picture.samples.resize(picture.size.width * picture.size.height * picture.bands);
    if (png_image_finish_read(&image.value, nullptr, picture.samples.data(), 0, nullptr) == 0) return std::nullopt;
    return picture;
}

SmallPicture smallpicture::shrunk(SmallPicture const& picture, size_t longestSide) {
    size_t const side = (std::max(picture.size.width, picture.size.height) - 1) / std::max<size_t>(longestSide, 1) + 1;
    SmallPicture small{{(picture.size.width - 1) / side + 1, (picture.size.height - 1) / side + 1}, 4, {}};
    for (size_t y = 0; y < small.size.height; ++y)
        for (size_t x = 0; x < small.size.width; ++x) {
            auto const mean = meanOf(picture, {x * side, y * side, side, side});
            small.samples.insert(small.samples.end(), mean.begin(), mean.end());
        }
    return small;
}
