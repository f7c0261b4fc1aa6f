#pragma once

#include "host/display/ChannelDisplay.h"
#include "host/display/ColourMap.h"
#include "host/display/Histogram.h"
#include "host/display/Tone.h"
#include "host/image/SampleRange.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A channel that a user asks for.
struct ChannelRequest {
    size_t channel = 0;               ///< from 0, among those of colour
    std::optional<Colour> colour;     ///< empty: its own
    std::optional<SampleRange> range; ///< empty: that of all channels
    bool automaticRange = false;
};

/// A user's wishes about how a picture's samples are shown.
struct DisplayRequest {
    std::vector<ChannelRequest> channels; ///< that are on, and no others; none: as the picture opens
    StackPosition position;               ///< of a picture that has several slices or times
    std::optional<SampleRange> range;     ///< of all channels of colour
    bool automaticRange = false;          ///< automaticrange::of(), the default of all but 8 bits
    Tone::Curve curve = Tone::Curve::Linear;
    double gamma = 1;
    std::string colourMap; ///< a name of colourmap::names(); empty: none
    bool isInverted = false;

    bool isEmpty() const { return asksForRangeAlone() && !range && !automaticRange; }
    bool asksForRangeAlone() const {
        return channels.empty() && position == StackPosition() && curve == Tone::Curve::Linear && gamma == 1 &&
               colourMap.empty() && !isInverted;
    }
};

namespace displayrequest {

/// From "C", "C:RRGGBB", "C:LO,HI" or "C:RRGGBB:LO,HI", a range also as "auto". Throws std::invalid_argument with a
/// sentence for the user.
ChannelRequest parseChannel(std::string const& text);

/// The picture's channels as they are asked for. `samples` are those of a coarse level, interleaved. Red, green and
/// blue have one range together; other channels have their own. Throws HostError (usage) if the picture lacks a channel
/// that is asked for, and if a colour map is for several.
std::vector<ChannelDisplay> channelsFor(DisplayRequest const& request, ImageFacts const& facts,
                                        std::vector<std::uint8_t> const& samples);

/// How often the samples of each of the channels occur.
std::vector<Histogram> histogramsOf(std::vector<ChannelDisplay> const& channels, ImageFacts const& facts,
                                    std::vector<std::uint8_t> const& samples);

} // namespace displayrequest
