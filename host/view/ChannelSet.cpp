#include "host/view/ChannelSet.h"

#include "host/image/PixelBands.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

constexpr size_t kChannelsPerTexel = 2;
constexpr size_t kCodeBytes = 2;

bool isAlpha(ChannelDisplay const& channel) {
    return channel.role == ChannelTable::Role::Alpha;
}

std::vector<ChannelDisplay> shownOf(std::vector<ChannelDisplay> const& channels) {
    std::vector<ChannelDisplay> shown;
    std::copy_if(channels.begin(), channels.end(), std::back_inserter(shown),
                 [](ChannelDisplay const& channel) { return channel.isOn; });
    std::stable_partition(shown.begin(), shown.end(), [](ChannelDisplay const& channel) { return !isAlpha(channel); });
    return shown;
}

std::shared_ptr<ChannelTable const> tableOf(ImageFacts const& facts, ChannelDisplay const& channel) {
    SampleCodes const codes = channelset::codesOf(facts, channel);
    return std::make_shared<ChannelTable const>(isAlpha(channel) ? ChannelTable::alpha(codes)
                                                                 : ChannelTable(codes, channel.colours));
}

bool mayBeTransparent(ImageFacts const& facts, std::vector<ChannelDisplay> const& channels) {
    bool const isFloat = facts.layout.type == SampleType::Float32 || facts.layout.type == SampleType::Float64;
    return isFloat || facts.nodata || std::any_of(channels.begin(), channels.end(), isAlpha);
}

bool isGrey(std::vector<ChannelDisplay> const& channels) {
    return std::all_of(channels.begin(), channels.end(), [](ChannelDisplay const& channel) {
        return isAlpha(channel) ||
               std::all_of(channel.colours.begin(), channel.colours.end(),
                           [](Colour const& colour) { return colour[0] == colour[1] && colour[1] == colour[2]; });
    });
}

} // namespace

ChannelOpening::ChannelOpening(ImageFacts const& facts, DisplayRequest const& request,
                               std::vector<std::uint8_t> const& samples)
    : channels(displayrequest::channelsFor(request, facts, samples)),
      histograms(displayrequest::histogramsOf(channels, facts, samples)),
      bands((isGrey(channels) ? size_t{1} : size_t{3}) + (mayBeTransparent(facts, channels) ? 1 : 0)) {
    DisplayRequest plain;
    plain.automaticRange = true;
    for (ChannelDisplay const& channel : displayrequest::channelsFor(plain, facts, samples))
        automatic.push_back(channel.tone);
}

std::vector<ChannelDisplay> ChannelOpening::withAutomaticRanges(std::vector<ChannelDisplay> of) const {
    for (size_t i = 0; i < of.size(); ++i) {
        of[i].tone.low = automatic[i].low;
        of[i].tone.high = automatic[i].high;
    }
    return of;
}

ChannelSet::ChannelSet(ImageFacts const& facts, std::vector<ChannelDisplay> const& channels, ChannelSet const& before)
    : all_(channels), shown_(shownOf(channels)) {
    for (ChannelDisplay const& channel : shown_) {
        auto const same = std::find(before.shown_.begin(), before.shown_.end(), channel);
        tables_.push_back(same == before.shown_.end()
                              ? tableOf(facts, channel)
                              : before.tables_[static_cast<size_t>(same - before.shown_.begin())]);
    }
}

bool ChannelSet::hasCodesOf(ChannelSet const& other, SampleType type) const {
    return std::equal(shown_.begin(), shown_.end(), other.shown_.begin(), other.shown_.end(),
                      [&](ChannelDisplay const& a, ChannelDisplay const& b) {
                          return a.band == b.band && (!SampleCodes::followTone(type) || a.tone == b.tone);
                      });
}

SampleCodes channelset::codesOf(ImageFacts const& facts, ChannelDisplay const& channel) {
    return {facts.layout.type, facts.nodata, channel.tone};
}

std::vector<std::uint8_t> channelset::codeTexels(size_t channels, size_t pixels) {
    size_t const pairs = (channels + kChannelsPerTexel - 1) / kChannelsPerTexel;
    return std::vector<std::uint8_t>(pairs * pixels * pixelbands::kTexelBytes);
}

void channelset::putCodes(std::vector<std::uint16_t> const& codes, size_t channel, std::vector<std::uint8_t>& texels) {
    std::uint8_t* to = &texels[channel / kChannelsPerTexel * codes.size() * pixelbands::kTexelBytes +
                               channel % kChannelsPerTexel * kCodeBytes];
    for (std::uint16_t const code : codes) {
        to[0] = static_cast<std::uint8_t>(code);
        to[1] = static_cast<std::uint8_t>(code >> 8U);
        to += pixelbands::kTexelBytes;
    }
}
