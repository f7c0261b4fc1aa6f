#include "host/display/ChannelDisplay.h"

#include "host/PlainText.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr std::array<Colour, 6> kColours = {
    {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {255, 0, 255}, {0, 255, 255}}};
constexpr std::array<char const*, 3> kPrimaries = {"red", "green", "blue"};
constexpr size_t kRgb = 3;

template <class Integer>
Tone rangeOf() {
    Tone tone;
    tone.low = std::numeric_limits<Integer>::lowest();
    tone.high = std::numeric_limits<Integer>::max();
    return tone;
}

std::vector<ChannelDisplay> greyOf(SampleType type) {
    ChannelDisplay grey;
    grey.name = "grey";
    grey.tone = channeldisplay::wholeRange(type);
    return {grey};
}

// Bands from the first one on, in the colours of the list.
std::vector<ChannelDisplay> coloured(size_t bands, SampleType type) {
    std::vector<ChannelDisplay> channels(bands);
    for (size_t band = 0; band < bands; ++band) {
        channels[band].band = band;
        channels[band].name = "band " + std::to_string(band + 1);
        channels[band].isOn = band < kColours.size();
        channels[band].tone = channeldisplay::wholeRange(type);
        channels[band].colours = colourmap::rampTo(kColours[band % kColours.size()]);
    }
    return channels;
}

// What the file says of its bands goes first.
std::vector<ChannelDisplay> stated(std::vector<ChannelDisplay> channels, std::vector<BandFacts> const& bands) {
    for (size_t i = 0; i < std::min(channels.size(), bands.size()); ++i) {
        if (!bands[i].name.empty()) channels[i].name = printableText(bands[i].name);
        if (bands[i].colour) channels[i].colours = colourmap::rampTo(*bands[i].colour);
    }
    return channels;
}

std::vector<ChannelDisplay> primariesOf(SampleType type) {
    auto channels = coloured(kRgb, type);
    for (size_t i = 0; i < kRgb; ++i)
        channels[i].name = kPrimaries[i];
    return channels;
}

ChannelDisplay alphaAt(size_t band, SampleType type) {
    ChannelDisplay alpha;
    alpha.band = band;
    alpha.name = "alpha";
    alpha.role = ChannelTable::Role::Alpha;
    alpha.tone = channeldisplay::wholeRange(type);
    // What is transparent is 0 in signed types, too.
    alpha.tone.low = 0;
    return alpha;
}

} // namespace

bool ChannelDisplay::operator==(ChannelDisplay const& other) const {
    return band == other.band && name == other.name && isOn == other.isOn && role == other.role && tone == other.tone &&
           colours == other.colours;
}

std::vector<ChannelDisplay> channeldisplay::defaultsFor(ImageFacts const& facts) {
    SampleFormat const& layout = facts.layout;
    SampleType const type = layout.type;
    if (!layout.isPlain()) return stated(layout.bands == 1 ? greyOf(type) : coloured(layout.bands, type), facts.bands);
    auto channels = layout.colours == kRgb ? primariesOf(type) : greyOf(type);
    if (layout.alpha) channels.push_back(alphaAt(layout.colours, type));
    return channels;
}

Tone channeldisplay::wholeRange(SampleType type) {
    switch (type) {
    case SampleType::Unsigned8:
        return rangeOf<std::uint8_t>();
    case SampleType::Signed8:
        return rangeOf<std::int8_t>();
    case SampleType::Unsigned16:
        return rangeOf<std::uint16_t>();
    case SampleType::Signed16:
        return rangeOf<std::int16_t>();
    case SampleType::Unsigned32:
        return rangeOf<std::uint32_t>();
    case SampleType::Signed32:
        return rangeOf<std::int32_t>();
    case SampleType::Float32:
    case SampleType::Float64:
        return {0, 1};
    }
    return {};
}
