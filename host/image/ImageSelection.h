#pragma once

#include "host/image/SampleRange.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Which part of a picture file is taken, and what is done to its samples: what a user asks for.
struct ImageSelection {
    std::optional<size_t> page; ///< from 1
    std::vector<size_t>
        bands; ///< from 1: grey; grey, alpha; red, green, blue; red, green, blue, alpha. None: as they are
    std::optional<SampleRange> range; ///< that becomes 16 bits
    bool automaticRange = false;      ///< from the smallest to the largest sample
    bool toSrgb = false;              ///< colours that are neither grey nor RGB are converted

    bool hasRange() const { return range || automaticRange; }
    bool isEmpty() const { return !page && bands.empty() && !hasRange() && !toSrgb; }
    /// The same text for the same selection, another one for another.
    std::string identity() const;
};

namespace imageselection {

/// From "I", "I,A", "I,J,K" or "I,J,K,A". Throws std::invalid_argument with a sentence for the user.
std::vector<size_t> parseBands(std::string const& text);

/// From "LO,HI" or "auto". Throws as above.
void parseRange(std::string const& text, ImageSelection& selection);

/// "4,3,2", or "4,3,2 and alpha 5".
std::string toText(std::vector<size_t> const& bands);

/// The shortest text that stands for the number; of a sample of 32-bit float the shortest that stands for that.
std::string toText(double number, SampleType type = SampleType::Float64);

} // namespace imageselection
