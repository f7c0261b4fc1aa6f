#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The first image that an OME-TIFF describes, with the XML of its first directory. Numbers count from 0.
struct OmeImage {
    struct Channel {
        std::string name;                                  ///< empty: none
        std::optional<std::array<std::uint8_t, 3>> colour; ///< red, green, blue
    };

    /// Planes that follow one another in the order of the axes, from the stated one on.
    struct Block {
        std::optional<size_t> directory; ///< of the first plane; empty: 0
        size_t channel = 0;
        size_t slice = 0;
        size_t time = 0;
        std::optional<size_t> planes; ///< empty: one if a directory is stated, else all
        bool isElsewhere = false;     ///< in another file
    };

    size_t samples = 1; ///< SizeC: of all channels
    size_t slices = 1;
    size_t times = 1;
    std::string order = "XYZCT"; ///< of the axes, the fastest first
    std::vector<Channel> channels;
    std::vector<Block> blocks;
    double millimetresX = 0; ///< per pixel; 0: unknown
    double millimetresY = 0;
};

namespace omexml {

/// Empty if the description of a directory is no OME-XML with an image.
std::optional<OmeImage> parse(std::string const& description);

} // namespace omexml
