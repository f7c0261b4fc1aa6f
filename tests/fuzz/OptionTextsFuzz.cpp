// An input is a parser of the command line, by number, and the text that it gets.
#include "host/Geometry.h"
#include "host/display/ColourMap.h"
#include "host/display/DisplayRequest.h"
#include "host/display/Tone.h"
#include "host/filter/Enhancement.h"
#include "host/image/ImageSelection.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

using fuzz::require;

bool within(double number, double limit) {
    return std::abs(number) <= limit; // and a number at all
}

void region(std::string const& text) {
    Region const region = parseRegion(text);
    require(region.width > 0 && region.height > 0, "a region has pixels");
    Region const again = parseRegion(toText(region));
    require(again.x == region.x && again.y == region.y && again.width == region.width && again.height == region.height,
            "a region can be written");
}

void bands(std::string const& text) {
    std::vector<size_t> const bands = imageselection::parseBands(text);
    require(!bands.empty() && bands.size() <= 4, "one to four bands are taken");
    require(std::count(bands.begin(), bands.end(), 0u) == 0, "bands count from 1");
}

void range(std::string const& text) {
    ImageSelection selection;
    imageselection::parseRange(text, selection);
    require(selection.range.has_value() != selection.automaticRange, "a range is given or automatic");
}

void curve(std::string const& text) {
    require(tone::toText(tone::parseCurve(text)) == text, "a curve has the name that it was asked for by");
}

void colour(std::string const& text) {
    colourmap::parseColour(text);
    require(text.size() == 6 || text.size() == 7, "a colour has six digits");
}

void channel(std::string const& text) {
    ChannelRequest const channel = displayrequest::parseChannel(text);
    require(!channel.range || !channel.automaticRange, "a channel's range is given or automatic");
}

void sharpen(std::string const& text) {
    require(std::isfinite(enhancement::parseSharpen(text).gain), "a gain is finite");
}

void matrix(std::string const& text) {
    enhancement::ColourMatrix const matrix = enhancement::parseColourMatrix(text);
    require(within(matrix.strength, 8) &&
                std::all_of(matrix.rows.begin(), matrix.rows.end(), [](double number) { return within(number, 8); }),
            "a matrix lies within -8 to 8");
}

void gamma(std::string const& text) {
    enhancement::Gamma const gamma = enhancement::parseGamma(text);
    require(gamma.gamma > 0 && std::isfinite(gamma.gamma), "a gamma is above 0");
}

void equalise(std::string const& text) {
    double const limit = enhancement::parseEqualise(text).clipLimit;
    require(limit >= 1 && std::isfinite(limit), "a clip limit is 1 or more");
}

void truncate(std::string const& text) {
    require(enhancement::parseTruncate(text).bits <= 16, "at most 16 bits are cut");
}

constexpr void (*kParsers[])(std::string const&) = {region,   bands,    range, sharpen, matrix, gamma,
                                                    equalise, truncate, curve, colour,  channel};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    // A digit, so that inputs can be read.
    auto* const parser = kParsers[static_cast<std::uint8_t>(input.byte() - '0') % std::size(kParsers)];
    std::string const text = input.text(input.left());
    try {
        parser(text);
    } catch (std::invalid_argument const& error) {
        require(*error.what() != '\0', "a refusal has a text");
    }
    return 0;
}
