#pragma once

#include "host/display/ChannelDisplay.h"
#include "host/display/Tone.h"
#include "host/image/SampleRange.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A user's wishes about how a picture's samples are shown.
struct DisplayRequest {
    std::optional<SampleRange> range; ///< of all channels of colour
    bool automaticRange = false;      ///< automaticrange::of(), the default of all but 8 bits
    Tone::Curve curve = Tone::Curve::Linear;
    double gamma = 1;
    std::string colourMap; ///< a name of colourmap::names(); empty: none
    bool isInverted = false;

    bool isEmpty() const {
        return !range && !automaticRange && curve == Tone::Curve::Linear && gamma == 1 && colourMap.empty() &&
               !isInverted;
    }
};

namespace displayrequest {

/// The picture's channels as they are asked for. `samples` are those of a coarse level, interleaved. Red, green and
/// blue have one range together; other channels have their own. Throws HostError (usage) if a colour map is asked for,
/// and the picture has several channels.
std::vector<ChannelDisplay> channelsFor(DisplayRequest const& request, ImageFacts const& facts,
                                        std::vector<std::uint8_t> const& samples);

} // namespace displayrequest
