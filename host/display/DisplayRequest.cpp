#include "host/display/DisplayRequest.h"

#include "host/HostError.h"
#include "host/display/AutomaticRange.h"
#include "host/image/ImageSelection.h"
#include "host/image/NodataSample.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace {

bool isColour(ChannelDisplay const& channel) {
    return channel.role == ChannelTable::Role::Added;
}

std::vector<ChannelDisplay*> coloursOf(std::vector<ChannelDisplay>& channels) {
    std::vector<ChannelDisplay*> colours;
    for (ChannelDisplay& channel : channels)
        if (isColour(channel)) colours.push_back(&channel);
    return colours;
}

// Of some bands, without nodata.
std::vector<double> numbersOf(ImageFacts const& facts, std::vector<std::uint8_t> const& samples,
                              std::vector<size_t> const& bands) {
    SampleFormat const& layout = facts.layout;
    std::vector<double> numbers;
    samplerange::toNumbers(samples.data(), layout, bands, samples.size() / layout.pixelBytes(), numbers);
    auto const nodata = facts.nodata ? nodatasample::valueOf(*facts.nodata, layout.type) : std::nullopt;
    if (nodata) numbers.erase(std::remove(numbers.begin(), numbers.end(), *nodata), numbers.end());
    return numbers;
}

// Of samples of some bands; that of the type if none counts.
SampleRange automaticRange(ImageFacts const& facts, std::vector<std::uint8_t> const& samples,
                           std::vector<size_t> const& bands) {
    if (auto const range = automaticrange::of(numbersOf(facts, samples, bands))) return *range;
    Tone const whole = channeldisplay::wholeRange(facts.layout.type);
    return {whole.low, whole.high};
}

void setRange(ChannelDisplay& channel, SampleRange const& range) {
    channel.tone.low = range.low;
    channel.tone.high = range.high;
}

void setAutomaticRanges(std::vector<ChannelDisplay*> const& colours, ImageFacts const& facts,
                        std::vector<std::uint8_t> const& samples) {
    std::vector<size_t> bands(colours.size());
    std::transform(colours.begin(), colours.end(), bands.begin(),
                   [](ChannelDisplay const* channel) { return channel->band; });
    bool const isRgb = facts.layout.isPlain();
    SampleRange const common = isRgb ? automaticRange(facts, samples, bands) : SampleRange();
    for (ChannelDisplay* const channel : colours)
        setRange(*channel, isRgb ? common : automaticRange(facts, samples, {channel->band}));
}

void setColours(std::vector<ChannelDisplay*> const& colours, DisplayRequest const& request) {
    if (request.colourMap.empty() && !request.isInverted) return;
    if (colours.size() > 1)
        throw HostError(HostError::Kind::Usage, "a colour map is for one channel, and " +
                                                    std::to_string(colours.size()) +
                                                    " are shown: choose one with --channel or --bands");
    for (ChannelDisplay* const channel : colours) {
        if (!request.colourMap.empty()) channel->colours = colourmap::named(request.colourMap);
        if (request.isInverted) channel->colours = colourmap::inverted(channel->colours);
    }
}

// Those that are asked for are on; all that are on where none is.
std::vector<ChannelDisplay*> switched(std::vector<ChannelDisplay*> const& colours, DisplayRequest const& request) {
    if (request.channels.empty()) return colours;
    for (ChannelDisplay* const channel : colours)
        channel->isOn = false;
    std::vector<ChannelDisplay*> on;
    for (ChannelRequest const& wanted : request.channels) {
        if (wanted.channel >= colours.size())
            throw HostError(HostError::Kind::Usage, "the picture has no channel " + std::to_string(wanted.channel) +
                                                        "; --channel takes 0 to " + std::to_string(colours.size() - 1));
        ChannelDisplay* const channel = colours[wanted.channel];
        if (wanted.colour) channel->colours = colourmap::rampTo(*wanted.colour);
        if (!channel->isOn) on.push_back(channel);
        channel->isOn = true;
    }
    return on;
}

// Those that were asked for with a range of their own.
void setOwnRanges(std::vector<ChannelDisplay*> const& colours, DisplayRequest const& request, ImageFacts const& facts,
                  std::vector<std::uint8_t> const& samples) {
    for (ChannelRequest const& wanted : request.channels) {
        ChannelDisplay& channel = *colours[wanted.channel];
        if (wanted.range) setRange(channel, *wanted.range);
        if (wanted.automaticRange) setRange(channel, automaticRange(facts, samples, {channel.band}));
    }
}

bool isRange(std::string const& text) {
    return text == "auto" || text.find(',') != std::string::npos;
}

} // namespace

ChannelRequest displayrequest::parseChannel(std::string const& text) {
    std::vector<std::string> parts(1);
    for (char const c : text)
        if (c == ':')
            parts.emplace_back();
        else
            parts.back() += c;
    ChannelRequest request;
    std::string const& number = parts.front();
    auto const end = std::from_chars(number.data(), number.data() + number.size(), request.channel);
    bool const isNumber = end.ec == std::errc() && end.ptr == number.data() + number.size();
    bool const hasRange = parts.size() > 1 && isRange(parts.back());
    if (!isNumber || parts.size() > (hasRange ? 3u : 2u))
        throw std::invalid_argument("'" + text +
                                    "' is no channel; write C, C:RRGGBB, C:LO,HI or C:RRGGBB:LO,HI, counted from 0");
    if (hasRange) {
        ImageSelection range;
        imageselection::parseRange(parts.back(), range);
        request.range = range.range;
        request.automaticRange = range.automaticRange;
        parts.pop_back();
    }
    if (parts.size() > 1) request.colour = colourmap::parseColour(parts[1]);
    return request;
}

std::vector<ChannelDisplay> displayrequest::channelsFor(DisplayRequest const& request, ImageFacts const& facts,
                                                        std::vector<std::uint8_t> const& samples) {
    auto channels = channeldisplay::defaultsFor(facts);
    auto const colours = coloursOf(channels);
    setColours(switched(colours, request), request);
    bool const isAutomatic = request.automaticRange || (!request.range && bytesOf(facts.layout.type) > 1);
    if (isAutomatic) setAutomaticRanges(colours, facts, samples);
    for (ChannelDisplay* const channel : colours) {
        if (request.range) setRange(*channel, *request.range);
        channel->tone.curve = request.curve;
        channel->tone.gamma = request.gamma;
    }
    setOwnRanges(colours, request, facts, samples);
    return channels;
}

std::vector<Histogram> displayrequest::histogramsOf(std::vector<ChannelDisplay> const& channels,
                                                    ImageFacts const& facts, std::vector<std::uint8_t> const& samples) {
    std::vector<Histogram> histograms;
    histograms.reserve(channels.size());
    for (ChannelDisplay const& channel : channels)
        histograms.push_back(Histogram::of(numbersOf(facts, samples, {channel.band})));
    return histograms;
}
