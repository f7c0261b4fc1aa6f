#pragma once

#include "host/image/SampleRange.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// A user's selection: which part of a picture file is taken, and how its samples are converted.
struct ImageSelection {
    std::optional<size_t> page; ///< from 1
    std::vector<size_t>
        bands; ///< from 1: grey; grey, alpha; red, green, blue; red, green, blue, alpha. None: as they are
    std::optional<SampleRange> range; ///< mapped to 16 bits
    bool automaticRange = false;      ///< the range goes from the smallest to the largest sample
    bool toSrgb = false;              ///< colours other than grey and RGB are converted
    bool followsProfile = false;      ///< grey and RGB become sRGB's by the file's ICC profile; --no-icc leaves them
    bool isUpright = false;           ///< turned by the file's orientation tag; --no-rotate leaves it as it lies

    bool hasRange() const { return range || automaticRange; }
    /// Whether all of the picture is taken, as samples.
    bool isEmpty() const { return !page && bands.empty() && !hasRange() && !toSrgb; }
    /// A text that is equal for equal selections, and different for different ones.
    std::string identity() const;
};

namespace imageselection {

/// From "I", "I,A", "I,J,K" or "I,J,K,A". Throws std::invalid_argument with a sentence for the user.
std::vector<size_t> parseBands(std::string const& text);

/// From "LO,HI" or "auto". Throws std::invalid_argument with a sentence for the user.
void parseRange(std::string const& text, ImageSelection& selection);

/// "4,3,2", or "4,3,2 and alpha 5".
std::string toText(std::vector<size_t> const& bands);

/// The shortest text that identifies the number, as a 64-bit float, or as a 32-bit float if that is the type.
std::string toText(double number, SampleType type = SampleType::Float64);

} // namespace imageselection
