#include "host/image/SlideImages.h"

#include "host/image/InputFile.h"
#include "host/image/VipsSamples.h"

#include <openslide.h>

#include <algorithm>
#include <array>
#include <memory>

namespace {

constexpr std::int64_t kMostPixels = std::int64_t{1} << 26;
constexpr unsigned kOpaque = 0xff;

struct SlideCloser {
    void operator()(openslide_t* slide) const { openslide_close(slide); }
};
using Slide = std::unique_ptr<openslide_t, SlideCloser>;

void requireSound(Slide const& slide, InputFile const& file) {
    char const* const error = slide ? openslide_get_error(slide.get()) : "it cannot be opened";
    if (error != nullptr) throw imageNotRead(file.path(), error);
}

Slide opened(InputFile const& file) {
    Slide slide(openslide_open(file.path().c_str()));
    requireSound(slide, file);
    return slide;
}

// Of a square of pixels, as far as it lies in the image: red, green and blue. Where one is transparent OpenSlide has
// multiplied its colours: nothing lies there, and it counts as white.
std::array<std::uint8_t, 3> meanOf(std::vector<std::uint32_t> const& argb, Size const& size, Region const& square) {
    std::array<size_t, 3> sums{};
    size_t count = 0;
    for (size_t y = square.y; y < std::min(square.y + square.height, size.height); ++y)
        for (size_t x = square.x; x < std::min(square.x + square.width, size.width); ++x, ++count) {
            std::uint32_t const pixel = argb[y * size.width + x];
            unsigned const missing = kOpaque - (pixel >> 24U);
            for (size_t band = 0; band < sums.size(); ++band)
                sums.at(band) += (pixel >> (16 - 8 * band) & 0xffU) + missing;
        }
    std::array<std::uint8_t, 3> mean{};
    for (size_t band = 0; band < mean.size(); ++band)
        mean.at(band) = static_cast<std::uint8_t>((2 * sums.at(band) + count) / (2 * count));
    return mean;
}

} // namespace

std::vector<std::string> slideimages::names(InputFile& file) {
    if (!vipssamples::isSlide(file)) return {};
    Slide const slide = opened(file);
    std::vector<std::string> names;
    for (char const* const* name = openslide_get_associated_image_names(slide.get()); *name != nullptr; ++name)
        names.emplace_back(*name);
    std::sort(names.begin(), names.end());
    return names;
}

slideimages::SlideImage slideimages::read(InputFile const& file, std::string const& name, size_t longestSide) {
    Slide const slide = opened(file);
    std::int64_t width = -1;
    std::int64_t height = -1;
    openslide_get_associated_image_dimensions(slide.get(), name.c_str(), &width, &height);
    requireSound(slide, file);
    if (width <= 0 || height <= 0) throw imageNotRead(file.path(), "it has no image '" + name + "'");
    if (width > kMostPixels / height) throw imageNotRead(file.path(), "its image '" + name + "' is too large");
    SlideImage image{name, {static_cast<size_t>(width), static_cast<size_t>(height)}, {}, {}};
    std::vector<std::uint32_t> argb(image.size.width * image.size.height);
    openslide_read_associated_image(slide.get(), name.c_str(), argb.data());
    requireSound(slide, file);
    size_t const side = (std::max(image.size.width, image.size.height) - 1) / std::max<size_t>(longestSide, 1) + 1;
    image.shown = {(image.size.width - 1) / side + 1, (image.size.height - 1) / side + 1};
    for (size_t y = 0; y < image.shown.height; ++y)
        for (size_t x = 0; x < image.shown.width; ++x) {
            auto const mean = meanOf(argb, image.size, {x * side, y * side, side, side});
            image.rgba.insert(image.rgba.end(), {mean[0], mean[1], mean[2], kOpaque});
        }
    return image;
}
