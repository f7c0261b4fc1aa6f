#include "host/image/ImageSelection.h"

#include "host/image/PixelBands.h"

#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace {

constexpr auto kAutomatic = "auto";

std::vector<std::string> partsOf(std::string const& text) {
    std::vector<std::string> parts(1);
    for (char const c : text)
        if (c == ',')
            parts.emplace_back();
        else
            parts.back() += c;
    return parts;
}

template <class Number>
std::optional<Number> numberOf(std::string const& text) {
    Number number{};
    auto const end = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const whole = end.ec == std::errc() && end.ptr == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

} // namespace

std::string ImageSelection::identity() const {
    std::string text = page ? "page " + std::to_string(*page) : "";
    for (size_t const band : bands)
        text += " band " + std::to_string(band);
    if (range) text += " range " + imageselection::toText(range->low) + " " + imageselection::toText(range->high);
    if (automaticRange) text += " range auto";
    if (toSrgb) text += " sRGB";
    if (followsProfile) text += " profile";
    if (isUpright) text += " upright";
    return text;
}

std::vector<size_t> imageselection::parseBands(std::string const& text) {
    std::vector<size_t> bands;
    for (std::string const& part : partsOf(text)) {
        auto const band = numberOf<size_t>(part);
        if (!band || *band == 0)
            throw std::invalid_argument("'" + text +
                                        "' names no bands; write I or I,J,K, counted from 1, and one more "
                                        "that is to be alpha");
        bands.push_back(*band);
    }
    if (bands.size() > 4)
        throw std::invalid_argument("'" + text + "' names " + std::to_string(bands.size()) +
                                    " bands; grey is one, RGB three, and one more may be alpha");
    return bands;
}

void imageselection::parseRange(std::string const& text, ImageSelection& selection) {
    if (text == kAutomatic) {
        selection.automaticRange = true;
        return;
    }
    std::vector<std::string> const parts = partsOf(text);
    auto const low = numberOf<double>(parts.front());
    auto const high = numberOf<double>(parts.back());
    if (parts.size() != 2 || !low || !high || std::isnan(*low) || std::isnan(*high))
        throw std::invalid_argument("'" + text + "' is no range; write LO,HI, for example 0,4095, or auto");
    if (*low >= *high) throw std::invalid_argument("the range '" + text + "' is empty; write the smaller number first");
    if (std::abs(*low) > SampleRange::kFarthest || std::abs(*high) > SampleRange::kFarthest)
        throw std::invalid_argument("the range '" + text + "' reaches beyond 1e300; choose a smaller one");
    selection.range = SampleRange{*low, *high};
}

std::string imageselection::toText(std::vector<size_t> const& bands) {
    std::string text;
    for (size_t i = 0; i < bands.size(); ++i) {
        bool const alpha = pixelbands::hasAlpha(bands.size()) && i + 1 == bands.size();
        text += alpha ? " and alpha " : i > 0 ? "," : "";
        text += std::to_string(bands[i]);
    }
    return text;
}

std::string imageselection::toText(double number, SampleType type) {
    std::array<char, 32> text{};
    auto const narrow = static_cast<float>(number);
    bool const isFloat = type == SampleType::Float32 && static_cast<double>(narrow) == number;
    auto const end = isFloat ? std::to_chars(text.data(), text.data() + text.size(), narrow)
                             : std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end.ptr};
}
