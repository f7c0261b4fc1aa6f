#include "host/image/SlideImages.h"

#include "host/image/InputFile.h"
#include "host/image/VipsSamples.h"

#include <openslide.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace {

constexpr std::uint32_t kOpaque = 0xff;

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

// OpenSlide has multiplied the colours of transparent pixels: nothing lies there, and it counts as white.
std::uint8_t onWhite(std::uint32_t argb, size_t band) {
    std::uint32_t const missing = kOpaque - (argb >> 24U);
    return static_cast<std::uint8_t>(std::min((argb >> (16 - 8 * band) & 0xffU) + missing, kOpaque));
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

SmallPicture slideimages::read(InputFile const& file, std::string const& name) {
    constexpr auto kMost = static_cast<std::int64_t>(smallpicture::kMostPixels);
    Slide const slide = opened(file);
    std::int64_t width = -1;
    std::int64_t height = -1;
    openslide_get_associated_image_dimensions(slide.get(), name.c_str(), &width, &height);
    requireSound(slide, file);
    if (width <= 0 || height <= 0) throw imageNotRead(file.path(), "it has no image '" + name + "'");
    if (width > kMost / height) throw imageNotRead(file.path(), "its image '" + name + "' is too large");
    SmallPicture picture{{static_cast<size_t>(width), static_cast<size_t>(height)}, 3, {}};
    std::vector<std::uint32_t> pixels(picture.size.width * picture.size.height);
    openslide_read_associated_image(slide.get(), name.c_str(), pixels.data());
    requireSound(slide, file);
    picture.samples.reserve(picture.bands * pixels.size());
    for (std::uint32_t const pixel : pixels)
        for (size_t band = 0; band < picture.bands; ++band)
            picture.samples.push_back(onWhite(pixel, band));
    return picture;
}
