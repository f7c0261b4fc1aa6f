#include "apps/velmora/view/PixelText.h"

#include "host/image/ImageSelection.h"

namespace {

std::string placeText(PicturePixel const& pixel) {
    return std::to_string(pixel.x) + ", " + std::to_string(pixel.y) + ":";
}

} // namespace

std::string pixeltext::ofSamples(PicturePixel const& pixel, std::vector<double> const& samples, SampleType type) {
    std::string text = placeText(pixel);
    for (double const sample : samples)
        text += " " + imageselection::toText(sample, type);
    return text;
}

std::string pixeltext::ofColour(PicturePixel const& pixel, std::array<std::uint8_t, 3> const& colour) {
    std::string text = placeText(pixel);
    for (std::uint8_t const one : colour)
        text += " " + std::to_string(one);
    return text;
}

std::string pixeltext::before(PicturePixel const& pixel) {
    return placeText(pixel) + " ...";
}
