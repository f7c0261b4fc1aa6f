#include "host/display/DisplayRequest.h"

#include "host/HostError.h"
#include "host/display/AutomaticRange.h"
#include "host/image/NodataSample.h"

#include <algorithm>
#include <cstddef>
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

// Of samples of some bands, without nodata; that of the type if none counts.
SampleRange automaticRange(ImageFacts const& facts, std::vector<std::uint8_t> const& samples,
                           std::vector<size_t> const& bands) {
    SampleFormat const& layout = facts.layout;
    std::vector<double> numbers;
    samplerange::toNumbers(samples.data(), layout, bands, samples.size() / layout.pixelBytes(), numbers);
    auto const nodata = facts.nodata ? nodatasample::valueOf(*facts.nodata, layout.type) : std::nullopt;
    if (nodata) numbers.erase(std::remove(numbers.begin(), numbers.end(), *nodata), numbers.end());
    if (auto const range = automaticrange::of(std::move(numbers))) return *range;
    Tone const whole = channeldisplay::wholeRange(layout.type);
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
        throw HostError(HostError::Kind::Usage, "a colour map is for one channel, and the picture has " +
                                                    std::to_string(colours.size()) + ": choose one with --bands");
    for (ChannelDisplay* const channel : colours) {
        if (!request.colourMap.empty()) channel->colours = colourmap::named(request.colourMap);
        if (request.isInverted) channel->colours = colourmap::inverted(channel->colours);
    }
}

} // namespace

std::vector<ChannelDisplay> displayrequest::channelsFor(DisplayRequest const& request, ImageFacts const& facts,
                                                        std::vector<std::uint8_t> const& samples) {
    auto channels = channeldisplay::defaultsFor(facts.layout);
    auto const colours = coloursOf(channels);
    setColours(colours, request);
    bool const isAutomatic = request.automaticRange || (!request.range && bytesOf(facts.layout.type) > 1);
    if (isAutomatic) setAutomaticRanges(colours, facts, samples);
    for (ChannelDisplay* const channel : colours) {
        if (request.range) setRange(*channel, *request.range);
        channel->tone.curve = request.curve;
        channel->tone.gamma = request.gamma;
    }
    return channels;
}
