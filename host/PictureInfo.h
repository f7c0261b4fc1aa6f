#pragma once

#include <cstddef>
#include <string>

/// A picture as a view shows it, and its levels: level 0 is the picture, each further level has half as many samples
/// along each axis, rounded up.
struct PictureInfo {
    size_t width = 0;            ///< pixels
    size_t height = 0;           ///< pixels
    size_t bands = 0;            ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
    size_t bits = 8;             ///< bits of a sample: 8 or 16
    size_t levels = 1;           ///< the coarsest level's number
    double micronsPerPixelX = 0; ///< 0: unknown
    double micronsPerPixelY = 0;
    std::string sourceName;     ///< file name of the picture, without folders
    std::string interpretation; ///< meaning of the bands, human-readable: "RGB"
};
