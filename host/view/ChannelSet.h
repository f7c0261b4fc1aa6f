#pragma once

#include "host/display/DisplayRequest.h"
#include "host/view/MixedTiles.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// How a picture's channels look when it is opened.
struct ChannelOpening {
    /// samples: of a coarse level, interleaved. Throws HostError (usage) where the picture lacks what is asked for.
    ChannelOpening(ImageFacts const& facts, DisplayRequest const& request, std::vector<std::uint8_t> const& samples);

    std::vector<ChannelDisplay> channels;
    std::vector<Tone> automatic; ///< the ranges that all but 8 bits open with, a tone for each channel
    std::vector<Histogram> histograms;
    size_t bands = 0; ///< of the mixture: grey or RGB, with alpha where something may be transparent

    /// The channels with those ranges.
    std::vector<ChannelDisplay> withAutomaticRanges(std::vector<ChannelDisplay> of) const;
};

/// What a view of channels sees of a picture.
struct ShownChannels {
    PictureInfo info; ///< bands and bits: those of the mixture
    std::vector<ChannelDisplay> channels;
};

/// Channels as they are shown now, and the tables by which the GPU mixes their colours.
class ChannelSet {
public:
    /// None.
    ChannelSet() = default;
    /// The tables of those that look as they did before stay: they are on the GPU.
    ChannelSet(ImageFacts const& facts, std::vector<ChannelDisplay> const& channels, ChannelSet const& before);

    std::vector<ChannelDisplay> const& all() const { return all_; }
    /// Those that are on; alpha last, for it limits what the others have made.
    std::vector<ChannelDisplay> const& shown() const { return shown_; }
    /// Of those, in their order.
    MixedTiles::Tables const& tables() const { return tables_; }

    /// Whether the same codes of samples show both.
    bool hasCodesOf(ChannelSet const& other, SampleType type) const;

private:
    std::vector<ChannelDisplay> all_;
    std::vector<ChannelDisplay> shown_;
    MixedTiles::Tables tables_;
};

namespace channelset {

/// The codes that a channel's samples become.
SampleCodes codesOf(ImageFacts const& facts, ChannelDisplay const& channel);

/// Room for the codes of so many channels, two per RGBA texel, pair after pair; all 0.
std::vector<std::uint8_t> codeTexels(size_t channels, size_t pixels);
/// Writes those of one channel into its half of each texel: low and high byte.
void putCodes(std::vector<std::uint16_t> const& codes, size_t channel, std::vector<std::uint8_t>& texels);

} // namespace channelset
