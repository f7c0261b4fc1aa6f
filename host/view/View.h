#pragma once

#include "host/Geometry.h"
#include "host/PictureInfo.h"
#include "host/view/Zoom.h"

#include <cstddef>
#include <cstdint>

/// The part of a picture that a frame shows.
struct View {
    Zoom zoom;
    /// Of the frame's upper left corner, in pixels of the whole picture at this zoom. Negative: the frame begins beside
    /// the picture.
    std::int64_t x = 0;
    std::int64_t y = 0;
    size_t width = 0; ///< of the frame, in pixels; nothing is drawn where it or the height is 0
    size_t height = 0;
    /// Below 1: samples are weighed (bilinear), which GPUs round each in its own way. Otherwise the nearest one is
    /// shown: the same bytes everywhere.
    bool smooth = false;

    bool isEmpty() const { return width == 0 || height == 0; }
    /// The pixels of the whole picture at the zoom that the frame shows; of no size where it shows none.
    Region pixelsOf(PictureInfo const& picture) const;
    /// The samples of the zoom's level that pixels of the whole picture show.
    Region samplesOf(Region const& pixels) const;

    bool operator==(View const& other) const {
        return zoom == other.zoom && x == other.x && y == other.y && width == other.width && height == other.height &&
               smooth == other.smooth;
    }
    bool operator!=(View const& other) const { return !(*this == other); }
};
