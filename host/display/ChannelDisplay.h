#pragma once

#include "host/display/ChannelTable.h"
#include "host/display/ColourMap.h"
#include "host/display/Tone.h"
#include "host/image/SampleSource.h"

#include <cstddef>
#include <string>
#include <vector>

/// How one band of a picture is shown.
struct ChannelDisplay {
    size_t band = 0; ///< of the picture, from 0
    std::string name;
    bool isOn = true;
    ChannelTable::Role role = ChannelTable::Role::Added;
    Tone tone;
    ColourMap colours = colourmap::named("grey");

    bool operator==(ChannelDisplay const& other) const;
};

namespace channeldisplay {

/// The channels of a picture as it opens: grey, or red, green and blue, with their alpha; bands of which the file says
/// neither have the names and colours that it states, or colours of their own, and the first six of them are on. Tones
/// are those of wholeRange().
std::vector<ChannelDisplay> defaultsFor(ImageFacts const& facts);

/// From the least to the largest value of an integer type, 0 to 1 of floats.
Tone wholeRange(SampleType type);

} // namespace channeldisplay
